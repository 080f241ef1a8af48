// What a tick costs in looking for the game and taking its picture. Needs Xvfb; says so and measures nothing without.

#include "recognition/WindowCapture.h"
#include "tests/platform/x11/TestClient.h"
#include "tests/support/VirtualDisplay.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using namespace pelloran;

struct Desktop {
    static std::unique_ptr<Desktop> start(QSize gameSize) {
        auto display = testing::VirtualDisplay::isInstalled()
                           ? testing::VirtualDisplay::start(
                                 {QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("2560x1440x24")})
                           : nullptr;
        if (!display) {
            return nullptr;
        }
        qputenv("DISPLAY", display->name());
        return std::make_unique<Desktop>(std::move(display), gameSize);
    }

    Desktop(std::unique_ptr<testing::VirtualDisplay> started, QSize gameSize)
        : display(std::move(started))
        , client(display->name())
        , game(client.create({.bounds = QRect(QPoint(0, 0), gameSize), .background = testing::pattern(gameSize, 1)})) {
        client.setText(game, "_NET_WM_NAME", "UTF8_STRING", "Hearthstone");
        for (int i = 0; i < 30; ++i) {
            const xcb_window_t other = client.create({.bounds = {20 * i, 10 * i, 900, 700}});
            client.setText(other, "_NET_WM_NAME", "UTF8_STRING", "Another program");
            client.setText(other, "WM_CLASS", "STRING", QByteArrayLiteral("another\0Another\0"));
        }
    }

    std::unique_ptr<testing::VirtualDisplay> display;
    testing::TestClient client;
    xcb_window_t game;
    std::unique_ptr<WindowServer> server = WindowServer::create();
};

void findAmong31Windows(benchmark::State& state) {
    const auto desktop = Desktop::start({1920, 1080});
    if (!desktop) {
        state.SkipWithError("needs Xvfb");
        return;
    }
    for (auto _ : state) {
        auto found = WindowCapture::findHearthstone(*desktop->server, QStringLiteral("Hearthstone"));
        if (!found) {
            state.SkipWithError("the game is not found");
            return;
        }
        benchmark::DoNotOptimize(found);
    }
}

void captureCoveredGame(benchmark::State& state) {
    const auto desktop = Desktop::start({static_cast<int>(state.range(0)), static_cast<int>(state.range(1))});
    if (!desktop) {
        state.SkipWithError("needs Xvfb");
        return;
    }
    for (auto _ : state) {
        auto image = WindowCapture::capture(*desktop->server, desktop->game);
        if (!image) {
            state.SkipWithError("capture failed");
            return;
        }
        benchmark::DoNotOptimize(image);
    }
}

void cropACard(benchmark::State& state) {
    const QImage image = testing::pattern({1920, 1080}, 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(WindowCapture::crop(image, {0.155, 0.155, 0.155, 0.5}));
    }
}

BENCHMARK(findAmong31Windows)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(captureCoveredGame)
    ->Args({1280, 720})
    ->Args({1920, 1080})
    ->Args({2560, 1440})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(cropACard)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
