#pragma once

#include "platform/WindowServer.h"

namespace pelloran::macos {

// The Mac's own window server.
class QuartzWindowServer final : public WindowServer {
public:
    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) override;
    std::expected<QImage, WindowImageError> image(std::uint32_t windowId) override;
    CapturePermission permission() const override;
};

} // namespace pelloran::macos
