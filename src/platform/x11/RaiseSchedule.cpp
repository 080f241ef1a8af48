#include "platform/x11/RaiseSchedule.h"

#include <algorithm>

namespace pelloran::x11 {

void RaiseSchedule::changed(TimePoint now) {
    if (!next) {
        next = lastLook ? std::max(now, *lastLook + betweenLooks) : now;
    }
}

bool RaiseSchedule::looked(TimePoint now, bool obscured) {
    next.reset();
    lastLook = now;
    if (!obscured) {
        return false;
    }
    if (lastRaise && now < *lastRaise + betweenRaises) {
        next = *lastRaise + betweenRaises;
        return false;
    }
    lastRaise = now;
    return true;
}

} // namespace pelloran::x11
