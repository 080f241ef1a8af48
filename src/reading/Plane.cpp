#include "reading/Plane.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pelloran {

namespace {

// The two extremes of a running window: loops over whole rows without branches, which compilers turn into vector
// code.
struct Darkest {
    static constexpr std::uint8_t outside = 255;

    static std::uint8_t of(std::uint8_t a, std::uint8_t b) { return std::min(a, b); }
};

struct Lightest {
    static constexpr std::uint8_t outside = 0;

    static std::uint8_t of(std::uint8_t a, std::uint8_t b) { return std::max(a, b); }
};

template <typename Extreme>
void combine(const std::uint8_t* first, const std::uint8_t* second, std::uint8_t* result, int count) {
    for (int i = 0; i < count; ++i) {
        result[i] = Extreme::of(first[i], second[i]);
    }
}

// Extreme of `window` neighbours starting at each of the `count` places, each place a run of `run` bytes: doubles the
// window while it fits, then lets two windows overlap. `values` holds (count + window - 1) * run bytes, spoiled after.
template <typename Extreme>
void slide(std::vector<std::uint8_t>& values, std::vector<std::uint8_t>& spare, int count, int window, int run) {
    int covered = 1;
    while (covered < window) {
        const int step = std::min(covered, window - covered);
        const int places = count + window - covered - step;
        combine<Extreme>(values.data(), values.data() + std::size_t(step) * std::size_t(run), spare.data(),
                         places * run);
        values.swap(spare);
        covered += step;
    }
}

template <typename Extreme>
Plane extremeAround(const Plane& plane, int radius) {
    if (radius <= 0 || plane.pixels.empty()) {
        return plane;
    }
    const int window = 2 * radius + 1;
    Plane result(plane.width, plane.height);

    std::vector<std::uint8_t> line(std::size_t(plane.width + window - 1));
    std::vector<std::uint8_t> spareLine(line.size());
    for (int y = 0; y < plane.height; ++y) {
        std::ranges::fill(line, Extreme::outside);
        std::copy_n(plane.row(y), plane.width, line.begin() + radius);
        slide<Extreme>(line, spareLine, plane.width, window, 1);
        std::copy_n(line.begin(), plane.width, result.row(y));
    }

    // Down the columns the same with whole rows for pixels, in strips that stay in the processor's cache.
    constexpr int stripWidth = 64;
    std::vector<std::uint8_t> strip;
    std::vector<std::uint8_t> spareStrip;
    for (int left = 0; left < plane.width; left += stripWidth) {
        const int run = std::min(stripWidth, plane.width - left);
        strip.assign(std::size_t(plane.height + window - 1) * std::size_t(run), Extreme::outside);
        spareStrip.resize(strip.size());
        for (int y = 0; y < plane.height; ++y) {
            std::copy_n(result.row(y) + left, run, strip.begin() + std::ptrdiff_t(y + radius) * run);
        }
        slide<Extreme>(strip, spareStrip, plane.height, window, run);
        for (int y = 0; y < plane.height; ++y) {
            std::copy_n(strip.begin() + std::ptrdiff_t(y) * run, run, result.row(y) + left);
        }
    }
    return result;
}

bool isPlainRgb(QImage::Format format) {
    return format == QImage::Format_RGB32 || format == QImage::Format_ARGB32 ||
           format == QImage::Format_ARGB32_Premultiplied;
}

// From the lightest pixels on down: each is as light as it can become when its turn comes, so that it is gone through
// once, wherever the ways lead.
void floodByLevels(Plane& seed, const Plane& plane) {
    std::array<std::vector<int>, 256> pending; // places in the planes, by the level that they had when they were added
    for (std::size_t i = 0; i < seed.pixels.size(); ++i) {
        pending[seed.pixels[i]].push_back(int(i));
    }
    for (int level = 255; level > 0; --level) {
        std::vector<int>& places = pending[std::size_t(level)];
        while (!places.empty()) {
            const int place = places.back();
            places.pop_back();
            if (seed.pixels[std::size_t(place)] != level) {
                continue; // it has risen since
            }
            const auto flow = [&](int next) {
                const int reachable = std::min<int>(level, plane.pixels[std::size_t(next)]);
                if (reachable > seed.pixels[std::size_t(next)]) {
                    seed.pixels[std::size_t(next)] = std::uint8_t(reachable);
                    pending[std::size_t(reachable)].push_back(next);
                }
            };
            const int x = place % plane.width;
            if (x > 0) {
                flow(place - 1);
            }
            if (x + 1 < plane.width) {
                flow(place + 1);
            }
            if (place >= plane.width) {
                flow(place - plane.width);
            }
            if (place + plane.width < int(plane.pixels.size())) {
                flow(place + plane.width);
            }
        }
    }
}

} // namespace

Plane lightness(const QImage& image, const QRect& area, Lettering lettering) {
    const QRect part = area.intersected(image.rect());
    if (part.isEmpty()) {
        return {};
    }
    const bool asItIs = isPlainRgb(image.format());
    const QImage source = asItIs ? image : image.copy(part).convertToFormat(QImage::Format_RGB32);
    const QPoint origin = asItIs ? part.topLeft() : QPoint(0, 0);
    if (source.isNull()) {
        return {};
    }

    Plane plane(part.width(), part.height());
    for (int y = 0; y < plane.height; ++y) {
        const auto* pixels = reinterpret_cast<const QRgb*>(source.constScanLine(origin.y() + y)) + origin.x();
        std::uint8_t* row = plane.row(y);
        if (lettering == Lettering::white) {
            for (int x = 0; x < plane.width; ++x) {
                const QRgb pixel = pixels[x];
                row[x] = std::uint8_t(std::min({pixel & 255U, (pixel >> 8) & 255U, (pixel >> 16) & 255U}));
            }
        } else if (lettering == Lettering::grey) {
            for (int x = 0; x < plane.width; ++x) {
                const QRgb pixel = pixels[x];
                const int blue = int(pixel & 255U);
                const int green = int((pixel >> 8) & 255U);
                const int red = int((pixel >> 16) & 255U);
                const int darkest = std::min(std::min(red, green), blue);
                const int lightest = std::max(std::max(red, green), blue);
                row[x] = std::uint8_t(std::max(0, darkest - 3 * (lightest - darkest) / 2));
            }
        } else {
            for (int x = 0; x < plane.width; ++x) {
                const QRgb pixel = pixels[x];
                const unsigned blue = pixel & 255U;
                const unsigned green = (pixel >> 8) & 255U;
                const unsigned red = (pixel >> 16) & 255U;
                const unsigned luma = (77 * red + 150 * green + 29 * blue) >> 8;
                row[x] = std::uint8_t((std::min({red, green, blue}) + luma) / 2);
            }
        }
    }
    return plane;
}

Plane cropped(const Plane& plane, const QRect& area) {
    Plane result(area.width(), area.height());
    for (int y = 0; y < result.height; ++y) {
        std::copy_n(plane.row(area.top() + y) + area.left(), result.width, result.row(y));
    }
    return result;
}

int percentile(const Plane& plane, double share) {
    std::array<int, 256> counts{};
    for (const std::uint8_t value : plane.pixels) {
        ++counts[value];
    }
    int below = 0;
    for (int value = 0; value < 256; ++value) {
        below += counts[std::size_t(value)];
        if (below > share * double(plane.pixels.size())) {
            return value;
        }
    }
    return 255;
}

double sampleAt(const Plane& plane, double x, double y) {
    const int left = int(std::floor(x));
    const int top = int(std::floor(y));
    const double fractionX = x - left;
    const double fractionY = y - top;
    const auto at = [&](int column, int row) -> double {
        return column >= 0 && row >= 0 && column < plane.width && row < plane.height ? plane.at(column, row) : 0;
    };
    return (at(left, top) * (1 - fractionX) + at(left + 1, top) * fractionX) * (1 - fractionY) +
           (at(left, top + 1) * (1 - fractionX) + at(left + 1, top + 1) * fractionX) * fractionY;
}

QImage imageOf(const Plane& plane) {
    QImage image(plane.width, plane.height, QImage::Format_Grayscale8);
    for (int y = 0; y < image.height(); ++y) {
        std::copy_n(plane.row(y), plane.width, image.scanLine(y));
    }
    return image;
}

Plane resampled(const Plane& plane, double scale) {
    const int width = int(std::lround(plane.width * scale));
    const int height = int(std::lround(plane.height * scale));
    if ((width == plane.width && height == plane.height) || width <= 0 || height <= 0) {
        return plane;
    }
    const QImage image(plane.pixels.data(), plane.width, plane.height, plane.width, QImage::Format_Grayscale8);
    const QImage scaled = image.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                              .convertToFormat(QImage::Format_Grayscale8);
    Plane result(scaled.width(), scaled.height());
    for (int y = 0; y < result.height; ++y) {
        std::copy_n(scaled.constScanLine(y), result.width, result.row(y));
    }
    return result;
}

Plane shrunk(const Plane& plane, int times) {
    Plane result = plane;
    for (int i = 0; i < times; ++i) {
        Plane half(result.width / 2, result.height / 2);
        for (int y = 0; y < half.height; ++y) {
            const std::uint8_t* upper = result.row(2 * y);
            const std::uint8_t* lower = result.row(2 * y + 1);
            std::uint8_t* row = half.row(y);
            for (int x = 0; x < half.width; ++x, upper += 2, lower += 2) {
                row[x] = std::uint8_t((upper[0] + upper[1] + lower[0] + lower[1] + 2) / 4);
            }
        }
        result = std::move(half);
    }
    return result;
}

Plane darkestAround(const Plane& plane, int radius) {
    return extremeAround<Darkest>(plane, radius);
}

Plane lightestAround(const Plane& plane, int radius) {
    return extremeAround<Lightest>(plane, radius);
}

Plane floodedFrom(Plane seed, const Plane& plane) {
    // Sweeps down and up alternately settle what pictures of cards have in two or three rounds. A winding path takes a
    // round for each of its turns, and a picture may hold hundreds of them.
    constexpr int mostRounds = 4;
    const int width = plane.width;
    const auto settle = [&](int x, int y, int fromX, int fromY) {
        std::uint8_t& level = seed.row(y)[x];
        const std::uint8_t reachable = std::min(seed.at(fromX, fromY), plane.at(x, y));
        const bool rises = reachable > level;
        level = std::max(level, reachable);
        return rises;
    };
    bool changed = true;
    for (int round = 0; changed && round < mostRounds; ++round) {
        changed = false;
        for (int y = 0; y < plane.height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (y > 0) {
                    changed |= settle(x, y, x, y - 1);
                }
                if (x > 0) {
                    changed |= settle(x, y, x - 1, y);
                }
            }
        }
        for (int y = plane.height - 1; y >= 0; --y) {
            for (int x = width - 1; x >= 0; --x) {
                if (y + 1 < plane.height) {
                    changed |= settle(x, y, x, y + 1);
                }
                if (x + 1 < width) {
                    changed |= settle(x, y, x + 1, y);
                }
            }
        }
    }
    if (changed) {
        floodByLevels(seed, plane);
    }
    return seed;
}

} // namespace pelloran
