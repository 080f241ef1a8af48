#pragma once

#include "overlay/OverlayModel.h"

#include <QObject>
#include <QPoint>

#include <memory>
#include <optional>

namespace pelloran {

class FloatingPanel;
class PanelWindow;
class SystemSettings;

// Owns the floating panel: shows the snapshot of the moment, keeps the panel on screen and sizes it to its content
// unless the user has. Main thread only, except `update`.
class OverlayPanelController final : public QObject {
    Q_OBJECT

public:
    // The panel is built, not shown. `settings` must outlive it.
    OverlayPanelController(const SystemSettings& settings, std::unique_ptr<PanelWindow> window);
    ~OverlayPanelController() override;

    // Brings the panel on screen, in front, without taking the keyboard; back onto the main screen if it is off screen.
    void show();
    void hide();
    bool isVisible() const;

    // From any thread; the panel changes when the main thread's event loop gets to it.
    void update(const OverlaySnapshot& snapshot);

    // The desktop's light or dark look, or its reduced motion, may have changed.
    void systemSettingsChanged();

Q_SIGNALS:
    // A right click on the panel, in screen coordinates.
    void contextMenuRequested(QPoint position);

private:
    std::unique_ptr<PanelWindow> panelWindow;
    std::unique_ptr<FloatingPanel> panel;
};

} // namespace pelloran
