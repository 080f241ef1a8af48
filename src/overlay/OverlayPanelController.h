#pragma once

#include "model/OverlayModel.h"
#include "overlay/Overlay.h"
#include "overlay/OverlayPanel/layout/PanelPlace.h"
#include "overlay/OverlayPanel/layout/PanelState.h"
#include "overlay/OverlayPanel/views/Motion.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

namespace pelloran {

class FloatingPanel;
class GeometryDriver;
class PanelViews;
class PanelWindow;
class SystemSettings;
class UserDefaults;

// The floating panel: shows the snapshot of the moment, keeps itself on screen and sizes itself to its content unless
// the user has. What is to be done is asked of `PanelState`; here it is done to the views, in time. Main thread only,
// except `update`.
class OverlayPanelController final : public QObject, public Overlay {
    Q_OBJECT

public:
    // Where `memory` has how the panel was left, as PanelPlace has it.
    static const QString placesKey;

    using Screens = std::function<std::vector<ScreenInUse>()>;

    // The panel is built, not shown. `settings` must outlive it. It stands as `memory` has it, if given; and where the
    // user puts it is written there: when a drag ends, when it is hidden or shown, and at the end. Nothing is written
    // where the user puts it nowhere. `screens` tells which there are; absent: those that Qt knows.
    OverlayPanelController(const SystemSettings& settings, std::unique_ptr<PanelWindow> window,
                           MotionPreference motionPreference = MotionPreference::asDesktopSays,
                           UserDefaults* memory = nullptr, const Screens& screens = {});
    ~OverlayPanelController() override;

    // Back onto the main screen if it is on none.
    void show() override;
    void open() override;
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
    // As PanelPlace has it, of a panel that is to be built.
    OverlayPanelController(const SystemSettings& settings, std::unique_ptr<PanelWindow> window,
                           MotionPreference motionPreference, UserDefaults* memory, Screens screens,
                           const PanelPlace& place);

    void setWanted(bool shown);
    void remember() const;
    void present(const OverlaySnapshot& snapshot);
    void showTiles(const OverlaySnapshot& snapshot, bool appearing);
    void adaptWindowSize();
    void transitionAxis();
    void geometryTick(GeometryPhase phase);

    // To the metrics in force.
    void applyLayout(AnimationGroup& group);
    void applyTypography();
    void moveTo(const UpwardRect& frame);
    void screensChanged();

    const SystemSettings& settings;
    const Motion motion;
    UserDefaults* const memory; // may be null
    const Screens screensInUse;
    PanelPlace asLeft;         // by the user, or as it opened: what the program makes of it since is not remembered
    bool hasUserActed = false; // moved, resized, hidden or shown it in this run: then there is something to remember
    PanelState state;
    const std::unique_ptr<PanelViews> views;
    const std::unique_ptr<GeometryDriver> geometry;
};

} // namespace pelloran
