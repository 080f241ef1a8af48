#include "platform/macos/QuartzWindowServer.h"

#include "platform/macos/CaptureConsent.h"
#include "platform/macos/SteadyPicture.h"
#include "platform/macos/WindowList.h"

#import <CoreGraphics/CoreGraphics.h>

namespace pelloran {

namespace macos {

namespace {

// Never found out by taking a picture: without consent the system puts up its question for every attempt.
CaptureConsent& consent() {
    static CaptureConsent ofThisProcess([] { return CGPreflightScreenCaptureAccess(); },
                                        [] { return CGRequestScreenCaptureAccess(); });
    return ofThisProcess;
}

} // namespace

QuartzWindowServer::QuartzWindowServer() {
    consent().askOnce();
}

std::optional<std::vector<WindowDescription>> QuartzWindowServer::describeWindows(WindowListing listing) {
    return macos::describeWindows(listing);
}

std::expected<QImage, WindowImageError> QuartzWindowServer::image(std::uint32_t windowId) {
    if (permission() != CapturePermission::granted) {
        return std::unexpected(CaptureDenied());
    }
    return steadyPicture([windowId] { return describeWindow(windowId); },
                         [this, windowId](QSize points) { return pictures.take(windowId, points); });
}

CapturePermission QuartzWindowServer::permission() const {
    return consent().current();
}

} // namespace macos

std::unique_ptr<WindowServer> WindowServer::create() {
    return std::make_unique<macos::QuartzWindowServer>();
}

} // namespace pelloran
