#include "platform/macos/CaptureConsent.h"

#include <utility>

namespace pelloran::macos {

CaptureConsent::CaptureConsent(std::function<bool()> givenNow, std::function<bool()> asking)
    : isGiven(std::move(givenNow))
    , ask(std::move(asking)) {}

CapturePermission CaptureConsent::current() const {
    if (isGiven()) {
        return CapturePermission::granted;
    }
    return asked ? CapturePermission::denied : CapturePermission::notAsked;
}

CapturePermission CaptureConsent::askOnce() {
    if (isGiven()) {
        return CapturePermission::granted;
    }
    if (!asked.exchange(true) && ask()) {
        return CapturePermission::granted;
    }
    return current();
}

} // namespace pelloran::macos
