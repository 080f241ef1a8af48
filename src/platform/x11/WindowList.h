#pragma once

#include "platform/WindowServer.h"
#include "platform/x11/XcbConnection.h"

#include <optional>
#include <vector>

namespace pelloran::x11 {

// The application windows that are mapped, front to back; for the on-screen listing only those on the current desktop
// that are not hidden. Unmapped (minimised) windows have no contents to capture and are in neither listing. Absent when
// the connection broke or the server hangs.
std::optional<std::vector<WindowDescription>> describeWindows(const XcbConnection& connection, WindowListing listing);

} // namespace pelloran::x11
