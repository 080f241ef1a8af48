#pragma once

#include <QImage>
#include <QRect>

#include <cstdint>
#include <vector>

namespace pelloran {

// Colours of letters that are lighter than what is around them. Grey ones are told from coloured ground as bright as
// they are.
enum class Lettering { white, whiteOrGolden, grey };

// One byte a pixel, rows without gaps.
struct Plane {
    Plane() = default;

    Plane(int columns, int rows, std::uint8_t value = 0)
        : width(columns)
        , height(rows)
        , pixels(std::size_t(columns) * std::size_t(rows), value) {}

    std::uint8_t* row(int y) { return pixels.data() + std::size_t(y) * std::size_t(width); }

    const std::uint8_t* row(int y) const { return pixels.data() + std::size_t(y) * std::size_t(width); }

    std::uint8_t at(int x, int y) const { return row(y)[x]; }

    bool operator==(const Plane&) const = default;

    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;
};

// Lightness of the part `area` of `image` (clipped to it), in which white letters stand out and saturated colours do
// not: the darkest of the three colour channels, for golden letters averaged with luma, for grey ones less one and a
// half times the distance to the lightest. Any format.
Plane lightness(const QImage& image, const QRect& area, Lettering lettering);

// The pixels of `area`, which must lie within the plane.
Plane cropped(const Plane& plane, const QRect& area);

// The value that `share` (0 to 1) of the pixels stay below or reach; 255 for no pixels.
int percentile(const Plane& plane, double share);

// Value at a place between pixels, 0 outside.
double sampleAt(const Plane& plane, double x, double y);

// One byte a pixel for whoever reads pictures.
QImage imageOf(const Plane& plane);

// The plane with `scale` times as many pixels in each direction.
Plane resampled(const Plane& plane, double scale);

// Halves the plane `times` times, each pixel the mean of four.
Plane shrunk(const Plane& plane, int times);

// The darkest, or the lightest, pixel of the square of 2 * radius + 1 pixels around each one.
Plane darkestAround(const Plane& plane, int radius);
Plane lightestAround(const Plane& plane, int radius);

// The plane without what is thin or enclosed: every pixel as light as can be kept on a way from it to a pixel of `seed`
// over `plane` (grey reconstruction by dilation). `seed` is nowhere lighter than `plane`.
Plane floodedFrom(Plane seed, const Plane& plane);

} // namespace pelloran
