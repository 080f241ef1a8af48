#include "reading/NamePlaces.h"

#include <gtest/gtest.h>

#include <cmath>

namespace pelloran {

namespace {

TEST(NamePlacesTest, ThePictureIsAsTallAsTheWindowUnlessThatIsNarrow) {
    struct Row {
        QSize window;
        double height;
        double centreX;
        const char* why;
    };

    const Row table[] = {
        {QSize(1920, 1080), 1080, 960, "wide"},
        {QSize(3440, 1440), 1440, 1720, "very wide: the picture stays in the middle"},
        {QSize(1024, 768), 768, 512, "4:3, the narrowest that is filled"},
        {QSize(1280, 1024), 960, 640, "narrower: the width decides"},
        {QSize(600, 1000), 450, 300, "upright"},
        {QSize(1, 1), 0.75, 0.5, "a single pixel"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const GameFrame frame = frameOf(row.window);
        EXPECT_DOUBLE_EQ(frame.height, row.height);
        EXPECT_DOUBLE_EQ(frame.centreX, row.centreX);
        EXPECT_DOUBLE_EQ(frame.top, 0);
        EXPECT_DOUBLE_EQ(frame.pixelX(0), row.centreX);
        EXPECT_DOUBLE_EQ(frame.pixelX(0.25) - frame.pixelX(-0.25), row.height / 2);
        EXPECT_DOUBLE_EQ(frame.pixelY(0.5), row.height / 2);
    }
}

TEST(NamePlacesTest, APlaceSeenFromAPartOfThePlaneIsTheSamePlace) {
    struct Row {
        QPointF origin;
        double scale;
        const char* why;
    };

    const Row table[] = {
        {{0, 0}, 1, "the whole plane"},
        {{311, 324}, 1, "the band that is searched"},
        {{0, 0}, 0.5, "halved"},
        {{311, 324}, 0.25, "part and halved twice"},
        {{-40, -9}, 1, "a larger plane around it"},
    };
    const GameFrame frame{1080, 970, 12};
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const GameFrame seen = frame.seenFrom(row.origin, row.scale);
        for (const double place : {-0.6, 0.0, 0.41}) {
            EXPECT_NEAR(seen.pixelX(place), (frame.pixelX(place) - row.origin.x()) * row.scale, 1e-9);
            EXPECT_NEAR(seen.pixelY(place), (frame.pixelY(place) - row.origin.y()) * row.scale, 1e-9);
        }
    }
}

TEST(NamePlacesTest, TheSlopeOfACurveIsItsDerivative) {
    constexpr double step = 1e-6;
    for (const NameCurve& curve : nameCurves) {
        for (double x = -0.1; x <= 0.1; x += 0.01) {
            SCOPED_TRACE(x);
            EXPECT_NEAR(curve.slopeAt(x), (curve.at(x + step) - curve.at(x - step)) / (2 * step), 1e-6);
        }
        EXPECT_DOUBLE_EQ(curve.at(0), 0) << "bases are those of the card's middle";
    }
}

TEST(NamePlacesTest, CardsAndHeroesStandEvenlyLeftToRight) {
    const auto expectEven = [](const std::array<double, 3>& centres, double tolerance) {
        EXPECT_LT(centres[0], centres[1]);
        EXPECT_NEAR(centres[1] - centres[0], centres[2] - centres[1], tolerance);
    };
    expectEven(cardCentres, 0.001);
    EXPECT_NEAR((cardCentres[2] - cardCentres[0]) / 2, cardSpacing, 0.001);
    for (const auto& centres : heroCentres) {
        expectEven(centres, 0.011);
    }
}

} // namespace

} // namespace pelloran
