#pragma once

#include "reading/chinese/CharacterShape.h"

#include <array>

namespace pelloran {

// Which way the edges of a character's strokes run in each part of it: how much of each of 8 directions there is around
// each of 8 by 8 places, as a vector of length 1 (0 for a shape without edges). Places row by row for each direction.
inline constexpr int featureDirections = 8;
inline constexpr int featureGrid = 8;
inline constexpr std::size_t featureSize = std::size_t(featureDirections) * featureGrid * featureGrid;
using CharacterFeature = std::array<float, featureSize>;

// For any thread.
CharacterFeature featureOf(const CharacterShape& shape);

} // namespace pelloran
