#pragma once

#include "platform/LineReader.h"
#include "reading/chinese/ChineseLineReader.h"

#include <algorithm>
#include <cstddef>

namespace pelloran {

// What a way to read one image needs.
struct ReadingTools {
    LineReader& lines;
    ChineseLineReader* chinese = nullptr; // null: lines of Chinese characters cannot be read
    std::size_t readingsLeft = 24;        // of lines: whatever the image shows, reading it ends

    // Lines of Latin letters, at most as many as are left, in their order.
    std::vector<LineReading> read(std::vector<QImage> work) {
        work.resize(std::min(work.size(), readingsLeft));
        readingsLeft -= work.size();
        return lines.read(work);
    }
};

} // namespace pelloran
