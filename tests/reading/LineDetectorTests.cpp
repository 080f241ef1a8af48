#include "reading/LineDetector.h"

#include "tests/reading/PaintedText.h"

#include <gtest/gtest.h>

namespace pelloran {

namespace {

using testing::paintLetters;
using testing::planeOf;
using testing::wood;

TEST(LineDetectorTest, FindsALineWhereItStands) {
    QImage image = wood(600, 300);
    const QRect line(150, 120, 200, 30);
    paintLetters(image, line);
    const auto boxes = detectLines(planeOf(image), 1);
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(line.adjusted(-4, -4, 4, 4).contains(boxes[0].area));
    EXPECT_GT(boxes[0].area.width(), 185);
    EXPECT_GT(boxes[0].darkness, 0.95) << "outlines are black";
}

TEST(LineDetectorTest, WhatIsNoLine) {
    struct Row {
        void (*paint)(QImage& image);
        const char* why;
    };

    const Row table[] = {
        {[](QImage&) {}, "nothing there"},
        {[](QImage& image) { image.fill(Qt::white); }, "all light"},
        {[](QImage& image) {
             for (int x = 50; x < 450; ++x) {
                 for (int y = 100; y < 103; ++y) {
                     image.setPixelColor(x, y, Qt::white);
                     image.setPixelColor(x, y + 4, Qt::black);
                 }
             }
         },
         "the light edge of a ribbon"},
        {[](QImage& image) {
             for (int i = 0; i < 40; ++i) {
                 image.setPixelColor(37 * i % 600, 53 * i % 300, Qt::white);
             }
         },
         "sparks"},
        {[](QImage& image) { paintLetters(image, QRect(100, 100, 14, 30)); }, "a single upright"},
        {[](QImage& image) { paintLetters(image, QRect(60, 80, 200, 30), QColor(255, 90, 80)); }, "red letters"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        QImage image = wood(600, 300);
        row.paint(image);
        EXPECT_TRUE(detectLines(planeOf(image), 1).empty());
    }
}

TEST(LineDetectorTest, ScalesWithTheWindow) {
    QImage image = wood(600, 300);
    paintLetters(image, QRect(150, 120, 200, 30));
    for (const double unit : {0.444, 0.667, 0.8, 1.0, 1.333, 1.5}) {
        SCOPED_TRACE(unit);
        const QImage scaled =
            image.scaled(int(600 * unit), int(300 * unit), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        const auto boxes = detectLines(planeOf(scaled), unit);
        ASSERT_EQ(boxes.size(), 1U);
        EXPECT_NEAR(boxes[0].area.width() / unit, 192, 12);
    }
}

TEST(LineDetectorTest, JoinsPiecesOfAName) {
    QImage image = wood(600, 300);
    paintLetters(image, QRect(150, 120, 60, 30));
    paintLetters(image, QRect(221, 120, 60, 30));
    EXPECT_EQ(detectLines(planeOf(image), 1).size(), 1U);
}

TEST(LineDetectorTest, KeepsNamesOfNeighboursApart) {
    QImage image = wood(800, 300);
    paintLetters(image, QRect(50, 120, 250, 30));
    paintLetters(image, QRect(370, 120, 250, 30));
    EXPECT_EQ(detectLines(planeOf(image), 1).size(), 2U);
}

TEST(LineDetectorTest, KeepsTheTwelveMostPromising) {
    QImage image = wood(1200, 900);
    for (int row = 0; row < 7; ++row) {
        for (int column = 0; column < 3; ++column) {
            paintLetters(image, QRect(50 + 400 * column, 20 + 120 * row, 180, row == 3 ? 34 : 18));
        }
    }
    const auto boxes = detectLines(planeOf(image), 1);
    ASSERT_EQ(boxes.size(), 12U);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(boxes[std::size_t(i)].area.center().y(), 20 + 120 * 3 + 17, 3) << "large letters first";
    }
}

TEST(LineDetectorTest, TinyAndEmptyPlanesHaveNoLines) {
    EXPECT_TRUE(detectLines(Plane(), 1).empty());
    EXPECT_TRUE(detectLines(Plane(1, 1, 255), 1).empty());
    EXPECT_TRUE(detectLines(Plane(3, 2000, 255), 1).empty());
    EXPECT_TRUE(detectLines(Plane(50, 50, 255), 0.01).empty());
}

} // namespace

} // namespace pelloran
