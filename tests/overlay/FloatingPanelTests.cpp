#include "overlay/OverlayPanel/views/FloatingPanel.h"

#include "overlay/OverlayPanel/views/CloseButton.h"
#include "tests/overlay/RectPrinting.h"
#include "tests/support/ManualAnimationTime.h"
#include "tests/support/PanelDrag.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace pelloran {

namespace {

using testing::PanelDrag;
using testing::turnEventLoop;

class FloatingPanelTest : public ::testing::Test {
protected:
    FloatingPanelTest() {
        panel.show();
        turnEventLoop();
    }

    FloatingPanel panel{Qt::Window};
    QSignalSpy dragStarts{&panel, &FloatingPanel::willStartDrag};
    QSignalSpy liveStarts{&panel, &FloatingPanel::willStartLiveResize};
    QSignalSpy liveEnds{&panel, &FloatingPanel::didEndLiveResize};
};

} // namespace

TEST_F(FloatingPanelTest, OpensAtItsPlace) {
    EXPECT_EQ(panel.frame(), initialFrame);
    EXPECT_EQ(panel.frame(), (UpwardRect{40, 60, 360, 420}));
    EXPECT_TRUE(panel.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(panel.testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_TRUE(panel.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_EQ(panel.minimumSize(), QSize(0, 0)) << "the idle panel is lower than any drag makes it";
}

TEST_F(FloatingPanelTest, IsMovedByItsBackground) {
    PanelDrag drag(panel, {180, 200});
    EXPECT_EQ(dragStarts.count(), 1);
    EXPECT_EQ(panel.hold(), UserHold::background);
    EXPECT_FALSE(panel.inLiveResize());
    drag.moveBy({30, 50});
    EXPECT_EQ(panel.frame(), (UpwardRect{70, 10, 360, 420}));
    drag.moveBy({-10, -20});
    EXPECT_EQ(panel.frame(), (UpwardRect{30, 80, 360, 420})) << "from where it began";
    drag.release();
    EXPECT_EQ(panel.hold(), UserHold::nothing);
    EXPECT_EQ(liveStarts.count() + liveEnds.count(), 0) << "a move is no resizing";
}

TEST_F(FloatingPanelTest, IsResizedAtEveryEdgeAndCorner) {
    const struct {
        const char* why;
        QPointF hold;
        UpwardRect expected; // 20 to the right, 10 down
    } rows[] = {
        {"left", {1, 200}, {60, 60, 340, 420}},        {"right", {358, 200}, {40, 60, 380, 420}},
        {"top", {180, 1}, {40, 60, 360, 410}},         {"bottom", {180, 418}, {40, 50, 360, 430}},
        {"top left", {1, 1}, {60, 60, 340, 410}},      {"top right", {358, 1}, {40, 60, 380, 410}},
        {"bottom left", {1, 418}, {60, 50, 340, 430}}, {"bottom right", {358, 418}, {40, 50, 380, 430}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        panel.setFrame(initialFrame);
        liveStarts.clear();
        liveEnds.clear();
        PanelDrag drag(panel, row.hold);
        EXPECT_EQ(liveStarts.count(), 1);
        EXPECT_TRUE(panel.inLiveResize());
        drag.moveBy({7, 3});
        drag.moveBy({20, 10});
        EXPECT_EQ(panel.frame(), row.expected);
        EXPECT_EQ(liveEnds.count(), 0);
        drag.release();
        EXPECT_EQ(liveEnds.count(), 1);
        EXPECT_FALSE(panel.inLiveResize());
    }
}

TEST_F(FloatingPanelTest, GetsNoSmallerByDraggingThanItsMinimum) {
    PanelDrag drag(panel, {358, 418});
    drag.moveBy({-500, -500});
    EXPECT_EQ(panel.size(), QSize(280, 200));
    drag.moveBy({10, 10});
    EXPECT_EQ(panel.size(), QSize(370, 430)) << "the pointer counts from where it took hold";
    drag.release();
}

TEST_F(FloatingPanelTest, ListensToTheLeftButtonOnly) {
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        const QPointF at(180, 200);
        QMouseEvent press(QEvent::MouseButtonPress, at, panel.mapToGlobal(at), button, button, Qt::NoModifier);
        QCoreApplication::sendEvent(&panel, &press);
        EXPECT_EQ(panel.hold(), UserHold::nothing);
    }
    PanelDrag drag(panel, {358, 200});
    const QPointF at(180, 200);
    QMouseEvent release(QEvent::MouseButtonRelease, at, panel.mapToGlobal(at), Qt::RightButton, Qt::LeftButton,
                        Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &release);
    EXPECT_TRUE(panel.inLiveResize()) << "another button let go ends no drag";
    drag.release();
}

TEST_F(FloatingPanelTest, EndsItsDragWhenItIsHidden) {
    PanelDrag drag(panel, {358, 200});
    panel.hide();
    EXPECT_EQ(liveEnds.count(), 1);
    EXPECT_EQ(panel.hold(), UserHold::nothing);
    drag.release();
    EXPECT_EQ(liveEnds.count(), 1);
}

TEST_F(FloatingPanelTest, EndsItsDragWhenTheReleaseWentElsewhere) {
    {
        const PanelDrag lost(panel, {358, 200});
        ASSERT_TRUE(panel.inLiveResize());
    }
    const UpwardRect frame = panel.frame();
    const QPointF at(100, 100);
    QMouseEvent hover(QEvent::MouseMove, at, panel.mapToGlobal(at), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &hover);
    EXPECT_EQ(panel.hold(), UserHold::nothing) << "a pointer without a button held holds nothing";
    EXPECT_EQ(panel.frame(), frame);
    EXPECT_EQ(liveEnds.count(), 1);
    EXPECT_EQ(panel.cursor().shape(), Qt::ArrowCursor);

    {
        const PanelDrag lost(panel, {358, 200});
        ASSERT_TRUE(panel.inLiveResize());
    }
    PanelDrag next(panel, {180, 200}); // without a move in between
    EXPECT_EQ(liveEnds.count(), 2);
    EXPECT_EQ(panel.hold(), UserHold::background);
    EXPECT_FALSE(panel.inLiveResize());
    next.release();
    EXPECT_EQ(liveEnds.count(), 2);
}

TEST_F(FloatingPanelTest, TellsEveryChangeOfItsSizeAndNoneOfItsPlace) {
    QSignalSpy resizes(&panel, &FloatingPanel::didResize);
    panel.setFrame({50, 80, 360, 420});
    EXPECT_EQ(resizes.count(), 0);
    panel.setFrame({50, 80, 361, 420});
    EXPECT_EQ(resizes.count(), 1);
}

TEST_F(FloatingPanelTest, IsHiddenByItsButton) {
    auto* button = panel.findChild<CloseButton*>();
    ASSERT_TRUE(button);
    for (const double inset : {10.5, 12.0, 16.5}) {
        panel.placeCloseButton(inset);
        EXPECT_TRUE(panel.rect().contains(button->geometry()));
        EXPECT_GT(button->x(), panel.width() / 2);
        EXPECT_LT(button->y(), 20);
    }
    panel.resize(500, 300);
    EXPECT_GT(button->x(), 460) << "it stays in its corner";
    button->click();
    EXPECT_FALSE(panel.isVisible());
    EXPECT_EQ(button->focusPolicy(), Qt::NoFocus);
}

TEST_F(FloatingPanelTest, ShowsByThePointerWhereItCanBeHeld) {
    const struct {
        QPointF at;
        Qt::CursorShape expected;
    } rows[] = {
        {{180, 200}, Qt::ArrowCursor},     {{1, 200}, Qt::SizeHorCursor},   {{358, 200}, Qt::SizeHorCursor},
        {{180, 1}, Qt::SizeVerCursor},     {{180, 418}, Qt::SizeVerCursor}, {{1, 1}, Qt::SizeFDiagCursor},
        {{358, 418}, Qt::SizeFDiagCursor}, {{358, 1}, Qt::SizeBDiagCursor}, {{1, 418}, Qt::SizeBDiagCursor},
    };

    for (const auto& row : rows) {
        QMouseEvent move(QEvent::MouseMove, row.at, panel.mapToGlobal(row.at), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(&panel, &move);
        EXPECT_EQ(panel.cursor().shape(), row.expected) << row.at.x() << ", " << row.at.y();
    }
}

} // namespace pelloran
