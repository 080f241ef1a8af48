#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/MaterialView.h"
#include "overlay/OverlayPanel/views/TextLabel.h"
#include "tests/overlay/OverlayPanelControllerTest.h"
#include "tests/overlay/RectPrinting.h"
#include "tests/support/Printing.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>

#include <gtest/gtest.h>

// The panel's frame: whose it is, how it moves, and what follows from it.
namespace pelloran {

namespace {

using testing::PanelDrag;
using testing::turnEventLoop;

// The frame

TEST_F(OverlayPanelControllerTest, MovesItsFrameInTime) {
    showSettled();
    update(tiles(3));
    EXPECT_EQ(panel().height(), 420);
    time.pass(96);
    EXPECT_GT(panel().height(), 430);
    EXPECT_LT(panel().height(), 600);
    EXPECT_EQ(panel().frame().y, 60) << "it grows upward";
    time.pass(272);
    EXPECT_EQ(panel().frame().y, 60);
    time.pass(16);
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 600})) << "after 0.38 seconds";
}

TEST_F(OverlayPanelControllerTest, TurnsWhileTheFrameMovesTowardAnotherTarget) {
    showSettled();
    update(tiles(3));
    time.pass(96);
    update(message());
    settle();
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 160}));
    // What the program did is not taken for the user's wish.
    updateSettled(tiles(3));
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 600}));
    updateSettled(message());
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 160}));
}

TEST_F(OverlayPanelControllerTest, KeepsItsFrameOnTheScreen) {
    showSettled();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    panel().setFrame({screen.width() - 200.0, screen.height() - 100.0, 360, 420});
    updateSettled(tiles(3));
    EXPECT_EQ(panel().frame(), (UpwardRect{screen.width() - 368.0, screen.height() - 608.0, 360, 600}));
}

TEST_F(OverlayPanelControllerTest, RespectsTheSizeTheUserGaveIt) {
    showSettled();
    updateSettled(tiles(3));
    dragWidthTo(400);
    settle();
    updateSettled(message());
    EXPECT_EQ(panel().frame().size(), QSizeF(400, 600)) << "neither narrower nor lower";
    updateSettled(tiles(3));
    EXPECT_EQ(panel().frame().size(), QSizeF(400, 600));
    updateSettled(tiles(1));
    EXPECT_EQ(panel().frame().size(), QSizeF(400, 600));

    panel().setFrame({40, 60, 300, 700}); // somebody else's doing
    settle();
    updateSettled(tiles(2));
    EXPECT_EQ(panel().frame().size(), QSizeF(400, 600)) << "the user's word stands";
}

TEST_F(OverlayPanelControllerTest, RespectsTheLastStepOfADragToo) {
    showSettled();
    updateSettled(tiles(3));
    {
        PanelDrag drag(panel(), {359, 300});
        drag.moveBy({20, 0});
        turnEventLoop();
        drag.moveBy({40, 0});
        drag.release(); // without a turn in between
    }
    settle();
    updateSettled(tiles(3, u"Next"_s));
    EXPECT_EQ(panel().width(), 400);

    PanelDrag flick(panel(), {399, 300});
    flick.moveBy({-60, 0});
    flick.release();
    updateSettled(message());
    updateSettled(tiles(3));
    EXPECT_EQ(panel().width(), 340);
}

TEST_F(OverlayPanelControllerTest, DoesNotTakeOtherResizingForTheUsers) {
    showSettled();
    panel().setFrame({40, 60, 500, 700});
    settle();
    updateSettled(message());
    EXPECT_EQ(panel().frame().size(), QSizeF(500, 160)) << "the height is not the user's";
}

TEST_F(OverlayPanelControllerTest, LetsTheUserHoldAnEdgeInPeace) {
    showSettled();
    updateSettled(tiles(3));
    PanelDrag drag(panel(), {359, 300});
    drag.moveBy({140, 0});
    turnEventLoop();
    updateSettled(message());
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 500, 600}));
    EXPECT_TRUE(root().messageLabel->isVisible()) << "but the content is the new one";
    updateSettled(tiles(3));
    EXPECT_EQ(panel().width(), 500) << "or no row could ever be reached";
    drag.moveBy({180, 0});
    EXPECT_EQ(panel().width(), 540);
    drag.release();
    settle();
    EXPECT_EQ(panel().width(), 540);
    updateSettled(tiles(3, u"Next"_s));
    EXPECT_EQ(panel().width(), 420) << "as wide as a column may be";
}

TEST_F(OverlayPanelControllerTest, LetsTheUserTakeOverAMovingFrame) {
    showSettled();
    update(tiles(3));
    time.pass(64);
    const UpwardRect moving = panel().frame();
    ASSERT_LT(moving.height, 600);
    PanelDrag drag(panel(), {359, 100});
    drag.moveBy({20, 0});
    time.pass(400);
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 380, moving.height})) << "the movement has stopped";
    drag.release();
    settle();
    updateSettled(message());
    EXPECT_EQ(panel().frame().size(), QSizeF(380, moving.height)) << "and the size counts as the user's";
}

TEST_F(OverlayPanelControllerTest, DoesNotResizeUnderTheHandThatMovesIt) {
    showSettled();
    PanelDrag drag(panel(), {180, 300});
    drag.moveBy({50, 0});
    update(tiles(3));
    time.pass(100);
    drag.moveBy({60, 0});
    time.pass(400);
    EXPECT_EQ(panel().frame(), (UpwardRect{100, 60, 360, 420}));
    drag.release();
    updateSettled(tiles(3));
    EXPECT_EQ(panel().frame(), (UpwardRect{100, 60, 360, 600}));
}

// Geometry ticks

TEST_F(OverlayPanelControllerTest, AnimatesTheLayoutWhenItComesToRest) {
    showSettled();
    QSignalSpy layouts(controller.get(), &OverlayPanelController::layoutApplied);
    panel().setFrame({40, 60, 500, 420});
    EXPECT_EQ(layouts.count(), 0) << "not before the turn ends";
    turnEventLoop();
    EXPECT_EQ(layouts.count(), 1);
    EXPECT_EQ(metrics(), ResolvedMetrics::resolve({500, 420}, 0, Axis::vertical));
    EXPECT_EQ(root().titleLabel->textFont(), FontCache::shared().font(15.5, QFont::DemiBold)) << "fonts at once";
    EXPECT_EQ(root().titleLabel->x(), 12) << "lengths on their way";
    time.pass(48);
    EXPECT_GT(root().titleLabel->x(), 12);
    time.pass(240);
    EXPECT_EQ(root().titleLabel->x(), 15);
    EXPECT_EQ(views<MaterialView>().front()->cornerRadius(), 14.5);
    EXPECT_EQ(layouts.count(), 1);
}

TEST_F(OverlayPanelControllerTest, StoresNothingWhenItComesToRestUnchanged) {
    showSettled();
    const ResolvedMetrics before = metrics();
    panel().setFrame({40, 60, 360, 421});
    ASSERT_NE(ResolvedMetrics::resolve({360, 421}, 0, Axis::vertical).scale, before.scale);
    settle();
    EXPECT_EQ(metrics(), before);
}

TEST_F(OverlayPanelControllerTest, StoresEveryStepOfADrag) {
    showSettled();
    PanelDrag drag(panel(), {180, 1});
    QSignalSpy layouts(controller.get(), &OverlayPanelController::layoutApplied);
    drag.moveBy({0, -1});
    turnEventLoop();
    EXPECT_EQ(metrics(), ResolvedMetrics::resolve({360, 421}, 0, Axis::vertical));
    EXPECT_EQ(layouts.count(), 0) << "though no length has changed";
}

TEST_F(OverlayPanelControllerTest, AppliesADragAtOnce) {
    showSettled();
    updateSettled(tiles(3));
    QSignalSpy layouts(controller.get(), &OverlayPanelController::layoutApplied);
    PanelDrag drag(panel(), {359, 300});
    drag.moveBy({140, 0});
    turnEventLoop();
    EXPECT_EQ(layouts.count(), 1);
    const ResolvedMetrics expected = ResolvedMetrics::resolve({500, 600}, 3, Axis::vertical);
    EXPECT_EQ(metrics(), expected);
    EXPECT_EQ(root().titleLabel->x(), std::lround(expected.contentInset)) << "no animation";
    EXPECT_EQ(root().titleLabel->textFont(), FontCache::shared().font(expected.titleSize, QFont::DemiBold));
    EXPECT_EQ(tile(0).nameLabel->textFont(), FontCache::shared().font(expected.nameSize, QFont::Bold));
    drag.release();
    settle();
    EXPECT_EQ(layouts.count(), 1) << "the end of the drag brings nothing new";
}

TEST_F(OverlayPanelControllerTest, TicksOncePerTurnInALongDrag) {
    showSettled();
    updateSettled(tiles(3));
    QSignalSpy layouts(controller.get(), &OverlayPanelController::layoutApplied);
    std::size_t fonts = 0;
    for (const bool again : {false, true}) {
        PanelDrag drag(panel(), {panel().width() - 1.0, 300});
        for (int turn = 0; turn < 30; ++turn) {
            for (int move = 0; move < 10; ++move) {
                drag.moveBy({static_cast<double>(turn < 15 ? turn * 10 + move : 300 - turn * 10 - move), 0});
            }
            layouts.clear();
            turnEventLoop();
            EXPECT_LE(layouts.count(), 1);
            EXPECT_EQ(metrics().scale, ResolvedMetrics::resolve(panel().frame().size(), 3, Axis::vertical).scale)
                << "and it is up to date";
        }
        drag.release();
        settle();
        if (again) {
            EXPECT_EQ(FontCache::shared().count(), fonts) << "the second time every font is there";
        }
        fonts = FontCache::shared().count();
    }
}

} // namespace

} // namespace pelloran
