#pragma once

#include "model/OverlayModel.h"
#include "overlay/OverlayPanel/layout/PanelDecisions.h"
#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"
#include "overlay/OverlayPanel/views/GeometryDriver.h"
#include "overlay/OverlayPanel/views/PanelColors.h"

#include <QObject>
#include <QPoint>
#include <QSizeF>

#include <array>
#include <memory>
#include <optional>

namespace pelloran {

class AnimationGroup;
class CardTileView;
class CardsStack;
class FloatingPanel;
class MaterialView;
class PanelWindow;
class RootContent;
class SystemSettings;
class TextLabel;

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

    // The desktop's light or dark look may have changed.
    void systemSettingsChanged();

    FloatingPanel& window() const { return *panel; }

    const ResolvedMetrics& metricsInForce() const { return metrics.current; }

Q_SIGNALS:
    // A right click on the panel, in screen coordinates.
    void contextMenuRequested(QPoint position);

    // Lengths were applied to the views: what a snapshot with unchanged tiles must never cause.
    void layoutApplied();

private:
    void present(const OverlaySnapshot& snapshot);
    void bindCards(const OverlaySnapshot& snapshot, bool animateAppear);
    void bindMessage(const QString& message);
    void adaptWindowSize(int cardCount, bool animated);
    void transitionAxis(bool animated);
    void geometryTick(GeometryDriver::Phase phase);

    // To the metrics in force. With `syncLayout` every view stands in its place when it returns.
    void applyLayout(AnimationGroup& group, bool syncLayout);
    void applyTypography();
    void showLayout(const ResolvedMetrics& layout);
    void applyColors();
    void applyMaterial();
    void bringBackIfLost();

    const SystemSettings& settings;
    std::unique_ptr<PanelWindow> panelWindow;
    PanelColors colors;

    const std::unique_ptr<FloatingPanel> panel;
    MaterialView* materialView;
    RootContent* rootContent;
    TextLabel* titleLabel;
    TextLabel* messageLabel;
    CardsStack* cardsStack;
    std::array<CardTileView*, tilePoolSize> cardPool{};

    int activeCardCount = 0;
    std::optional<OverlaySnapshot> lastSnapshot;
    PanelMetrics metrics;
    ResolvedMetrics shownLayout; // on its way to the applied one while it is animated
    std::unique_ptr<GeometryDriver> geometry;
    bool isApplyingLayout = false;
    bool isAxisTransitioning = false;
    std::optional<QSizeF> userResizedFrame;
    bool suppressUserResizeTracking = false;
    int frameAnimations = 0; // begun so far; only the end of the latest one counts
};

} // namespace pelloran
