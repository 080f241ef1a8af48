#pragma once

#include "reading/Arch.h"
#include "reading/Plane.h"

#include <QRectF>

#include <optional>

namespace pelloran {

// How to tell letters from what is behind them; readings that fail are worth a second try with other values.
struct Cleaning {
    double inkLevel = 0.58; // of the line's own brightness: darker pixels are outline or background
    bool otherTurn = false; // take letters for turned with the line where they seem only moved, and the other way round
};

// The letters of one line, alone.
struct CleanLine {
    Plane ink;                // 0 (none) to 255; where it is depends on the plane it was cut from
    Arch arch;                // by which the letters stand below the line's middle
    QRectF letters;           // box of the straightened letters within `ink`
    QRect area;               // box of the letters as they stand, within `ink`
    double fill = 0;          // part of that box that is ink
    int rows = 0;             // lines of text one above the other; 1 for a name
    double runsPerColumn = 0; // strokes met on the way down a column with ink: about 1.6 in Latin text, 2.5 in Chinese
};

// The letters in `plane`, of which `box` encloses the strokes that were detected. The plane must reach beyond the box
// on all sides, so that what runs out of it can be told from letters. Absent when nothing is left. `unit` is the size
// of one pixel of a window 1080 pixels high, in pixels of the plane.
std::optional<CleanLine> cleanLine(const Plane& plane, const QRect& box, double unit, const Cleaning& cleaning);

// What a network wants to see.
struct PictureShape {
    int height;    // of the whole picture, in pixels
    double margin; // around the letters, as a part of their height
};

// The straightened letters in black on white.
Plane pictureOf(const CleanLine& line, const PictureShape& shape);

} // namespace pelloran
