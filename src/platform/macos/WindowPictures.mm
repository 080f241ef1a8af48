#include "platform/macos/WindowPictures.h"

#include "platform/macos/Awaited.h"
#include "platform/macos/CaptureErrors.h"
#include "platform/macos/CoreGraphicsImages.h"

#import <CoreGraphics/CoreGraphics.h>
#include <dlfcn.h>
#import <Foundation/Foundation.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include <chrono>
#include <optional>
#include <utility>

namespace pelloran::macos {

namespace {

using namespace std::chrono_literals;

// Nothing but the recognition thread waits: it must only not do so for ever.
constexpr std::chrono::milliseconds patience = 5s;

WindowImageError errorOf(const char* call, NSError* _Nullable error) {
    // Absent although there is no result either: nothing more is known.
    const bool ownDomain = error && [error.domain isEqualToString:SCStreamErrorDomain];
    return captureError(call, ownDomain, error ? error.code : 0);
}

// Of each, one member is there.
struct FoundWindow {
    SCWindow* _Nullable window = nil;
    std::optional<WindowImageError> error;
};

struct MadeFilter {
    SCContentFilter* _Nullable filter = nil;
    std::optional<WindowImageError> error;
};

struct TakenPicture {
    std::shared_ptr<CGImage> picture;
    std::optional<WindowImageError> error;
};

// The window server's number is what both listings have in common.
SCWindow* _Nullable windowIn(SCShareableContent* content, std::uint32_t windowId) {
    for (SCWindow* window in content.windows) {
        if (window.windowID == windowId) {
            return window;
        }
    }
    return nil;
}

// Lists all windows of all programs, which is dear: not to be done for every picture.
MadeFilter filterFor(std::uint32_t windowId) {
    const Awaited<FoundWindow> answer;
    [SCShareableContent
        getShareableContentExcludingDesktopWindows:YES
                               onScreenWindowsOnly:NO
                                 completionHandler:^(SCShareableContent* _Nullable content, NSError* _Nullable error) {
                                   FoundWindow result;
                                   if (!content) {
                                       result.error = errorOf("getShareableContent", error);
                                   } else if (SCWindow* const window = windowIn(content, windowId)) {
                                       result.window = window;
                                   } else {
                                       result.error = WindowGone();
                                   }
                                   answer.deliver(std::move(result));
                                 }];
    std::optional<FoundWindow> result = answer.wait(patience);
    if (!result) {
        return {.filter = nil, .error = captureTimeOut("getShareableContent")};
    }
    SCWindow* const window = result->window;
    if (!window) {
        return {.filter = nil, .error = std::move(result->error)};
    }
    // A program without a user interface has no connection to the window server yet, and the filter ends the program
    // where there is none; asking for a display makes one.
    CGMainDisplayID();
    return {.filter = [[SCContentFilter alloc] initWithDesktopIndependentWindow:window], .error = std::nullopt};
}

API_AVAILABLE(macos(14.0)) std::expected<QImage, WindowImageError> takeFiltered(SCContentFilter* filter, QSize points) {
    SCStreamConfiguration* const configuration = [[SCStreamConfiguration alloc] init];
    configuration.width = static_cast<std::size_t>(points.width());
    configuration.height = static_cast<std::size_t>(points.height());
    configuration.captureResolution = SCCaptureResolutionNominal;
    configuration.scalesToFit = YES;
    configuration.showsCursor = NO;
    configuration.ignoreShadowsSingleWindow = YES;

    const Awaited<TakenPicture> answer;
    [SCScreenshotManager captureImageWithFilter:filter
                                  configuration:configuration
                              completionHandler:^(CGImageRef _Nullable image, NSError* _Nullable error) {
                                TakenPicture result;
                                if (image) {
                                    // It is the caller's only until this block ends.
                                    result.picture = std::shared_ptr<CGImage>(CGImageRetain(image), CGImageRelease);
                                } else {
                                    result.error = errorOf("captureImageWithFilter", error);
                                }
                                answer.deliver(std::move(result));
                              }];
    std::optional<TakenPicture> result = answer.wait(patience);
    if (!result) {
        return std::unexpected(captureTimeOut("captureImageWithFilter"));
    }
    if (result->error) {
        return std::unexpected(*std::move(result->error));
    }
    return toImage(result->picture.get());
}

// Until macOS 13. Newer SDKs do not declare it any more, while it is in every system that it is asked of here.
std::expected<QImage, WindowImageError> takeListed(std::uint32_t windowId) {
    using CreateImage = CGImageRef _Nullable (*)(CGRect, CGWindowListOption, CGWindowID, std::uint32_t);
    static const auto createImage = reinterpret_cast<CreateImage>(dlsym(RTLD_DEFAULT, "CGWindowListCreateImage"));
    if (!createImage) {
        return std::unexpected(WindowServerFailed{"CGWindowListCreateImage is missing", 0});
    }
    constexpr std::uint32_t boundsIgnoreFraming = 1;
    constexpr std::uint32_t nominalResolution = 16;
    const CGImageRef picture =
        createImage(CGRectNull, kCGWindowListOptionIncludingWindow, windowId, boundsIgnoreFraming | nominalResolution);
    if (!picture) {
        return std::unexpected(WindowServerFailed{"CGWindowListCreateImage", 0});
    }
    QImage image = toImage(picture);
    CGImageRelease(picture);
    return image;
}

} // namespace

struct WindowPictures::Found {
    std::uint32_t windowId;
    QSize points;
    SCContentFilter* filter;
};

WindowPictures::WindowPictures() = default;
WindowPictures::~WindowPictures() = default;

std::expected<QImage, WindowImageError> WindowPictures::take(std::uint32_t windowId, QSize points) {
    // The thread may have no pool of its own, and comes here again and again.
    @autoreleasepool {
        if (@available(macOS 14.0, *)) {
            // A filter holds for as long as its window does. What it knows of the window's size is of when it was made.
            if (!found || found->windowId != windowId || found->points != points) {
                found.reset();
                const MadeFilter made = filterFor(windowId);
                if (made.error) {
                    return std::unexpected(*made.error);
                }
                found = std::make_unique<Found>(Found{.windowId = windowId, .points = points, .filter = made.filter});
            }
            auto picture = takeFiltered(found->filter, points);
            if (!picture) {
                found.reset(); // the next picture begins anew
            }
            return picture;
        }
        return takeListed(windowId);
    }
}

} // namespace pelloran::macos
