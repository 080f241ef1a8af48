#pragma once

#include "reading/Plane.h"

#include <QPointF>
#include <QRect>

#include <vector>

namespace pelloran {

// How a line of letters runs: its middle stands below a straight line by a cubic of the distance from the line's
// centre.
struct Arch {
    double at(double x) const {
        const double t = (x - centre) / half;
        return t * (slope + t * (bend + t * wave));
    }

    // Tangent at `x`.
    double slopeAt(double x) const {
        const double t = (x - centre) / half;
        return (slope + t * (2 * bend + t * 3 * wave)) / half;
    }

    // Where a pixel comes to stand once the line is straight, its middle at 0.
    QPointF straightened(double x, double y) const {
        const double offset = y - at(x) - level;
        return {x + turn * offset * slopeAt(x), offset};
    }

    double centre = 0; // pixels
    double half = 1;   // half the line's width, in pixels
    double slope = 0;  // pixels at the line's ends
    double bend = 0;
    double wave = 0;
    double level = 0; // y of the middle of the letters where the cubic is 0
    double turn = 0;  // 1: every letter is turned with the line; 0: letters are only moved up and down
};

// Ink by rows and by columns of a line that has been straightened.
struct InkProfile {
    std::vector<double> rows;
    std::vector<double> columns;
    int rowOrigin = 0;    // bin of the line's middle
    int columnOrigin = 0; // bin of the column at 0
};

InkProfile inkProfile(const Plane& letters, const Arch& arch);

// First bin with ink, and the one after the last.
std::pair<int, int> inkedRange(const std::vector<double>& bins);

// The arch that gives the letters (1; 0 elsewhere) the sharpest rows. `area` encloses them, `unit` is the size of one
// pixel of a window 1080 pixels high. Whether letters are turned follows from their upright strokes, which is a guess
// where there are few: `otherTurn` takes the opposite.
Arch archOf(const Plane& letters, const QRect& area, double unit, bool otherTurn);

} // namespace pelloran
