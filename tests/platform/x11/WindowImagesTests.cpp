#include "tests/platform/x11/X11Test.h"

#include <QDir>

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>

namespace pelloran::testing {

namespace {

using Error = WindowImageError;

// What `image` came to, in words that a failed test can print.
std::string outcome(const std::expected<QImage, Error>& image) {
    if (image) {
        return "image " + std::to_string(image->width()) + "x" + std::to_string(image->height());
    }

    struct Words {
        std::string operator()(const WindowGone&) const { return "gone"; }

        std::string operator()(const CaptureDenied&) const { return "denied"; }

        std::string operator()(const WindowServerLost& lost) const { return "lost: " + lost.call; }

        std::string operator()(const WindowServerFailed& failed) const {
            return "failed: " + failed.call + ", " + std::to_string(failed.code);
        }
    };

    return std::visit(Words{}, image.error());
}

bool isGone(const std::expected<QImage, Error>& image) {
    return !image && std::holds_alternative<WindowGone>(image.error());
}

bool hasFailed(const std::expected<QImage, Error>& image) {
    return !image && std::holds_alternative<WindowServerFailed>(image.error());
}

class WindowImagesTest : public X11Test {
protected:
    void expectImage(xcb_window_t window, const QImage& expected) {
        const auto image = server->image(window);
        ASSERT_TRUE(image) << outcome(image);
        EXPECT_EQ(image->format(), QImage::Format_RGB32);
        ASSERT_EQ(image->size(), expected.size());
        EXPECT_TRUE(*image == expected) << "other pixels, first at " << firstDifference(*image, expected);
    }

    static std::string firstDifference(const QImage& left, const QImage& right) {
        for (int y = 0; y < left.height(); ++y) {
            for (int x = 0; x < left.width(); ++x) {
                if (left.pixel(x, y) != right.pixel(x, y)) {
                    return std::to_string(x) + ", " + std::to_string(y);
                }
            }
        }
        return "nowhere";
    }

    const QImage picture = pattern({640, 480}, 1);
    const QImage otherPicture = pattern({640, 480}, 2);
};

class ManagedWindowImagesTest : public ManagedX11Test {};

// Paints its windows from memory whenever the server asks for it, as a program does.
class Painter {
public:
    Painter(const QByteArray& display, const QImage& picture)
        : client(display)
        , window(client.create({.mapped = false})) {
        client.watchExposure(window);
        client.map(window);
        thread = std::thread([this, picture] {
            while (!ending) {
                if (client.nextExposed() == window) {
                    client.paint(window, picture);
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        });
    }

    ~Painter() {
        ending = true;
        thread.join();
    }

    TestClient client;
    xcb_window_t window;

private:
    std::atomic<bool> ending = false;
    std::thread thread;
};

TEST_F(WindowImagesTest, AnOpenWindowComesOutPixelByPixel) {
    expectImage(client->create({.background = picture}), picture);
}

TEST_F(WindowImagesTest, ACoveredWindowComesOutWholeAtTheFirstAttempt) {
    const auto window = client->create({.background = picture});
    client->create({.bounds = {200, 150, 900, 800}, .background = otherPicture});
    expectImage(window, picture);
    expectImage(window, picture);
}

TEST_F(WindowImagesTest, ACoveredWindowThatPaintsItselfComesOutWhole) {
    const auto cover = client->create({.bounds = {0, 0, 1280, 1024}, .background = otherPicture});
    const Painter program(display->name(), picture);
    client->raise(cover);
    expectImage(program.window, picture);
    client->destroy(cover);
    expectImage(program.window, picture);
}

TEST_F(WindowImagesTest, AWindowOverTheEdgesOfTheScreenComesOutWhole) {
    for (const QPoint place : {QPoint(-300, -200), QPoint(1000, 900), QPoint(-2000, 50)}) {
        SCOPED_TRACE(std::to_string(place.x()) + ", " + std::to_string(place.y()));
        const auto window = client->create({.bounds = QRect(place, picture.size()), .background = picture});
        expectImage(window, picture);
        client->destroy(window);
    }
}

TEST_F(WindowImagesTest, MovingChangesNothing) {
    const auto window = client->create({.background = picture});
    expectImage(window, picture);
    client->setBounds(window, {700, 600, 640, 480});
    expectImage(window, picture);
    client->setBounds(window, {-100, -100, 640, 480});
    expectImage(window, picture);
}

TEST_F(WindowImagesTest, BordersAreLeftOut) {
    expectImage(client->create({.border = 9, .background = picture}), picture);
}

TEST_F(WindowImagesTest, FramesAreLeftOut) {
    const auto frame = client->create({.bounds = {50, 60, 700, 560}, .border = 2, .background = otherPicture});
    const auto inner = client->create({.bounds = {5, 30, 680, 520}, .parent = frame, .border = 1});
    const auto window =
        client->create({.bounds = {10, 11, 640, 480}, .parent = inner, .border = 3, .background = picture});
    expectImage(window, picture);
    const auto whole = server->image(frame);
    ASSERT_TRUE(whole) << outcome(whole);
    EXPECT_EQ(whole->size(), QSize(700, 560));
    // Its border of 1, the inner frame's place in it, then its own border.
    EXPECT_TRUE(whole->copy(5 + 1 + 10 + 3, 30 + 1 + 11 + 3, 640, 480) == picture);
}

TEST_F(WindowImagesTest, EachCaptureIsNew) {
    const auto window = client->create({.background = picture});
    expectImage(window, picture);
    client->setBackground(window, otherPicture);
    expectImage(window, otherPicture);
}

TEST_F(WindowImagesTest, FollowsTheSizeOfTheWindow) {
    const auto window = client->create({.background = picture});
    expectImage(window, picture);
    for (const QSize size : {QSize(320, 200), QSize(1, 1), QSize(1200, 1000)}) {
        const QImage resized = pattern(size, 7);
        client->setBounds(window, QRect(QPoint(10, 10), size));
        client->setBackground(window, resized);
        expectImage(window, resized);
    }
}

TEST_F(WindowImagesTest, AWindowWithTransparencyComesOutOpaque) {
    const auto window = client->create({.depth = 32});
    QImage translucent(640, 480, QImage::Format_ARGB32_Premultiplied);
    translucent.fill(qRgba(10, 20, 30, 40));
    client->paint(window, translucent);
    QImage expected(640, 480, QImage::Format_RGB32);
    expected.fill(0xff000000 | reinterpret_cast<const QRgb*>(translucent.constBits())[0]);
    expectImage(window, expected);
}

TEST_F(WindowImagesTest, ATransparentChildOfAnOpaqueFrameComesOut) {
    const auto frame = client->create({.bounds = {50, 60, 700, 560}});
    const auto window =
        client->create({.bounds = {10, 20, 640, 480}, .parent = frame, .depth = 32, .background = picture});
    expectImage(window, picture);
}

TEST_F(WindowImagesTest, ReadsAScreenOf16Bits) {
    startDisplay({QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1280x1024x16")});
    const auto image = server->image(client->create({.background = picture}));
    ASSERT_TRUE(image) << outcome(image);
    EXPECT_TRUE(image->convertToFormat(QImage::Format_RGB16) == picture.convertToFormat(QImage::Format_RGB16));
}

TEST_F(WindowImagesTest, APaletteScreenIsAnError) {
    startDisplay({QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1280x1024x8")});
    const auto image = server->image(client->create({}));
    EXPECT_TRUE(hasFailed(image)) << outcome(image);
}

TEST_F(WindowImagesTest, WorksWithoutSharedMemory) {
    startDisplay({QStringLiteral("-extension"), QStringLiteral("MIT-SHM")});
    const auto window = client->create({.background = picture});
    client->create({.bounds = {0, 0, 1280, 1024}, .background = otherPicture});
    expectImage(window, picture);
    expectImage(window, picture);
}

TEST_F(WindowImagesTest, WithoutCompositeListsButCannotCapture) {
    startDisplay({QStringLiteral("-extension"), QStringLiteral("Composite")});
    const auto window = client->create({.background = picture});
    const auto image = server->image(window);
    EXPECT_TRUE(hasFailed(image)) << outcome(image);
    EXPECT_TRUE(describe(window)) << "the connection must have stayed whole";
}

TEST_F(WindowImagesTest, NoSuchWindowIsAnError) {
    const auto gone = client->create({});
    client->destroy(gone);
    const auto minimised = client->create({.mapped = false});
    const auto inUnmapped = client->create({.parent = minimised});
    const auto inputOnly = client->create({.inputOnly = true});
    EXPECT_TRUE(isGone(server->image(gone)));
    EXPECT_TRUE(isGone(server->image(0)));
    EXPECT_TRUE(isGone(server->image(0xffffffff)));
    EXPECT_TRUE(hasFailed(server->image(minimised))) << outcome(server->image(minimised));
    EXPECT_TRUE(hasFailed(server->image(inUnmapped))) << outcome(server->image(inUnmapped));
    EXPECT_TRUE(hasFailed(server->image(client->root()))) << outcome(server->image(client->root()));
    EXPECT_FALSE(server->image(inputOnly)) << outcome(server->image(inputOnly));
    expectImage(client->create({.background = picture}), picture);
}

TEST_F(WindowImagesTest, ClosesMinimisesAndComesBack) {
    const auto window = client->create({.background = picture});
    expectImage(window, picture);
    client->unmap(window);
    EXPECT_TRUE(hasFailed(server->image(window))) << outcome(server->image(window));
    client->map(window);
    expectImage(window, picture);
    client->destroy(window);
    EXPECT_TRUE(isGone(server->image(window))) << outcome(server->image(window));
}

TEST_F(WindowImagesTest, KeepsOnlyTheCapturedWindowApart) {
    const auto first = client->create({.background = picture});
    const auto second = client->create({.background = otherPicture});
    EXPECT_FALSE(client->isRedirected(first));
    expectImage(first, picture);
    EXPECT_TRUE(client->isRedirected(first));
    expectImage(second, otherPicture);
    EXPECT_FALSE(client->isRedirected(first));
    EXPECT_TRUE(client->isRedirected(second));
    server.reset();
    EXPECT_TRUE(eventually([&] { return !client->isRedirected(second); }));
}

TEST_F(WindowImagesTest, AWindowResizedMeanwhileIsWholeOrAnError) {
    const auto window = client->create({.background = picture});
    std::atomic<bool> ending = false;
    std::thread program([&] {
        TestClient own(display->name());
        for (int i = 0; !ending; ++i) {
            own.setBounds(window, i % 2 ? QRect(0, 0, 640, 480) : QRect(5, 5, 300, 200));
        }
    });
    int images = 0;
    for (int i = 0; i < 500; ++i) {
        const auto image = server->image(window);
        EXPECT_TRUE(!image || image->size() == QSize(640, 480) || image->size() == QSize(300, 200)) << outcome(image);
        images += image.has_value();
    }
    ending = true;
    program.join();
    EXPECT_GT(images, 0);
    EXPECT_LT(images, 500) << "never resized meanwhile: this tested nothing";
    client->setBounds(window, {0, 0, 640, 480});
    client->setBackground(window, picture);
    expectImage(window, picture);
}

TEST_F(WindowImagesTest, AWindowClosedMeanwhileIsWholeOrAnError) {
    std::atomic<std::uint32_t> current = 0;
    std::atomic<bool> ending = false;
    std::thread program([&] {
        TestClient own(display->name());
        while (!ending) {
            const auto window = own.create({});
            current = window;
            own.unmap(window);
            own.map(window);
            own.destroy(window);
        }
    });
    for (int i = 0; i < 100; ++i) {
        const auto image = server->image(current);
        EXPECT_TRUE(!image || image->size() == QSize(640, 480)) << outcome(image);
        EXPECT_TRUE(server->describeWindows(WindowListing::all));
    }
    ending = true;
    program.join();
    expectImage(client->create({.background = picture}), picture);
}

TEST_F(WindowImagesTest, ManyCapturesLeaveNothingBehind) {
    const auto window = client->create({.background = picture});
    const auto other = client->create({.background = otherPicture});
    const auto openFiles = [] { return QDir(QStringLiteral("/proc/self/fd")).count(); };
    ASSERT_TRUE(server->image(window));
    const auto filesBefore = openFiles();
    const auto memoryBefore = display->residentMemory();
    for (int i = 0; i < 300; ++i) { // a picture each is 1.2 MB: 360 MB if they stayed
        ASSERT_TRUE(server->image(window));
    }
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(server->image(other));
        ASSERT_TRUE(server->image(window));
        client->setBounds(window, {0, 0, 640 + i, 480});
    }
    for (int i = 0; i < 200; ++i) {
        ASSERT_FALSE(server->image(client->root()));
        ASSERT_FALSE(server->image(0));
    }
    EXPECT_EQ(openFiles(), filesBefore);
    EXPECT_LT(display->residentMemory() - memoryBefore, 30'000'000);
}

TEST_F(ManagedWindowImagesTest, AFramedAndCoveredWindowComesOutWithoutItsFrame) {
    const QImage picture = pattern({640, 480}, 3);
    const auto window = createManaged({.background = picture});
    const auto cover = createManaged({.bounds = {0, 0, 1200, 900}});
    ASSERT_NE(client->parent(window), client->root());
    client->sendToRoot(cover, "_NET_ACTIVE_WINDOW", 2);
    EXPECT_TRUE(eventually([&] { return ids() == std::vector<std::int64_t>{cover, window}; }));
    const auto image = server->image(window);
    ASSERT_TRUE(image) << outcome(image);
    EXPECT_TRUE(*image == picture);
}

TEST_F(ManagedWindowImagesTest, AMinimisedWindowIsAnErrorAndComesBack) {
    const QImage picture = pattern({640, 480}, 4);
    const auto window = createManaged({.background = picture});
    ASSERT_TRUE(server->image(window));
    client->sendToRoot(window, "WM_CHANGE_STATE", 3);
    EXPECT_TRUE(eventually([&] { return hasFailed(server->image(window)); }));
    client->sendToRoot(window, "_NET_ACTIVE_WINDOW", 2);
    EXPECT_TRUE(eventually([&] { return server->image(window).value_or(QImage()) == picture; }));
}

TEST_F(ManagedWindowImagesTest, AWindowThatLosesItsFrameIsFollowed) {
    const QImage picture = pattern({640, 480}, 5);
    const auto window = createManaged({.background = picture});
    ASSERT_TRUE(server->image(window));
    display->stopPrograms();
    ASSERT_TRUE(eventually([&] { return client->parent(window) == client->root() && client->isViewable(window); }));
    EXPECT_TRUE(eventually([&] { return server->image(window).value_or(QImage()) == picture; }));
}

TEST_F(ManagedWindowImagesTest, ACompositorIsNoHindrance) {
    const QString compositor = QStringLiteral("picom");
    if (!VirtualDisplay::isInstalled(compositor)) {
        GTEST_SKIP() << "needs picom, which is not installed";
    }
    const QImage picture = pattern({640, 480}, 6);
    const auto window = createManaged({.background = picture});
    ASSERT_TRUE(display->startProgram(compositor, {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                                   QStringLiteral("--config"), QStringLiteral("/dev/null")}));
    ASSERT_TRUE(eventually([&] { return client->hasOwner("_NET_WM_CM_S0"); })) << "picom does not come up";
    const auto cover = createManaged({.bounds = {0, 0, 1200, 900}});
    client->sendToRoot(cover, "_NET_ACTIVE_WINDOW", 2);
    EXPECT_TRUE(eventually([&] { return ids() == std::vector<std::int64_t>{cover, window}; }));
    // It takes the name before it begins its work.
    EXPECT_TRUE(eventually([&] { return client->isRedirected(client->parent(window)); }));
    for (int i = 0; i < 3; ++i) {
        const auto image = server->image(window);
        ASSERT_TRUE(image) << outcome(image);
        EXPECT_TRUE(*image == picture);
    }
    ASSERT_TRUE(server->image(cover)); // ends what was begun for the other window
    EXPECT_TRUE(client->isRedirected(client->parent(window))) << "what the compositor does is its own";
}

} // namespace

} // namespace pelloran::testing
