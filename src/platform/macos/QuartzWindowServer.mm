#include "platform/macos/QuartzWindowServer.h"

#include "platform/macos/WindowList.h"

#import <CoreGraphics/CoreGraphics.h>

namespace pelloran {

namespace macos {

std::optional<std::vector<WindowDescription>> QuartzWindowServer::describeWindows(WindowListing listing) {
    return macos::describeWindows(listing);
}

std::expected<QImage, WindowImageError> QuartzWindowServer::image(std::uint32_t) {
    return std::unexpected(WindowServerFailed{"no capture of windows in this build", 0});
}

CapturePermission QuartzWindowServer::permission() const {
    return CGPreflightScreenCaptureAccess() ? CapturePermission::granted : CapturePermission::denied;
}

} // namespace macos

std::unique_ptr<WindowServer> WindowServer::create() {
    return std::make_unique<macos::QuartzWindowServer>();
}

} // namespace pelloran
