#include "reading/HeroLines.h"

#include "tests/reading/PaintedScreen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace pelloran {

namespace {

using testing::HeroGround;

const std::array<QString, 3> classes{QStringLiteral("Hounce"), QStringLiteral("Eoluceno"), QStringLiteral("Toulle")};
const QString heroName = QStringLiteral("Foucen Huoe");

TEST(HeroLinesTest, FindsBothLinesTheLowestFirst) {
    for (const QSize size : {QSize(640, 480), QSize(800, 600), QSize(1280, 720), QSize(1920, 1080), QSize(2560, 1440),
                             QSize(3840, 2160)}) {
        for (const HeroGround ground : {HeroGround::parchment, HeroGround::felt}) {
            for (const auto& centres : heroCentres) {
                SCOPED_TRACE(::testing::Message()
                             << size.height() << (ground == HeroGround::felt ? ", felt" : ", parchment"));
                const GameFrame frame = frameOf(size);
                const QImage image = testing::paintedHeroes(size, ground, centres, classes, heroName);
                for (std::size_t i = 0; i < centres.size(); ++i) {
                    const auto lines = findHeroLines(image, frame, centres[i]);
                    ASSERT_EQ(lines.size(), 2U);
                    const double height = frame.height;
                    const double bases[] = {testing::HeroText::classBase, testing::HeroText::nameBase};
                    const double widths[] = {testing::BarLetters().widthOf(classes[i]),
                                             testing::BarLetters().widthOf(heroName)};
                    for (std::size_t line = 0; line < 2; ++line) {
                        EXPECT_NEAR(lines[line].area.center().x() / height, frame.centreX / height + centres[i], 0.003);
                        EXPECT_NEAR(lines[line].area.bottom() / height, bases[line], 0.004);
                        EXPECT_NEAR(lines[line].area.width() / height, widths[line], 0.005);
                    }
                }
            }
        }
    }
}

TEST(HeroLinesTest, WhatIsNeitherParchmentNorFelt) {
    const QSize size(1920, 1080);
    QImage black(size, QImage::Format_RGB32);
    black.fill(Qt::black);
    QImage white(size, QImage::Format_RGB32);
    white.fill(Qt::white);
    QImage parchment(size, QImage::Format_RGB32);
    parchment.fill(QColor(200, 175, 135));

    struct Row {
        QImage image;
        const char* why;
    };

    const Row table[] = {
        {testing::paintedHeroes(size, HeroGround::wood, heroCentres[0], classes, heroName), "light on brown wood"},
        {black, "black"},
        {white, "white"},
        {parchment, "parchment without a line"},
        {testing::noise(size, 5), "noise"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        for (const double centre : heroCentres[0]) {
            EXPECT_TRUE(findHeroLines(row.image, frameOf(size), centre).empty());
        }
    }
    for (const QSize tiny : {QSize(1, 1), QSize(1, 2000), QSize(5000, 2)}) {
        QImage image(tiny, QImage::Format_RGB32);
        image.fill(QColor(200, 175, 135));
        EXPECT_TRUE(findHeroLines(image, frameOf(tiny), heroCentres[0][1]).empty()) << tiny.width();
    }
}

struct Ground {
    QColor colour;
    QColor ink;
};

const Ground parchmentGround{QColor(200, 175, 135), QColor(40, 28, 16)};
const Ground feltGround{QColor(60, 5, 3), QColor(250, 160, 140)};

// The hero's own name, and below it whatever is painted.
QImage belowAHero(const QSize& size, const Ground& ground,
                  const std::function<void(QPainter&, const GameFrame&)>& paint) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(ground.colour);
    QPainter painter(&image);
    const GameFrame frame = frameOf(size);
    testing::paintAlong(painter, frame, testing::straight(), heroCentres[0][1], testing::HeroText::nameBase, heroName,
                        {ground.ink, Qt::transparent, 0}, {.stroke = 0.0029});
    paint(painter, frame);
    return image;
}

// In small windows the letters of a class touch.
TEST(HeroLinesTest, LettersThatRunTogetherAreALine) {
    testing::BarLetters touching{.stroke = 0.0029};
    touching.advance = touching.width;
    const QString word = QStringLiteral("Houceno");
    for (const QSize size : {QSize(640, 480), QSize(1280, 720), QSize(1920, 1080)}) {
        for (const Ground& ground : {parchmentGround, feltGround}) {
            SCOPED_TRACE(size.height());
            const QImage image = belowAHero(size, ground, [&](QPainter& painter, const GameFrame& frame) {
                testing::paintAlong(painter, frame, testing::straight(), heroCentres[0][1],
                                    testing::HeroText::classBase, word, {ground.ink, Qt::transparent, 0}, touching);
            });
            const GameFrame frame = frameOf(size);
            const auto lines = findHeroLines(image, frame, heroCentres[0][1]);
            ASSERT_EQ(lines.size(), 2U);
            EXPECT_NEAR(lines[0].area.width() / frame.height, touching.widthOf(word), 0.006);
        }
    }
}

TEST(HeroLinesTest, WhatIsNoLineOfThisHero) {
    struct Row {
        Ground ground;
        std::function<void(QPainter&, const GameFrame&)> paint;
        std::size_t lines; // with the hero's own name
        const char* why;
    };

    const double centre = heroCentres[0][1];
    const auto word = [&](double off, const QColor& ink) {
        return [=](QPainter& painter, const GameFrame& frame) {
            testing::paintAlong(painter, frame, testing::straight(), centre + off, testing::HeroText::classBase,
                                QStringLiteral("Hoeno"), {ink, Qt::transparent, 0}, {.stroke = 0.0029});
        };
    };
    const auto bar = [&](double width, double height) {
        return [=](QPainter& painter, const GameFrame& frame) {
            painter.fillRect(QRectF(frame.pixelX(centre - width / 2), frame.pixelY(0.53), width * frame.height,
                                    height * frame.height),
                             parchmentGround.ink);
        };
    };
    const Row table[] = {
        {parchmentGround, word(0, parchmentGround.ink), 2, "a line, or nothing is shown by the others"},
        {parchmentGround, word(0.02, parchmentGround.ink), 2, "a little off the middle, as letters are"},
        {parchmentGround, word(0.06, parchmentGround.ink), 1, "off the middle: the name of a neighbouring hero"},
        {parchmentGround, word(-0.06, parchmentGround.ink), 1, "and of the other one"},
        {feltGround, word(0, feltGround.ink), 2, "light on felt"},
        {{QColor(20, 4, 3), feltGround.ink},
         word(0, feltGround.ink),
         0,
         "light on what is nearly black, and so no felt"},
        {parchmentGround, bar(0.1, 0.006), 1, "a frame: as wide as a word that runs together, but thinner"},
        {parchmentGround, bar(0.1, 0.027), 1, "or taller"},
    };
    const QSize size(1920, 1080);
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(findHeroLines(belowAHero(size, row.ground, row.paint), frameOf(size), centre).size(), row.lines);
    }
}

TEST(HeroLinesTest, ThePictureIsBlackOnWhiteWithAMargin) {
    struct Row {
        HeroRecipe recipe;
        const char* why;
    };

    const Row table[] = {
        {{}, "as usual"},
        {{.margin = 0.25}, "more around the letters"},
        {{.margin = 0.2, .height = 48}, "larger"},
        {{.margin = 0.1, .paper = 0, .ink = 0.9}, "softer"},
    };
    for (const HeroGround ground : {HeroGround::parchment, HeroGround::felt}) {
        const QSize size(1920, 1080);
        const QImage image = testing::paintedHeroes(size, ground, heroCentres[1], classes, heroName);
        const auto lines = findHeroLines(image, frameOf(size), heroCentres[1][0]);
        ASSERT_FALSE(lines.empty());
        for (const Row& row : table) {
            SCOPED_TRACE(row.why);
            const Plane picture = pictureOf(lines[0], row.recipe);
            EXPECT_EQ(picture.height, row.recipe.height);
            EXPECT_LT(*std::ranges::min_element(picture.pixels), 20) << "ink";
            EXPECT_GE(percentile(picture, 0.6), row.recipe.paper > 0 ? 255 : 200) << "paper";
            const int margin = int(row.recipe.margin * lines[0].letters.height() * row.recipe.height /
                                   (lines[0].letters.height() * (1 + 2 * row.recipe.margin))) -
                               4; // letters have soft edges
            for (int x = 0; x < picture.width; ++x) {
                for (int y = 0; y < margin; ++y) {
                    ASSERT_EQ(picture.at(x, y), 255) << "the hero's own name stands above, and is left out";
                    ASSERT_EQ(picture.at(x, picture.height - 1 - y), 255);
                }
            }
        }
    }
}

} // namespace

} // namespace pelloran
