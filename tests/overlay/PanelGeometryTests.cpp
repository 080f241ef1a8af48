#include "overlay/OverlayPanel/layout/PanelGeometry.h"

#include "tests/overlay/RectPrinting.h"

#include <gtest/gtest.h>

#include <array>

namespace pelloran {

static void PrintTo(const ResizeHandle& handle, std::ostream* out) {
    *out << (handle.left ? "left " : "") << (handle.right ? "right " : "") << (handle.top ? "top " : "")
         << (handle.bottom ? "bottom " : "") << (handle.isNone() ? "none" : "");
}

namespace {

using enum Axis;
using User = std::optional<QSizeF>;

constexpr UpwardRect screen{0, 30, 1920, 1020}; // above a dock
constexpr ResizeHandle none{};
constexpr ResizeHandle left{.left = true};
constexpr ResizeHandle right{.right = true};
constexpr ResizeHandle top{.top = true};
constexpr ResizeHandle bottom{.bottom = true};
constexpr ResizeHandle topLeft{.left = true, .top = true};
constexpr ResizeHandle topRight{.right = true, .top = true};
constexpr ResizeHandle bottomLeft{.left = true, .bottom = true};
constexpr ResizeHandle bottomRight{.right = true, .bottom = true};

} // namespace

TEST(AdaptedFrame, SuitsTheTiles) {
    const struct {
        const char* why;
        int cardCount;
        QSizeF frame;
        User user;
        double scale;
        Axis axis;
        std::optional<QSizeF> expected;
    } rows[] = {
        {"idle: low", 0, {360, 420}, {}, 1, vertical, QSizeF(360, 160)},
        {"idle: the floor holds up to a scale of a third more", 0, {360, 420}, {}, 1.3, vertical, QSizeF(360, 160)},
        {"idle: higher when everything is drawn larger", 0, {360, 420}, {}, 1.36, vertical, QSizeF(360, 120 * 1.36)},
        {"idle: at least so wide", 0, {300, 420}, {}, 1, vertical, QSizeF(320, 160)},
        {"idle: a wide panel stays wide", 0, {700, 420}, {}, 1, horizontal, QSizeF(700, 160)},
        {"idle: exactly so already", 0, {320, 160}, {}, 1, vertical, {}},
        {"idle: the user's size", 0, {360, 420}, QSizeF(500, 300), 1, vertical, QSizeF(500, 300)},
        {"idle: the user's size is too narrow", 0, {360, 420}, QSizeF(290, 300), 1, vertical, QSizeF(320, 300)},
        {"idle: the user's size is too low", 0, {360, 420}, QSizeF(500, 100), 1, vertical, QSizeF(500, 160)},
        {"idle: the user's size is too low at a large scale",
         0,
         {360, 420},
         QSizeF(500, 161),
         1.36,
         vertical,
         QSizeF(500, 120 * 1.36)},
        {"idle: the frame of the moment does not matter beside the user's size",
         0,
         {900, 900},
         QSizeF(400, 200),
         1,
         vertical,
         QSizeF(400, 200)},

        {"a column of three", 3, {360, 160}, {}, 1, vertical, QSizeF(360, 600)},
        {"a column of two", 2, {360, 160}, {}, 1, vertical, QSizeF(360, 450)},
        {"a column of one", 1, {360, 160}, {}, 1, vertical, QSizeF(360, 300)},
        {"the scale does not matter beside tiles", 3, {360, 160}, {}, 1.36, vertical, QSizeF(360, 600)},
        {"a column higher than it must be stays so", 3, {360, 800}, {}, 1, vertical, {}},
        {"a column too narrow", 3, {280, 700}, {}, 1, vertical, QSizeF(300, 700)},
        {"a column too wide", 3, {500, 700}, {}, 1, vertical, QSizeF(420, 700)},
        {"a column at its least width", 3, {300, 600}, {}, 1, vertical, {}},
        {"a column at its greatest width", 3, {420, 600}, {}, 1, vertical, {}},
        {"a column of the user's size", 3, {360, 160}, QSizeF(400, 700), 1, vertical, QSizeF(400, 700)},
        {"a column of the user's width, too wide", 3, {360, 160}, QSizeF(500, 700), 1, vertical, QSizeF(420, 700)},
        {"a column of the user's width, too narrow", 3, {360, 160}, QSizeF(280, 700), 1, vertical, QSizeF(300, 700)},
        {"a column of the user's height, too low", 3, {360, 160}, QSizeF(400, 200), 1, vertical, QSizeF(400, 600)},
        {"more tiles than are shown", 5, {360, 160}, {}, 1, vertical, QSizeF(360, 900)},

        {"a row of three", 3, {600, 500}, {}, 1, horizontal, QSizeF(648, 280)},
        {"a row of two", 2, {400, 500}, {}, 1, horizontal, QSizeF(448, 280)},
        {"a row wider than it must be stays so", 3, {900, 500}, {}, 1, horizontal, QSizeF(900, 280)},
        {"a row without the user's word has one height", 3, {900, 200}, {}, 1, horizontal, QSizeF(900, 280)},
        {"a row of the user's size", 3, {900, 500}, QSizeF(800, 300), 1, horizontal, QSizeF(800, 300)},
        {"a row of the user's width, too narrow", 3, {900, 500}, QSizeF(600, 300), 1, horizontal, QSizeF(648, 300)},
        {"a row of the user's height, too low", 3, {900, 500}, QSizeF(800, 200), 1, horizontal, QSizeF(800, 280)},
        {"a row of the user's height, too high", 3, {900, 500}, QSizeF(800, 600), 1, horizontal, QSizeF(800, 420)},
        {"a row as it is", 3, {648, 280}, {}, 1, horizontal, {}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        const UpwardRect frame{40, 60, row.frame.width(), row.frame.height()};
        const auto adapted = adaptedFrame(row.cardCount, frame, row.user, row.scale, row.axis, screen);
        ASSERT_EQ(adapted.has_value(), row.expected.has_value());
        if (adapted) {
            EXPECT_EQ(*adapted, (UpwardRect{40, 60, row.expected->width(), row.expected->height()}))
                << "the bottom left corner stays";
        }
        EXPECT_EQ(adaptedFrame(row.cardCount, frame, row.user, row.scale, row.axis, std::nullopt), adapted)
            << "without a screen there is nothing to keep it on";
    }
}

TEST(AdaptedFrame, StaysOnTheScreen) {
    const UpwardRect visible{100, 50, 1000, 800}; // to 1100, 850

    const struct {
        const char* why;
        UpwardRect frame; // an idle panel; three tiles make it 360 x 600
        UpwardRect expected;
    } rows[] = {
        {"in the middle", {300, 100, 360, 160}, {300, 100, 360, 600}},
        {"touching the right edge", {740, 100, 360, 160}, {740, 100, 360, 600}},
        {"past the right edge", {741, 100, 360, 160}, {732, 100, 360, 600}},
        {"touching the top", {300, 250, 360, 160}, {300, 250, 360, 600}},
        {"past the top", {300, 251, 360, 160}, {300, 242, 360, 600}},
        {"touching the left edge", {100, 100, 360, 160}, {100, 100, 360, 600}},
        {"past the left edge", {99, 100, 360, 160}, {108, 100, 360, 600}},
        {"touching the bottom", {300, 50, 360, 160}, {300, 50, 360, 600}},
        {"below the bottom", {300, 49, 360, 160}, {300, 58, 360, 600}},
        {"past the top right corner", {1000, 700, 360, 160}, {732, 242, 360, 600}},
        {"past the bottom left corner", {-500, -500, 360, 160}, {108, 58, 360, 600}},
        {"far away", {9000, -9000, 360, 160}, {732, 58, 360, 600}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(adaptedFrame(3, row.frame, {}, 1, vertical, visible), row.expected);
    }
}

TEST(AdaptedFrame, KeepsTheBottomLeftCornerInSightOnAScreenTooSmall) {
    const UpwardRect visible{100, 50, 350, 500};
    // Past the right edge it goes left, which puts it past the left edge; that rule comes later and wins. So with the
    // top and the bottom.
    EXPECT_EQ(adaptedFrame(3, {120, 60, 360, 160}, {}, 1, vertical, visible), (UpwardRect{108, 58, 360, 600}));
    EXPECT_EQ(adaptedFrame(3, {108, 58, 360, 600}, {}, 1, vertical, visible), std::nullopt)
        << "there it rests, and does not move at every tick";
}

TEST(AdaptedFrame, OnAScreenLeftOfTheMainOne) {
    const UpwardRect visible{-1280, -200, 1280, 1000};
    EXPECT_EQ(adaptedFrame(3, {-500, 0, 360, 160}, {}, 1, vertical, visible), (UpwardRect{-500, 0, 360, 600}));
    EXPECT_EQ(adaptedFrame(3, {-100, 300, 360, 160}, {}, 1, vertical, visible), (UpwardRect{-368, 192, 360, 600}));
}

TEST(AdaptedFrame, LeavesChangesOfHalfAPixelAlone) {
    const struct {
        const char* why;
        UpwardRect frame;
        std::optional<UpwardRect> expected; // three tiles in a column
    } rows[] = {
        {"half a pixel too wide", {40, 60, 420.5, 600}, {}},
        {"more than that", {40, 60, 420.75, 600}, UpwardRect{40, 60, 420, 600}},
        {"half a pixel too narrow", {40, 60, 299.5, 600}, {}},
        {"half a pixel too low", {40, 60, 360, 599.5}, {}},
        {"more than that, downward", {40, 60, 360, 599.25}, UpwardRect{40, 60, 360, 600}},
        {"each by half a pixel", {40, 60, 420.5, 599.5}, {}},
        {"one of them by more takes all along", {40, 60, 420.5, 599}, UpwardRect{40, 60, 420, 600}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(adaptedFrame(3, row.frame, {}, 1, vertical, screen), row.expected);
    }

    // A place alone counts as well: margins are whole, so give the screen a broken edge.
    const UpwardRect frame{40, 60, 360, 600};
    EXPECT_EQ(adaptedFrame(3, frame, {}, 1, vertical, UpwardRect{32.5, 0, 2000, 1000}), std::nullopt) << "inside";
    EXPECT_EQ(adaptedFrame(3, frame, {}, 1, vertical, UpwardRect{41, 0, 2000, 1000}), (UpwardRect{49, 60, 360, 600}));
}

TEST(ComfortablyOnScreen, NeedsFortyPixelsOnEverySide) {
    const UpwardRect visible{100, 50, 1000, 800}; // to 1100, 850

    const struct {
        const char* why;
        UpwardRect frame;
        bool expected;
    } rows[] = {
        {"inside", {300, 100, 360, 420}, true},
        {"forty pixels at the left edge", {140 - 360, 100, 360, 420}, true},
        {"less at the left edge", {139 - 360, 100, 360, 420}, false},
        {"forty pixels at the right edge", {1060, 100, 360, 420}, true},
        {"less at the right edge", {1061, 100, 360, 420}, false},
        {"forty pixels at the bottom", {300, 90 - 420, 360, 420}, true},
        {"less at the bottom", {300, 89 - 420, 360, 420}, false},
        {"forty pixels at the top", {300, 810, 360, 420}, true},
        {"less at the top", {300, 811, 360, 420}, false},
        {"a panel larger than the screen", {0, 0, 3000, 3000}, true},
        {"on a screen that is gone", {5000, 100, 360, 420}, false},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(isComfortablyOnScreen(row.frame, visible), row.expected);
    }
}

TEST(BroughtBack, StandsWhereEveryStartOpensItAndKeepsItsSize) {
    EXPECT_EQ(broughtBack({5000, -3000, 500, 333}, {100, 50, 1000, 800}), (UpwardRect{140, 110, 500, 333}));
    EXPECT_TRUE(isComfortablyOnScreen(broughtBack({5000, -3000, 500, 333}, screen), screen));
}

TEST(ResizedFrame, MovesTheHeldEdgesAndNoOther) {
    const UpwardRect frame{100, 200, 400, 300}; // to 500, 500

    const struct {
        const char* why;
        ResizeHandle handle;
        UpwardRect expected; // the pointer went 10 to the right and 20 up
    } rows[] = {
        {"left", left, {110, 200, 390, 300}},
        {"right", right, {100, 200, 410, 300}},
        {"top", top, {100, 200, 400, 320}},
        {"bottom", bottom, {100, 220, 400, 280}},
        {"top left", topLeft, {110, 200, 390, 320}},
        {"top right", topRight, {100, 200, 410, 320}},
        {"bottom left", bottomLeft, {110, 220, 390, 280}},
        {"bottom right", bottomRight, {100, 220, 410, 280}},
        {"none", none, frame},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(resizedFrame(frame, row.handle, {10, 20}), row.expected);
        EXPECT_EQ(resizedFrame(frame, row.handle, {0, 0}), frame);
    }
}

TEST(ResizedFrame, GetsNoSmallerThanTheMinimum) {
    const UpwardRect frame{100, 200, 400, 300}; // to 500, 500

    const struct {
        const char* why;
        ResizeHandle handle;
        QPointF translation;
        UpwardRect expected;
    } rows[] = {
        {"left: the right edge stays", left, {1000, 0}, {220, 200, 280, 300}},
        {"right: the left edge stays", right, {-1000, 0}, {100, 200, 280, 300}},
        {"top: the bottom stays", top, {0, -1000}, {100, 200, 400, 200}},
        {"bottom: the top stays", bottom, {0, 1000}, {100, 300, 400, 200}},
        {"top left", topLeft, {1000, -1000}, {220, 200, 280, 200}},
        {"top right", topRight, {-1000, -1000}, {100, 200, 280, 200}},
        {"bottom left", bottomLeft, {1000, 1000}, {220, 300, 280, 200}},
        {"bottom right", bottomRight, {-1000, 1000}, {100, 300, 280, 200}},
        {"exactly the minimum", left, {120, 0}, {220, 200, 280, 300}},
        {"one axis alone", bottomRight, {-1000, -50}, {100, 150, 280, 350}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(resizedFrame(frame, row.handle, row.translation), row.expected);
    }
}

TEST(ResizedFrame, OfAPanelBelowTheMinimumGrowsToItAtTheTouchedSide) {
    // The idle panel is lower than a drag can make it.
    EXPECT_EQ(resizedFrame({0, 0, 360, 160}, top, {0, 0}), (UpwardRect{0, 0, 360, 200}));
    EXPECT_EQ(resizedFrame({0, 0, 360, 160}, right, {5, 0}), (UpwardRect{0, 0, 365, 160})) << "its height is not held";
}

TEST(ResizeHandles, LieAlongTheEdges) {
    const QSizeF size(360, 420);

    const struct {
        const char* why;
        QPointF position;
        ResizeHandle expected;
    } rows[] = {
        {"the middle", {180, 210}, none},
        {"left edge", {0, 210}, left},
        {"last pixel of the left edge", {5, 210}, left},
        {"beside the left edge", {6, 210}, none},
        {"right edge", {359, 210}, right},
        {"first pixel of the right edge", {354, 210}, right},
        {"beside the right edge", {353, 210}, none},
        {"top edge", {180, 0}, top},
        {"last pixel of the top edge", {180, 5}, top},
        {"below the top edge", {180, 6}, none},
        {"bottom edge", {180, 419}, bottom},
        {"first pixel of the bottom edge", {180, 414}, bottom},
        {"above the bottom edge", {180, 413}, none},
        {"top left corner", {0, 0}, topLeft},
        {"top right corner", {359, 0}, topRight},
        {"bottom left corner", {0, 419}, bottomLeft},
        {"bottom right corner", {359, 419}, bottomRight},
        {"a corner reaches down the left edge", {0, 13}, topLeft},
        {"and no further", {0, 14}, left},
        {"a corner reaches along the top", {13, 0}, topLeft},
        {"and no further along the top", {14, 0}, top},
        {"a corner reaches up the right edge", {359, 406}, bottomRight},
        {"and no further up", {359, 405}, right},
        {"a corner reaches back along the bottom", {346, 419}, bottomRight},
        {"and no further back", {345, 419}, bottom},
        {"inside the corner but on neither edge", {10, 10}, none},
        {"the pointer ran ahead of the panel", {-30, 210}, left},
        {"and past its corner", {400, 500}, bottomRight},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(resizeHandleAt(row.position, size), row.expected);
    }
}

TEST(ResizeHandles, NeverHoldOppositeEdges) {
    for (const QSizeF size : {QSizeF(20, 300), QSizeF(280, 16), QSizeF(13, 13)}) {
        for (double x = -1; x <= size.width() + 1; x += 1) {
            for (double y = -1; y <= size.height() + 1; y += 1) {
                const ResizeHandle handle = resizeHandleAt({x, y}, size);
                EXPECT_FALSE(handle.left && handle.right) << x << ", " << y;
                EXPECT_FALSE(handle.top && handle.bottom) << x << ", " << y;
            }
        }
    }
}

TEST(FramesBetween, GoFromOneToTheOther) {
    const UpwardRect from{0, 10, 360, 160};
    const UpwardRect to{8, 0, 420, 600};
    EXPECT_EQ(betweenFrames(from, to, 0), from);
    EXPECT_EQ(betweenFrames(from, to, 1), to);
    EXPECT_EQ(betweenFrames(from, to, 0.5), (UpwardRect{4, 5, 390, 380}));
}

TEST(UpwardFrames, TurnIntoQtsAndBack) {
    const struct {
        const char* why;
        QRect mainScreen;
        QRect downward;
        UpwardRect upward;
    } rows[] = {
        {"on the only screen", {0, 0, 1920, 1080}, {40, 600, 360, 420}, {40, 60, 360, 420}},
        {"at the top left", {0, 0, 1920, 1080}, {0, 0, 100, 100}, {0, 980, 100, 100}},
        {"at the bottom right", {0, 0, 1920, 1080}, {1820, 980, 100, 100}, {1820, 0, 100, 100}},
        {"left of the main screen", {0, 0, 1920, 1080}, {-500, 600, 360, 420}, {-500, 60, 360, 420}},
        {"below the main screen", {0, 0, 1920, 1080}, {40, 1100, 360, 420}, {40, -440, 360, 420}},
        {"a main screen that is not at the origin", {1280, 200, 1920, 1080}, {1320, 800, 360, 420}, {40, 60, 360, 420}},
        {"a main screen at a negative place", {-1920, -300, 1920, 1080}, {-1880, 300, 360, 420}, {40, 60, 360, 420}},
        {"no screen at all", {}, {40, 600, 360, 420}, {40, -1020, 360, 420}},
        {"nothing", {0, 0, 1920, 1080}, {0, 0, 0, 0}, {0, 1080, 0, 0}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(toUpward(row.downward, row.mainScreen), row.upward);
        EXPECT_EQ(fromUpward(row.upward, row.mainScreen), row.downward);
    }
}

TEST(UpwardFrames, RoundToTheNearestPixel) {
    const QRect main(0, 0, 1920, 1080);
    EXPECT_EQ(fromUpward({40.4, 60.4, 360.4, 419.6}, main), QRect(40, 600, 360, 420));
    EXPECT_EQ(fromUpward({40.5, 60, 163.2, 420}, main), QRect(41, 600, 163, 420));
    // While the height grows the bottom edge must not tremble.
    for (double height = 160; height < 600; height += 0.37) {
        const QRect rect = fromUpward({40, 60.3, 360, height}, main);
        ASSERT_EQ(rect.y() + rect.height(), 1020) << height;
    }
}

TEST(UpwardFrames, HaveTheirEdges) {
    const UpwardRect rect{10, 20, 300, 400};
    EXPECT_EQ(rect.minX(), 10);
    EXPECT_EQ(rect.minY(), 20);
    EXPECT_EQ(rect.maxX(), 310);
    EXPECT_EQ(rect.maxY(), 420);
    EXPECT_EQ(rect.size(), QSizeF(300, 400));
}

} // namespace pelloran
