#pragma once

#include <chrono>
#include <optional>

namespace pelloran::x11 {

// When to look at the stacking order, and when to raise the panel. Two programs that both want to be on top must not
// fight over it, so we raise at most once a second; but the last change is always looked at, however soon it came.
class RaiseSchedule {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // A look costs a few requests for every window, and a window that is being dragged changes with every frame.
    static constexpr std::chrono::milliseconds betweenLooks{100};
    static constexpr std::chrono::milliseconds betweenRaises{1000};

    // Something in the stacking order has changed.
    void changed(TimePoint now);

    // Absent while nothing has changed. May lie in the past.
    std::optional<TimePoint> nextLook() const { return next; }

    // What a look found. Returns whether to raise the panel now; if it is too early, another look is due.
    bool looked(TimePoint now, bool obscured);

    // Somebody asked for the panel, so it was raised whatever the time.
    void raised(TimePoint now) { lastRaise = now; }

private:
    std::optional<TimePoint> next;
    std::optional<TimePoint> lastLook;
    std::optional<TimePoint> lastRaise;
};

} // namespace pelloran::x11
