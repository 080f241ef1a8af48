#include "sync/ShortHash.h"

#include <QTextBoundaryFinder>

namespace pelloran {

QString shortHash(const QString& hash, int count) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, hash);
    for (int i = 0; i < count; ++i) {
        if (finder.toNextBoundary() < 0) {
            return hash;
        }
    }
    return hash.first(finder.position());
}

} // namespace pelloran
