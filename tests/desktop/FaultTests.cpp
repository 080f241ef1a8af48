#include "tests/desktop/StatusMenuTest.h"
#include "tests/support/EndWithParent.h"
#include "tests/support/OtherProcess.h"
#include "tests/support/SilentSocket.h"

#include <QElapsedTimer>
#include <QFile>
#include <QScopeGuard>
#include <QTest>

#include <algorithm>

// The desktop around the program fails, hangs or is started anew.
namespace pelloran {
namespace {

using testing::StatusMenuTest;
using testing::Suspended;
using testing::until;

const QByteArray desktopGone[] = {"[Pelloran] The X11 connection broke", "[Pelloran] the desktop has gone"};

QStringList names(const QJsonValue& cards) {
    QStringList all;
    for (const auto& card : cards.toArray()) {
        all.append(card[QStringLiteral("name")].toString());
    }
    return all;
}

class DesktopFault : public StatusMenuTest {
protected:
    void endDisplay() {
        client.reset();
        display->stop();
    }

    // The game on a pick, and the panel with what is offered.
    void startDraft() {
        startGame();
        startPanel();
        playToPick(QStringLiteral("cardPick"));
        expectPanelSize([](QSize size) { return size.height() == 600; });
        EXPECT_TRUE(until([this] { return testing::tilesDown(panelPicture()) == 3; }));
    }

    // What the window manager has put around the window.
    xcb_window_t frameOf(xcb_window_t window) {
        while (client->parent(window) != client->root()) {
            window = client->parent(window);
        }
        return window;
    }

    bool panelIsAboveGame() {
        const auto shown = panel();
        const auto game = gameWindow();
        return shown != XCB_WINDOW_NONE && game != XCB_WINDOW_NONE && client->isAbove(shown, game);
    }
};

TEST_F(DesktopFault, EndsWithAMessageWhenTheDisplayGoes) {
    startDraft();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    hand.click(closeButton());
    ASSERT_TRUE(until([this] { return panel() == XCB_WINDOW_NONE; }));
    ASSERT_TRUE(pelloran.printsAnother());
    expectedLog.append({desktopGone[0], desktopGone[1]});
    // The thread that looks at the game may notice first.
    expectedLog.append("[Pelloran] the desktop that shows the game's window has gone");
    expectedLog.append("[Pelloran] no X display can be reached");
    expectedLog.append("[Pelloran] no window can be seen at all");
    endDisplay();
    expectEnd(1);
    EXPECT_TRUE(pelloran.standardError.contains(desktopGone[1])) << pelloran.standardError.toStdString();
    QFile choices(home.path() + QStringLiteral("/config/Pelloran/Pelloran.ini"));
    EXPECT_TRUE(choices.open(QIODevice::ReadOnly) && choices.readAll().contains("pelloran.panel"))
        << "that the panel was closed is forgotten";
    EXPECT_FALSE(QFile::exists(
        home.path() +
        QStringLiteral("/session/pelloran%1.lock").arg(QString::fromLatin1(display->name().toPercentEncoding()))))
        << "the next start finds a lock";
}

TEST_F(DesktopFault, GoesOnWithoutAPanelWhenTheDisplayGoes) {
    startStage({QStringLiteral("--scenario"), QStringLiteral("demo")});
    // Its logs are there first, and with them the program would rightly miss it.
    ASSERT_TRUE(until([this] { return gameWindow() != XCB_WINDOW_NONE; })) << "the game does not come up";
    startPelloran({QStringLiteral("--no-panel")});
    playToPick(QStringLiteral("cardPick"));
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    expectedLog.append({"[Pelloran] no X display can be reached", "[Pelloran] no window can be seen at all",
                        "[Pelloran] the desktop that shows the game's window has gone"});
    endDisplay();
    ASSERT_TRUE(until([this] { return pelloran.standardError.contains("no X display can be reached"); }));
    const auto before = testing::processorTimeOf(pelloran.process.processId()).value();
    ASSERT_TRUE(pelloran.printsAnother());
    EXPECT_EQ(pelloran.last[QStringLiteral("cards")].toArray().size(), 3) << "what was read is forgotten";
    EXPECT_LT(testing::processorTimeOf(pelloran.process.processId()).value() - before, std::chrono::milliseconds(500));
    EXPECT_FALSE(pelloran.standardError.contains("minimised")) << "nothing is the matter with the game";
    pelloran.process.terminate();
    expectEnd(0);
}

TEST_F(DesktopFault, WaitsForADisplayThatHangs) {
    startDraft();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    const auto before = testing::processorTimeOf(pelloran.process.processId()).value();
    {
        const Suspended hangs(display->processId());
        QTest::qWait(2'500);
        EXPECT_LT(testing::processorTimeOf(pelloran.process.processId()).value() - before,
                  std::chrono::milliseconds(500))
            << "it spins";
    }
    EXPECT_TRUE(pelloran.printsAnother());
    hand.click(closeButton());
    EXPECT_TRUE(until([this] { return panel() == XCB_WINDOW_NONE; })) << "the panel stands still";
    pelloran.process.terminate();
    expectEnd(0);
}

TEST_F(DesktopFault, ASecondSignalEndsItWhileTheDisplayHangs) {
    startPanel();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    const Suspended hangs(display->processId());
    QTest::qWait(2'500); // it looks for a status area every two seconds, and Qt waits for the answer
    pelloran.process.terminate();
    EXPECT_FALSE(until([this] { return pelloran.process.state() == QProcess::NotRunning; }, 1'500))
        << "nothing has hung";
    pelloran.process.terminate();
    EXPECT_TRUE(until([this] { return pelloran.process.state() == QProcess::NotRunning; })) << "it cannot be ended";
}

TEST_F(DesktopFault, StaysAboveTheGameUnderANewWindowManager) {
    startDraft();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    const QRect place = panelBounds();
    const auto expectBack = [&](const char* why, const std::function<void()>& cover) {
        SCOPED_TRACE(why);
        {
            const Suspended helpless(pelloran.process.processId());
            cover();
            ASSERT_TRUE(until([this] { return !panelIsAboveGame(); })) << "nothing covers it";
        }
        EXPECT_TRUE(until([this] { return panelIsAboveGame(); })) << "it stays below";
        EXPECT_EQ(panelBounds(), place);
    };
    display->stopPrograms();
    ASSERT_TRUE(until([this] { return client->parent(gameWindow()) == client->root(); })) << "it is still managed";
    EXPECT_TRUE(pelloran.printsAnother());
    EXPECT_EQ(panelBounds(), place);
    expectBack("without a window manager", [this] { client->raise(gameWindow()); });

    startWindowManager();
    ASSERT_TRUE(until([this] { return gameWindow() != XCB_WINDOW_NONE && frameOf(gameWindow()) != gameWindow(); }))
        << "it does not manage the game";
    // While managers change the game is off the screen for a moment, which a look may meet.
    expectedLog.append("[Pelloran] no window of the game is found");
    // Nobody but a manager can raise what it frames, and this one puts nothing above windows that bypass it.
    expectBack("the new one's frame is above the panel", [this] { client->lower(panel()); });
    const auto isFullScreen = [this] {
        const auto states = client->numbers(gameWindow(), "_NET_WM_STATE");
        return std::ranges::find(states, client->atom("_NET_WM_STATE_FULLSCREEN")) != states.end();
    };
    for (const bool wanted : {!isFullScreen(), isFullScreen()}) {
        client->sendToRoot(gameWindow(), "_NET_WM_STATE", wanted ? 1 : 0, client->atom("_NET_WM_STATE_FULLSCREEN"));
        ASSERT_TRUE(until([&] { return isFullScreen() == wanted; }));
        expectBack("also after the game has changed to full screen or back", [this] { client->lower(panel()); });
    }
    EXPECT_TRUE(pelloran.printsAnother());
    EXPECT_EQ(pelloran.last[QStringLiteral("cards")].toArray().size(), 3);
}

TEST_F(DesktopFault, ItsIconComesBackToANewTray) {
    startPanelWithTray();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    display->stopPrograms();
    ASSERT_TRUE(until([this] { return trayIcon() == XCB_WINDOW_NONE; }));
    EXPECT_TRUE(pelloran.printsAnother());
    startWindowManager();
    startTray();
    waitForIconInNewTray();
    openTrayMenu();
    closeMenu();
}

TEST_F(DesktopFault, FollowsACompositorThatIsStartedAgain) {
    startPanel();
    const auto isCut = [this] { return !client->shape(panel()).contains(QPoint(0, 0)); };
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(until(isCut));
        startCompositor();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        EXPECT_TRUE(until([&] { return !isCut(); }));
        display->stopPrograms();
    }
    EXPECT_TRUE(until(isCut));
}

TEST_F(DesktopFault, GoesOnWithTheDraftAfterItWasSuspended) {
    startDraft();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    {
        const Suspended asleep(pelloran.process.processId());
        playTo(QStringLiteral("cardPick"));
        QTest::qWait(2'000); // two looks would have been due
    }
    const QStringList offered = names(stage.last[QStringLiteral("offers")]);
    ASSERT_EQ(offered.size(), 3);
    EXPECT_TRUE(pelloran.waitFor([&](const QJsonObject& snapshot) {
        return names(snapshot[QStringLiteral("cards")]) == offered;
    })) << offered.join(u", ").toStdString();
}

TEST_F(DesktopFault, IsThereInTimeOnASessionBusThatHangs) {
    const QString path = home.filePath(QStringLiteral("bus"));
    const testing::SilentSocket silent(path);
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=") + path);
    expectedLog.append("[Pelloran] the session bus does not answer");
    QElapsedTimer time;
    time.start();
    startPanelWithTray();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    EXPECT_LT(time.elapsed(), 20'000) << "the bus library gives up after 25 seconds at the soonest";
    openTrayMenu();
    closeMenu();
    pelloran.process.terminate();
    time.start();
    expectEnd(0);
    EXPECT_LT(time.elapsed(), 10'000);
}

TEST_F(DesktopFault, GoesOnAndEndsWhenTheSessionBusHangsLater) {
    needs(QStringLiteral("dbus-daemon"));
    if (IsSkipped()) {
        return;
    }
    const QString path = home.filePath(QStringLiteral("bus"));
    QProcess bus;
    testing::endWithParent(bus);
    const auto endBus = qScopeGuard([&bus] {
        bus.kill();
        bus.waitForFinished();
    });
    bus.start(QStringLiteral("dbus-daemon"),
              {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--address=unix:path=") + path});
    ASSERT_TRUE(until([&] { return QFile::exists(path); })) << "dbus-daemon does not start";
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=") + path);
    startPanel();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    const Suspended hangs(bus.processId());
    EXPECT_TRUE(pelloran.printsAnother());
    openMenu(panelBackground(), 3);
    closeMenu();
    pelloran.process.terminate();
    QElapsedTimer time;
    time.start();
    expectEnd(0);
    EXPECT_LT(time.elapsed(), 10'000) << "the bus library gives up after 25 seconds at the soonest";
}

// A server without clients starts anew, as one does that was brought up for this program.
TEST_F(DesktopFault, StartsOnADisplayThatNobodyElseIsOn) {
    display->stopPrograms();
    client.reset();
    for (int i = 0; i < 3; ++i) {
        const auto seen = startAgain({QStringLiteral("doctor"), QStringLiteral("--desktop"), QStringLiteral("--json")});
        EXPECT_FALSE(seen.standardOutput.isEmpty()) << seen.standardError.toStdString();
        EXPECT_FALSE(seen.standardError.contains("could not connect")) << seen.standardError.toStdString();
    }
}

} // namespace
} // namespace pelloran
