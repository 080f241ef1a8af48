#include "reading/chinese/CharacterCells.h"

#include "tests/reading/PaintedCharacters.h"

#include <gtest/gtest.h>

#include <random>

namespace pelloran {

namespace {

// In order, without gaps, from the first column to the last.
void expectCover(const std::vector<CharacterCell>& cells, std::size_t count, int width) {
    ASSERT_EQ(cells.size(), count);
    if (cells.empty()) {
        return;
    }
    EXPECT_EQ(cells.front().left, 0);
    EXPECT_EQ(cells.back().right, width);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        EXPECT_LE(cells[i].left, cells[i].right);
        if (i > 0) {
            EXPECT_EQ(cells[i].left, cells[i - 1].right);
        }
    }
}

TEST(CharacterCutterTest, CutsBetweenCharacters) {
    struct Row {
        QString text;
        testing::CharacterStyle style;
        const char* why;
    };

    const auto text = [](const char* each) { return QString::fromUtf8(each); };
    const Row table[] = {
        {text("石田木火"), {}, "four as wide as each other"},
        {text("石田木火"), {.pitch = 1.6}, "set wide"},
        {text("田田田田"), {.pitch = 1.02}, "set tight"},
        {text("口口"), {.pitch = 1.2}, "two"},
        {text("口"), {}, "one"},
        {text("日川目月"), {}, "narrow ones beside wide ones"},
        {text("一十一十一"), {.pitch = 1.2}, "strokes on their own"},
        {text("川川川"), {.pitch = 1.3}, "gaps within characters, narrower than those between them"},
        {text("石·木火"), {}, "a wide mark"},
        {text("石·木火"), {.mark = 0.5}, "a narrow mark"},
        {text("石H4木"), {}, "letters, narrower too"},
        {text("石田木火山川人入大天中口"), {}, "twelve"},
    };
    for (const Row& row : table) {
        for (const double size : {14.0, 30.0}) {
            SCOPED_TRACE(row.why);
            SCOPED_TRACE(size);
            const std::u32string characters = row.text.toStdU32String();
            const Plane line = testing::inkOfLine(row.text, size, row.style);
            std::vector<float> widths;
            for (const char32_t character : characters) {
                widths.push_back(float(row.style.advanceOf(character) / row.style.pitch));
            }
            const auto cells = CharacterCutter(line).cells(widths);
            expectCover(cells, characters.size(), line.width);
            // The middle of a character lies in its cell, and the cut is at no stroke.
            const int shift = testing::inkBox(testing::inkWithMargin(row.text, size, row.style), 1).left();
            constexpr double margin = 0.5; // of the ink that the line was cut from
            double left = 0;
            for (std::size_t i = 0; i < cells.size(); ++i) {
                const double advance = row.style.advanceOf(characters[i]);
                const double middle = (left + row.style.shiftOf(characters[i]) + 0.5 + margin) * size - shift;
                left += advance;
                EXPECT_GT(middle, cells[i].left) << i;
                EXPECT_LT(middle, cells[i].right) << i;
                if (i + 1 < cells.size()) {
                    int strong = 0;
                    for (int y = 0; y < line.height; ++y) {
                        strong += line.at(cells[i].right, y) > 200;
                    }
                    EXPECT_LT(strong, line.height / 4) << "cut after " << i;
                }
            }
        }
    }
}

TEST(CharacterCutterTest, OddQuestionsAreNoHarm) {
    struct Row {
        QSize size;
        std::vector<float> widths;
        const char* why;
    };

    const Row table[] = {
        {{40, 20}, {}, "no widths"},
        {{40, 20}, {1}, "one"},
        {{40, 20}, {1e-6F, 1}, "one next to nothing"},
        {{40, 20}, {1000, 1, 1000}, "one lost between others"},
        {{3, 20}, std::vector<float>(12, 1), "more cells than columns"},
        {{1, 20}, std::vector<float>(5, 1), "one column for five"},
        {{1, 1}, {1, 1}, "one pixel for two"},
        {{2, 1}, {0.5F, 1, 0.5F, 1}, "two for four"},
        {{2000, 3}, std::vector<float>(40, 0.6F), "long and low"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        for (const int ink : {0, 255}) {
            const Plane line(row.size.width(), row.size.height(), std::uint8_t(ink));
            expectCover(CharacterCutter(line).cells(row.widths), row.widths.size(), line.width);
        }
    }
}

TEST(CharacterCutterTest, CellsCoverWhateverLine) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Plane line(1 + int(random() % 200), 1 + int(random() % 40));
        for (std::uint8_t& pixel : line.pixels) {
            pixel = random() % 3 ? 0 : std::uint8_t(random());
        }
        std::vector<float> widths;
        for (unsigned i = random() % 15; i > 0; --i) {
            widths.push_back(std::array{0.5F, 0.6F, 1.0F}[random() % 3]);
        }
        expectCover(CharacterCutter(line).cells(widths), widths.size(), line.width);
    }
}

} // namespace

} // namespace pelloran
