#pragma once

#include "platform/WindowServer.h"

#include <QImage>
#include <QSize>

#include <expected>
#include <functional>
#include <optional>

namespace pelloran::macos {

// The picture of one window at one pixel a point. The system brings whatever a window has become to the size that was
// asked for, so `describe`, which tells of the window as it is now, is asked before and after: one that closed or
// changed its size meanwhile is an error. `take` gets the window's size in points and may give more pixels than that. A
// window of no size has an empty picture, and is not taken.
std::expected<QImage, WindowImageError>
steadyPicture(const std::function<std::optional<WindowDescription>()>& describe,
              const std::function<std::expected<QImage, WindowImageError>(QSize points)>& take);

} // namespace pelloran::macos
