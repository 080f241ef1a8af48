#include "reading/Plane.h"

#include "tests/reading/PlaneReference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace pelloran {

namespace {

Plane randomPlane(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    Plane plane(width, height);
    std::ranges::generate(plane.pixels, [&] { return std::uint8_t(random()); });
    return plane;
}

std::uint8_t extremeOfSquare(const Plane& plane, int x, int y, int radius, bool darkest) {
    std::uint8_t result = plane.at(x, y);
    for (int nearY = std::max(0, y - radius); nearY <= std::min(plane.height - 1, y + radius); ++nearY) {
        for (int nearX = std::max(0, x - radius); nearX <= std::min(plane.width - 1, x + radius); ++nearX) {
            result = darkest ? std::min(result, plane.at(nearX, nearY)) : std::max(result, plane.at(nearX, nearY));
        }
    }
    return result;
}

TEST(PlaneTest, ExtremesEqualThoseOfEverySquare) {
    struct Row {
        int width;
        int height;
        int radius;
        const char* why;
    };

    const Row table[] = {
        {37, 23, 4, "the usual window"},          {37, 23, 3, "window of seven, not a power of two"},
        {5, 3, 6, "window wider than the plane"}, {1, 1, 2, "a single pixel"},
        {130, 9, 4, "more than two strips"},      {20, 20, 0, "nothing around"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const Plane plane = randomPlane(row.width, row.height, 7);
        const Plane dark = darkestAround(plane, row.radius);
        const Plane light = lightestAround(plane, row.radius);
        for (int y = 0; y < plane.height; ++y) {
            for (int x = 0; x < plane.width; ++x) {
                ASSERT_EQ(dark.at(x, y), extremeOfSquare(plane, x, y, row.radius, true)) << x << ' ' << y;
                ASSERT_EQ(light.at(x, y), extremeOfSquare(plane, x, y, row.radius, false)) << x << ' ' << y;
            }
        }
    }
}

TEST(PlaneTest, LightnessIsTheDarkestChannelInEveryFormat) {
    QImage image(70, 3, QImage::Format_RGB32);
    image.fill(QColor(200, 120, 90));

    struct Row {
        QImage::Format format;
        const char* why;
    };

    const Row table[] = {
        {QImage::Format_RGB32, "as captured"},          {QImage::Format_ARGB32_Premultiplied, "with alpha"},
        {QImage::Format_RGB888, "three bytes a pixel"}, {QImage::Format_RGBA64, "eight bytes a pixel"},
        {QImage::Format_RGBA8888, "other byte order"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const Plane plane = lightness(image.convertToFormat(row.format), QRect(9, 1, 500, 500), Lettering::white);
        EXPECT_EQ(plane.width, 61);
        EXPECT_EQ(plane.height, 2);
        EXPECT_TRUE(std::ranges::all_of(plane.pixels, [](int value) { return value == 90; }));
    }
}

TEST(PlaneTest, GoldIsLighterForGoldenLettering) {
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(QColor(240, 220, 150));
    EXPECT_EQ(lightness(image, image.rect(), Lettering::white).at(0, 0), 150);
    EXPECT_EQ(lightness(image, image.rect(), Lettering::whiteOrGolden).at(0, 0), 184);
}

TEST(PlaneTest, LightnessOutsideTheImageIsEmpty) {
    EXPECT_TRUE(lightness(QImage(), QRect(0, 0, 5, 5), Lettering::white).pixels.empty());
    EXPECT_TRUE(lightness(QImage(4, 4, QImage::Format_RGB32), QRect(9, 9, 5, 5), Lettering::white).pixels.empty());
}

TEST(PlaneTest, ShrinkingTakesMeansAndDropsOddEdges) {
    Plane plane(3, 2);
    plane.pixels = {10, 20, 99, 30, 40, 99};
    EXPECT_EQ(shrunk(plane, 1).pixels, std::vector<std::uint8_t>{25});
    EXPECT_EQ(shrunk(plane, 0), plane);
    EXPECT_TRUE(shrunk(plane, 5).pixels.empty());
}

TEST(PlaneTest, EqualsThePlainestWayToSayIt) {
    struct Row {
        int width;
        int height;
        const char* why;
    };

    const Row table[] = {{37, 23, "odd sizes"}, {16, 8, "halves of halves"}, {1, 1, "a single pixel"}, {0, 0, "none"}};
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const Plane plane = randomPlane(row.width, row.height, 9);
        for (const double share : {0.0, 0.1, 0.5, 0.99, 1.0}) {
            EXPECT_EQ(percentile(plane, share), testing::plainPercentile(plane, share)) << share;
        }
        for (int times = 0; times < 6; ++times) {
            EXPECT_EQ(shrunk(plane, times), testing::plainShrunk(plane, times)) << times;
        }
        // Halves, of which sums are exact: within, across each edge, and outside.
        for (double y = -2; y <= row.height + 2; y += 0.5) {
            for (double x = -2; x <= row.width + 2; x += 2.5) {
                ASSERT_EQ(sampleAt(plane, x, y), testing::plainSample(plane, x, y)) << x << ' ' << y;
            }
        }
    }
}

TEST(PlaneTest, FloodStopsAtDarkMoats) {
    // A lit left half, a moat, and an island as light as the shore.
    Plane plane(9, 5, 200);
    for (int y = 0; y < plane.height; ++y) {
        plane.row(y)[4] = 30;
    }
    Plane seed(9, 5);
    seed.row(2)[0] = 200;
    const Plane flooded = floodedFrom(seed, plane);
    EXPECT_EQ(flooded.at(3, 0), 200) << "the whole shore is reached";
    EXPECT_EQ(flooded.at(4, 3), 30);
    EXPECT_EQ(flooded.at(8, 4), 30) << "the island only over the moat";
}

TEST(PlaneTest, FloodFollowsASpiral) {
    // One light path wound inwards; the seed at its outer end reaches the middle undimmed.
    const char* const maze[] = {"#######", "......#", "#####.#", "#...#.#", "#.###.#", "#.....#", "#######"};
    Plane plane(7, 7);
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 7; ++x) {
            plane.row(y)[x] = maze[y][x] == '.' ? 180 : 0;
        }
    }
    Plane seed(7, 7);
    seed.row(1)[0] = 180;
    EXPECT_EQ(floodedFrom(seed, plane), plane);
}

// Lanes of light with walls between them, which a gate leads through at one end and at the other in turn.
Plane lanes(int width, int height, bool across) {
    Plane plane(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int lane = across ? x : y;
            const int along = across ? y : x;
            const int end = (across ? height : width) - 1;
            const bool isGate = along == (lane % 4 == 1 ? end : 0);
            plane.row(y)[x] = lane % 2 == 0 || isGate ? std::uint8_t(255 - lane % 200) : std::uint8_t(0);
        }
    }
    return plane;
}

TEST(PlaneTest, FloodFindsEveryWayHoweverManyTurnsItTakes) {
    struct Row {
        Plane plane;
        const char* why;
    };

    const Row table[] = {
        {lanes(61, 41, false), "lanes from left to right"}, {lanes(61, 41, true), "lanes from top to bottom"},
        {randomPlane(60, 40, 3), "as rough as can be"},     {lanes(61, 1, true), "a single row"},
        {lanes(1, 41, false), "a single column"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        for (const bool atEnd : {false, true}) {
            Plane seed(row.plane.width, row.plane.height);
            (atEnd ? seed.pixels.back() : seed.pixels.front()) =
                atEnd ? row.plane.pixels.back() : row.plane.pixels.front();
            EXPECT_EQ(floodedFrom(seed, row.plane), testing::plainFlood(seed, row.plane));
        }
    }
    EXPECT_TRUE(floodedFrom(Plane(), Plane()).pixels.empty());
}

TEST(PlaneTest, FloodOfALongWayTakesNoLongerThanThatOfAShortOne) {
    // Sweeps would go over it a thousand times.
    const Plane plane = lanes(4000, 1000, true);
    Plane seed(plane.width, plane.height);
    seed.pixels.front() = plane.pixels.front();
    const Plane flooded = floodedFrom(seed, plane);
    EXPECT_EQ(flooded.at(2, 999), plane.at(2, 999));
    EXPECT_EQ(flooded.at(3998, 500), 56) << "as light as the darkest lane on the way";
}

} // namespace

} // namespace pelloran
