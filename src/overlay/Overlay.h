#pragma once

#include "model/OverlayModel.h"

#include <QPoint>

#include <functional>

namespace pelloran {

// What the application asks of the floating panel, so that the wiring is tested without one. Main thread.
class Overlay {
public:
    virtual ~Overlay() = default;

    // Brings it on screen, in front, without taking the keyboard.
    virtual void show() = 0;

    // At the start: as the last run left it, shown or hidden; shown where nothing is known of one.
    virtual void open() = 0;

    virtual void hide() = 0;
    virtual bool isVisible() const = 0;

    virtual void update(const OverlaySnapshot& snapshot) = 0;

    // The desktop's light or dark look, or its reduced motion, may have changed.
    virtual void systemSettingsChanged() = 0;

    // A right click on the panel, in screen coordinates.
    std::function<void(QPoint position)> contextMenuRequested;
};

} // namespace pelloran
