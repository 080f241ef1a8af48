#include "recognition/WindowCapture.h"
#include "tests/platform/x11/X11Test.h"
#include "tests/support/Printing.h"

#include <QDir>

#include <gtest/gtest.h>
#include <malloc.h>

#include <variant>

namespace pelloran::testing {

namespace {

void expectRefusesEverything(WindowServer& server) {
    EXPECT_FALSE(server.describeWindows(WindowListing::onScreen));
    EXPECT_FALSE(server.describeWindows(WindowListing::all));
    const auto image = server.image(1);
    ASSERT_FALSE(image);
    EXPECT_TRUE(std::holds_alternative<WindowServerLost>(image.error()));
}

using X11WindowServerTest = X11Test;

TEST(X11WindowServer, WithoutADisplayRefusesEverything) {
    for (const QByteArray& display : {QByteArray(), QByteArray(":64999"), QByteArray("no display"),
                                      QByteArray("/nowhere:0"), QByteArray(":99999999999")}) {
        SCOPED_TRACE(display.toStdString());
        qputenv("DISPLAY", display);
        expectRefusesEverything(*WindowServer::create());
    }
    qunsetenv("DISPLAY");
    expectRefusesEverything(*WindowServer::create());
}

TEST_F(X11WindowServerTest, NeedsNoPermission) {
    EXPECT_EQ(server->permission(), CapturePermission::granted);
}

TEST_F(X11WindowServerTest, ConnectsAgainWhenTheDisplayComesBack) {
    ASSERT_TRUE(server->image(client->create({})));
    client.reset();
    display->stop();
    const auto broken = server->image(1); // over the connection that there was
    ASSERT_FALSE(broken);
    EXPECT_TRUE(std::holds_alternative<WindowServerLost>(broken.error()));
    expectRefusesEverything(*server);

    auto same = std::move(server);
    startDisplay({});
    const auto window = client->create({});
    EXPECT_TRUE(eventually([&] { return same->image(window).has_value(); }));
    const auto windows = same->describeWindows(WindowListing::onScreen);
    ASSERT_TRUE(windows);
    EXPECT_EQ(windows->size(), 1U);
}

TEST_F(X11WindowServerTest, AScreenWithoutAnApplicationIsNotRefused) {
    const auto windows = server->describeWindows(WindowListing::onScreen);
    ASSERT_TRUE(windows);
    EXPECT_TRUE(windows->empty());
}

TEST_F(X11WindowServerTest, TheGameIsFoundAndCapturedBehindAnotherWindow) {
    const QImage picture = pattern({800, 600}, 6);
    const auto game = client->create({.bounds = {0, 0, 800, 600}, .background = picture});
    client->setText(game, "WM_CLASS", "STRING", QByteArrayLiteral("hearthstone.exe\0hearthstone.exe\0"));
    client->setText(game, "_NET_WM_NAME", "UTF8_STRING", "Hearthstone");
    const auto editor = client->create({.bounds = {0, 0, 1000, 900}});
    client->setText(editor, "_NET_WM_NAME", "UTF8_STRING", "Notes");
    const auto menu = client->create({.bounds = {0, 0, 800, 600}, .overrideRedirect = true});
    client->setText(menu, "_NET_WM_NAME", "UTF8_STRING", "Hearthstone");

    const auto found = WindowCapture::findHearthstone(*server, QStringLiteral("Hearthstone"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->windowId, game);
    EXPECT_EQ(found->title, QStringLiteral("Hearthstone"));
    EXPECT_TRUE(found->onscreen);
    const auto image = WindowCapture::capture(*server, found->windowId);
    ASSERT_TRUE(image);
    EXPECT_TRUE(*image == picture);
}

// Some games make their window anew at each change of the screen's mode.
TEST_F(X11WindowServerTest, AGameThatKeepsMakingItsWindowAnewIsFollowed) {
    const auto openFiles = [] { return QDir(QStringLiteral("/proc/self/fd")).count(); };
    // In use; with a sanitizer, which keeps what is freed and looks for leaks itself, next to nothing.
    const auto memory = [] {
        const auto taken = mallinfo2();
        return static_cast<qint64>(taken.uordblks + taken.hblkhd);
    };
    // Where somebody composes the screen, nobody waits until covered windows have been painted.
    client->setOwner(compositorSelection, client->create({.mapped = false}));
    const QImage pictures[] = {pattern({400, 300}, 1), pattern({400, 300}, 2)};

    struct Taken {
        qsizetype files = 0;
        qint64 memory = 0;
        qint64 serverMemory = 0;
    } before;

    constexpr int rounds = 1000;
    for (int i = 0; i < rounds; ++i) {
        if (i == rounds / 10) { // until then what is kept has grown as it does
            before = {openFiles(), memory(), display->residentMemory()};
        }
        const QImage& picture = pictures[i % 2];
        const auto game = client->create({.bounds = {0, 0, 400, 300}, .background = picture});
        client->setText(game, "_NET_WM_NAME", "UTF8_STRING", "Hearthstone");
        const auto seen = WindowCapture::captureGame(*server, QString());
        ASSERT_TRUE(seen) << "round " << i;
        ASSERT_EQ(seen->window.windowId, game) << "round " << i;
        ASSERT_TRUE(seen->image == picture) << "not as it is now, round " << i;
        client->destroy(game);
    }
    // A picture is half a megabyte: 430 MB if each stayed. Of each window that its program made the server keeps some
    // 35 kB, whether it is captured or not.
    EXPECT_EQ(openFiles(), before.files);
    EXPECT_LT(memory() - before.memory, 1'000'000);
    EXPECT_LT(display->residentMemory() - before.serverMemory, 100'000'000);
}

TEST_F(X11WindowServerTest, AMinimisedGameIsNotFound) {
    const auto game = client->create({});
    client->setText(game, "_NET_WM_NAME", "UTF8_STRING", "Hearthstone");
    EXPECT_TRUE(WindowCapture::findHearthstone(*server, QString()));
    client->unmap(game);
    EXPECT_FALSE(WindowCapture::findHearthstone(*server, QString()));
}

} // namespace

} // namespace pelloran::testing
