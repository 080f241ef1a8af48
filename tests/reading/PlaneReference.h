#pragma once

#include "reading/Plane.h"

#include <QColor>

#include <algorithm>
#include <cstdint>

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

} // namespace pelloran::testing
