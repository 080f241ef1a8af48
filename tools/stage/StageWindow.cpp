#include "tools/stage/StageWindow.h"

#include <QPainter>

#include <chrono>
#include <utility>

namespace pelloran::stage {

using namespace std::chrono_literals;

StageWindow::StageWindow(PainterFactory painterFactory)
    : makePainter(std::move(painterFactory)) {
    setTitle(QStringLiteral("Hearthstone"));
    sinceStart.start();
    frames.setInterval(66ms);
    frames.setTimerType(Qt::PreciseTimer);
    connect(&frames, &QTimer::timeout, this, [this] { update(); });
}

void StageWindow::show(const Situation& newSituation, std::function<void()> whenShown) {
    tellShown(); // a step that was overtaken before it could be seen
    situation = newSituation;
    shown = std::move(whenShown);
    if (painter) {
        painter->show(Screen::onStage(situation));
    }
    if (isExposed()) {
        update();
    } else if (wasExposed) {
        tellShown();
    }
}

void StageWindow::paintEvent(QPaintEvent*) {
    prepare();
    QPainter canvas(this);
    canvas.scale(1 / devicePixelRatio(), 1 / devicePixelRatio());
    painter->paint(canvas, static_cast<double>(sinceStart.elapsed()) / 1000);
    canvas.end();
    // The picture reaches the display only after this event.
    QTimer::singleShot(0, this, &StageWindow::tellShown);
}

void StageWindow::exposeEvent(QExposeEvent* event) {
    QRasterWindow::exposeEvent(event);
    if (isExposed()) {
        wasExposed = true;
        frames.start();
    } else {
        frames.stop();
        tellShown();
    }
}

void StageWindow::prepare() {
    const QSize pixels = size() * devicePixelRatio();
    if (!painter || painter->size() != pixels) {
        painter = makePainter(pixels);
        painter->show(Screen::onStage(situation));
    }
}

void StageWindow::tellShown() {
    if (const auto tell = std::exchange(shown, nullptr)) {
        tell();
    }
}

} // namespace pelloran::stage
