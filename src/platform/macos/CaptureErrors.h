#pragma once

#include "platform/WindowServer.h"

#include <cstdint>
#include <string>

namespace pelloran::macos {

// What ScreenCaptureKit said when it was asked for `call`: `ownDomain` tells whether the code is one of its own.
WindowImageError captureError(std::string call, bool ownDomain, std::int64_t code);

// It said nothing for as long as it was waited for.
WindowImageError captureTimeOut(std::string call);

// The window is not what it was when its picture was asked for.
WindowImageError sizeChanged();

} // namespace pelloran::macos
