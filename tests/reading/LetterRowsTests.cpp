#include "reading/LetterRows.h"

#include "tests/reading/PaintedScreen.h"

#include <gtest/gtest.h>

namespace pelloran {

namespace {

// Letters at the ends are open ones: an e this small is a block, which is taken for a light.
const std::array<QString, 3> words{QStringLiteral("Hounecoun"), QStringLiteral("Loecoun"),
                                   QStringLiteral("Hoenouceuo")};
constexpr QSize window(1920, 1080);

Plane planeOf(const QImage& image) {
    return lightness(image, image.rect(), Lettering::white);
}

QImage wordsAt(const GameFrame& frame, double base, std::size_t count = 3) {
    QImage image = testing::emptyScreen(window);
    QPainter painter(&image);
    for (std::size_t i = 0; i < count; ++i) {
        testing::paintAlong(painter, frame, testing::straight(), cardCentres[i], base, words[i]);
    }
    return image;
}

TEST(LetterRowsTest, FindsThePictureByItsNames) {
    struct Row {
        GameFrame frame;
        double base; // in heights of that frame
        const char* why;
    };

    const Row table[] = {
        {frameOf(window), 0.378, "where it should be"},
        {{1080, 990, 0}, 0.378, "moved to the right"},
        {{1080, 930, 0}, 0.378, "moved to the left"},
        {{1010, 960, 0}, 0.378, "smaller, as under a title bar within the picture"},
        {{1150, 960, 0}, 0.370, "larger"},
        {{1040, 975, 0}, 0.392, "smaller, moved, and lower"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const auto rows = findLetterRows(planeOf(wordsAt(row.frame, row.base)), frameOf(window));
        ASSERT_FALSE(rows.empty());
        EXPECT_NEAR(rows[0].frame.height, row.frame.height, 0.01 * row.frame.height);
        EXPECT_NEAR(rows[0].frame.centreX, row.frame.centreX, 0.01 * row.frame.height);
        // The middle of the letters stands above their baseline.
        EXPECT_NEAR(rows[0].level, row.base - 0.006, 0.003);
        EXPECT_LE(rows.size(), 3U);
    }
}

// More of them than are looked at, and left of some names.
TEST(LetterRowsTest, TheSmallerLettersOfRulesDoNotCrowdOutNames) {
    const GameFrame frame = frameOf(window);
    QImage image = wordsAt(frame, 0.378);
    QPainter painter(&image);
    const testing::BarLetters small{
        .capital = 0.008, .small = 0.008, .stroke = 0.0018, .width = 0.0055, .advance = 0.0076};
    for (int line = 0; line < 14; ++line) {
        for (const double centre : {cardCentres[0], cardCentres[1]}) {
            testing::paintAlong(painter, frame, testing::straight(), centre, 0.46 + 0.02 * line,
                                QStringLiteral("HELTHFLTEHLFTHELTFHLETHFLE"), {}, small);
        }
    }
    painter.end();
    const auto rows = findLetterRows(planeOf(image), frame);
    ASSERT_FALSE(rows.empty());
    EXPECT_NEAR(rows[0].level, 0.372, 0.003);
    EXPECT_NEAR(rows[0].frame.height, frame.height, 0.01 * frame.height);
}

TEST(LetterRowsTest, ScalesWithTheWindow) {
    for (const QSize size : {QSize(1024, 768), QSize(1366, 768), QSize(2560, 1440), QSize(3840, 2160)}) {
        SCOPED_TRACE(size.width());
        QImage image = testing::emptyScreen(size);
        GameFrame frame = frameOf(size);
        frame.centreX += 0.02 * frame.height;
        frame.height *= 0.97;
        {
            QPainter painter(&image);
            for (std::size_t i = 0; i < 3; ++i) {
                testing::paintAlong(painter, frame, testing::straight(), cardCentres[i], 0.38, words[i]);
            }
        }
        const auto rows = findLetterRows(planeOf(image), frameOf(size));
        ASSERT_FALSE(rows.empty());
        EXPECT_NEAR(rows[0].frame.height, frame.height, 0.01 * frame.height);
    }
}

TEST(LetterRowsTest, WhatIsNoRowOfNames) {
    struct Row {
        QImage image;
        const char* why;
    };

    const GameFrame usual = frameOf(window);
    QImage uneven = wordsAt(usual, 0.378, 2);
    {
        QPainter painter(&uneven);
        testing::paintAlong(painter, usual, testing::straight(), cardCentres[2] + 0.04, 0.378, words[2]);
    }
    QImage stepped = wordsAt(usual, 0.378, 2);
    {
        QPainter painter(&stepped);
        testing::paintAlong(painter, usual, testing::straight(), cardCentres[2], 0.42, words[2]);
    }
    const Row table[] = {
        {testing::emptyScreen(window), "an empty table"},
        {wordsAt(usual, 0.50), "names of a mulligan or of choices in battle stand lower"},
        {wordsAt(usual, 0.30), "too high"},
        {wordsAt(usual, 0.378, 2), "two lines imply no size"},
        {wordsAt(usual, 0.378, 1), "a single line"},
        {wordsAt({800, 960, 0}, 0.50), "a picture much smaller than its window is another program's"},
        {wordsAt({1080, 1100, 0}, 0.378), "too far to the side"},
        {uneven, "the third stands elsewhere"},
        {stepped, "the third stands lower"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        EXPECT_TRUE(findLetterRows(planeOf(row.image), usual).empty());
    }
    EXPECT_TRUE(findLetterRows(Plane(), usual).empty()) << "no plane at all";
}

} // namespace

} // namespace pelloran
