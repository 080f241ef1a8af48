#pragma once

#include "platform/LineReader.h"

#include <algorithm>
#include <cstddef>

namespace pelloran {

// Han characters of a text.
inline qsizetype countChineseLetters(const QString& text) {
    return std::ranges::count_if(text, [](QChar character) { return character.script() == QChar::Script_Han; });
}

// What a way to read one image needs.
struct ReadingTools {
    LineReader& lines;
    std::size_t readingsLeft = 24; // of lines: whatever the image shows, reading it ends

    // At most as many readings as are left, in the order of the work.
    std::vector<LineReading> read(std::vector<LineReader::Work> work) {
        work.resize(std::min(work.size(), readingsLeft));
        readingsLeft -= work.size();
        return lines.read(work);
    }
};

} // namespace pelloran
