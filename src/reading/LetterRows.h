#pragma once

#include "reading/NamePlaces.h"
#include "reading/Plane.h"

#include <vector>

namespace pelloran {

// Where three lines of letters stand evenly side by side as the names of three cards would.
struct LetterRow {
    GameFrame frame;  // in which they stand at the usual distance from each other
    double level = 0; // of the letters' middles, the middle one of the three, in heights of that frame from the top
};

// For windows whose picture is not where and as large as it should be: frames in which `plane`, the upper part of a
// window whose picture should be `usual`, has three names, those with the most letters first; at most three. Rows that
// stand where a pick's do not, as those of choices in battle do, are left out.
std::vector<LetterRow> findLetterRows(const Plane& plane, const GameFrame& usual);

} // namespace pelloran
