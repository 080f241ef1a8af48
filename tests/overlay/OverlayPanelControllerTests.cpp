#include "overlay/OverlayPanelController.h"

#include "localisation/AppLanguage.h"
#include "overlay/OverlayPanel/views/CardsStack.h"
#include "overlay/OverlayPanel/views/CardTileView.h"
#include "overlay/OverlayPanel/views/CloseButton.h"
#include "overlay/OverlayPanel/views/FloatingPanel.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/MaterialView.h"
#include "overlay/OverlayPanel/views/MetricRowView.h"
#include "overlay/OverlayPanel/views/RootContent.h"
#include "overlay/OverlayPanel/views/TextLabel.h"
#include "tests/fakes/FakePanelWindow.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/overlay/RectPrinting.h"
#include "tests/support/EventCounter.h"
#include "tests/support/ExpectedWarning.h"
#include "tests/support/ManualAnimationTime.h"
#include "tests/support/PanelDrag.h"
#include "tests/support/Printing.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QPalette>
#include <QScreen>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <thread>

namespace pelloran {

namespace {

using namespace Qt::StringLiterals;
using testing::EventCounter;
using testing::ExpectedWarning;
using testing::FakePanelWindow;
using testing::PanelDrag;
using testing::turnEventLoop;

// Widgets remember their mask all the same.
const QString noMasks = u"This plugin does not support setting window masks"_s;

OverlaySnapshot tiles(int count, const QString& name = u"Fireball"_s) {
    OverlaySnapshot snapshot{u"Mage · pick 3"_s, {}, {}, true, DraftPhase::cardPick};
    for (int index = 0; index < count; ++index) {
        OverlayCardViewModel card{QString::number(index), name, {}, {}, true};
        for (const MetricKind kind : MetricKind::cardKinds()) {
            card.metrics.emplace_back(kind, 50.0 + index);
        }
        snapshot.cards.push_back(card);
    }
    return snapshot;
}

OverlaySnapshot message(const QString& text = u"Waiting"_s) {
    return {u"Arena"_s, text, {}, false, DraftPhase::idle};
}

class OverlayPanelControllerTest : public ::testing::Test {
public:
    ~OverlayPanelControllerTest() override {
        controller.reset();
        AppLanguage::configure(nullptr, nullptr);
    }

protected:
    OverlayPanelControllerTest() {
        AppLanguage::overridePreference(AppLanguage::en);
        build();
    }

    void build(MotionPreference motion = MotionPreference::asDesktopSays) {
        auto owned = std::make_unique<FakePanelWindow>();
        window = owned.get();
        controller = std::make_unique<OverlayPanelController>(settings, std::move(owned), motion);
    }

    // Longer than every animation that follows from another.
    void settle() { time.pass(1600, 100); }

    void showSettled() {
        controller->show();
        settle();
    }

    void update(const OverlaySnapshot& snapshot) {
        controller->update(snapshot);
        turnEventLoop();
    }

    void updateSettled(const OverlaySnapshot& snapshot) {
        update(snapshot);
        settle();
    }

    FloatingPanel& panel() const { return controller->window(); }

    const ResolvedMetrics& metrics() const { return controller->metricsInForce(); }

    // A scale that changes no length and no font is not stored when the panel comes to rest.
    bool looksAsResolvedFor(int cardCount, Axis previous = Axis::vertical) const {
        const auto resolved = ResolvedMetrics::resolve(panel().frame().size(), cardCount, previous);
        return metrics().layoutEquals(resolved) && metrics().typographyEquals(resolved);
    }

    template <typename View>
    std::vector<View*> views() const {
        std::vector<View*> found;
        for (QWidget* widget : panel().findChildren<QWidget*>()) {
            if (auto* view = dynamic_cast<View*>(widget)) {
                found.push_back(view);
            }
        }
        return found;
    }

    RootContent& root() const { return *views<RootContent>().front(); }

    CardsStack& stack() const { return *root().cardsStack; }

    CardTileView& tile(std::size_t index) const { return *views<CardTileView>().at(index); }

    int tilesShown() const {
        return static_cast<int>(
            std::ranges::count_if(views<CardTileView>(), [](CardTileView* view) { return view->isVisible(); }));
    }

    bool tilesStandSideBySide() const { return tile(1).x() > tile(0).x() && tile(1).y() == tile(0).y(); }

    // By the right edge, in steps, with a turn of the event loop after each.
    void dragWidthTo(int width, bool release = true) {
        PanelDrag drag(panel(), {panel().width() - 1.0, panel().height() / 2.0});
        const int from = panel().width();
        for (int step = 1; step <= 10; ++step) {
            drag.moveBy({(width - from) * step / 10.0, 0});
            turnEventLoop();
        }
        if (release) {
            drag.release();
            turnEventLoop();
        }
    }

    testing::ManualAnimationTime time;
    testing::FakeSystemSettings settings;
    FakePanelWindow* window = nullptr; // the controller's
    std::unique_ptr<OverlayPanelController> controller;
};

} // namespace

// Building and showing

TEST_F(OverlayPanelControllerTest, IsBuiltCompleteAndNotShown) {
    EXPECT_FALSE(controller->isVisible());
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 420}));
    EXPECT_EQ(panel().windowTitle(), u"Pelloran"_s);
    EXPECT_EQ(root().titleLabel->text(), u"Pelloran · Arena"_s);
    EXPECT_TRUE(root().messageLabel->isHidden());
    EXPECT_EQ(views<CardTileView>().size(), 3U);
    for (const CardTileView* view : views<CardTileView>()) {
        EXPECT_TRUE(view->isHidden());
    }
    EXPECT_EQ(metrics(), ResolvedMetrics::resolve({360, 420}, 0, Axis::vertical));
    EXPECT_EQ(root().titleLabel->textFont(), FontCache::shared().font(14, QFont::DemiBold));
    EXPECT_EQ(root().messageLabel->textFont(), FontCache::shared().font(13, QFont::Normal));
    EXPECT_EQ(window->attachments, 1);
    EXPECT_EQ(window->window, panel().windowHandle());
    EXPECT_EQ(window->raised, 0);
    EXPECT_EQ(root().titleLabel->x(), 12);
    EXPECT_EQ(root().titleLabel->y(), 12);
    for (const QWidget* widget : panel().findChildren<QWidget*>()) {
        EXPECT_EQ(widget->focusPolicy(), Qt::NoFocus) << "nothing in it wants the keyboard";
    }
}

TEST_F(OverlayPanelControllerTest, ComesInFrontWhenShown) {
    controller->show();
    EXPECT_TRUE(controller->isVisible());
    EXPECT_EQ(window->raised, 1);
    controller->show();
    EXPECT_EQ(window->raised, 2) << "when it is shown already, too";
    controller->hide();
    EXPECT_FALSE(controller->isVisible());
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 420})) << "a panel that can be seen stays where it is";
}

TEST_F(OverlayPanelControllerTest, OpensWithoutAnimation) {
    QSignalSpy layouts(controller.get(), &OverlayPanelController::layoutApplied);
    controller->show();
    turnEventLoop();
    EXPECT_EQ(layouts.count(), 0) << "what was applied when it was built still holds";
    const UpwardRect frame = panel().frame();
    time.pass(100);
    EXPECT_EQ(panel().frame(), frame);
}

TEST_F(OverlayPanelControllerTest, MeasuresItselfWhenShown) {
    panel().setFrame({40, 60, 500, 420});
    EXPECT_EQ(metrics().sizeClass, SizeClass::regular);
    controller->show();
    turnEventLoop();
    EXPECT_EQ(metrics(), ResolvedMetrics::resolve({500, 420}, 0, Axis::vertical));
}

TEST_F(OverlayPanelControllerTest, ComesBackToTheMainScreenWhenShown) {
    const QRect main = QGuiApplication::primaryScreen()->availableGeometry();

    const struct {
        const char* why;
        UpwardRect frame;
        bool comesBack;
    } rows[] = {
        {"on a screen that is gone", {main.width() + 900.0, 60, 360, 420}, true},
        {"barely right of the screen's left edge", {39 - 360, 60, 360, 420}, true},
        {"far enough right of it", {40 - 360, 60, 360, 420}, false},
        {"below the screen", {40, -400, 360, 420}, true},
        {"above the screen", {40, main.height() - 39.0, 360, 420}, true},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        panel().setFrame(row.frame);
        controller->show();
        EXPECT_EQ(panel().frame(), row.comesBack ? (UpwardRect{40, 60, 360, 420}) : row.frame);
        settle();
        controller->hide();
    }
}

TEST_F(OverlayPanelControllerTest, ComesBackWhenItsScreenGoes) {
    showSettled();
    panel().setFrame({-5000, 60, 360, 420});
    Q_EMIT qGuiApp->primaryScreenChanged(QGuiApplication::primaryScreen());
    turnEventLoop();
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 420}));

    panel().setFrame({-300, 60, 360, 420});
    Q_EMIT qGuiApp->screenRemoved(QGuiApplication::primaryScreen());
    turnEventLoop();
    EXPECT_EQ(panel().frame(), (UpwardRect{-300, 60, 360, 420})) << "one that can be reached stays";
}

TEST_F(OverlayPanelControllerTest, OpensAsItWasLeft) {
    testing::FakeUserDefaults memory;
    const auto start = [&] {
        controller.reset();
        controller = std::make_unique<OverlayPanelController>(settings, std::make_unique<FakePanelWindow>(),
                                                              MotionPreference::asDesktopSays, &memory);
        controller->open();
        settle();
    };
    start();
    EXPECT_TRUE(controller->isVisible());
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 420})) << "a first run";
    updateSettled(tiles(3));
    start();
    PanelDrag(panel(), {100, 100}).release();
    start();
    EXPECT_EQ(memory.writes, 0) << "of what the user did nothing to, there is nothing to remember";

    {
        PanelDrag drag(panel(), {100, 100});
        drag.moveBy({30, -40});
        drag.moveBy({60, -80});
        turnEventLoop();
        EXPECT_EQ(memory.writes, 0) << "not at every pixel";
        drag.release();
    }
    EXPECT_EQ(memory.writes, 1);
    const UpwardRect moved = panel().frame();
    EXPECT_EQ(moved, (UpwardRect{100, 140, 360, 420}));
    start();
    EXPECT_EQ(panel().frame(), moved);
    EXPECT_EQ(memory.writes, 1) << "nothing new to tell";

    PanelDrag(panel(), {100, 100}).moveBy({30, -40});
    const UpwardRect held = panel().frame();
    start();
    EXPECT_EQ(panel().frame(), held) << "the end came before the button was let go of";

    updateSettled(tiles(3));
    dragWidthTo(650);
    updateSettled(tiles(3));
    const UpwardRect wide = panel().frame();
    EXPECT_TRUE(tilesStandSideBySide());
    start();
    EXPECT_EQ(panel().frame(), wide);
    EXPECT_TRUE(looksAsResolvedFor(0));
    updateSettled(message());
    EXPECT_EQ(panel().frame().size(), QSizeF(650, 600)) << "the size that the user gave it";

    const auto isToBeShown = [&] { return placesFrom(*memory.string(OverlayPanelController::placesKey))[0].isShown; };
    panel().findChild<CloseButton*>()->click();
    EXPECT_FALSE(isToBeShown()) << "at once: not every run comes to its end";
    start();
    EXPECT_FALSE(controller->isVisible()) << "hidden by its button";
    controller->show();
    EXPECT_TRUE(isToBeShown());
    start();
    EXPECT_TRUE(controller->isVisible());
    controller->hide();
    EXPECT_FALSE(isToBeShown());
    start();
    EXPECT_FALSE(controller->isVisible()) << "hidden by the menu";

    memory.remove(OverlayPanelController::placesKey);
    build();
    EXPECT_EQ(panel().frame(), (UpwardRect{40, 60, 360, 420}));
}

TEST_F(OverlayPanelControllerTest, OpensOnTheScreenWhateverIsRemembered) {
    testing::FakeUserDefaults memory;
    const QRect main = QGuiApplication::primaryScreen()->availableGeometry();
    const PanelPlace lost{u"a screen that is gone"_s, {5000, 300, 360, 420}, std::nullopt, true};
    for (const QString& text : {textOf({lost}), u"[{"_s, QString()}) {
        SCOPED_TRACE(text.toStdString());
        memory.setString(OverlayPanelController::placesKey, text);
        const OverlayPanelController opened(settings, std::make_unique<FakePanelWindow>(),
                                            MotionPreference::asDesktopSays, &memory);
        const UpwardRect expected =
            text.contains(u"gone") ? UpwardRect{main.width() - 360.0, 300, 360, 420} : UpwardRect{40, 60, 360, 420};
        EXPECT_EQ(opened.window().frame(), expected);
    }
}

TEST_F(OverlayPanelControllerTest, StaysOnASmallerScreenWhateverItShows) {
    testing::FakeUserDefaults memory;
    const QRect main = QGuiApplication::primaryScreen()->availableGeometry();
    const QSizeF large(main.width() + 600, main.height() + 100);
    const QString stored = textOf({{u"a larger screen"_s, {30, 40, large.width(), large.height()}, large, true}});
    memory.setString(OverlayPanelController::placesKey, stored);
    controller = std::make_unique<OverlayPanelController>(settings, std::make_unique<FakePanelWindow>(),
                                                          MotionPreference::asDesktopSays, &memory);
    controller->open();
    settle();
    EXPECT_TRUE(main.contains(panel().geometry()));
    for (const OverlaySnapshot& snapshot : {message(), tiles(3)}) {
        updateSettled(snapshot);
        EXPECT_TRUE(main.contains(panel().geometry()))
            << panel().width() << " x " << panel().height() << " at " << panel().x() << ", " << panel().y();
    }
    controller.reset();
    EXPECT_EQ(memory.string(OverlayPanelController::placesKey), stored) << "for when the larger screen is back";
}

TEST_F(OverlayPanelControllerTest, IsHiddenByItsButtonAndGoesOn) {
    showSettled();
    panel().findChild<CloseButton*>()->click();
    EXPECT_FALSE(controller->isVisible());
    updateSettled(tiles(3));
    EXPECT_FALSE(controller->isVisible()) << "a snapshot does not bring it back";
    controller->show();
    settle();
    EXPECT_EQ(tilesShown(), 3);
    EXPECT_EQ(panel().frame().size(), QSizeF(360, 600));
    EXPECT_TRUE(looksAsResolvedFor(3)) << "what it missed was made up for";
}

TEST_F(OverlayPanelControllerTest, TellsARightClick) {
    showSettled();
    QContextMenuEvent event(QContextMenuEvent::Mouse, {100, 50}, panel().mapToGlobal(QPoint(100, 50)));
    QCoreApplication::sendEvent(&panel(), &event); // while nobody listens
    std::vector<QPoint> requests;
    controller->contextMenuRequested = [&requests](QPoint position) { requests.push_back(position); };
    QCoreApplication::sendEvent(&panel(), &event);
    EXPECT_EQ(requests, std::vector{panel().mapToGlobal(QPoint(100, 50))});
}

// Snapshots

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

// The axis

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

// The window

TEST_F(OverlayPanelControllerTest, CutsItsCornersWhereNothingIsComposed) {
    showSettled();
    EXPECT_TRUE(panel().mask().isEmpty());
    EXPECT_EQ(window->blurRadius, 12);
    const ExpectedWarning unmasked(noMasks);
    window->setComposited(false);
    const QRegion mask = panel().mask();
    EXPECT_FALSE(mask.contains(QPoint(0, 0)));
    EXPECT_FALSE(mask.contains(QPoint(359, 419)));
    EXPECT_TRUE(mask.contains(QPoint(180, 0)));
    EXPECT_TRUE(mask.contains(QPoint(180, 210)));
    EXPECT_TRUE(mask.contains(QPoint(358, 210)));

    updateSettled(tiles(3));
    EXPECT_TRUE(panel().mask().contains(QPoint(180, 598))) << "the mask grows with the panel";
    EXPECT_FALSE(panel().mask().contains(QPoint(0, 0)));
    EXPECT_FALSE(panel().mask().contains(QPoint(359, 599)));
    EXPECT_EQ(window->blurRadius, metrics().panelCornerRadius);
    panel().setFrame({40, 60, 363, 600});
    EXPECT_TRUE(panel().mask().contains(QPoint(361, 300))) << "at once, or its edge would be missing";

    window->setComposited(true);
    EXPECT_TRUE(panel().mask().isEmpty());
}

TEST_F(OverlayPanelControllerTest, IsOpaqueWhereNothingIsComposed) {
    showSettled();
    const auto middle = [this] {
        QImage image(panel().size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        panel().render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return qAlpha(image.pixel(180, 300));
    };
    EXPECT_LT(middle(), 255);
    EXPECT_GT(middle(), 200);
    const ExpectedWarning unmasked(noMasks);
    window->setComposited(false);
    EXPECT_EQ(middle(), 255);
}

TEST_F(OverlayPanelControllerTest, FollowsTheDesktopsLook) {
    settings.setAppearance(Appearance::light);
    build();
    showSettled();
    const auto sheet = [this] {
        QImage image(panel().size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        panel().render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return qAlpha(image.pixel(180, 300));
    };
    EXPECT_EQ(sheet(), PanelColors::of(Appearance::light).material.alpha());
    EXPECT_EQ(root().titleLabel->color(), PanelColors::of(Appearance::light).title);
    settings.setAppearance(Appearance::dark);
    controller->systemSettingsChanged();
    EXPECT_EQ(sheet(), PanelColors::of(Appearance::dark).material.alpha());
}

TEST_F(OverlayPanelControllerTest, FollowsThePaletteWhereTheDesktopSaysNothing) {
    const QPalette before = QApplication::palette();
    const auto sheet = [this] {
        QImage image(panel().size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        panel().render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return qAlpha(image.pixel(180, 300));
    };

    const struct {
        const char* why;
        std::optional<Appearance> said;
        QColor window;
        Appearance expected;
    } rows[] = {
        {"a dark palette", {}, QColor(30, 30, 30), Appearance::dark},
        {"a light palette", {}, QColor(240, 240, 240), Appearance::light},
        {"dark again", {}, QColor(40, 40, 40), Appearance::dark},
        {"the desktop's word counts for more", Appearance::light, QColor(20, 20, 20), Appearance::light},
    };

    ASSERT_NE(PanelColors::of(Appearance::dark).material.alpha(), PanelColors::of(Appearance::light).material.alpha());
    showSettled();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        settings.setAppearance(row.said);
        QApplication::setPalette(QPalette(row.window, row.window));
        turnEventLoop();
        EXPECT_EQ(sheet(), PanelColors::of(row.expected).material.alpha());
    }
    QApplication::setPalette(before);
}

TEST_F(OverlayPanelControllerTest, PaintsWithoutComplaintInEveryState) {
    // A warning fails the test.
    showSettled();
    const QString hebrew = u"כדור אש"_s;
    for (const OverlaySnapshot& snapshot :
         {message(u""_s), tiles(3, QString()), tiles(3, u"W"_s.repeated(60)), tiles(2, u"a\nb\nc"_s), tiles(1, hebrew),
          tiles(3, u"火"_s.repeated(60)), message(hebrew), tiles(0), tiles(3)}) {
        update(snapshot);
        for (int frame = 0; frame < 10; ++frame) {
            time.pass(32);
            EXPECT_FALSE(panel().grab().isNull());
        }
        settle();
    }
}

TEST_F(OverlayPanelControllerTest, MayGoAtAnyMoment) {
    showSettled();
    const auto rebuilt = [this] {
        controller.reset();
        time.pass(600);
        build();
        showSettled();
        updateSettled(tiles(3));
    };
    controller->update(tiles(3)); // not yet delivered
    rebuilt();
    update(message()); // the frame is moving
    time.pass(64);
    rebuilt();
    dragWidthTo(700); // the axis is turning
    time.pass(64);
    rebuilt();
    dragWidthTo(500, false); // an edge is held
    rebuilt();
    EXPECT_EQ(tilesShown(), 3);
}

} // namespace pelloran
