#include "overlay/OverlayPanel/layout/PanelState.h"

namespace pelloran {

namespace {

// The program's own resizing is not to be mistaken for the user's.
void noteUsersSize(PanelState& state, QSizeF frame) {
    if (state.frame == PanelState::Frame::resting) {
        state.userResizedFrame = frame;
    }
}

} // namespace

PanelState initialPanelState(QSizeF frame, const std::optional<QSizeF>& userSize) {
    const auto metrics = ResolvedMetrics::resolve(frame, 0, Axis::vertical);
    PanelState state;
    state.userResizedFrame = userSize;
    state.metrics = {.current = metrics, .appliedLayout = metrics, .appliedTypography = metrics};
    return state;
}

SnapshotUpdate snapshotArrived(PanelState& state, const OverlaySnapshot& snapshot) {
    const SnapshotUpdate update =
        snapshotUpdate(state.lastSnapshot ? &*state.lastSnapshot : nullptr, snapshot, state.activeCardCount);
    state.lastSnapshot = snapshot;
    state.activeCardCount = shownCardCount(snapshot);
    return update;
}

FrameDecision frameSuited(PanelState& state, const UpwardRect& frame, UserHold hold,
                          const std::optional<UpwardRect>& visible) {
    if (hold != UserHold::nothing) {
        return LeaveFrame();
    }
    const auto cardCount = state.lastSnapshot ? static_cast<int>(state.lastSnapshot->cards.size()) : 0;
    const ResolvedMetrics& metrics = state.metrics.current;
    const auto target = adaptedFrame(cardCount, frame, state.userResizedFrame, metrics.scale, metrics.axis, visible);
    if (!target) {
        return StopFrame();
    }
    state.frame = PanelState::Frame::moving;
    return MoveFrame{*target, ++state.frameMoves};
}

void frameMoveEnded(PanelState& state, int number) {
    if (number == state.frameMoves) {
        state.frame = PanelState::Frame::resting;
    }
}

void panelResized(PanelState& state, UserHold hold, QSizeF frame) {
    if (hold == UserHold::edge) {
        noteUsersSize(state, frame);
    }
}

GeometryDecision panelMeasured(PanelState& state, GeometryPhase phase, UserHold hold, QSizeF frame, QSizeF content) {
    if (state.arrangement == PanelState::Arrangement::turning) {
        return {};
    }
    if (phase == GeometryPhase::live) {
        noteUsersSize(state, frame);
    }
    // A snapshot may ask for a settled look in the middle of a drag: the axis must not turn under the user's hand.
    const bool live = phase == GeometryPhase::live || hold == UserHold::edge;
    PanelMetrics& metrics = state.metrics;
    const auto resolved = ResolvedMetrics::resolve(content, state.activeCardCount, metrics.current.axis);
    const GeometryDecision decision = live ? liveDecision(metrics, resolved) : settleDecision(metrics, resolved);
    if (decision.store) {
        metrics.current = *decision.store;
    }
    if (decision.transitionAxis) {
        state.arrangement = PanelState::Arrangement::turning;
    }
    const bool both = decision.transitionAxis || decision.applyAnimated;
    if (both || decision.applyLayoutAtOnce) {
        metrics.appliedLayout = metrics.current;
    }
    if (both || decision.applyTypographyAtOnce) {
        metrics.appliedTypography = metrics.current;
    }
    return decision;
}

void axisTurned(PanelState& state) {
    state.arrangement = PanelState::Arrangement::settled;
}

} // namespace pelloran
