#pragma once

#include <QPainterPath>
#include <QPointF>

namespace pelloran::stage {

// The line that a name stands on and that its ribbon follows: a cubic around the middle of the name. Lengths are in the
// painter's own units.
class Curve {
public:
    // A straight line.
    Curve() = default;

    // y = height * (linear * u + square * u^2 + cube * u^3), downward, with u = x / (height / 10).
    Curve(double curveHeight, double curveLinear, double curveSquare, double curveCube)
        : height(curveHeight)
        , linear(curveLinear)
        , square(curveSquare)
        , cube(curveCube) {}

    // `x` from the middle; downward from the middle's height.
    double y(double x) const;

    // The fall of the line at `x`, as an angle in degrees, clockwise.
    double angle(double x) const;

    // The band from `left` to `right` along the line, from `above` it to `below` it (both positive).
    QPainterPath band(double left, double right, double above, double below) const;

private:
    double height = 1;
    double linear = 0;
    double square = 0;
    double cube = 0;
};

} // namespace pelloran::stage
