#include "reading/LineCropper.h"

#include "tests/reading/PaintedText.h"

#include <gtest/gtest.h>

#include <cmath>

namespace pelloran {

namespace {

using testing::paintLetters;
using testing::planeOf;
using testing::wood;

const QRect lettersBox(40, 30, 200, 30);

TEST(LineCropperTest, KeepsLettersAndDropsTheRest) {
    struct Row {
        void (*disturb)(QImage& image);
        const char* why;
    };

    const Row table[] = {
        {[](QImage&) {}, "letters alone"},
        {[](QImage& image) { image.setPixelColor(38, 45, Qt::white); }, "a spark beside them"},
        {[](QImage& image) {
             for (int x = 0; x < image.width(); ++x) {
                 for (int y = 0; y < 12; ++y) {
                     image.setPixelColor(x, y, Qt::white);
                 }
             }
         },
         "bright art above, running out of the crop"},
        {[](QImage& image) {
             for (int x = 0; x < image.width(); ++x) {
                 for (int y = 70; y < 90; ++y) {
                     image.setPixelColor(x, y, QColor(240, 235, 220));
                 }
             }
         },
         "paper below"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        QImage image = wood(280, 90);
        paintLetters(image, lettersBox);
        row.disturb(image);
        const auto line = cleanLine(planeOf(image), lettersBox, 1, {});
        ASSERT_TRUE(line);
        EXPECT_EQ(line->rows, 1);
        EXPECT_NEAR(line->area.left(), lettersBox.left(), 2);
        EXPECT_NEAR(line->area.top(), lettersBox.top(), 2);
        EXPECT_NEAR(line->area.height(), lettersBox.height(), 4);
    }
}

TEST(LineCropperTest, LettersOnALightRibbonStayApartFromIt) {
    QImage image(280, 90, QImage::Format_RGB32);
    image.fill(QColor(225, 220, 215));
    paintLetters(image, lettersBox);
    const auto line = cleanLine(planeOf(image), lettersBox, 1, {});
    ASSERT_TRUE(line);
    EXPECT_NEAR(line->area.height(), lettersBox.height(), 2);
    EXPECT_LT(line->fill, 0.5);
}

TEST(LineCropperTest, StraightensWhatTheRibbonBent) {
    struct Row {
        double (*shift)(double x);
        const char* why;
    };

    const Row table[] = {
        {[](double) { return 0.0; }, "straight"},
        {[](double x) { return 9 * (x / 100) * (x / 100); }, "an arch"},
        {[](double x) { return 0.12 * x; }, "a slope"},
        {[](double x) { return 7 * std::sin(x / 45); }, "a wave"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        QImage image = wood(280, 110);
        const QRect letters(40, 40, 200, 30);
        paintLetters(image, letters, Qt::white, row.shift);
        const auto line = cleanLine(planeOf(image), letters.adjusted(0, -16, 0, 16), 1, {});
        ASSERT_TRUE(line);
        EXPECT_NEAR(line->letters.height(), letters.height(), 3.5) << "as tall as one letter";
    }
}

TEST(LineCropperTest, CountsRowsOfText) {
    QImage image = wood(280, 120);
    paintLetters(image, QRect(40, 30, 200, 18));
    paintLetters(image, QRect(40, 62, 200, 18));
    const auto line = cleanLine(planeOf(image), QRect(40, 30, 200, 50), 1, {});
    ASSERT_TRUE(line);
    EXPECT_EQ(line->rows, 2);
}

TEST(LineCropperTest, NothingLeftIsNoLine) {
    EXPECT_FALSE(cleanLine(Plane(), lettersBox, 1, {}));
    EXPECT_FALSE(cleanLine(Plane(1, 1, 255), QRect(0, 0, 1, 1), 1, {}));
    EXPECT_FALSE(cleanLine(planeOf(wood(280, 90)), lettersBox, 1, {}));
}

TEST(LineCropperTest, PictureHasTheNetworksShapeInBlackOnWhite) {
    QImage image = wood(280, 90);
    paintLetters(image, lettersBox);
    const auto line = cleanLine(planeOf(image), lettersBox, 1, {});
    ASSERT_TRUE(line);
    for (const PictureShape shape : {PictureShape{36, 0.16}, PictureShape{48, 0.22}, PictureShape{48, 0}}) {
        const Plane result = pictureOf(*line, shape);
        EXPECT_EQ(result.height, shape.height);
        EXPECT_NEAR(result.width,
                    (line->letters.width() / line->letters.height() + 2 * shape.margin) * shape.height /
                        (1 + 2 * shape.margin),
                    2);
        EXPECT_LT(*std::ranges::min_element(result.pixels), 20) << "ink";
        EXPECT_EQ(*std::ranges::max_element(result.pixels), 255) << "paper";
    }
    const Plane wide = pictureOf(*line, {48, 0.5});
    for (int x = 0; x < wide.width; ++x) {
        ASSERT_EQ(wide.at(x, 0), 255) << "the margin is empty";
        ASSERT_EQ(wide.at(x, 47), 255);
    }
}

} // namespace

} // namespace pelloran
