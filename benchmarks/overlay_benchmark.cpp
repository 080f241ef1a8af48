// From a snapshot to pixels, and a drag of the panel's edge. Runs on whatever Qt runs on: QT_QPA_PLATFORM=offscreen
// without a display, xcb for the real way. Wall times contain the pause that Qt makes between two repaints of a window.

#include "overlay/OverlayPanel/views/FloatingPanel.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanelController.h"
#include "platform/PanelWindow.h"
#include "platform/SystemSettings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace pelloran;

class PaintCounter final : public QObject {
public:
    int paints = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::UpdateRequest) {
            watched->removeEventFilter(this);
            QCoreApplication::sendEvent(watched, event); // painted when this returns
            watched->installEventFilter(this);
            ++paints;
            return true;
        }
        return false;
    }
};

struct Bench {
    std::unique_ptr<SystemSettings> settings = SystemSettings::create();
    // What is measured is the work, not the length of an animation.
    OverlayPanelController controller{*settings, PanelWindow::create(), MotionPreference::reduced};
    PaintCounter counter;
    std::mt19937 random{7};

    Bench() {
        controller.window().installEventFilter(&counter);
        controller.show();
        showAndPaint(pick());
        settle();
    }

    static void settle() {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 100) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
    }

    void showAndPaint(const OverlaySnapshot& snapshot) {
        const int before = counter.paints;
        controller.update(snapshot);
        QElapsedTimer timer;
        timer.start();
        while (counter.paints == before && timer.elapsed() < 1000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 1000);
        }
    }

    // Three cards with other names and figures each time.
    OverlaySnapshot pick() {
        static const std::vector<QString> names{QStringLiteral("Fireball"), QStringLiteral("Water Elemental"),
                                                QStringLiteral("火球术"),   QStringLiteral("Flamestrike"),
                                                QStringLiteral("水元素"),   QStringLiteral("Sir Finley of the Sands"),
                                                QStringLiteral("死亡之翼")};
        OverlaySnapshot snapshot{.title = QStringLiteral("Pelloran · Card Pick"),
                                 .message = {},
                                 .cards = {},
                                 .inDraft = true,
                                 .phase = DraftPhase::cardPick};
        for (const auto& slot : {QStringLiteral("L"), QStringLiteral("M"), QStringLiteral("R")}) {
            OverlayCardViewModel card{slot, names[random() % names.size()], std::nullopt, {}, true};
            for (const MetricKind kind : MetricKind::cardKinds()) {
                card.metrics.push_back({kind, static_cast<double>(random() % 1000) / 10});
            }
            snapshot.cards.push_back(card);
        }
        MetricHighlighter::applyHighlights(snapshot.cards);
        return snapshot;
    }
};

void report(benchmark::State& state, std::vector<double>& milliseconds) {
    std::ranges::sort(milliseconds);
    state.counters["p50_ms"] = milliseconds[milliseconds.size() / 2];
    state.counters["p95_ms"] = milliseconds[milliseconds.size() * 95 / 100];
}

template <typename Next>
void snapshotsToPixels(benchmark::State& state, const Next& next) {
    Bench bench;
    std::vector<double> milliseconds;
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        Bench::settle();
        const OverlaySnapshot snapshot = next(bench, round++);
        state.ResumeTiming();
        QElapsedTimer timer;
        timer.start();
        bench.showAndPaint(snapshot);
        milliseconds.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    report(state, milliseconds);
}

// The usual tick of a pick: the same three tiles with other contents.
void otherNamesAndFigures(benchmark::State& state) {
    snapshotsToPixels(state, [](Bench& bench, int) { return bench.pick(); });
}

// A pick begins, and ends: the panel changes its size and every tile is laid out.
void tilesComeAndGo(benchmark::State& state) {
    snapshotsToPixels(state, [](Bench& bench, int round) {
        return round % 2 == 0 ? OverlaySnapshot::idle(QStringLiteral("Waiting for Arena draft…")) : bench.pick();
    });
}

// One turn of the event loop per step of the pointer, painted each time.
void dragOfAnEdge(benchmark::State& state) {
    Bench bench;
    FloatingPanel& panel = bench.controller.window();
    Q_EMIT panel.willStartLiveResize();
    std::vector<double> milliseconds;
    int step = 0;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        const int width = 280 + std::abs(step++ % 600 - 300);
        panel.resize(width, 600);
        QCoreApplication::processEvents();
        panel.repaint();
        milliseconds.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    Q_EMIT panel.didEndLiveResize();
    report(state, milliseconds);
    state.counters["fonts"] = static_cast<double>(FontCache::shared().count());
}

} // namespace

BENCHMARK(otherNamesAndFigures)->Unit(benchmark::kMillisecond)->Iterations(200);
BENCHMARK(tilesComeAndGo)->Unit(benchmark::kMillisecond)->Iterations(100);
BENCHMARK(dragOfAnEdge)->Unit(benchmark::kMillisecond)->Iterations(300);

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
