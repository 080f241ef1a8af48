#include "overlay/OverlayPanel/views/TextLabel.h"
#include "tests/overlay/OverlayPanelControllerTest.h"
#include "tests/overlay/RectPrinting.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

// Tiles side by side or on top of each other, and the turn from one to the other.
namespace pelloran {

namespace {

using testing::PanelDrag;
using testing::turnEventLoop;

TEST_F(OverlayPanelControllerTest, TurnsIntoARowAfterTheDragAndBack) {
    showSettled();
    updateSettled(tiles(3));
    dragWidthTo(700, false);
    EXPECT_EQ(metrics().axis, Axis::vertical) << "never in the hand";
    EXPECT_FALSE(tilesStandSideBySide());
    EXPECT_EQ(metrics(), ResolvedMetrics::resolve({700, 600}, 3, Axis::vertical).along(Axis::vertical));
    QMouseEvent release(QEvent::MouseButtonRelease, {}, {}, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel(), &release);
    turnEventLoop();
    EXPECT_EQ(metrics().axis, Axis::horizontal);
    EXPECT_TRUE(tilesStandSideBySide()) << "laid out at once";
    ASSERT_EQ(views<FadingPicture>().size(), 1U) << "beneath a picture of the column";
    EXPECT_NEAR(stack().alpha(), 0, 0.01);
    time.pass(96);
    EXPECT_GT(stack().alpha(), 0);
    EXPECT_LT(stack().alpha(), 1);
    time.pass(128);
    EXPECT_EQ(stack().alpha(), 1) << "after 0.22 seconds";
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(views<FadingPicture>().empty());

    updateSettled(tiles(3, u"Next"_s));
    EXPECT_EQ(panel().frame().size(), QSizeF(700, 420)) << "a row is no higher than that";
    EXPECT_TRUE(tilesStandSideBySide());
    for (const std::size_t index : {1U, 2U}) {
        EXPECT_NEAR(tile(index).x() - tile(index - 1).geometry().right() - 1, metrics().cardSpacing, 1);
        EXPECT_EQ(tile(index).height(), stack().height());
        EXPECT_NEAR(tile(index).width(), tile(0).width(), 1);
    }

    dragWidthTo(560);
    settle();
    EXPECT_EQ(metrics().axis, Axis::horizontal) << "kept in the band";
    dragWidthTo(510);
    settle();
    EXPECT_EQ(metrics().axis, Axis::vertical);
    EXPECT_FALSE(tilesStandSideBySide());
}

TEST_F(OverlayPanelControllerTest, DoesNotTurnInTheHandForASnapshot) {
    showSettled();
    updateSettled(tiles(3));
    PanelDrag drag(panel(), {359, 300});
    drag.moveBy({340, 0});
    turnEventLoop();
    updateSettled(tiles(3, u"Next"_s));
    EXPECT_EQ(metrics().axis, Axis::vertical) << "though it asks for a settled look";
    EXPECT_TRUE(views<FadingPicture>().empty());
    drag.release();
    settle();
    EXPECT_EQ(metrics().axis, Axis::horizontal);
}

TEST_F(OverlayPanelControllerTest, TurnsBackForASingleTileOfTheSameSize) {
    showSettled();
    updateSettled(tiles(3));
    dragWidthTo(700);
    settle();
    updateSettled(tiles(3));
    const UpwardRect frame = panel().frame();
    ASSERT_EQ(metrics().axis, Axis::horizontal);
    update(tiles(1));
    EXPECT_EQ(panel().frame(), frame) << "no change of the size tells of it";
    EXPECT_EQ(metrics().axis, Axis::vertical);
}

TEST_F(OverlayPanelControllerTest, LosesTicksWhileTheAxisTurns) {
    showSettled();
    updateSettled(tiles(3));
    dragWidthTo(700);
    ASSERT_EQ(metrics().axis, Axis::horizontal);
    const ResolvedMetrics turning = metrics();
    time.pass(32);
    panel().setFrame({40, 60, 500, 420});
    time.pass(64);
    EXPECT_EQ(metrics(), turning);
    settle();
    EXPECT_EQ(metrics(), turning) << "nobody makes up for it";
    controller->show();
    turnEventLoop();
    EXPECT_EQ(metrics().axis, Axis::vertical) << "before the next occasion";
}

TEST_F(OverlayPanelControllerTest, TurnsAtOnceForWhoAsksForLessMotion) {
    settings.setReducesMotion(true);
    controller->show();
    turnEventLoop();
    update(tiles(3));
    turnEventLoop();
    EXPECT_EQ(stack().alpha(), 1);
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 600}));
    dragWidthTo(700);
    EXPECT_EQ(metrics().axis, Axis::horizontal);
    EXPECT_TRUE(tilesStandSideBySide());
    EXPECT_TRUE(views<FadingPicture>().empty());
    EXPECT_EQ(stack().alpha(), 1);
    EXPECT_EQ(root().titleLabel->x(), std::lround(metrics().contentInset));

    // Every guard is down again: ticks are heard, and a drag still counts as the user's.
    dragWidthTo(510);
    EXPECT_EQ(metrics().axis, Axis::vertical);
    dragWidthTo(390);
    update(message());
    turnEventLoop();
    EXPECT_EQ(panel().frame().size(), QSizeF(390, 600));
}

TEST_F(OverlayPanelControllerTest, FollowsAChangeOfMindAboutMotion) {
    showSettled();
    settings.setReducesMotion(true);
    update(tiles(3));
    turnEventLoop();
    EXPECT_EQ(panel().height(), 600);
    EXPECT_EQ(stack().alpha(), 1);
    settings.setReducesMotion(false);
    update(message());
    EXPECT_EQ(panel().height(), 600);
    time.pass(400);
    EXPECT_EQ(panel().height(), 160);
}

TEST_F(OverlayPanelControllerTest, MovesNothingWhenToldSoWhateverTheDesktopSays) {
    build(MotionPreference::reduced);
    controller->show();
    turnEventLoop();
    update(tiles(3));
    EXPECT_EQ(panel().height(), 600);
    EXPECT_EQ(stack().alpha(), 1);
}

TEST_F(OverlayPanelControllerTest, TurnsBackWhenTheTilesGo) {
    showSettled();
    updateSettled(tiles(3));
    dragWidthTo(700);
    settle();
    updateSettled(tiles(3));
    ASSERT_EQ(metrics().axis, Axis::horizontal);
    updateSettled(message());
    EXPECT_EQ(metrics().axis, Axis::vertical) << "nothing stands side by side";
    EXPECT_EQ(stack().alpha(), 1);
    updateSettled(tiles(3));
    EXPECT_EQ(panel().width(), 420) << "the next tiles stand in a column again";
    EXPECT_EQ(metrics().axis, Axis::vertical);
}

TEST_F(OverlayPanelControllerTest, TurnsBackBeneathAMessageThatTakesAllTheRoom) {
    showSettled();
    updateSettled(tiles(3));
    dragWidthTo(700);
    settle();
    updateSettled(tiles(3));
    panel().setFrame({40, 60, 700, 200});
    settle();
    updateSettled(message(u"word "_s.repeated(2000)));
    EXPECT_EQ(metrics().axis, Axis::vertical);
    updateSettled(tiles(3));
    EXPECT_EQ(tilesShown(), 3);
    EXPECT_EQ(stack().alpha(), 1);
}

TEST_F(OverlayPanelControllerTest, TakesSnapshotsWhileTheAxisTurns) {
    showSettled();
    updateSettled(tiles(3));
    dragWidthTo(700);
    time.pass(64);
    update(tiles(2));
    EXPECT_EQ(tilesShown(), 2);
    EXPECT_EQ(stack().alpha(), 1);
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(views<FadingPicture>().empty());
    EXPECT_EQ(stack().alpha(), 1);
    EXPECT_TRUE(looksAsResolvedFor(2, Axis::horizontal)) << "ticks are heard again";
}

} // namespace

} // namespace pelloran
