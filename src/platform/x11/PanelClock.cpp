#include "platform/x11/PanelClock.h"

#include <algorithm>

namespace pelloran::x11 {

EventLoopClock::EventLoopClock() {
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    timer.callOnTimeout(&timer, [this] {
        if (alarm) {
            alarm();
        }
    });
}

void EventLoopClock::setAlarm(TimePoint due) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - now());
    timer.start(std::max(left, std::chrono::milliseconds(0)));
}

} // namespace pelloran::x11
