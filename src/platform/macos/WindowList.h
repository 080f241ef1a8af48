#pragma once

#include "platform/WindowServer.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace pelloran::macos {

// The windows of the user's session in the window server's order. Absent outside of a session with a desktop. Any
// thread. Without the permission to record the screen, windows of other programs have no titles here.
std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing);

// One of them as it is now; absent when there is none of that number.
std::optional<WindowDescription> describeWindow(std::uint32_t windowId);

} // namespace pelloran::macos
