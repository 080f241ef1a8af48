#include "app/evaluation/Tally.h"

#include "tests/app/evaluation/EvaluationSamples.h"

namespace pelloran::evaluation {
namespace {

TEST(Quantile, LiesBetweenTheValuesNextToIt) {
    struct Case {
        const char* why;
        std::vector<double> values;
        double quantile;
        std::optional<double> expected;
    };

    const Case cases[] = {
        {"no values", {}, 0.5, std::nullopt},
        {"one value is all of them", {7}, 0.9, 7},
        {"the middle one, in any order", {9, 1, 5}, 0.5, 5},
        {"halfway between the middle two", {1, 2, 4, 9}, 0.5, 3},
        {"the tenth step of ten", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 0.9, 9},
        {"between the last two", {0, 10}, 0.9, 9},
        {"the last", {1, 2, 3}, 1, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto found = quantile(c.values, c.quantile);
        ASSERT_EQ(found.has_value(), c.expected.has_value());
        EXPECT_DOUBLE_EQ(found.value_or(0), c.expected.value_or(0));
    }
}

} // namespace
} // namespace pelloran::evaluation
