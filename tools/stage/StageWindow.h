#pragma once

#include "tools/stage/painting/ScenePainter.h"

#include <QElapsedTimer>
#include <QRasterWindow>
#include <QTimer>

#include <functional>
#include <memory>

namespace pelloran::stage {

// The game's window. Repaints itself about fifteen times a second while it can be seen.
class StageWindow final : public QRasterWindow {
    Q_OBJECT

public:
    // Makes the painter for a window of a new size, in real pixels.
    using PainterFactory = std::function<std::unique_ptr<ScenePainter>(QSize)>;

    explicit StageWindow(PainterFactory makePainter);

    // Calls `shown` once the picture has been handed to the display. Before the window appears for the first time, that
    // waits; later, when it cannot be seen (minimised), it is called at once.
    void show(const Situation& situation, std::function<void()> whenShown);

protected:
    void paintEvent(QPaintEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;

private:
    void prepare();
    void tellShown();

    PainterFactory makePainter;
    std::unique_ptr<ScenePainter> painter;
    Situation situation;
    std::function<void()> shown;
    QElapsedTimer sinceStart;
    QTimer frames;
    bool wasExposed = false;
};

} // namespace pelloran::stage
