#pragma once

#include "reading/Plane.h"

#include <QImage>

#include <array>
#include <cmath>
#include <cstddef>

namespace pelloran {

// Where a line of letters stands in the window: a band along it, with a margin above and below, and at both ends as
// far as a longer name would reach. In pixels of the window.
struct LinePlace {
    double left = 0;
    double right = 0;
    double height = 0;            // of the band
    std::array<double, 9> tops{}; // of the band, at equal steps from left to right

    // `topAt` of a place between `from` and `to`.
    static LinePlace along(double from, double to, double height, auto topAt) {
        LinePlace place{from, to, height, {}};
        for (std::size_t i = 0; i < place.tops.size(); ++i) {
            place.tops[i] = topAt(std::lerp(from, to, double(i) / double(place.tops.size() - 1)));
        }
        return place;
    }
};

// How such a line looks: the lightness in which white letters stand out, of some 24 rows along the band. No pixels
// where the band is not within the window, or less than one high.
Plane sampleOf(const QImage& window, const LinePlace& place);

// By how much the two differ where they differ most, 0 to 255: the mean over a square as wide as two strokes of a
// letter, where 255 is the whole way from the darkest to the lightest of the line. Light that moves over it, which
// changes brightness and contrast a little and slowly, is taken out before. 255 for samples of different sizes and for
// empty ones.
double difference(const Plane& kept, const Plane& now);

// The same letters stand there.
bool isSteady(const Plane& kept, const Plane& now);

} // namespace pelloran
