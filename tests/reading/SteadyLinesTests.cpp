#include "reading/SteadyLines.h"

#include <gtest/gtest.h>

#include <limits>

namespace pelloran {

namespace {

LinePlace straight(double left, double right, double top, double height) {
    return LinePlace::along(left, right, height, [top](double) { return top; });
}

TEST(SteadyLines, AreSampledWhereTheyLieWithinTheWindow) {
    QImage window(200, 60, QImage::Format_RGB32);
    window.fill(Qt::darkGray);
    const double nan = std::numeric_limits<double>::quiet_NaN();

    struct Case {
        const char* why;
        LinePlace place;
        int width;
        int height;
    };

    const Case cases[] = {
        {"a row of the sample for each of the window", straight(10, 110, 20, 20), 100, 20},
        {"no more than are needed to tell letters apart", straight(10, 110, 5, 48), 50, 24},
        {"a single row", straight(10, 110, 20, 1), 100, 1},
        {"up to the edges", straight(0, 200, 0, 60), 80, 24},
        {"beyond the right edge", straight(150, 201, 20, 20), 0, 0},
        {"beyond the lower one at its end alone",
         LinePlace::along(0, 100, 20, [](double x) { return x < 100 ? 20 : 41; }), 0, 0},
        {"of no width", straight(10, 10, 20, 20), 0, 0},
        {"backwards", straight(110, 10, 20, 20), 0, 0},
        {"of no height, on a slope", LinePlace::along(10, 110, 0, [](double x) { return x / 4; }), 0, 0},
        {"less than a pixel high, which would have columns without number",
         LinePlace::along(10, 110, 1e-9, [](double x) { return x / 4; }), 0, 0},
        {"nowhere", straight(nan, nan, nan, nan), 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const Plane sample = sampleOf(window, c.place);
        EXPECT_EQ(sample.width, c.width);
        EXPECT_EQ(sample.height, c.height);
        EXPECT_EQ(isSteady(sample, sample), c.width > 0);
    }
}

} // namespace

} // namespace pelloran
