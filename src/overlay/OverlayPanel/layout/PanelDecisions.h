#pragma once

#include "model/OverlayModel.h"
#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"

#include <optional>

// What a new snapshot and a change of the panel's size come to, decided without looking at a single view.
namespace pelloran {

constexpr int tilePoolSize = 3;

// How many tiles of the pool a snapshot fills.
int shownCardCount(const OverlaySnapshot& snapshot);

// A line of text takes the place of the tiles. A message beside tiles is never shown.
bool showsMessageOnly(const OverlaySnapshot& snapshot);

enum class SnapshotUpdate {
    bindAll,       // everything is laid out anew
    bindAppearing, // the same, and the tiles fade in
    showMessage,   // only the line of text may have changed
    rebind,        // the same tiles with other names and figures: no layout
};

// `previous` is null for the first snapshot; `activeCardCount` is how many tiles are shown now.
SnapshotUpdate snapshotUpdate(const OverlaySnapshot* previous, const OverlaySnapshot& next, int activeCardCount);

// The metrics in force, and those that constraints and fonts were last given.
struct PanelMetrics {
    ResolvedMetrics current;
    std::optional<ResolvedMetrics> appliedLayout;
    std::optional<ResolvedMetrics> appliedTypography;

    bool operator==(const PanelMetrics&) const = default;
};

// What follows from a look at the panel's size. At most one of the three kinds of work is asked for.
struct GeometryDecision {
    std::optional<ResolvedMetrics> store; // become the metrics in force
    bool transitionAxis = false;          // layout and fonts through a cross-fade
    bool applyAnimated = false;           // layout and fonts together
    bool applyLayoutAtOnce = false;
    bool applyTypographyAtOnce = false;

    bool operator==(const GeometryDecision&) const = default;
};

// The panel came to rest at a size for which `resolved` holds.
GeometryDecision settleDecision(const PanelMetrics& metrics, const ResolvedMetrics& resolved);

// The user is dragging: what changed is applied cheaply and the axis is kept.
GeometryDecision liveDecision(const PanelMetrics& metrics, const ResolvedMetrics& resolved);

} // namespace pelloran
