#pragma once

#include "model/OverlayModel.h"
#include "overlay/Overlay.h"
#include "overlay/OverlayPanel/layout/PanelState.h"
#include "overlay/OverlayPanel/views/Motion.h"

#include <QObject>

#include <memory>

namespace pelloran {

class FloatingPanel;
class GeometryDriver;
class PanelViews;
class PanelWindow;
class SystemSettings;

// The floating panel: shows the snapshot of the moment, keeps itself on screen and sizes itself to its content unless
// the user has. What is to be done is asked of `PanelState`; here it is done to the views, in time. Main thread only,
// except `update`.
class OverlayPanelController final : public QObject, public Overlay {
    Q_OBJECT

public:
    // The panel is built, not shown. `settings` must outlive it.
    OverlayPanelController(const SystemSettings& settings, std::unique_ptr<PanelWindow> window,
                           MotionPreference motionPreference = MotionPreference::asDesktopSays);
    ~OverlayPanelController() override;

    // Back onto the main screen if it is off screen.
    void show() override;
    void hide() override;
    bool isVisible() const override;

    // From any thread; the panel changes when the main thread's event loop gets to it.
    void update(const OverlaySnapshot& snapshot) override;

    void systemSettingsChanged() override;

    FloatingPanel& window() const;

    const ResolvedMetrics& metricsInForce() const { return state.metrics.current; }

Q_SIGNALS:
    // Lengths were applied to the views: what a snapshot with unchanged tiles must never cause.
    void layoutApplied();

private:
    void present(const OverlaySnapshot& snapshot);
    void showTiles(const OverlaySnapshot& snapshot, bool appearing);
    void adaptWindowSize();
    void transitionAxis();
    void geometryTick(GeometryPhase phase);

    // To the metrics in force.
    void applyLayout(AnimationGroup& group);
    void applyTypography();
    void bringBack(const UpwardRect& visible);
    void bringBackIfLost();

    const SystemSettings& settings;
    const Motion motion;
    PanelState state = initialPanelState();
    const std::unique_ptr<PanelViews> views;
    const std::unique_ptr<GeometryDriver> geometry;
};

} // namespace pelloran
