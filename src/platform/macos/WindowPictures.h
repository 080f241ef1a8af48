#pragma once

#include "platform/WindowServer.h"

#include <QImage>
#include <QSize>

#include <cstdint>
#include <expected>
#include <memory>

namespace pelloran::macos {

// Takes pictures of single windows, also of such as are covered: without frame, shadow and cursor. Made and used on one
// thread, which waits for the system and so must not be the main one; every wait ends.
class WindowPictures {
public:
    WindowPictures();
    ~WindowPictures();

    // Of the window of that number, which is known to have so many points. May have more pixels than that, or another
    // shape when the window has changed.
    std::expected<QImage, WindowImageError> take(std::uint32_t windowId, QSize points);

private:
    struct Found;

    std::unique_ptr<Found> found; // what the last picture was taken with; null where it failed
};

} // namespace pelloran::macos
