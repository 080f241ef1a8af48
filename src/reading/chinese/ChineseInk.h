#pragma once

#include "reading/Plane.h"

#include <optional>

namespace pelloran {

// The pictures of lines of Chinese characters. A strip is a straight line of them with some room above and below, this
// many pixels high: characters are some 30 then, more than most windows have of them.
inline constexpr int stripRows = 64;

// Columns of a strip in which letters were seen; there may be more to both sides.
struct Extent {
    int left = 0;
    int right = 0; // the one after the last
};

// Where ink begins and where it is full, on the way from the ground (0) to the brightest (1).
struct InkRange {
    double from = 0.15;
    double to = 0.85;
};

// Ink of a strip with letters that are lighter than their ground, 0 (none) to 255. Where the ground is light, only what
// has a dark outline close by is ink. What is light and what is dark is asked of the letters `seen`.
Plane inkOf(const Plane& strip, Extent seen, InkRange range = {});

// The characters alone, to their first and last rows and columns: without what runs in from the edges, specks, and
// what stands too far from the letters `seen`. Ink from `level` on is looked at. Absent where nothing is left.
std::optional<Plane> trimmedLine(Plane ink, Extent seen, int level = 128);

} // namespace pelloran
