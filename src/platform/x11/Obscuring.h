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
    bool bypassesManager = false; // override-redirect
    bool ours = false;            // of this program, or a frame around a window of it
};

enum class PanelView {
    free,     // nothing in the way, or only what may be
    obscured, // another program's window covers some of it
    locked,   // behind a screen locker, where it has to stay
};

// A locker cannot be told from another window that bypasses the window manager and covers a whole screen; such a window
// is always taken for one. It wins over everything else: above the windows in between, the panel would be above it too.
PanelView panelView(QRect panel, std::span<const StackedWindow> above, std::span<const QRect> screens);

} // namespace pelloran::x11
