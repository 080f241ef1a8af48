#include "tools/stage/painting/Curve.h"

#include <QPolygonF>

#include <cmath>
#include <numbers>

namespace pelloran::stage {

double Curve::y(double x) const {
    const double u = 10 * x / height;
    return height * u * (linear + u * (square + u * cube));
}

double Curve::angle(double x) const {
    const double u = 10 * x / height;
    return std::atan(10 * (linear + u * (2 * square + u * 3 * cube))) * 180 / std::numbers::pi;
}

QPainterPath Curve::band(double left, double right, double above, double below) const {
    constexpr int pieces = 32;
    QPolygonF outline;
    for (int i = 0; i <= pieces; ++i) {
        const double x = std::lerp(left, right, static_cast<double>(i) / pieces);
        outline << QPointF(x, y(x) - above);
    }
    for (int i = pieces; i >= 0; --i) {
        const double x = std::lerp(left, right, static_cast<double>(i) / pieces);
        outline << QPointF(x, y(x) + below);
    }
    QPainterPath path;
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}

} // namespace pelloran::stage
