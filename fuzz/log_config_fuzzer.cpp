// Merges any bytes as the game's log.config: nothing that is outside of the two sections goes, what is merged again
// stays as it is, and even a reader that forgives nothing finds there what the game has to be told.

#include "draft/logs/LogConfig.h"
#include "fuzz/Require.h"

#include <QList>

#include <algorithm>
#include <array>
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

// Whether both sections are there, and each block of theirs tells everything, and nothing otherwise. Names count only
// as the game spells them.
bool isComplete(QByteArray text) {
    struct Block {
        QByteArray head;
        QList<QByteArray> lines; // without white space where it does not count
    };

    if (text.startsWith("\xEF\xBB\xBF")) {
        text.remove(0, 3);
    }
    QList<Block> blocks{{}};
    for (const QByteArray& line : text.replace('\r', '\n').split('\n')) {
        const QByteArray content = line.trimmed();
        const qsizetype equals = content.indexOf('=');
        if (content.startsWith('[') && content.contains(']')) {
            blocks.append({content, {}});
        } else if (equals >= 0) {
            blocks.last().lines.append(content.first(equals).trimmed() + '=' +
                                       content.sliced(equals + 1).trimmed().toLower());
        }
    }
    const auto tells = [](const Block& block, const QByteArray& key, const QByteArray& value) {
        const QByteArray wanted = key + '=' + value;
        return block.lines.contains(wanted) && std::ranges::all_of(block.lines, [&](const QByteArray& line) {
                   return line == wanted || !line.startsWith(key + '=');
               });
    };
    return std::ranges::all_of(std::array{"[Arena]", "[LoadingScreen]"}, [&](const char* head) {
        const auto isOurs = [&](const Block& block) { return block.head == head; };
        return std::ranges::any_of(blocks, isOurs) && std::ranges::all_of(blocks, [&](const Block& block) {
                   return !isOurs(block) ||
                          (tells(block, "LogLevel", "1") && tells(block, "FilePrinting", "true") &&
                           tells(block, "ConsolePrinting", "false") && tells(block, "ScreenPrinting", "false") &&
                           tells(block, "Verbose", "true"));
               });
    });
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
    fuzzing::require(isComplete(once->text));
    fuzzing::require(holdsInOrder(foreignLines(once->text), foreignLines(text)));
    if (!text.contains('[')) {
        fuzzing::require(once->text.startsWith(text));
    }
    return 0;
}
