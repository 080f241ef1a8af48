#include "overlay/OverlayPanel/views/CardTileView.h"
#include "overlay/OverlayPanel/views/CloseButton.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/TextLabel.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/overlay/OverlayPanelControllerTest.h"
#include "tests/overlay/RectPrinting.h"
#include "tests/support/Printing.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>

#include <gtest/gtest.h>

// How the panel comes up, where, and how it goes.
namespace pelloran {

namespace {

using testing::FakePanelWindow;
using testing::PanelDrag;
using testing::turnEventLoop;

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
    const auto start = [&] { startAnew(memory); };
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
    const UpwardRect wide = panel().frame();
    updateSettled(tiles(3));
    EXPECT_TRUE(tilesStandSideBySide());
    EXPECT_NE(panel().frame(), wide);
    start();
    EXPECT_EQ(panel().frame(), wide) << "as it was let go of, whatever it made of itself since";
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

TEST_F(OverlayPanelControllerTest, RemembersWhereItWasPutNotWhereItWent) {
    testing::FakeUserDefaults memory;
    const auto start = [&] { startAnew(memory); };
    const auto remembered = [&] { return placesFrom(*memory.string(OverlayPanelController::placesKey)).at(0); };
    const auto drag = [this](QPointF by) {
        PanelDrag hand(panel(), {100, 100});
        hand.moveBy(by);
        hand.release();
        turnEventLoop();
        return panel().frame();
    };
    const double height = QGuiApplication::primaryScreen()->availableGeometry().height();

    start();
    updateSettled(message());
    const UpwardRect atTheTop = drag({0, 60 + 160 - height});
    ASSERT_EQ(atTheTop, (UpwardRect{40, height - 160, 360, 160}));
    updateSettled(tiles(3));
    EXPECT_LT(panel().frame().y, atTheTop.y) << "higher than what is left above it";
    updateSettled(message());
    controller->hide();
    controller->show();
    EXPECT_EQ(remembered().frame, atTheTop) << "hiding it is no wish to have it elsewhere";
    start();
    updateSettled(message());
    EXPECT_EQ(panel().frame(), atTheTop) << "it went down to show three tiles";

    const UpwardRect away = drag({5000, 0});
    Q_EMIT qGuiApp->screenRemoved(QGuiApplication::primaryScreen());
    turnEventLoop();
    ASSERT_NE(panel().frame(), away);
    EXPECT_EQ(panel().frame().y, away.y) << "no further than it must";
    EXPECT_TRUE(QGuiApplication::primaryScreen()->availableGeometry().contains(panel().geometry()));
    controller.reset();
    EXPECT_EQ(remembered().frame, away) << "that was the program's doing, too";
}

TEST_F(OverlayPanelControllerTest, HasAPlaceForEachArrangementAlsoWhileItRuns) {
    testing::FakeUserDefaults memory;
    std::vector<ScreenInUse> screens{{u"laptop"_s, {0, 0, 800, 800}, true}};
    const ScreenInUse external{u"external"_s, {800, 0, 800, 800}};
    controller = std::make_unique<OverlayPanelController>(settings, std::make_unique<FakePanelWindow>(),
                                                          MotionPreference::asDesktopSays, &memory,
                                                          [&screens] { return screens; });
    showSettled();
    const auto drag = [this](QPointF by) {
        PanelDrag hand(panel(), {100, 100});
        hand.moveBy(by);
        hand.release();
        return panel().frame();
    };
    const auto dock = [&] {
        screens.push_back(external);
        Q_EMIT qGuiApp->screenAdded(QGuiApplication::primaryScreen());
        settle();
    };
    const auto undock = [&] {
        screens.pop_back();
        Q_EMIT qGuiApp->screenRemoved(QGuiApplication::primaryScreen());
        settle();
    };

    const UpwardRect alone = drag({20, -30});
    dock();
    EXPECT_EQ(panel().frame(), alone) << "it was put nowhere else yet";
    const UpwardRect docked = drag({200, -100});
    ASSERT_NE(docked, alone);
    undock();
    EXPECT_EQ(panel().frame(), alone);
    dock();
    EXPECT_EQ(panel().frame(), docked) << "back where it was";
    updateSettled(tiles(3));
    undock();
    EXPECT_EQ(panel().frame(), (UpwardRect{alone.x, alone.y, 360, 600})) << "as large as what it shows";

    controller.reset();
    const PanelPlaces places = placesFrom(*memory.string(OverlayPanelController::placesKey));
    ASSERT_EQ(places.size(), 2U);
    EXPECT_EQ(places[0], (PanelPlace{arrangementOf(screens), alone, std::nullopt, true}));
    screens.push_back(external);
    EXPECT_EQ(places[1], (PanelPlace{arrangementOf(screens), docked, std::nullopt, true}));
}

TEST_F(OverlayPanelControllerTest, IsNoLargerThanTheScreenThatIsLeft) {
    const QRect main = QGuiApplication::primaryScreen()->availableGeometry();
    showSettled();
    updateSettled(tiles(3));
    dragWidthTo(main.width() + 300);
    settle();
    ASSERT_FALSE(main.contains(panel().geometry()));
    Q_EMIT qGuiApp->screenRemoved(QGuiApplication::primaryScreen());
    settle();
    EXPECT_TRUE(main.contains(panel().geometry())) << "its close button, too";
    for (const OverlaySnapshot& snapshot : {message(), tiles(3)}) {
        updateSettled(snapshot);
        EXPECT_TRUE(main.contains(panel().geometry()))
            << panel().width() << " x " << panel().height() << " at " << panel().x() << ", " << panel().y();
    }
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

} // namespace

} // namespace pelloran
