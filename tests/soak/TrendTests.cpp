#include "tests/soak/Trend.h"

#include <gtest/gtest.h>

namespace pelloran::soak {
namespace {

TEST(Trend, FindsTheMiddleValue) {
    struct Case {
        const char* why;
        std::vector<double> values;
        double expected;
    };

    const Case cases[] = {
        {"nothing", {}, 0},
        {"one", {4}, 4},
        {"an odd number, in any order", {9, 1, 5}, 5},
        {"between the two in the middle", {8, 1, 2, 4}, 3},
        {"an outlier moves nothing", {1, 2, 1'000'000}, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_DOUBLE_EQ(median(c.values), c.expected);
    }
}

TEST(Trend, FindsTheSlope) {
    struct Case {
        const char* why;
        std::vector<Point> points;
        std::optional<double> period;
        std::optional<double> expected;
    };

    const Case cases[] = {
        {"nothing", {}, {}, {}},
        {"one point has none", {{1, 5}}, {}, {}},
        {"two at the same place have none", {{1, 5}, {1, 6}}, {}, {}},
        {"level", {{0, 3}, {1, 3}, {2, 3}}, {}, 0},
        {"growing", {{0, 3}, {1, 5}, {2, 7}}, {}, 2},
        {"falling, unevenly spaced", {{0, 9}, {2, 7}, {10, -1}}, {}, -1},
        {"one outlier among growing ones", {{0, 0}, {1, 1}, {2, 900}, {3, 3}, {4, 4}}, {}, 1},
        {"up and down within the period, level over it", {{0, 1}, {1, 50}, {2, 1}, {3, 50}, {4, 1}}, 2, 0},
        {"growing over the period, whatever happens within", {{0, 1}, {1, 50}, {2, 3}, {3, 52}, {4, 5}}, 2, 1},
        {"no two lie a period apart", {{0, 1}, {1, 2}}, 2, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto found = slope(c.points, c.period);
        ASSERT_EQ(found.has_value(), c.expected.has_value());
        if (found) {
            EXPECT_DOUBLE_EQ(*found, *c.expected);
        }
    }
}

TEST(Trend, TakesOneStepForNoGrowth) {
    struct Case {
        const char* why;
        std::vector<Point> points;
        std::optional<double> expected;
    };

    const Case cases[] = {
        {"nothing", {}, {}},
        {"one step", {{0, 3}, {1, 3}, {2, 9}, {3, 9}}, 0},
        {"growing", {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5}}, 1},
        {"growing, and a step", {{0, 1}, {1, 2}, {2, 3}, {3, 54}, {4, 55}, {5, 56}}, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto found = slopeApartFromAStep(c.points);
        ASSERT_EQ(found.has_value(), c.expected.has_value());
        if (found) {
            EXPECT_DOUBLE_EQ(*found, *c.expected);
        }
    }
}

} // namespace
} // namespace pelloran::soak
