#pragma once

#include <vector>

namespace pelloran {

// Lengths inside a tile, in device-independent pixels.
struct TileFit {
    double spacing = 0; // between its lines and rows
    double padding = 0; // above the first and below the last
    bool fits = true;   // false: even so the last rows are cut
};

// How `heights`, top to bottom, share a tile that is `available` high. They get the spacing and padding asked for where
// there is room; where not, first the gaps give way, then the padding, down to a floor at which lines can still be told
// apart.
TileFit fitTile(const std::vector<int>& heights, double spacing, double padding, double available);

} // namespace pelloran
