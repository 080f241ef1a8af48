#include "overlay/OverlayPanel/views/GeometryDriver.h"

#include "overlay/OverlayPanel/views/FloatingPanel.h"

namespace pelloran {

GeometryDriver::GeometryDriver(FloatingPanel& observed)
    : panel(&observed) {
    observers.willStartLiveResize =
        connect(&observed, &FloatingPanel::willStartLiveResize, this, [this] { isLive = true; });
    observers.didResize = connect(&observed, &FloatingPanel::didResize, this, &GeometryDriver::panelResized);
    observers.didEndLiveResize = connect(&observed, &FloatingPanel::didEndLiveResize, this, [this] {
        isLive = false;
        enqueue(Phase::settle, true);
    });
}

GeometryDriver::~GeometryDriver() {
    disconnect(observers.willStartLiveResize);
    disconnect(observers.didResize);
    disconnect(observers.didEndLiveResize);
}

void GeometryDriver::enqueue(Phase phase, bool force) {
    if (!scheduled) {
        scheduled = true;
        pendingPhase = phase;
        QMetaObject::invokeMethod(this, [this] { tick(); }, Qt::QueuedConnection);
        return;
    }
    if (phase == Phase::settle) {
        pendingPhase = Phase::settle;
    }
    if (force) {
        pendingPhase = phase;
    }
}

void GeometryDriver::panelResized() {
    const bool dragging = isLive || (panel && panel->inLiveResize());
    enqueue(dragging ? Phase::live : Phase::settle, false);
}

void GeometryDriver::tick() {
    scheduled = false;
    if (onTick) {
        onTick(pendingPhase);
    }
}

} // namespace pelloran
