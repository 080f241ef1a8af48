#include "platform/x11/Obscuring.h"

#include <algorithm>

namespace pelloran::x11 {

namespace {

// With a scaled desktop a screen's size is known only to within what rounding made of it.
constexpr int roundingError = 2; // physical pixels

bool coversAScreen(const QRect& bounds, std::span<const QRect> screens) {
    return std::ranges::any_of(screens, [&](const QRect& screen) {
        const QRect surely = screen.adjusted(0, 0, -roundingError, -roundingError);
        return !surely.isEmpty() && bounds.contains(surely);
    });
}

} // namespace

PanelView panelView(QRect panel, std::span<const StackedWindow> above, std::span<const QRect> screens) {
    PanelView view = PanelView::free;
    for (const StackedWindow& window : above) {
        if (window.ours || window.inputOnly || !window.viewable || !window.bounds.intersects(panel)) {
            continue;
        }
        if (!window.bypassesManager) {
            view = PanelView::obscured;
        } else if (coversAScreen(window.bounds, screens)) {
            return PanelView::locked;
        }
    }
    return view;
}

} // namespace pelloran::x11
