#pragma once

#include "reading/LineDetector.h"

#include <vector>

namespace pelloran {

// In which order rows of lines are worth reading.
enum class RowOrder {
    mostInkFirst, // names of cards
    lowestFirst,  // names of hero classes, which stand below the heroes' own
};

// Lines side by side, as places in the list they were picked from, left to right.
using LineRow = std::vector<std::size_t>;

// The least distance between the middles of names side by side, in pixels of a window 1080 pixels high: offers stand
// 280 to 430 apart.
inline constexpr double leastSpacing = 200;

// The offers of a pick stand side by side and evenly apart, so their names make a row of three; whatever else looks
// like text rarely does. Groups `boxes` into such rows, every box in one row, the most promising row first. `unit` is
// the size of one pixel of a window 1080 pixels high, in pixels of the boxes.
std::vector<LineRow> rowsOf(const std::vector<TextBox>& boxes, double unit, RowOrder order);

} // namespace pelloran
