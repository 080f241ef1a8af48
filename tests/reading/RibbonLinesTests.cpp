#include "reading/RibbonLines.h"

#include "tests/reading/PaintedScreen.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace pelloran {

namespace {

const QString wide = QStringLiteral("Hounulceuono"); // names at which the curves can be told apart
const testing::BarLetters letters;

struct Screen {
    Plane plane;
    GameFrame frame;
};

Screen screenOf(const QImage& image) {
    return {lightness(image, image.rect(), Lettering::white), frameOf(image.size())};
}

QImage ribbonOn(const QSize& size, const NameCurve& curve, double centre, double base, const QString& word) {
    QImage image = testing::emptyScreen(size);
    QPainter painter(&image);
    testing::paintRibbon(painter, frameOf(size), curve, centre, base);
    testing::paintAlong(painter, frameOf(size), curve, centre, base, word);
    return image;
}

TEST(RibbonLinesTest, FindsTheNameOfEveryKindOfCardAtEverySize) {
    struct Row {
        QSize size;
        const char* why;
    };

    const Row table[] = {
        {QSize(1024, 768), "the smallest window the game offers"},
        {QSize(1280, 1024), "narrower than 4:3"},
        {QSize(1366, 768), "an old laptop"},
        {QSize(1920, 1080), "the usual"},
        {QSize(2560, 1440), "large"},
        {QSize(3440, 1440), "very wide"},
        {QSize(3840, 2160), "the largest"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        for (std::size_t kind = 0; kind < nameCurves.size(); ++kind) {
            for (std::size_t age = 0; age < 2; ++age) {
                const std::size_t slot = (kind + age) % 3;
                SCOPED_TRACE(::testing::Message() << "curve " << kind << ", base " << age << ", slot " << slot);
                const NameCurve& curve = nameCurves[kind];
                const double centre = cardCentres[slot];
                const double base = curve.bases[age];
                const Screen screen = screenOf(ribbonOn(row.size, curve, centre, base, wide));
                const auto found = findRibbonLines(screen.plane, screen.frame, centre);
                ASSERT_FALSE(found.empty());
                EXPECT_EQ(found[0].curve - nameCurves.data(), std::ptrdiff_t(kind));
                EXPECT_NEAR(found[0].base, base, 0.001);
                const double half = letters.widthOf(wide) / 2;
                EXPECT_NEAR(found[0].centre + found[0].left, centre - half, 0.003);
                EXPECT_NEAR(found[0].centre + found[0].right, centre + half, 0.003);
                EXPECT_TRUE(std::ranges::is_sorted(found, std::greater{}, &RibbonLine::score)) << "likeliest first";
            }
        }
    }
}

TEST(RibbonLinesTest, FollowsANameThatIsNotInTheMiddle) {
    for (const double shift : {-0.02, -0.008, 0.008, 0.02}) {
        SCOPED_TRACE(shift);
        const NameCurve& curve = nameCurves[2];
        const Screen screen = screenOf(
            ribbonOn(QSize(1920, 1080), curve, cardCentres[1] + shift, curve.bases[0], QStringLiteral("Houncle")));
        const auto found = findRibbonLines(screen.plane, screen.frame, cardCentres[1]);
        ASSERT_FALSE(found.empty());
        EXPECT_NEAR(found[0].centre + (found[0].left + found[0].right) / 2, cardCentres[1] + shift, 0.003);
        EXPECT_NEAR(found[0].right - found[0].left, letters.widthOf(QStringLiteral("Houncle")), 0.004);
    }
}

TEST(RibbonLinesTest, FindsNothingWhereNothingIsWritten) {
    struct Row {
        QImage image;
        const char* why;
    };

    const QSize size(1920, 1080);
    QImage black(size, QImage::Format_RGB32);
    black.fill(Qt::black);
    QImage white(size, QImage::Format_RGB32);
    white.fill(Qt::white);
    const NameCurve& minion = nameCurves[0];
    const Row table[] = {
        {black, "black"},
        {white, "white"},
        {testing::emptyScreen(size), "the table"},
        {ribbonOn(size, minion, cardCentres[0], minion.bases[0], {}), "a ribbon without a name"},
        {ribbonOn(size, minion, cardCentres[0], minion.bases[0], QStringLiteral("I")), "a single stroke"},
        {ribbonOn(size, minion, cardCentres[0], 0.50, wide), "a choice in battle, which stands lower"},
        {ribbonOn(size, minion, cardCentres[2], minion.bases[0], wide), "the name of another card"},
        {testing::noise(size, 1), "noise"},
        {testing::noise(size, 2), "other noise"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const Screen screen = screenOf(row.image);
        EXPECT_TRUE(findRibbonLines(screen.plane, screen.frame, cardCentres[0]).empty());
        EXPECT_TRUE(findRibbonLines(screen.plane, screen.frame, cardCentres[0], {}, latinInShade).empty())
            << "in shade";
    }
    EXPECT_TRUE(findRibbonLines(Plane(), frameOf(size), cardCentres[0]).empty()) << "no plane at all";
    EXPECT_TRUE(findRibbonLines(Plane(1, 1, 255), {0.75, 0.5, 0}, cardCentres[0]).empty()) << "a single pixel";
}

struct InkBox {
    int top = 1000;
    int bottom = -1;
    int left = 10000;
    int right = -1;
};

InkBox inkOf(const Plane& picture) {
    InkBox box;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (picture.at(x, y) < 128) {
                box.top = std::min(box.top, y);
                box.bottom = std::max(box.bottom, y);
                box.left = std::min(box.left, x);
                box.right = std::max(box.right, x);
            }
        }
    }
    return box;
}

TEST(RibbonLinesTest, ThePictureIsStraightBlackOnWhite) {
    struct Row {
        RibbonRecipe recipe;
        const char* why;
    };

    const Row table[] = {
        {{}, "as usual"},
        {{.height = 48}, "larger"},
        {{.above = 0.0185, .below = 0.0075, .paper = 0, .ink = 0.9}, "softer, with more around it"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        for (const NameCurve& curve : nameCurves) {
            SCOPED_TRACE(&curve - nameCurves.data());
            const double base = curve.bases[0];
            const Screen screen = screenOf(ribbonOn(QSize(1920, 1080), curve, cardCentres[1], base, wide));
            const double half = letters.widthOf(wide) / 2;
            const RibbonLine line{100, &curve, base, cardCentres[1], -half, half};
            const auto picture = pictureOf(line, screen.plane, screen.frame, row.recipe);
            ASSERT_TRUE(picture);
            EXPECT_EQ(picture->height, row.recipe.height);
            const double scale = row.recipe.height / (row.recipe.above + row.recipe.below);
            const InkBox ink = inkOf(*picture);
            // Bars of letters are straight where the ribbon is bent: a pixel to every side.
            EXPECT_NEAR(ink.bottom + 1, row.recipe.above * scale, 2) << "the baseline is straight";
            EXPECT_NEAR(ink.bottom + 1 - ink.top, letters.capital * scale, 2.5) << "as tall as a capital";
            EXPECT_NEAR(ink.right + 1 - ink.left, 2 * half * scale, 4);
            EXPECT_LT(*std::ranges::min_element(picture->pixels), 10);
            EXPECT_EQ(percentile(*picture, 0.6), 255) << "paper";
        }
    }
}

TEST(RibbonLinesTest, WhatTouchesTheEdgeIsNotInThePicture) {
    struct Row {
        QRectF junk; // from the name's middle and its baseline
        bool isKept;
        const char* why;
    };

    const Row table[] = {
        {QRectF(-0.01, -0.020, 0.02, 0.008), false, "bright art that hangs in from above"},
        {QRectF(-0.01, 0.002, 0.02, 0.012), false, "the gem below"},
        {QRectF(-0.066, -0.020, 0.003, 0.040), false, "an edge from top to bottom"},
        {QRectF(-0.001, -0.020, 0.002, 0.016), true, "an accent or a tall letter reaches into the letters"},
        {QRectF(-0.001, 0.000, 0.002, 0.004), true, "a tail below the baseline that ends before the edge"},
    };
    const NameCurve& curve = nameCurves[2];
    const QString word = QStringLiteral("Honu unoH"); // with a gap in the middle
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        QImage image = ribbonOn(QSize(1920, 1080), curve, cardCentres[1], curve.bases[0], word);
        const GameFrame frame = frameOf(image.size());
        const double half = letters.widthOf(word) / 2;
        const RibbonLine line{100, &curve, curve.bases[0], cardCentres[1], -half, half};
        const auto inkUnderJunk = [&] {
            const Screen screen = screenOf(image);
            const auto picture = pictureOf(line, screen.plane, frame, {});
            EXPECT_TRUE(picture);
            const double scale = 36 / 0.0215;
            const QRectF area((half + 0.007 + row.junk.left()) * scale, (0.0155 + row.junk.top()) * scale,
                              row.junk.width() * scale, row.junk.height() * scale);
            int ink = 0;
            for (int y = std::max(0, int(area.top())); picture && y < std::min(36, int(area.bottom())); ++y) {
                for (int x = std::max(0, int(area.left())); x < std::min(picture->width, int(area.right())); ++x) {
                    ink += picture->at(x, y) < 128;
                }
            }
            return ink;
        };
        const int before = inkUnderJunk();
        {
            QPainter painter(&image);
            painter.fillRect(QRectF(frame.pixelX(cardCentres[1] + row.junk.left()),
                                    frame.pixelY(curve.bases[0] + row.junk.top()), row.junk.width() * frame.height,
                                    row.junk.height() * frame.height),
                             Qt::white);
        }
        if (row.isKept) {
            EXPECT_GT(inkUnderJunk(), before + 5);
        } else {
            EXPECT_EQ(inkUnderJunk(), before);
        }
    }
}

TEST(RibbonLinesTest, WithoutReliefThereIsNoPicture) {
    const NameCurve& curve = nameCurves[1];
    const RibbonLine line{100, &curve, curve.bases[0], cardCentres[0], -0.05, 0.05};
    for (const int value : {0, 120, 255}) {
        EXPECT_FALSE(pictureOf(line, Plane(1920, 1080, std::uint8_t(value)), frameOf(QSize(1920, 1080)), {})) << value;
    }
}

} // namespace

} // namespace pelloran
