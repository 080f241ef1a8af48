#include "platform/macos/CaptureErrors.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

namespace pelloran::macos {

namespace {

// Of SCStreamError.Code; the rest leave the user nothing to do that their number would not tell, too.
constexpr std::int64_t userDeclined = -3801;
constexpr std::int64_t noCaptureSource = -3815;

} // namespace

WindowImageError captureError(std::string call, bool ownDomain, std::int64_t code) {
    if (ownDomain && code == userDeclined) {
        return CaptureDenied();
    }
    if (ownDomain && code == noCaptureSource) {
        return WindowGone();
    }
    using Limits = std::numeric_limits<int>;
    return WindowServerFailed{std::move(call),
                              static_cast<int>(std::clamp<std::int64_t>(code, Limits::min(), Limits::max()))};
}

WindowImageError captureTimeOut(std::string call) {
    return WindowServerFailed{std::move(call) + " gives no answer", ETIMEDOUT};
}

WindowImageError sizeChanged() {
    return WindowServerFailed{"its size changed while its picture was taken", 0};
}

} // namespace pelloran::macos
