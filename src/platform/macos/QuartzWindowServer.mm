#include "platform/macos/QuartzWindowServer.h"

#include "platform/macos/BitmapLayout.h"
#include "platform/macos/CaptureConsent.h"
#include "platform/macos/CaptureErrors.h"
#include "platform/macos/WindowList.h"
#include "platform/macos/WindowRecord.h"

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
    const auto before = describeWindow(windowId);
    if (!before) {
        return std::unexpected(WindowGone());
    }
    const auto points = pointsOf(*before);
    if (!points || points->isEmpty()) {
        return QImage(); // there is a window, and nothing of it to take
    }
    auto picture = pictures.take(windowId, *points);
    if (!picture) {
        return picture;
    }
    // The system brings whatever the window has become meanwhile to the size that was asked for.
    const auto after = describeWindow(windowId);
    if (!after) {
        return std::unexpected(WindowGone());
    }
    if (pointsOf(*after) != points) {
        return std::unexpected(sizeChanged());
    }
    if (picture->isNull()) {
        return std::unexpected(WindowServerFailed{"the picture cannot be read", 0});
    }
    QImage image = atNominalSize(*picture, *points);
    if (image.isNull()) {
        return std::unexpected(sizeChanged());
    }
    return image;
}

CapturePermission QuartzWindowServer::permission() const {
    return consent().current();
}

} // namespace macos

std::unique_ptr<WindowServer> WindowServer::create() {
    return std::make_unique<macos::QuartzWindowServer>();
}

} // namespace pelloran
