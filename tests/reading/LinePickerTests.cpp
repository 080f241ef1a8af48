#include "reading/LinePicker.h"

#include <gtest/gtest.h>

namespace pelloran {

namespace {

TextBox boxAt(int middleX, int middleY, int width, int height, double darkness = 1) {
    return {QRect(middleX - width / 2, middleY - height / 2, width, height), width * height / 4, darkness};
}

TEST(LinePickerTest, ThreeEvenlyApartComeFirst) {
    const std::vector<TextBox> boxes{
        boxAt(1097, 452, 190, 34),
        boxAt(446, 448, 150, 38),
        boxAt(1150, 640, 240, 36),
        boxAt(767, 455, 200, 30),
    };
    const auto rows = rowsOf(boxes, 1, RowOrder::mostInkFirst);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0], (LineRow{1, 3, 0})) << "left to right";
    EXPECT_EQ(rows[1], (LineRow{2}));
}

TEST(LinePickerTest, RulesTextComesAfterNames) {
    std::vector<TextBox> boxes;
    for (const int x : {446, 767, 1097}) {
        boxes.push_back(boxAt(x, 550, 210, 18, 0.88));
        boxes.push_back(boxAt(x, 450, 120, 32));
    }
    EXPECT_EQ(rowsOf(boxes, 1, RowOrder::mostInkFirst).front(), (LineRow{1, 3, 5}));
}

TEST(LinePickerTest, ClassNamesStandBelowTheHeroesOwn) {
    std::vector<TextBox> boxes;
    for (const int x : {520, 938, 1364}) {
        boxes.push_back(boxAt(x, 497, 250, 30));
        boxes.push_back(boxAt(x, 575, 120, 34));
    }
    EXPECT_EQ(rowsOf(boxes, 1, RowOrder::lowestFirst).front(), (LineRow{1, 3, 5}));
    EXPECT_EQ(rowsOf(boxes, 1, RowOrder::mostInkFirst).front(), (LineRow{0, 2, 4}));
}

TEST(LinePickerTest, NumbersAtTheCornersAreNoThird) {
    const std::vector<TextBox> boxes{
        boxAt(446, 450, 150, 34),
        boxAt(767, 450, 150, 34),
        boxAt(900, 452, 42, 34),
        boxAt(1097, 450, 150, 34),
    };
    EXPECT_EQ(rowsOf(boxes, 1, RowOrder::mostInkFirst).front(), (LineRow{0, 1, 3}));
}

TEST(LinePickerTest, EveryBoxIsInOneRow) {
    std::vector<TextBox> boxes;
    for (int i = 0; i < 12; ++i) {
        boxes.push_back(boxAt(100 + 137 * i % 1200, 300 + 71 * i % 400, 60 + 10 * i, 20 + i));
    }
    for (const RowOrder order : {RowOrder::mostInkFirst, RowOrder::lowestFirst}) {
        std::vector<std::size_t> seen;
        for (const LineRow& row : rowsOf(boxes, 1, order)) {
            seen.insert(seen.end(), row.begin(), row.end());
        }
        std::ranges::sort(seen);
        ASSERT_EQ(seen.size(), boxes.size());
        for (std::size_t i = 0; i < seen.size(); ++i) {
            EXPECT_EQ(seen[i], i);
        }
    }
    EXPECT_TRUE(rowsOf({}, 1, RowOrder::mostInkFirst).empty());
}

TEST(LinePickerTest, DistancesScaleWithTheWindow) {
    std::vector<TextBox> boxes;
    for (const int x : {297, 511, 731}) {
        boxes.push_back(boxAt(x, 300, 100, 22));
    }
    EXPECT_EQ(rowsOf(boxes, 2.0 / 3, RowOrder::mostInkFirst).size(), 1U);
}

} // namespace

} // namespace pelloran
