#include "overlay/OverlayPanel/layout/PanelDecisions.h"

#include <algorithm>

namespace pelloran {

int shownCardCount(const OverlaySnapshot& snapshot) {
    return static_cast<int>(std::min<std::size_t>(tilePoolSize, snapshot.cards.size()));
}

bool showsMessageOnly(const OverlaySnapshot& snapshot) {
    return snapshot.message.has_value() && snapshot.cards.empty();
}

SnapshotUpdate snapshotUpdate(const OverlaySnapshot* previous, const OverlaySnapshot& next, int activeCardCount) {
    if (!previous) {
        return next.cards.empty() ? SnapshotUpdate::bindAll : SnapshotUpdate::bindAppearing;
    }
    const bool sameSlots = std::ranges::equal(previous->cards, next.cards, {}, &OverlayCardViewModel::slotLabel,
                                              &OverlayCardViewModel::slotLabel);
    if (!sameSlots || previous->message.has_value() != next.message.has_value()) {
        const bool tilesAppear = previous->cards.empty() && !next.cards.empty();
        return tilesAppear ? SnapshotUpdate::bindAppearing : SnapshotUpdate::bindAll;
    }
    if (showsMessageOnly(next)) {
        return SnapshotUpdate::showMessage;
    }
    return shownCardCount(next) == activeCardCount ? SnapshotUpdate::rebind : SnapshotUpdate::bindAll;
}

GeometryDecision settleDecision(const PanelMetrics& metrics, const ResolvedMetrics& resolved) {
    const bool layoutChanged = !metrics.appliedLayout || !metrics.appliedLayout->layoutEquals(resolved);
    const bool typographyKept = metrics.appliedTypography && metrics.appliedTypography->typographyEquals(resolved);
    const bool axisChanged = resolved.axis != metrics.current.axis;
    if (typographyKept && !layoutChanged && !axisChanged) {
        return {};
    }
    return {.store = resolved, .transitionAxis = axisChanged, .applyAnimated = !axisChanged};
}

GeometryDecision liveDecision(const PanelMetrics& metrics, const ResolvedMetrics& resolved) {
    const ResolvedMetrics live = resolved.along(metrics.current.axis);
    return {
        .store = live,
        .applyLayoutAtOnce = !metrics.appliedLayout || !metrics.appliedLayout->layoutEquals(live),
        .applyTypographyAtOnce = !metrics.appliedTypography || !metrics.appliedTypography->typographyEquals(live),
    };
}

} // namespace pelloran
