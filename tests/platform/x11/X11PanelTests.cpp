#include "platform/x11/X11Panel.h"

#include "tests/platform/x11/X11Test.h"
#include "tests/support/OtherProcess.h"

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace pelloran::testing {

namespace {

constexpr QRect screen(0, 0, 1280, 1024);
constexpr QRect panelBounds(800, 100, 360, 420);

bool inTime(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, patience);
}

// Stands still until the test says that it is later.
class StoppedClock final : public x11::PanelClock {
public:
    TimePoint now() const override { return time; }

    void setAlarm(TimePoint when) override { due = when; }

    void clearAlarm() override { due.reset(); }

    bool hasAlarm() const override { return due.has_value(); }

    // It is so much later, and what was due meanwhile has rung at its time.
    void goOn(std::chrono::milliseconds by) {
        const TimePoint end = time + by;
        while (due && *due <= end) {
            goToAlarm();
        }
        time = end;
    }

    // It is as late as the alarm, which rings.
    void goToAlarm() {
        time = std::max(time, *due);
        due.reset();
        alarm();
    }

private:
    TimePoint time{std::chrono::hours(1)};
    std::optional<TimePoint> due;
};

// A window of a test client stands for the panel's own. On displays with or without a window manager.
template <typename Display>
class PanelTest : public Display {
protected:
    void SetUp() override {
        Display::SetUp();
        if (!this->IsSkipped() && !this->HasFatalFailure()) {
            begin();
        }
    }

    void TearDown() override { panel.reset(); }

    bool isAbove(xcb_window_t other) { return this->client->isAbove(window, other); }

    // As time goes on, from alarm to alarm.
    bool comesAbove(xcb_window_t other) {
        return inTime([&] {
            if (clock->hasAlarm()) {
                clock->goToAlarm();
            }
            return isAbove(other);
        });
    }

    // Notices what has changed, and does what it does about it, however long that is put off. What it asks the server
    // at its first look is answered after everything that the test has done.
    void settle() {
        EXPECT_TRUE(inTime([&] { return clock->hasAlarm(); })) << "it notices nothing";
        while (clock->hasAlarm()) {
            clock->goToAlarm();
        }
    }

    // The panel had the time to do something and did not, though it does look.
    void expectStaysBelow(xcb_window_t other) {
        settle();
        EXPECT_FALSE(isAbove(other));
        const xcb_window_t probe = this->client->create({.bounds = panelBounds});
        this->client->destroy(other);
        EXPECT_TRUE(comesAbove(probe)) << "it does not look at all";
    }

    x11::WindowsAndScreens around{.ourWindows = {}, .screens = {screen}};
    xcb_window_t window = XCB_WINDOW_NONE;
    std::unique_ptr<x11::X11Panel> panel;
    StoppedClock* clock = nullptr; // the panel's

private:
    void begin() {
        auto connection = x11::XcbConnection::open();
        ASSERT_TRUE(connection);
        window = this->client->create({.bounds = panelBounds, .overrideRedirect = true});
        auto stopped = std::make_unique<StoppedClock>();
        clock = stopped.get();
        panel = std::make_unique<x11::X11Panel>(std::move(connection), [this] { return around; }, std::move(stopped));
        // Whoever is told of it is told when the server has done it.
        panel->cameToTop = [] {};
        panel->setWindow(window);
        settle(); // the look that comes with the window could pass for one of the test's
    }
};

using X11PanelTest = PanelTest<X11Test>;
using ManagedX11PanelTest = PanelTest<ManagedX11Test>;

TEST_F(X11PanelTest, IsRaisedAboveAWindowThatCoversIt) {
    const auto other = client->create({.bounds = {700, 0, 300, 300}});
    EXPECT_TRUE(comesAbove(other));
}

TEST_F(X11PanelTest, IsRaisedAboveAWindowThatIsRaisedOrMoved) {
    const auto other = client->create({.bounds = {0, 0, 300, 300}, .mapped = false});
    client->map(other);
    client->raise(other);
    client->setBounds(other, {700, 0, 300, 300});
    EXPECT_TRUE(comesAbove(other));
    client->raise(other);
    EXPECT_TRUE(comesAbove(other));
}

TEST_F(X11PanelTest, StaysBelowAWindowThatDoesNotCoverIt) {
    expectStaysBelow(client->create({.bounds = {0, 0, 300, 300}}));
}

TEST_F(X11PanelTest, StaysBelowWindowsThatCannotBeSeen) {
    expectStaysBelow(client->create({.bounds = screen, .inputOnly = true}));
}

TEST_F(X11PanelTest, StaysBelowOurOwnMenus) {
    const auto menu = client->create({.bounds = panelBounds, .overrideRedirect = true, .mapped = false});
    around.ourWindows = {{menu, false}};
    client->map(menu);
    expectStaysBelow(menu);
}

TEST_F(X11PanelTest, StaysBelowMenusOfOtherPrograms) {
    expectStaysBelow(client->create({.bounds = panelBounds, .overrideRedirect = true}));
}

TEST_F(X11PanelTest, IsRaisedAboveAFrameThatBypassesTheManager) {
    const auto frame = client->create({.bounds = panelBounds, .overrideRedirect = true, .mapped = false});
    const auto managed = client->create({.bounds = {0, 0, 100, 100}, .parent = frame});
    client->setNumbers(managed, "WM_STATE", "WM_STATE", {1, 0});
    client->map(frame);
    client->raise(frame);
    EXPECT_TRUE(comesAbove(frame));
}

TEST_F(X11PanelTest, StaysBelowAScreenLocker) {
    const auto locker = client->create({.bounds = screen, .overrideRedirect = true});
    panel->raise();
    expectStaysBelow(locker);
}

TEST_F(X11PanelTest, ComesUpWhenTheLockerGoes) {
    const auto other = client->create({.bounds = panelBounds, .mapped = false});
    const auto locker = client->create({.bounds = screen, .overrideRedirect = true});
    client->map(other);
    client->raise(other);
    client->raise(locker);
    settle();
    EXPECT_FALSE(isAbove(other));
    client->unmap(locker);
    EXPECT_TRUE(comesAbove(other));
}

TEST_F(X11PanelTest, IsRaisedAtMostOnceASecondAndNeverForgetsTheLastChange) {
    const auto other = client->create({.bounds = panelBounds});
    ASSERT_TRUE(comesAbove(other));
    const auto raised = clock->now();
    for (int i = 0; i < 5; ++i) {
        client->raise(other);
        ASSERT_TRUE(inTime([&] { return clock->hasAlarm(); }));
        clock->goOn(x11::RaiseSchedule::betweenLooks);
        EXPECT_FALSE(isAbove(other));
    }
    ASSERT_LT(clock->now(), raised + x11::RaiseSchedule::betweenRaises);
    const auto left =
        std::chrono::floor<std::chrono::milliseconds>(raised + x11::RaiseSchedule::betweenRaises - clock->now());
    clock->goOn(left - std::chrono::milliseconds(1));
    EXPECT_FALSE(isAbove(other)) << "a second has not gone by";
    clock->goOn(std::chrono::milliseconds(1));
    EXPECT_TRUE(isAbove(other)) << "nothing changes after the last look";
}

TEST_F(X11PanelTest, IsRaisedAtOnceWhenAskedFor) {
    const auto other = client->create({.bounds = panelBounds});
    ASSERT_TRUE(comesAbove(other));
    client->raise(other);
    ASSERT_FALSE(isAbove(other));
    panel->raise();
    EXPECT_TRUE(isAbove(other));
}

TEST_F(X11PanelTest, IsOnTopWhenItIsMappedAgain) {
    client->unmap(window);
    const auto other = client->create({.bounds = {0, 0, 300, 300}});
    panel->raise();
    settle();
    EXPECT_FALSE(isAbove(other));
    client->map(window);
    EXPECT_TRUE(comesAbove(other));
}

TEST_F(X11PanelTest, AWindowThatIsNotThereYetHurtsNothing) {
    const auto next = window + 1000; // of the same program, so nobody else takes the number
    panel->setWindow(next);
    panel->setBlurRegion({QRect(0, 0, 5, 5)});
    panel->raise();
    settle();
    panel->setWindow(window);
    const auto other = client->create({.bounds = panelBounds});
    EXPECT_TRUE(comesAbove(other));
}

TEST_F(X11PanelTest, TellsTheCompositorWhatToBlur) {
    panel->setBlurRegion({QRect(2, 0, 356, 1), QRect(0, 1, 360, 419)});
    const std::vector<std::uint32_t> expected{2, 0, 356, 1, 0, 1, 360, 419};
    const auto region = [&] { return client->numbers(window, "_KDE_NET_WM_BLUR_BEHIND_REGION"); };
    EXPECT_TRUE(inTime([&] { return region() == expected; }));
    panel->setBlurRegion({});
    EXPECT_TRUE(inTime([&] { return region().empty(); }));
}

TEST_F(X11PanelTest, FollowsTheCompositor) {
    int changes = 0;
    panel->compositingChanged = [&] { ++changes; };
    EXPECT_FALSE(panel->isComposited());
    const auto owner = client->create({.mapped = false});
    client->setOwner(compositorSelection, owner);
    EXPECT_TRUE(inTime([&] { return panel->isComposited(); }));
    EXPECT_EQ(changes, 1);
    client->setOwner(compositorSelection, client->create({.mapped = false}));
    client->setOwner("_NET_WM_CM_S1", owner);
    client->setOwner(compositorSelection, XCB_WINDOW_NONE);
    EXPECT_TRUE(inTime([&] { return !panel->isComposited(); }));
    EXPECT_EQ(changes, 2) << "one compositor after the other is no change";
}

TEST_F(X11PanelTest, ACompositorThatDiesIsNoticed) {
    {
        TestClient dying(display->name());
        dying.setOwner(compositorSelection, dying.create({.mapped = false}));
        EXPECT_TRUE(inTime([&] { return panel->isComposited(); }));
    }
    EXPECT_TRUE(inTime([&] { return !panel->isComposited(); }));
}

TEST_F(X11PanelTest, StaysOnTopUnderARealCompositor) {
    if (!VirtualDisplay::isInstalled(QStringLiteral("picom"))) {
        GTEST_SKIP() << "needs picom, which is not installed";
    }
    ASSERT_TRUE(
        display->startProgram(QStringLiteral("picom"), {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                                        QStringLiteral("--config"), QStringLiteral("/dev/null")}));
    EXPECT_TRUE(inTime([&] { return panel->isComposited(); }));
    const auto other = client->create({.bounds = panelBounds});
    EXPECT_TRUE(comesAbove(other)) << "nothing of the compositor's passes for a locker";
    display->stopPrograms();
    EXPECT_TRUE(inTime([&] { return !panel->isComposited(); }));
}

TEST_F(X11PanelTest, SurvivesItsServer) {
    client->create({.bounds = panelBounds});
    client.reset();
    display->stop();
    panel->raise();
    panel->setBlurRegion({QRect(0, 0, 5, 5)});
    panel->setWindow(window + 1);
    EXPECT_FALSE(panel->isComposited());
    EXPECT_FALSE(clock->hasAlarm());
    // The socket of a lost server stays readable: whoever went on listening would find something to do in every turn.
    EXPECT_TRUE(inTime([] { return !QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents); }))
        << "the event loop does not come to rest";
}

TEST_F(X11PanelTest, AServerThatHangsFailsRequestsUntilItGoesOn) {
    using std::chrono::milliseconds;
    EXPECT_GE(x11::Patience().usual, std::chrono::seconds(1)) << "a server may be busy";
    const x11::Patience brief{.usual = milliseconds(200), .whileStalled = milliseconds(1)};
    const auto connection = connectWith(brief);
    ASSERT_TRUE(connection);
    std::optional<Suspended> hangs(std::in_place, display->processId());
    QElapsedTimer time;
    time.start();
    const auto answer = connection->ask<xcb_query_tree_reply>(xcb_query_tree(*connection, window), "QueryTree");
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().code, 0);
    EXPECT_GE(time.restart(), brief.usual.count());
    constexpr int rounds = 20;
    for (int i = 0; i < rounds; ++i) {
        EXPECT_FALSE(connection->ask<xcb_query_tree_reply>(xcb_query_tree(*connection, window), "QueryTree"));
        EXPECT_FALSE(connection->check(xcb_map_window_checked(*connection, window), "MapWindow"));
    }
    EXPECT_LT(time.elapsed(), rounds * brief.usual.count()) << "the next ones wait as long again";
    hangs.reset();
    EXPECT_TRUE(eventually([&] {
        return connection->ask<xcb_query_tree_reply>(xcb_query_tree(*connection, window), "QueryTree").has_value();
    }));
    EXPECT_FALSE(connection->broken());
    EXPECT_TRUE(connection->check(xcb_map_window_checked(*connection, window), "MapWindow"));
}

// Openbox itself keeps its windows below those that bypass it; other programs put them there.
TEST_F(ManagedX11PanelTest, IsRaisedAboveAFullScreenWindow) {
    const auto game = createManaged({.bounds = {0, 0, 640, 480}});
    client->sendToRoot(game, "_NET_WM_STATE", 1, client->atom("_NET_WM_STATE_FULLSCREEN"));
    ASSERT_TRUE(inTime([&] { return !client->numbers(game, "_NET_WM_STATE").empty(); }));
    EXPECT_TRUE(isAbove(game));
    client->lower(window);
    EXPECT_FALSE(isAbove(game));
    EXPECT_TRUE(comesAbove(game));
}

TEST_F(ManagedX11PanelTest, StaysBelowOurOwnAlerts) {
    const auto alert = createManaged({.bounds = panelBounds});
    around.ourWindows = {{window, false}, {alert, true}};
    client->lower(window);
    settle();
    EXPECT_FALSE(isAbove(alert));
    around.ourWindows = {{window, false}};
    client->create({.bounds = {0, 0, 10, 10}}); // so that it looks again
    EXPECT_TRUE(comesAbove(alert)) << "it was not the frame that was known";
}

TEST_F(ManagedX11PanelTest, ATrayIconIsOursButNotTheDock) {
    const auto dock = createManaged({.bounds = panelBounds});
    const auto icon = client->create({.bounds = {0, 0, 22, 22}, .parent = dock});
    around.ourWindows = {{window, false}, {icon, false}};
    client->lower(window);
    EXPECT_TRUE(comesAbove(dock));
}

} // namespace

} // namespace pelloran::testing
