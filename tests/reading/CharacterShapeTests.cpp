#include "reading/chinese/CharacterShape.h"

#include "reading/chinese/CharacterFeature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace pelloran {

namespace {

constexpr int side = CharacterShape::side;

void fill(Plane& plane, const QRect& area, std::uint8_t value = 255) {
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            plane.row(y)[x] = value;
        }
    }
}

// Three crossing strokes and a spot, as of a simple character, in a box of 40 by 40 px times `scale`.
Plane drawn(QPoint place, int scale = 1, const QSize& size = {200, 160}) {
    Plane plane(size.width(), size.height());
    const auto stroke = [&](int x, int y, int width, int height) {
        fill(plane, QRect(place.x() + x * scale, place.y() + y * scale, width * scale, height * scale));
    };
    stroke(0, 8, 40, 4);
    stroke(18, 0, 4, 40);
    stroke(4, 28, 32, 4);
    stroke(30, 16, 6, 6);
    return plane;
}

QRect all(const Plane& plane) {
    return {0, 0, plane.width, plane.height};
}

CharacterShape shapeOfAll(const Plane& plane) {
    const auto shape = shapeOf(plane, all(plane));
    EXPECT_TRUE(shape);
    return shape.value_or(CharacterShape());
}

float cosine(const CharacterFeature& first, const CharacterFeature& second) {
    float sum = 0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        sum += first[i] * second[i];
    }
    return sum;
}

// Columns and rows with ink.
QSize extentOf(const CharacterShape& shape) {
    int left = side;
    int right = -1;
    int top = side;
    int bottom = -1;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            if (shape.row(y)[x] > 0.3F) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
    }
    return {right - left + 1, bottom - top + 1};
}

TEST(CharacterShapeTest, PlaceAndCellDoNotMatter) {
    const CharacterShape shape = shapeOfAll(drawn({10, 20}));

    struct Row {
        Plane plane;
        QRect cell;
        const char* why;
    };

    Plane neighbours = drawn({70, 40});
    fill(neighbours, {10, 40, 20, 30});
    fill(neighbours, {130, 50, 20, 30});
    const Row table[] = {
        {drawn({10, 20}), {0, 0, 200, 160}, "the same again"},
        {drawn({111, 73}), {0, 0, 200, 160}, "elsewhere"},
        {drawn({0, 0}), {0, 0, 200, 160}, "in the corner"},
        {drawn({160, 120}), {100, 100, 100, 60}, "in the other corner"},
        {drawn({70, 40}), {70, 40, 40, 40}, "a cell without a margin"},
        {drawn({70, 40}), {60, 10, 80, 300}, "a cell that is higher than the plane"},
        {neighbours, {60, 0, 60, 160}, "with neighbours outside the cell"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const auto same = shapeOf(row.plane, row.cell);
        ASSERT_TRUE(same);
        EXPECT_EQ(same->ink, shape.ink);
    }
}

TEST(CharacterShapeTest, SizeDoesNotMatter) {
    const CharacterShape small = shapeOfAll(drawn({10, 20}));
    const CharacterShape twice = shapeOfAll(drawn({10, 20}, 2));
    const CharacterShape thrice = shapeOfAll(drawn({10, 20}, 3));
    // Edges are as sharp as their pixels are small; the strokes stay where they are.
    EXPECT_GT(cosine(featureOf(small), featureOf(twice)), 0.99F);
    EXPECT_GT(cosine(featureOf(twice), featureOf(thrice)), 0.99F);
    EXPECT_EQ(extentOf(small), extentOf(twice));
}

TEST(CharacterShapeTest, FaintInkAroundItDoesNotMatter) {
    Plane plane = drawn({60, 40});
    fill(plane, {10, 10, 20, 20}, 76);
    EXPECT_EQ(shapeOfAll(plane).ink, shapeOfAll(drawn({60, 40})).ink);
}

TEST(CharacterShapeTest, ValuesAreSharesOfInk) {
    const CharacterShape shape = shapeOfAll(drawn({3, 3}));
    EXPECT_EQ(*std::ranges::min_element(shape.ink), 0.0F);
    EXPECT_EQ(*std::ranges::max_element(shape.ink), 1.0F);
}

TEST(CharacterShapeTest, TheLongerSideFillsTheSquareAndTheProportionsStayVisible) {
    struct Row {
        QSize size;
        QSize extent;
        const char* why;
    };

    const Row table[] = {
        {{40, 40}, {64, 64}, "a square"},
        {{40, 80}, {53, 64}, "half as wide as high: closer to a square than it was"},
        {{80, 40}, {64, 53}, "half as high as wide"},
        {{90, 10}, {64, 26}, "the number one"},
        {{9, 90}, {25, 64}, "a stroke that stands"},
        {{120, 4}, {64, 14}, "a dash"},
        {{180, 3}, {64, 10}, "a hair"},
        {{8, 6}, {64, 60}, "a character of few pixels"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        Plane plane(200, 100);
        fill(plane, {QPoint(5, 5), row.size});
        const QSize extent = extentOf(shapeOfAll(plane));
        EXPECT_NEAR(extent.width(), row.extent.width(), 2);
        EXPECT_NEAR(extent.height(), row.extent.height(), 2);
    }
}

TEST(CharacterShapeTest, CrowdedStrokesAreSpread) {
    // Three rows of ink close together above an empty space and a fourth row.
    Plane plane(80, 80);
    for (const int y : {0, 8, 16, 72}) {
        fill(plane, {0, y, 80, 4});
    }
    const CharacterShape shape = shapeOfAll(plane);
    std::vector<int> begins;
    for (int y = 0; y < side; ++y) {
        if (shape.row(y)[side / 2] > 0.5F && (y == 0 || shape.row(y - 1)[side / 2] <= 0.5F)) {
            begins.push_back(y);
        }
    }
    ASSERT_EQ(begins.size(), 4U);
    const double before = 8.0 / 72;
    const double after = double(begins[1] - begins[0]) / (begins[3] - begins[0]);
    EXPECT_GT(after, 1.2 * before);
}

TEST(CharacterShapeTest, NothingToSee) {
    struct Row {
        Plane plane;
        QRect cell;
        const char* why;
    };

    Plane faint(50, 50);
    fill(faint, {10, 10, 20, 20}, 76);
    Plane speck(50, 50);
    fill(speck, {10, 10, 2, 2});
    Plane scattered(50, 50);
    for (const QPoint& point : {QPoint(3, 3), QPoint(40, 8), QPoint(8, 40), QPoint(25, 25)}) {
        fill(scattered, {point, QSize(1, 1)});
    }
    Plane line(50, 50);
    fill(line, {5, 10, 40, 2});
    Plane post(50, 50);
    fill(post, {5, 10, 2, 30});
    const Row table[] = {
        {Plane(), {0, 0, 10, 10}, "no plane"},
        {Plane(50, 50), {0, 0, 50, 50}, "no ink"},
        {faint, {0, 0, 50, 50}, "only the blur of ink"},
        {speck, {0, 0, 50, 50}, "a speck"},
        {scattered, {0, 0, 50, 50}, "four pixels, far apart"},
        {line, {0, 0, 50, 50}, "a line of two pixels, as at a cell's edge"},
        {post, {0, 0, 50, 50}, "a standing one"},
        {drawn({10, 20}), {}, "no cell"},
        {drawn({10, 20}), {300, 20, 40, 40}, "a cell outside"},
        {drawn({10, 20}), {100, 100, 50, 50}, "ink outside the cell"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        EXPECT_FALSE(shapeOf(row.plane, row.cell));
    }
}

TEST(CharacterFeatureTest, IsOfLengthOne) {
    const CharacterFeature feature = featureOf(shapeOfAll(drawn({10, 20})));
    EXPECT_NEAR(cosine(feature, feature), 1, 1e-5);
    EXPECT_GE(*std::ranges::min_element(feature), 0.0F);

    const CharacterFeature nothing = featureOf(CharacterShape());
    EXPECT_EQ(cosine(nothing, nothing), 0.0F) << "no edges";
}

// Share of each direction around the middle, from the squares: they add up to what was split.
std::array<float, featureDirections> directionsInTheMiddle(const CharacterShape& shape) {
    const CharacterFeature feature = featureOf(shape);
    constexpr int middle = featureGrid / 2;
    std::array<float, featureDirections> shares{};
    float sum = 0;
    for (std::size_t direction = 0; direction < shares.size(); ++direction) {
        const float root = feature[(direction * featureGrid + middle) * featureGrid + middle];
        shares[direction] = root * root;
        sum += root * root;
    }
    for (float& share : shares) {
        share /= sum;
    }
    return shares;
}

TEST(CharacterFeatureTest, EdgesCountForTheTwoDirectionsNextToTheirs) {
    struct Row {
        double degrees; // in which ink grows, from the right downwards
        std::array<float, featureDirections> shares;
        const char* why;
    };

    const Row table[] = {
        {0, {1, 0, 0, 0, 0, 0, 0, 0}, "to the right"},
        {45, {0, 1, 0, 0, 0, 0, 0, 0}, "down to the right"},
        {90, {0, 0, 1, 0, 0, 0, 0, 0}, "down"},
        {135, {0, 0, 0, 1, 0, 0, 0, 0}, "down to the left"},
        {180, {0, 0, 0, 0, 1, 0, 0, 0}, "to the left"},
        {225, {0, 0, 0, 0, 0, 1, 0, 0}, "up to the left"},
        {270, {0, 0, 0, 0, 0, 0, 1, 0}, "up"},
        {315, {0, 0, 0, 0, 0, 0, 0, 1}, "up to the right"},
        {22.5, {0.5F, 0.5F, 0, 0, 0, 0, 0, 0}, "halfway between two"},
        {112.5, {0, 0, 0.5F, 0.5F, 0, 0, 0, 0}, "halfway, steeply"},
        {250, {0, 0, 0, 0, 0, 0.4444F, 0.5556F, 0}, "closer to one than to the other"},
        {350, {0.7778F, 0, 0, 0, 0, 0, 0, 0.2222F}, "between the last and the first"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const double angle = row.degrees * std::numbers::pi / 180;
        CharacterShape shape; // one even slope
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                shape.row(y)[x] = float(0.5 + 0.01 * ((x - 31.5) * std::cos(angle) + (y - 31.5) * std::sin(angle)));
            }
        }
        const auto shares = directionsInTheMiddle(shape);
        for (std::size_t i = 0; i < shares.size(); ++i) {
            EXPECT_NEAR(shares[i], row.shares[i], 0.01) << "direction " << i;
        }
    }
}

TEST(CharacterFeatureTest, EdgesCountWhereTheyAre) {
    // A spot in one part of the square and what is around it.
    CharacterShape shape;
    for (int y = 50; y < 54; ++y) {
        for (int x = 10; x < 14; ++x) {
            shape.row(y)[x] = 1;
        }
    }
    const CharacterFeature feature = featureOf(shape);
    const auto strongest =
        std::size_t(std::ranges::max_element(feature) - feature.begin()) % (featureGrid * featureGrid);
    EXPECT_EQ(strongest / featureGrid, 6U);
    EXPECT_EQ(strongest % featureGrid, 1U);
}

TEST(CharacterFeatureTest, TellsTurnedStrokesApart) {
    Plane lying(60, 60);
    Plane standing(60, 60);
    for (const int i : {0, 28, 56}) {
        fill(lying, {0, i, 60, 4});
        fill(standing, {i, 0, 4, 60});
    }
    EXPECT_LT(cosine(featureOf(shapeOfAll(lying)), featureOf(shapeOfAll(standing))), 0.5F);
}

} // namespace

} // namespace pelloran
