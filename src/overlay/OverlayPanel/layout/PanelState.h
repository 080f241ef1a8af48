#pragma once

#include "model/OverlayModel.h"
#include "overlay/OverlayPanel/layout/PanelDecisions.h"
#include "overlay/OverlayPanel/layout/PanelGeometry.h"

#include <QSizeF>

#include <optional>
#include <variant>

// What the panel is in the middle of, as a plain value, and what each event makes of it. The controller asks here and
// has the views do what the answer says, before the next event can come.
namespace pelloran {

// What a look at the panel's size is due to.
enum class GeometryPhase {
    live,   // the user is dragging
    settle, // the drag ended, or the size changed otherwise
};

// Frame and arrangement are independent of each other: tiles turn while the frame moves. Which of its edges the user
// has hold of is known to the window alone and comes with each event. That lengths are being applied is no state:
// events come from the event loop, never in its midst.
struct PanelState {
    // Whether the program is changing the frame.
    enum class Frame { resting, moving };

    // Whether the tiles cross-fade from one axis to the other. What is measured meanwhile counts for nothing.
    enum class Arrangement { settled, turning };

    std::optional<OverlaySnapshot> lastSnapshot; // absent: none has come yet
    int activeCardCount = 0;                     // tiles that are shown
    PanelMetrics metrics;
    Arrangement arrangement = Arrangement::settled;
    Frame frame = Frame::resting;
    int frameMoves = 0;                     // begun so far
    std::optional<QSizeF> userResizedFrame; // what the user last dragged it to; absent: it sizes itself

    bool operator==(const PanelState&) const = default;
};

// Of a panel that has just been built, with everything applied for its first frame, and the size that the user gave it
// in an earlier run, if any.
PanelState initialPanelState(QSizeF frame = initialFrame.size(), const std::optional<QSizeF>& userSize = std::nullopt);

// A snapshot is to be shown: how much has to be bound for it?
SnapshotUpdate snapshotArrived(PanelState& state, const OverlaySnapshot& snapshot);

// It is in the user's hand.
struct LeaveFrame {
    bool operator==(const LeaveFrame&) const = default;
};

// It suits as it is, so that a move to where an earlier snapshot wanted it ends.
struct StopFrame {
    bool operator==(const StopFrame&) const = default;
};

struct MoveFrame {
    UpwardRect target;
    int number; // for frameMoveEnded()

    bool operator==(const MoveFrame&) const = default;
};

using FrameDecision = std::variant<LeaveFrame, StopFrame, MoveFrame>;

// Which frame suits the last snapshot? `visible` is that part of the panel's screen; absent: no screen is known.
FrameDecision frameSuited(PanelState& state, const UpwardRect& frame, UserHold hold,
                          const std::optional<UpwardRect>& visible);

// A move has arrived, or was ended on its way. One that another has taken over from changes nothing.
void frameMoveEnded(PanelState& state, int number);

// The window has got another size. What the user does to it counts at once: where the drag ends in the same turn of the
// event loop, the measuring that follows is no live one.
void panelResized(PanelState& state, UserHold hold, QSizeF frame);

// The panel was measured, once in a turn of the event loop: which lengths and fonts are to be applied, and how?
GeometryDecision panelMeasured(PanelState& state, GeometryPhase phase, UserHold hold, QSizeF frame, QSizeF content);

// The tiles stand along the other axis.
void axisTurned(PanelState& state);

} // namespace pelloran
