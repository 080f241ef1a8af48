#pragma once

#include <QRect>

#include <cstdint>
#include <span>

// What to make of the windows that are stacked above the panel.
namespace pelloran::x11 {

// A child of the root window, in physical pixels.
struct StackedWindow {
    std::uint32_t id = 0;
    QRect bounds; // with its border
    bool viewable = true;
    bool inputOnly = false;
    bool bypassesManager = false; // neither managed nor a manager's frame around a managed window
    bool ours = false;            // of this program, or a frame around a window of it
};

enum class PanelView {
    free,     // nothing in the way, or only what may be
    obscured, // another program's managed window covers some of it
    locked,   // behind a screen locker, where it has to stay
};

// What bypasses the window manager is a menu, a tooltip or a notification, there for a moment and on top for a reason:
// it stays above. One that covers a whole screen is taken for a locker, from which nothing tells it. A locker wins over
// everything else: above the windows in between, the panel would be above it too.
PanelView panelView(QRect panel, std::span<const StackedWindow> above, std::span<const QRect> screens);

} // namespace pelloran::x11
