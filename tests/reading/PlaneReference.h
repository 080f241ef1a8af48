#pragma once

#include "reading/Components.h"
#include "reading/Plane.h"

#include <QColor>
#include <QPoint>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

// The plainest way to say what operations on planes give.
namespace pelloran::testing {

inline int plainLightness(QRgb pixel, Lettering lettering) {
    const int darkest = std::min({qRed(pixel), qGreen(pixel), qBlue(pixel)});
    const int lightest = std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)});
    switch (lettering) {
    case Lettering::white:
        return darkest;
    case Lettering::whiteOrGolden:
        return (darkest + (77 * qRed(pixel) + 150 * qGreen(pixel) + 29 * qBlue(pixel)) / 256) / 2;
    case Lettering::grey:
        return std::max(0, darkest - 3 * (lightest - darkest) / 2);
    }
    Q_UNREACHABLE();
}

// Each pixel again and again, until nothing rises.
inline Plane plainFlood(Plane level, const Plane& plane) {
    for (bool rises = true; rises;) {
        rises = false;
        for (int y = 0; y < plane.height; ++y) {
            for (int x = 0; x < plane.width; ++x) {
                std::uint8_t most = level.at(x, y);
                most = std::max(most, x > 0 ? level.at(x - 1, y) : most);
                most = std::max(most, y > 0 ? level.at(x, y - 1) : most);
                most = std::max(most, x + 1 < plane.width ? level.at(x + 1, y) : most);
                most = std::max(most, y + 1 < plane.height ? level.at(x, y + 1) : most);
                most = std::min(most, plane.at(x, y));
                rises |= most > level.at(x, y);
                level.row(y)[x] = std::max(level.at(x, y), most);
            }
        }
    }
    return level;
}

// From each pixel that has no number yet, row by row, on to all eight around it.
inline Components plainComponents(const Plane& mask) {
    Components result;
    result.numbers.assign(mask.pixels.size(), 0);
    const QRect whole(0, 0, mask.width, mask.height);
    std::vector<QPoint> pending;
    const auto visit = [&](QPoint at) {
        if (whole.contains(at) && mask.at(at.x(), at.y()) != 0) {
            int& number = result.numbers[std::size_t(at.y()) * std::size_t(mask.width) + std::size_t(at.x())];
            if (number == 0) {
                number = int(result.groups.size());
                pending.push_back(at);
                return true;
            }
        }
        return false;
    };
    for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < mask.width; ++x) {
            result.groups.emplace_back();
            if (!visit({x, y})) {
                result.groups.pop_back();
            }
            while (!pending.empty()) {
                const QPoint at = pending.back();
                pending.pop_back();
                result.groups.back().box |= QRect(at, QSize(1, 1));
                ++result.groups.back().area;
                for (int i = 0; i < 9; ++i) {
                    visit(at + QPoint(i % 3 - 1, i / 3 - 1));
                }
            }
        }
    }
    return result;
}

inline int plainPercentile(Plane plane, double share) {
    std::ranges::sort(plane.pixels);
    const auto below = std::size_t(share * double(plane.pixels.size()));
    return below < plane.pixels.size() ? plane.pixels[below] : 255;
}

// Of each pixel as much as the place is near to it.
inline double plainSample(const Plane& plane, double x, double y) {
    double sum = 0;
    for (int row = 0; row < plane.height; ++row) {
        for (int column = 0; column < plane.width; ++column) {
            sum +=
                plane.at(column, row) * std::max(0.0, 1 - std::abs(x - column)) * std::max(0.0, 1 - std::abs(y - row));
        }
    }
    return sum;
}

inline Plane plainShrunk(Plane plane, int times) {
    for (; times > 0; --times) {
        Plane half(plane.width / 2, plane.height / 2);
        for (int y = 0; y < half.height; ++y) {
            for (int x = 0; x < half.width; ++x) {
                const int sum = plane.at(2 * x, 2 * y) + plane.at(2 * x + 1, 2 * y) + plane.at(2 * x, 2 * y + 1) +
                                plane.at(2 * x + 1, 2 * y + 1);
                half.row(y)[x] = std::uint8_t(std::lround(sum / 4.0));
            }
        }
        plane = half;
    }
    return plane;
}

} // namespace pelloran::testing
