#pragma once

#include "reading/Plane.h"

#include <span>
#include <vector>

namespace pelloran {

// Columns from `left` to before `right`.
struct CharacterCell {
    int left = 0;
    int right = 0;

    bool operator==(const CharacterCell&) const = default;
};

// Cuts a trimmed line into cells.
class CharacterCutter {
public:
    explicit CharacterCutter(const Plane& line);

    // As many cells as there are `widths`, each about as wide as its share of their sum, through as little ink as
    // possible. All widths are above 0; none: no cells.
    std::vector<CharacterCell> cells(std::span<const float> widths) const;

private:
    int width;
    std::vector<double> ink; // of each column, as a part of its height, smoothed: a cut is wider than a pixel
};

} // namespace pelloran
