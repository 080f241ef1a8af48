#pragma once

#include "platform/WindowServer.h"
#include "platform/x11/XcbConnection.h"
#include "tests/platform/x11/TestClient.h"
#include "tests/support/VirtualDisplay.h"

#include <QtGlobal>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace pelloran::testing {

// A display of its own for each case, another program on it, and the window server under test.
class X11Test : public ::testing::Test {
protected:
    void SetUp() override {
        if (!VirtualDisplay::isInstalled()) {
            GTEST_SKIP() << "needs Xvfb, which is not installed";
        }
        startDisplay({QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1280x1024x24")});
    }

    // Replaces the display, if there is one.
    void startDisplay(const QStringList& arguments) {
        client.reset();
        server.reset();
        display.reset();
        display = VirtualDisplay::start(arguments);
        ASSERT_TRUE(display) << "Xvfb does not start";
        qputenv("DISPLAY", display->name());
        client.emplace(display->name());
        server = WindowServer::create();
    }

    std::vector<WindowDescription> list(WindowListing listing = WindowListing::onScreen) {
        auto windows = server->describeWindows(listing);
        EXPECT_TRUE(windows) << "the server refused";
        return windows.value_or(std::vector<WindowDescription>());
    }

    std::vector<std::int64_t> ids(WindowListing listing = WindowListing::onScreen) {
        std::vector<std::int64_t> numbers;
        for (const WindowDescription& window : list(listing)) {
            numbers.push_back(window.number.value_or(-1));
        }
        return numbers;
    }

    std::optional<WindowDescription> describe(xcb_window_t window) {
        for (WindowDescription& description : list(WindowListing::all)) {
            if (description.number == window) {
                return std::move(description);
            }
        }
        return std::nullopt;
    }

    // Tries again for as long as `eventually` does, as a busy machine may use up `brief` before it is connected. Null
    // where none comes.
    static std::unique_ptr<x11::XcbConnection> connectWith(x11::Patience brief) {
        std::unique_ptr<x11::XcbConnection> connection;
        eventually([&] {
            connection = x11::XcbConnection::open(brief);
            return connection != nullptr;
        });
        return connection;
    }

    std::unique_ptr<VirtualDisplay> display;
    std::optional<TestClient> client;
    std::unique_ptr<WindowServer> server;
};

// The same with a window manager.
class ManagedX11Test : public X11Test {
protected:
    void SetUp() override {
        X11Test::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        if (!VirtualDisplay::isInstalled(QStringLiteral("openbox"))) {
            GTEST_SKIP() << "needs openbox, which is not installed";
        }
        ASSERT_TRUE(startWindowManager(*display, *client)) << "openbox does not come up";
    }

    // Waits until the window manager has put the window into a frame and on the screen.
    xcb_window_t createManaged(const WindowOptions& options) {
        const xcb_window_t window = client->create(options);
        EXPECT_TRUE(eventually([&] { return client->parent(window) != client->root() && client->isViewable(window); }));
        return window;
    }
};

} // namespace pelloran::testing
