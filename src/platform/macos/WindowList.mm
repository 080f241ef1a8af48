#include "platform/macos/WindowList.h"

#include "platform/macos/WindowRecord.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

namespace pelloran::macos {

namespace {

CGWindowListOption optionsOf(WindowListing listing) {
    switch (listing) {
    case WindowListing::onScreen:
        return kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements;
    case WindowListing::all:
        return kCGWindowListOptionAll;
    }
    Q_UNREACHABLE();
}

Value valueOf(id found) {
    if ([found isKindOfClass:[NSString class]]) {
        return QString::fromNSString(static_cast<NSString*>(found));
    }
    if ([found isKindOfClass:[NSNumber class]]) {
        NSNumber* const number = found;
        if (CFNumberIsFloatType((__bridge CFNumberRef)number)) {
            return number.doubleValue;
        }
        return std::int64_t{number.longLongValue};
    }
    return {};
}

WindowRecord recordOf(NSDictionary* window) {
    const auto entry = [window](CFStringRef key) { return window[(__bridge NSString*)key]; };
    WindowRecord record{
        .number = valueOf(entry(kCGWindowNumber)),
        .ownerName = valueOf(entry(kCGWindowOwnerName)),
        .name = valueOf(entry(kCGWindowName)),
        .layer = valueOf(entry(kCGWindowLayer)),
        .bounds = std::nullopt,
    };
    const id bounds = entry(kCGWindowBounds);
    if ([bounds isKindOfClass:[NSDictionary class]]) {
        NSDictionary* const sides = bounds;
        record.bounds = WindowRecord::Bounds{valueOf(sides[@"X"]), valueOf(sides[@"Y"]), valueOf(sides[@"Width"]),
                                             valueOf(sides[@"Height"])};
    }
    return record;
}

std::optional<std::vector<WindowDescription>> describe(CGWindowListOption option, CGWindowID relativeTo) {
    // The thread may have no pool of its own, and is asked again and again.
    @autoreleasepool {
        NSArray* const windows = CFBridgingRelease(CGWindowListCopyWindowInfo(option, relativeTo));
        if (!windows) {
            return std::nullopt;
        }
        std::vector<WindowDescription> descriptions;
        descriptions.reserve(windows.count);
        for (id window in windows) {
            if ([window isKindOfClass:[NSDictionary class]]) {
                descriptions.push_back(describe(recordOf(window)));
            }
        }
        return descriptions;
    }
}

std::optional<WindowDescription> numbered(std::uint32_t windowId,
                                          const std::optional<std::vector<WindowDescription>>& windows) {
    if (windows) {
        for (const WindowDescription& window : *windows) {
            if (window.number == windowId) {
                return window;
            }
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) {
    return describe(optionsOf(listing), kCGNullWindowID);
}

std::optional<WindowDescription> describeWindow(std::uint32_t windowId) {
    if (windowId == kCGNullWindowID) {
        return std::nullopt;
    }
    // Asked for alone it costs little, but not every system then has a window that is minimised or on another space.
    if (auto window = numbered(windowId, describe(kCGWindowListOptionIncludingWindow, windowId))) {
        return window;
    }
    return numbered(windowId, describeWindows(WindowListing::all));
}

} // namespace pelloran::macos
