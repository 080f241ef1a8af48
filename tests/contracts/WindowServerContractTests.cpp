// The null back end is in NullContractTests.cpp; the X server's with windows on a display in X11ContractTests.cpp.
#include "tests/contracts/WindowServerContract.h"

#include "tests/fakes/FakeWindowServer.h"

namespace pelloran::testing {

namespace {

using ::testing::Values;

std::unique_ptr<FakeWindowServer> serverWithWindows() {
    auto server = std::make_unique<FakeWindowServer>();
    const WindowDescription game{1, {}, {}, 0, WindowBounds{0, 0, 640, 480}};
    const WindowDescription closing{2, {}, {}, 0, WindowBounds{0, 0, 640, 480}};
    QImage picture(640, 480, QImage::Format_RGB32);
    picture.fill(Qt::red);
    server->onScreen = {game};
    server->all = {closing, game};
    server->images[1] = picture;
    return server;
}

BackEnd<ServedDisplay> fakeServer(const char* name, const std::function<void(FakeWindowServer&)>& prepare) {
    return {name, [prepare] {
                auto server = serverWithWindows();
                prepare(*server);
                return ServedDisplay{{}, std::move(server)};
            }};
}

INSTANTIATE_TEST_SUITE_P(
    Fake, WindowServerContract,
    Values(BackEnd<ServedDisplay>{"Empty", [] { return ServedDisplay{{}, std::make_unique<FakeWindowServer>()}; }},
           fakeServer("WithWindows", [](FakeWindowServer&) {}),
           fakeServer("Failing",
                      [](FakeWindowServer& server) {
                          server.failNext(WindowServerFailed{"GetImage", 8});
                          server.failNext(WindowGone{});
                      }),
           fakeServer("Refusing", [](FakeWindowServer& server) { server.onScreen = std::nullopt; })),
    nameOfBackEnd);

#ifdef PELLORAN_WITH_QUARTZ

// The session's own windows, whatever they are. Without consent to recordings of the screen it has no pictures.
INSTANTIATE_TEST_SUITE_P(System, WindowServerContract,
                         Values(BackEnd<ServedDisplay>{"Quartz",
                                                       [] { return ServedDisplay{{}, WindowServer::create()}; }}),
                         nameOfBackEnd);

#endif

} // namespace

} // namespace pelloran::testing
