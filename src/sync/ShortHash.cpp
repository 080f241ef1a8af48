#include "sync/ShortHash.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace pelloran {

namespace {

// A letter may bear any number of accents, and a server may send a million: what is meant to be short is shown.
constexpr qsizetype mostUnitsOfACharacter = 8;

} // namespace

QString shortHash(const QString& hash, int count) {
    qsizetype most = std::min(hash.size(), count * mostUnitsOfACharacter);
    if (most < hash.size() && hash.at(most - 1).isHighSurrogate()) {
        --most;
    }
    QString beginning = hash.first(most);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, beginning);
    for (int i = 0; i < count; ++i) {
        if (finder.toNextBoundary() < 0) {
            return beginning;
        }
    }
    return beginning.first(finder.position());
}

} // namespace pelloran
