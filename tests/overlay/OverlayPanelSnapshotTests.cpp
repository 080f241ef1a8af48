#include "overlay/OverlayPanel/views/CardTileView.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/MetricRowView.h"
#include "overlay/OverlayPanel/views/TextLabel.h"
#include "tests/overlay/OverlayPanelControllerTest.h"
#include "tests/overlay/RectPrinting.h"
#include "tests/support/EventCounter.h"
#include "tests/support/Printing.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <thread>

// What the panel shows of the snapshots that it is given.
namespace pelloran {

namespace {

using testing::EventCounter;
using testing::PanelDrag;
using testing::turnEventLoop;

TEST_F(OverlayPanelControllerTest, FadesTheFirstTilesIn) {
    showSettled();
    update(tiles(3));
    EXPECT_EQ(tilesShown(), 3);
    EXPECT_NEAR(stack().alpha(), 0, 0.01);
    time.pass(64);
    EXPECT_GT(stack().alpha(), 0.2);
    EXPECT_LT(stack().alpha(), 1);
    time.pass(208);
    EXPECT_LT(stack().alpha(), 1) << "after 0.272 seconds";
    time.pass(16);
    EXPECT_EQ(stack().alpha(), 1);
}

TEST_F(OverlayPanelControllerTest, FadesOnlyTilesThatWereNotThere) {
    showSettled();
    const OverlaySnapshot nothing{u"t"_s, {}, {}, true, DraftPhase::cardPick};
    OverlaySnapshot renamedSlots = tiles(3);
    renamedSlots.cards[1].slotLabel = u"another"_s;
    OverlaySnapshot withMessage = renamedSlots;
    withMessage.message = u"and a word"_s;

    const struct {
        const char* why;
        OverlaySnapshot next;
        bool fades;
    } rows[] = {
        {"a message is no tile", message(), false},
        {"tiles after a message", tiles(3), true},
        {"the same", tiles(3), false},
        {"other names", tiles(3, u"Frostbolt"_s), false},
        {"fewer tiles", tiles(2), false},
        {"more tiles", tiles(3), false},
        {"another caption", renamedSlots, false},
        {"a message beside them", withMessage, false},
        {"nothing", nothing, false},
        {"tiles after nothing", tiles(1), true},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        update(row.next);
        EXPECT_EQ(stack().alpha() < 1, row.fades);
        settle();
        EXPECT_EQ(stack().alpha(), 1);
    }
}

TEST_F(OverlayPanelControllerTest, RebindsTheSameTilesWithoutALayout) {
    showSettled();
    updateSettled(tiles(3));
    QSignalSpy layouts(controller.get(), &OverlayPanelController::layoutApplied);
    const QRect place = tile(2).geometry();
    OverlaySnapshot next = tiles(3, u"Frostbolt"_s);
    next.title = u"Mage · pick 4"_s;
    next.cards[1].metrics[0].highlight = MetricHighlight::high;
    next.cards[1].metrics[0].value = 60.0;
    for (int times = 0; times < 3; ++times) {
        update(next);
        EXPECT_EQ(tile(2).nameLabel->text(), u"Frostbolt"_s);
        EXPECT_EQ(tile(1).metricPool[0]->valLabel->text(), u"60.0%"_s);
        EXPECT_EQ(tile(1).metricPool[0]->valueWeight, QFont::Bold);
        EXPECT_EQ(root().titleLabel->text(), u"Mage · pick 4"_s);
        EXPECT_EQ(stack().alpha(), 1);
        settle();
    }
    EXPECT_EQ(layouts.count(), 0);
    EXPECT_EQ(tile(2).geometry(), place);
}

TEST_F(OverlayPanelControllerTest, AsksForNoLayoutWhenNothingChanged) {
    showSettled();
    updateSettled(tiles(3));
    std::vector<std::unique_ptr<EventCounter>> requests;
    for (QWidget* widget : panel().findChildren<QWidget*>()) {
        requests.push_back(std::make_unique<EventCounter>(*widget, QEvent::LayoutRequest));
    }
    requests.push_back(std::make_unique<EventCounter>(panel(), QEvent::LayoutRequest));
    updateSettled(tiles(3));
    for (const auto& counter : requests) {
        EXPECT_EQ(counter->take(), 0);
    }
}

TEST_F(OverlayPanelControllerTest, ShowsAMessageInPlaceOfTiles) {
    showSettled();
    updateSettled(tiles(3));
    updateSettled(message(u"Waiting for the game"_s));
    EXPECT_TRUE(root().messageLabel->isVisible());
    EXPECT_EQ(root().messageLabel->text(), u"Waiting for the game"_s);
    EXPECT_EQ(root().titleLabel->text(), u"Arena"_s);
    EXPECT_TRUE(stack().isHidden());
    for (const CardTileView* view : views<CardTileView>()) {
        EXPECT_TRUE(view->isHidden());
    }
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 160}));
    EXPECT_TRUE(looksAsResolvedFor(0));
    EXPECT_EQ(root().messageLabel->y(),
              root().titleLabel->geometry().bottom() + 1 + std::lround(metrics().sectionSpacing));

    updateSettled(message(u"Another one"_s));
    EXPECT_EQ(root().messageLabel->text(), u"Another one"_s);
    EXPECT_TRUE(stack().isHidden());

    updateSettled(tiles(3));
    EXPECT_TRUE(root().messageLabel->isHidden());
    EXPECT_EQ(tilesShown(), 3);
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 600})) << "the bottom left corner stayed";
}

TEST_F(OverlayPanelControllerTest, WrapsALongMessage) {
    showSettled();
    updateSettled(message(u"Waiting for the game to begin its next draft. "_s.repeated(4)));
    EXPECT_GE(root().messageLabel->height(), 3 * root().messageLabel->lineHeight());
    updateSettled(message(u"Short"_s));
    EXPECT_EQ(root().messageLabel->height(), root().messageLabel->lineHeight());
}

TEST_F(OverlayPanelControllerTest, NeverShowsAMessageBesideTiles) {
    showSettled();
    OverlaySnapshot both = tiles(2);
    both.message = u"and a word"_s;
    updateSettled(both);
    EXPECT_EQ(tilesShown(), 2);
    EXPECT_TRUE(root().messageLabel->isHidden());
    updateSettled(message());
    updateSettled(both);
    EXPECT_EQ(tilesShown(), 2);
    EXPECT_TRUE(root().messageLabel->isHidden());
}

TEST_F(OverlayPanelControllerTest, ShowsNeitherWhenThereIsNeither) {
    showSettled();
    updateSettled({u"title alone"_s, {}, {}, true, DraftPhase::cardPick});
    EXPECT_EQ(tilesShown(), 0);
    EXPECT_TRUE(root().messageLabel->isHidden());
    EXPECT_EQ(root().titleLabel->text(), u"title alone"_s);
    EXPECT_EQ(panel().height(), 160);
}

TEST_F(OverlayPanelControllerTest, ShowsTheFirstThreeOfMoreTiles) {
    showSettled();
    updateSettled(tiles(5));
    EXPECT_EQ(tilesShown(), 3);
    EXPECT_EQ(views<CardTileView>().size(), 3U);
    EXPECT_EQ(tile(2).slotLabel->text(), u"【2】"_s);
    EXPECT_TRUE(looksAsResolvedFor(3));
    QSignalSpy layouts(controller.get(), &OverlayPanelController::layoutApplied);
    updateSettled(tiles(5, u"Frostbolt"_s));
    EXPECT_EQ(tile(2).nameLabel->text(), u"Frostbolt"_s);
    EXPECT_EQ(layouts.count(), 0) << "three shown tiles are bound again, no more";
}

TEST_F(OverlayPanelControllerTest, NeverMakesAnotherTile) {
    showSettled();
    const auto made = views<CardTileView>();
    for (const OverlaySnapshot& snapshot : {tiles(3), message(), tiles(1), tiles(7), tiles(0), tiles(2)}) {
        updateSettled(snapshot);
        EXPECT_EQ(views<CardTileView>(), made);
    }
}

TEST_F(OverlayPanelControllerTest, GivesTilesThatWereHiddenTheLengthsInForce) {
    showSettled();
    updateSettled(tiles(1));
    dragWidthTo(415);
    PanelDrag upward(panel(), {200, 1});
    upward.moveBy({0, -300});
    turnEventLoop();
    upward.release();
    settle();
    QSignalSpy layouts(controller.get(), &OverlayPanelController::layoutApplied);
    updateSettled(tiles(3));
    ASSERT_EQ(layouts.count(), 0) << "the panel is large enough for all of them";
    for (const std::size_t index : {0U, 1U, 2U}) {
        EXPECT_EQ(tile(index).minimumTileWidth(), metrics().cardMinWidth);
        EXPECT_EQ(tile(index).slotLabel->x(), std::lround(metrics().cardPadding + 2));
        EXPECT_EQ(tile(index).nameLabel->textFont(), FontCache::shared().font(metrics().nameSize, QFont::Bold));
    }
}

TEST_F(OverlayPanelControllerTest, SharesItsRoomEquallyBetweenTheTiles) {
    showSettled();
    for (const int count : {1, 2, 3}) {
        updateSettled(tiles(count));
        EXPECT_EQ(stack().x(), std::lround(metrics().contentInset));
        EXPECT_EQ(stack().geometry().right() + 1, panel().width() - std::lround(metrics().contentInset));
        EXPECT_EQ(stack().geometry().bottom() + 1, panel().height() - std::lround(metrics().contentInset));
        EXPECT_EQ(stack().y(), root().titleLabel->geometry().bottom() + 1 + std::lround(metrics().sectionSpacing));
        for (std::size_t index = 0; index < static_cast<std::size_t>(count); ++index) {
            EXPECT_EQ(tile(index).width(), stack().width());
            EXPECT_NEAR(tile(index).height(), tile(0).height(), 1);
            if (index > 0) {
                EXPECT_NEAR(tile(index).y() - tile(index - 1).geometry().bottom() - 1, metrics().cardSpacing, 1);
            }
        }
        EXPECT_EQ(tile(static_cast<std::size_t>(count) - 1).geometry().bottom() + 1, stack().height());
    }
}

TEST_F(OverlayPanelControllerTest, TakesSnapshotsFromAnyThread) {
    showSettled();
    std::thread([this] { controller->update(tiles(2)); }).join();
    EXPECT_EQ(tilesShown(), 0) << "only when this thread gets to it";
    settle();
    EXPECT_EQ(tilesShown(), 2);
}

TEST_F(OverlayPanelControllerTest, TakesTheLastOfManySnapshots) {
    showSettled();
    controller->update(tiles(3));
    controller->update(message());
    controller->update(tiles(1, u"Last"_s));
    settle();
    EXPECT_EQ(tilesShown(), 1);
    EXPECT_EQ(tile(0).nameLabel->text(), u"Last"_s);
    EXPECT_EQ(panel().height(), 420) << "high enough for one tile before it could move for the others";
}

} // namespace

} // namespace pelloran
