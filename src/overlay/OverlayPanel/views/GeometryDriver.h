#pragma once

#include "overlay/OverlayPanel/layout/PanelState.h"

#include <QMetaObject>
#include <QObject>
#include <QPointer>

#include <functional>

namespace pelloran {

class FloatingPanel;

// Turns the panel's resizing into at most one geometry update per turn of the event loop. Main thread.
class GeometryDriver final : public QObject {
public:
    using Phase = GeometryPhase;

    explicit GeometryDriver(FloatingPanel& panel);
    ~GeometryDriver() override;

    // One update follows in a later turn of the event loop. When one is on its way already, `settle` wins over `live`,
    // and a forced request over both.
    void enqueue(Phase phase, bool force);

    // Receives the updates.
    std::function<void(Phase phase)> onTick;

private:
    void panelResized();
    void tick();

    QPointer<FloatingPanel> panel;

    struct Observers {
        QMetaObject::Connection willStartLiveResize;
        QMetaObject::Connection didResize;
        QMetaObject::Connection didEndLiveResize;
    } observers;

    bool scheduled = false;
    Phase pendingPhase = Phase::live;
    bool isLive = false;
};

} // namespace pelloran
