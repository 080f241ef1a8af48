#include "reading/SteadyLines.h"

#include <QRectF>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace pelloran {

namespace {

constexpr int mostRows = 24; // of a sample; a window 1080 pixels high has as many

// In heights of the sample, of which letters take up about two thirds.
constexpr double squareSide = 0.25;     // two strokes; over a whole letter an e for a c makes no more than light does
constexpr double surroundings = 0.5;    // width of what the light is judged from: a letter, from top to bottom
constexpr double strongestLight = 1.35; // and weakest, by division: letters that fade out are no longer the same
constexpr int leastContrast = 40;       // of letters that can be read
constexpr double leastVariance = 25;    // below it is no contrast to tell the light's strength from

// Measured on real screens and on painted ones from 1024x768 to 1920x1080. The same name: 18 at most in light of 0.8 to
// 1.2 times the strength, 17 with a glow over it, 24 as a JPEG of quality 80. Another name: 45 and more where one Latin
// letter became the one most like it (c and e, i and l, n and h), 100 and more where one Chinese character became
// another. The same name a pixel to the side: 74 and more, so it is found anew.
constexpr double mostOfTheSame = 32;

double topAt(const LinePlace& place, double share) {
    const double step = share * double(place.tops.size() - 1);
    const auto before = std::min(std::size_t(step), place.tops.size() - 2);
    return std::lerp(place.tops[before], place.tops[before + 1], step - double(before));
}

// What a line through the lightness of some pixels, now and as it was, is fitted with.
struct Sums {
    double now = 0;
    double kept = 0;
    double nowNow = 0;
    double nowKept = 0;

    void add(const Sums& other, double sign) {
        now += sign * other.now;
        kept += sign * other.kept;
        nowNow += sign * other.nowNow;
        nowKept += sign * other.nowKept;
    }
};

// How lightness now becomes as it was.
struct Light {
    float gain = 1;
    float offset = 0;
};

Light lightOf(const Sums& sums, int count) {
    const double variance = sums.nowNow / count - sums.now / count * sums.now / count;
    const double covariance = sums.nowKept / count - sums.now / count * sums.kept / count;
    const double gain =
        variance < leastVariance ? 1 : std::clamp(covariance / variance, 1 / strongestLight, strongestLight);
    return {float(gain), float((sums.kept - gain * sums.now) / count)};
}

// For each column the light on what surrounds it.
std::vector<Light> lightAlong(const Plane& kept, const Plane& now) {
    std::vector<Sums> columns(std::size_t(kept.width));
    for (int y = 0; y < kept.height; ++y) {
        for (int x = 0; x < kept.width; ++x) {
            const double a = now.at(x, y);
            const double b = kept.at(x, y);
            columns[std::size_t(x)].add({a, b, a * a, a * b}, 1);
        }
    }
    const int width = std::clamp(int(std::lround(surroundings * kept.height)), 1, kept.width);
    Sums around;
    int first = 0;
    int end = 0; // of the columns in `around`
    std::vector<Light> lights(columns.size());
    for (int x = 0; x < kept.width; ++x) {
        const int wanted = std::clamp(x - width / 2, 0, kept.width - width);
        for (; end < wanted + width; ++end) {
            around.add(columns[std::size_t(end)], 1);
        }
        for (; first < wanted; ++first) {
            around.add(columns[std::size_t(first)], -1);
        }
        lights[std::size_t(x)] = lightOf(around, width * kept.height);
    }
    return lights;
}

} // namespace

Plane sampleOf(const QImage& window, const LinePlace& place) {
    if (!(place.height >= 1)) {
        return {};
    }
    const auto [highest, lowest] = std::ranges::minmax(place.tops);
    const QRect area =
        QRectF(QPointF(place.left, highest), QPointF(place.right, lowest + place.height)).toAlignedRect();
    if (area.isEmpty() || !window.rect().contains(area)) {
        return {};
    }
    const Plane plane = lightness(window, area, Lettering::white);
    const int rows = std::clamp(int(std::lround(place.height)), 1, mostRows);
    const double step = place.height / rows;
    const int columns = std::max(1, int((place.right - place.left) / step));
    // Whole pixels will do: in the next picture they are the same ones.
    Plane sample(columns, rows);
    for (int column = 0; column < columns; ++column) {
        const int top = int(std::lround(topAt(place, (column + 0.5) / columns))) - area.top();
        const int left = int(column * step);
        const int right = std::min(std::max(left + 1, int((column + 1) * step)), plane.width);
        for (int row = 0; row < rows; ++row) {
            const int upper = top + int(row * step);
            const int lower = std::min(std::max(upper + 1, top + int((row + 1) * step)), plane.height);
            int sum = 0;
            for (int y = upper; y < lower; ++y) {
                for (int x = left; x < right; ++x) {
                    sum += plane.at(x, y);
                }
            }
            const int count = (lower - upper) * (right - left);
            sample.row(row)[column] = std::uint8_t(count > 0 ? sum / count : 0);
        }
    }
    return sample;
}

double difference(const Plane& kept, const Plane& now) {
    if (kept.pixels.empty() || kept.width != now.width || kept.height != now.height) {
        return 255;
    }
    const std::vector<Light> lights = lightAlong(kept, now);
    const int side = std::clamp(int(std::lround(squareSide * kept.height)), 1, kept.width);
    std::vector<float> above(std::size_t(kept.height) + 1); // differences in all rows over it, within the columns
    float most = 0;
    for (int left = 0; left + side <= kept.width; ++left) {
        const Light& light = lights[std::size_t(left) + std::size_t(side) / 2];
        for (int y = 0; y < kept.height; ++y) {
            const std::uint8_t* from = now.row(y) + left;
            const std::uint8_t* to = kept.row(y) + left;
            float sum = 0;
            for (int x = 0; x < side; ++x) {
                sum += std::abs(light.gain * float(from[x]) + light.offset - float(to[x]));
            }
            above[std::size_t(y) + 1] = above[std::size_t(y)] + sum;
        }
        for (int top = 0; top + side <= kept.height; ++top) {
            most = std::max(most, above[std::size_t(top) + std::size_t(side)] - above[std::size_t(top)]);
        }
    }
    const double contrast = std::max(leastContrast, percentile(kept, 0.97) - percentile(kept, 0.03));
    return std::min(255.0, most / float(side * side) * 255 / contrast);
}

bool isSteady(const Plane& kept, const Plane& now) {
    return difference(kept, now) <= mostOfTheSame;
}

} // namespace pelloran
