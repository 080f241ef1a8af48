#include "tests/platform/WindowServerContract.h"

#include "tests/fakes/FakeWindowServer.h"

#include <gtest/gtest.h>

namespace pelloran::testing {

namespace {

TEST(NullWindowServer, KeepsTheContractAndRefusesEverything) {
    const auto server = WindowServer::create();
    expectKeepsContract(*server);
    EXPECT_FALSE(server->describeWindows(WindowListing::onScreen));
    EXPECT_FALSE(server->describeWindows(WindowListing::all));
    EXPECT_FALSE(server->image(1));
    EXPECT_EQ(server->permission(), CapturePermission::denied);
}

TEST(FakeWindowServer, KeepsTheContract) {
    FakeWindowServer server;
    expectKeepsContract(server);

    const WindowDescription game{1, {}, {}, 0, WindowBounds{0, 0, 640, 480}};
    const WindowDescription closing{2, {}, {}, 0, WindowBounds{0, 0, 640, 480}};
    QImage picture(640, 480, QImage::Format_RGB32);
    picture.fill(Qt::red);
    server.onScreen = {game};
    server.all = {closing, game};
    server.images[1] = picture;
    expectKeepsContract(server);

    server.failNext(WindowServerFailed{"GetImage", 8});
    expectKeepsContract(server);
    server.onScreen = std::nullopt;
    expectKeepsContract(server);
}

} // namespace

} // namespace pelloran::testing
