// Merges any bytes as the game's log.config: nothing that is outside of the two sections goes, and what is merged again
// stays as it is.

#include "draft/logs/LogConfig.h"
#include "fuzz/Require.h"

#include <QList>

#include <cstdint>

using namespace pelloran;

namespace {

// What is the game's or somebody's own: lines of other sections, and those of any that assign nothing, as comments. By
// plain rules: a section is called as what stands in its brackets, whatever follows them.
QList<QByteArray> foreignLines(QByteArray text) {
    QList<QByteArray> foreign;
    bool isOurs = false;
    if (text.startsWith("\xEF\xBB\xBF")) {
        text.remove(0, 3); // begins the text, and no line
    }
    for (const QByteArray& line : text.replace('\r', '\n').split('\n')) {
        const QByteArray content = line.trimmed();
        if (content.startsWith('[') && content.contains(']')) {
            const QByteArray name = content.sliced(1, content.indexOf(']') - 1).trimmed().toLower();
            isOurs = name == "arena" || name == "loadingscreen";
        } else if (!content.isEmpty() && (!isOurs || !content.contains('='))) {
            foreign.append(line);
        }
    }
    return foreign;
}

// More may have come: a comment behind what is ours gets a line of its own.
bool holdsInOrder(const QList<QByteArray>& lines, const QList<QByteArray>& wanted) {
    auto next = wanted.begin();
    for (const QByteArray& line : lines) {
        next += next != wanted.end() && line == *next ? 1 : 0;
    }
    return next == wanted.end();
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name libFuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto once = mergeLogConfig(text);
    if (!once) {
        return 0;
    }
    fuzzing::require(once->changes.isEmpty() == (once->text == text));
    const auto twice = mergeLogConfig(once->text);
    fuzzing::require(twice && twice->text == once->text && twice->changes.isEmpty());
    fuzzing::require(holdsInOrder(foreignLines(once->text), foreignLines(text)));
    if (!text.contains('[')) {
        fuzzing::require(once->text.startsWith(text));
    }
    return 0;
}
