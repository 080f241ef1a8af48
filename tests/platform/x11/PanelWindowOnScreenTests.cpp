#include "platform/x11/RoundedRegion.h"
#include "tests/platform/x11/X11Test.h"

#include <QProcess>

#include <gtest/gtest.h>

namespace pelloran::testing {

namespace {

constexpr const char* blurRegion = "_KDE_NET_WM_BLUR_BEHIND_REGION";

std::vector<std::uint32_t> numbersOf(const std::vector<QRect>& region) {
    std::vector<std::uint32_t> numbers;
    for (const QRect& part : region) {
        for (const int number : {part.x(), part.y(), part.width(), part.height()}) {
            numbers.push_back(static_cast<std::uint32_t>(number));
        }
    }
    return numbers;
}

// The whole of it, with Qt on a display, seen from outside.
class PanelWindowOnScreen : public ManagedX11Test {
protected:
    void startProbe(const char* scale = "1") {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(display->name()));
        environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::fromLatin1(scale));
        probe.setProcessEnvironment(environment);
        probe.setStandardErrorFile(QProcess::nullDevice());
        probe.start(QStringLiteral(PELLORAN_PANEL_PROBE), QStringList());
        panel = line().toUInt();
        ASSERT_NE(panel, 0U);
        EXPECT_EQ(line(), QByteArray("composited 0"));
        ASSERT_TRUE(eventually([&] { return client->isViewable(panel); }));
    }

    void TearDown() override {
        probe.kill();
        probe.waitForFinished(patience);
    }

    QByteArray line() {
        while (!probe.canReadLine() && probe.waitForReadyRead(patience)) {
        }
        return probe.readLine().trimmed();
    }

    void tell(const char* command) {
        probe.write(QByteArray(command) + '\n');
        probe.waitForBytesWritten(patience);
    }

    // Raised as it may have been, from now on that is long ago. Returns how often it has looked at the screen.
    int putClockForward() {
        tell("later");
        return line().toInt();
    }

    // Returns when it has looked at what is on the screen now, at a time when nothing keeps it from being raised.
    void awaitLook() {
        const int before = putClockForward();
        const auto change = client->create({.bounds = {0, 0, 1, 1}, .overrideRedirect = true});
        EXPECT_TRUE(eventually([&] {
            tell("looks");
            return line().toInt() > before;
        })) << "it does not look";
        client->destroy(change);
    }

    QProcess probe;
    xcb_window_t panel = XCB_WINDOW_NONE;
};

TEST_F(PanelWindowOnScreen, IsNotManagedAndStaysAboveAFullScreenGame) {
    startProbe();
    EXPECT_EQ(client->parent(panel), client->root());
    const auto game = createManaged({.bounds = {0, 0, 640, 480}});
    client->sendToRoot(game, "_NET_WM_STATE", 1, client->atom("_NET_WM_STATE_FULLSCREEN"));
    ASSERT_TRUE(eventually([&] { return !client->numbers(game, "_NET_WM_STATE").empty(); }));
    EXPECT_TRUE(client->isAbove(panel, game));
    putClockForward();
    client->lower(panel);
    EXPECT_TRUE(eventually([&] { return client->isAbove(panel, game); }));
}

TEST_F(PanelWindowOnScreen, LeavesTheKeyboardToTheGame) {
    const auto game = createManaged({.bounds = {0, 0, 640, 480}});
    client->sendToRoot(game, "_NET_ACTIVE_WINDOW", 2);
    const auto active = [&] { return client->numbers(client->root(), "_NET_ACTIVE_WINDOW"); };
    ASSERT_TRUE(eventually([&] { return active() == std::vector{game}; }));
    const auto focus = client->focus();
    startProbe();
    tell("hide");
    ASSERT_TRUE(eventually([&] { return !client->isViewable(panel); }));
    tell("show");
    ASSERT_TRUE(eventually([&] { return client->isViewable(panel); }));
    putClockForward();
    client->lower(panel);
    ASSERT_TRUE(eventually([&] { return client->isAbove(panel, game); }));
    EXPECT_EQ(active(), std::vector{game});
    EXPECT_EQ(client->focus(), focus);
}

TEST_F(PanelWindowOnScreen, StaysBelowItsOwnMenu) {
    startProbe();
    tell("menu");
    const xcb_window_t menu = line().toUInt();
    ASSERT_TRUE(eventually([&] { return client->isViewable(menu); }));
    awaitLook();
    EXPECT_TRUE(client->isAbove(menu, panel));
}

TEST_F(PanelWindowOnScreen, StaysBelowOneThatWasMadeLater) {
    startProbe();
    tell("alert");
    const xcb_window_t alert = line().toUInt();
    ASSERT_TRUE(eventually([&] { return client->isViewable(alert) && client->isAbove(alert, panel); }));
    const auto raisedInOrder = [&](xcb_window_t other) {
        return client->isAbove(panel, other) && client->isAbove(alert, panel);
    };

    const auto menu = client->create({.bounds = {0, 0, 1280, 1000}, .overrideRedirect = true});
    tell("raise");
    EXPECT_TRUE(eventually([&] { return raisedInOrder(menu); })) << "when the panel is asked for";
    tell("hide");
    ASSERT_TRUE(eventually([&] { return !client->isViewable(panel); }));
    client->raise(menu);
    tell("show");
    EXPECT_TRUE(eventually([&] { return client->isViewable(panel) && raisedInOrder(menu); })) << "when it comes back";
    const auto game = createManaged({.bounds = {0, 0, 640, 480}});
    client->sendToRoot(game, "_NET_WM_STATE", 1, client->atom("_NET_WM_STATE_FULLSCREEN"));
    ASSERT_TRUE(eventually([&] { return !client->numbers(game, "_NET_WM_STATE").empty(); }));
    putClockForward();
    client->lower(alert);
    client->lower(panel);
    EXPECT_TRUE(eventually([&] { return raisedInOrder(game); })) << "when the game comes up over both";

    tell("answer");
    ASSERT_TRUE(eventually([&] { return !client->isViewable(alert); }));
    putClockForward();
    client->lower(panel);
    EXPECT_TRUE(eventually([&] { return client->isAbove(panel, game); })) << "and without it as before";
}

TEST_F(PanelWindowOnScreen, StaysBelowALockerOverTheWholeScreen) {
    startProbe("1.5");
    const auto locker = client->create({.bounds = {0, 0, 1280, 1024}, .overrideRedirect = true});
    tell("raise");
    awaitLook();
    EXPECT_FALSE(client->isAbove(panel, locker));
    client->destroy(locker);
    const auto window = client->create({.bounds = {0, 0, 1280, 1000}, .overrideRedirect = true});
    tell("raise");
    EXPECT_TRUE(eventually([&] { return client->isAbove(panel, window); }));
}

TEST_F(PanelWindowOnScreen, IsRaisedWhenItIsShownAgain) {
    startProbe();
    tell("hide");
    ASSERT_TRUE(eventually([&] { return !client->isViewable(panel); }));
    const auto other = client->create({.bounds = {0, 0, 1280, 1000}, .overrideRedirect = true});
    tell("show");
    EXPECT_TRUE(eventually([&] { return client->isViewable(panel) && client->isAbove(panel, other); }));
}

TEST_F(PanelWindowOnScreen, BlursInPhysicalPixelsInsideItsCorners) {
    startProbe("1.5");
    EXPECT_TRUE(eventually(
        [&] { return client->numbers(panel, blurRegion) == numbersOf(x11::roundedRegion({540, 630}, 21)); }));
    tell("resize");
    EXPECT_TRUE(eventually(
        [&] { return client->numbers(panel, blurRegion) == numbersOf(x11::roundedRegion({300, 150}, 15)); }));
}

TEST_F(PanelWindowOnScreen, TellsOfTheCompositor) {
    startProbe();
    client->setOwner(compositorSelection, client->create({.mapped = false}));
    EXPECT_EQ(line(), QByteArray("composited 1"));
    client->setOwner(compositorSelection, XCB_WINDOW_NONE);
    EXPECT_EQ(line(), QByteArray("composited 0"));
}

TEST_F(PanelWindowOnScreen, EndsWithItsServerWithoutACrash) {
    startProbe();
    client.reset();
    display->stop();
    ASSERT_TRUE(probe.waitForFinished(patience));
    EXPECT_EQ(probe.exitStatus(), QProcess::NormalExit);
}

} // namespace

} // namespace pelloran::testing
