#pragma once

#include "platform/macos/WindowPictures.h"
#include "platform/WindowServer.h"

namespace pelloran::macos {

// The Mac's own window server. Pictures of windows, and the titles of windows, take the user's consent: it is asked for
// when the first of these is made in a run, which is when the first pick is on the screen.
class QuartzWindowServer final : public WindowServer {
public:
    QuartzWindowServer();

    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) override;
    std::expected<QImage, WindowImageError> image(std::uint32_t windowId) override;
    CapturePermission permission() const override;

private:
    WindowPictures pictures;
};

} // namespace pelloran::macos
