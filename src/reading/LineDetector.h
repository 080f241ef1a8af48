#pragma once

#include "reading/Plane.h"

#include <QRect>

#include <vector>

namespace pelloran {

// A place where a line of light letters with dark outlines may stand.
struct TextBox {
    QRect area;          // pixels of the plane; encloses the strokes found
    int ink = 0;         // pixels of strokes
    double darkness = 0; // how dark it is just beside the strokes, 0 (light) to 1 (black), on average

    bool operator==(const TextBox&) const = default;
};

// How much a box looks like a name: these have the largest letters and the most ink of all lines on a card, and the
// blackest outlines. `unit` is the size of one pixel of a window 1080 pixels high, in pixels of the box.
double nameLikeness(const TextBox& box, double unit);

// Where `plane` has strokes of letters: 1, elsewhere 0. A stroke is bright, has something much darker beside it, and is
// thin. `unit` is the size of one pixel of a window 1080 pixels high, in pixels of the plane.
Plane strokes(const Plane& plane, double unit);

// Clears the horizontal runs of `mask` that are longer than `longest` pixels.
void removeLongRuns(Plane& mask, int longest);

// Finds lines of text by their strokes alone, at most 12, the most promising first. Rows of longer texts come one by
// one or in blocks. `unit` as above; a plane with a unit too small for legible letters has no lines.
std::vector<TextBox> detectLines(const Plane& plane, double unit);

} // namespace pelloran
