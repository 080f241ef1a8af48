#include "platform/x11/RoundedRegion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace pelloran::x11 {

namespace {

bool hasPixel(const std::vector<QRect>& region, QPoint pixel) {
    int parts = 0;
    for (const QRect& part : region) {
        parts += part.contains(pixel) ? 1 : 0;
    }
    EXPECT_LE(parts, 1) << "they overlap";
    return parts > 0;
}

TEST(RoundedRegion, HasThePixelsWhoseCentresAreInside) {
    struct Case {
        const char* why;
        QSize size;
        double radius;
    };

    const Case cases[] = {
        {"the panel", {360, 420}, 14},         {"a fraction, on a scaled desktop", {450, 525}, 17.5},
        {"small corners", {20, 30}, 1},        {"half a pixel", {10, 10}, 0.5},
        {"a circle", {31, 31}, 15.5},          {"an even circle", {32, 32}, 16},
        {"ends that are round", {60, 20}, 10}, {"too large a radius", {60, 20}, 100},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto region = roundedRegion(c.size, c.radius);
        const double radius = std::min(c.radius, std::min(c.size.width(), c.size.height()) / 2.0);
        for (int y = 0; y < c.size.height(); ++y) {
            for (int x = 0; x < c.size.width(); ++x) {
                const double across = radius - std::min(x + 0.5, c.size.width() - x - 0.5);
                const double up = radius - std::min(y + 0.5, c.size.height() - y - 0.5);
                const double distance = std::hypot(std::max(across, 0.0), std::max(up, 0.0));
                if (std::abs(distance - radius) > 1e-9) { // either is right on the line
                    ASSERT_EQ(hasPixel(region, {x, y}), distance < radius) << x << ", " << y;
                }
            }
        }
    }
}

TEST(RoundedRegion, WithoutCornersIsOneRectangle) {
    for (const double radius : {0.0, -3.0, std::numeric_limits<double>::quiet_NaN()}) {
        SCOPED_TRACE(radius);
        EXPECT_EQ(roundedRegion({360, 420}, radius), std::vector{QRect(0, 0, 360, 420)});
    }
}

TEST(RoundedRegion, OfNothingIsEmpty) {
    for (const QSize size : {QSize(), QSize(0, 0), QSize(360, 0), QSize(-1, 5)}) {
        EXPECT_TRUE(roundedRegion(size, 14).empty());
    }
}

TEST(RoundedRegion, HasFewRectangles) {
    EXPECT_LE(roundedRegion({360, 420}, 14).size(), 2 * 14 + 1U);
}

} // namespace

} // namespace pelloran::x11
