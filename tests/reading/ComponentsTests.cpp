#include "reading/Components.h"

#include "tests/reading/PlaneReference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace pelloran {

namespace {

TEST(ComponentsTest, PixelsThatTouchAreOneGroup) {
    struct Row {
        const char* why;
        std::vector<std::string> drawn; // numbers of the groups, "." where the mask is 0
        std::vector<Components::Group> groups;
    };

    const Row table[] = {
        {"nothing at all", {}, {}},
        {"an empty mask", {"...", "..."}, {}},
        {"corners touch", {"1.", ".1"}, {{QRect(0, 0, 2, 2), 2}}},
        {"on the other diagonal too", {".1", "1."}, {{QRect(0, 0, 2, 2), 2}}},
        {"a gap of one pixel", {"1.2"}, {{QRect(0, 0, 1, 1), 1}, {QRect(2, 0, 1, 1), 1}}},
        {"one above the other", {"1", ".", "2"}, {{QRect(0, 0, 1, 1), 1}, {QRect(0, 2, 1, 1), 1}}},
        {"the end of a row and the beginning of the next",
         {"..1", "2.."},
         {{QRect(2, 0, 1, 1), 1}, {QRect(0, 1, 1, 1), 1}}},
        {"a dot within a ring",
         {"11111", "1...1", "1.2.1", "1...1", "11111"},
         {{QRect(0, 0, 5, 5), 16}, {QRect(2, 2, 1, 1), 1}}},
        {"arms that meet last", {"1.1", "1.1", "111"}, {{QRect(0, 0, 3, 3), 7}}},
        {"arms that meet at a corner", {"1.1", "1.1", ".1."}, {{QRect(0, 0, 3, 3), 5}}},
        {"the highest goes first, wherever the others begin",
         {"...1", "2..1", "2..1"},
         {{QRect(3, 0, 1, 3), 3}, {QRect(0, 1, 1, 2), 2}}},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        Plane mask(row.drawn.empty() ? 0 : int(row.drawn[0].size()), int(row.drawn.size()));
        std::vector<int> numbers;
        for (const std::string& line : row.drawn) {
            for (const char each : line) {
                numbers.push_back(each == '.' ? 0 : each - '0');
            }
        }
        // Any value but 0 counts.
        std::ranges::transform(numbers, mask.pixels.begin(), [](int number) { return std::uint8_t(number * 85); });
        const Components found = componentsOf(mask);
        EXPECT_EQ(found.numbers, numbers);
        EXPECT_TRUE(found.groups == row.groups);
        EXPECT_TRUE(found == testing::plainComponents(mask));
    }
}

TEST(ComponentsTest, EqualsThePlainestWayOnAnyMask) {
    std::mt19937 random(5);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        Plane mask(1 + int(random() % 40), 1 + int(random() % 30));
        const unsigned share = 2 + random() % 4; // from as good as one group to single pixels
        std::ranges::generate(mask.pixels, [&] { return std::uint8_t(random() % share == 0); });
        EXPECT_TRUE(componentsOf(mask) == testing::plainComponents(mask));
    }
}

} // namespace

} // namespace pelloran
