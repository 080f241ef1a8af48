#pragma once

#include <Availability.h>
#include <CoreFoundation/CoreFoundation.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma clang assume_nonnull begin

// coregraphics/cgwindowid, cgwindowlistoption
typedef uint32_t CGWindowID;
typedef uint32_t CGWindowListOption;

enum : CGWindowListOption {
    kCGWindowListOptionAll = 0,
    kCGWindowListOptionOnScreenOnly = 1,
    kCGWindowListOptionIncludingWindow = 8,
    kCGWindowListExcludeDesktopElements = 16,
};

#define kCGNullWindowID ((CGWindowID)0)

// coregraphics/cgwindowlistcopywindowinfo(_:_:): since 10.5, null outside of a session with a desktop
CFArrayRef _Nullable CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow)
    __attribute__((cf_returns_retained)) SINCE(10.5);

// coregraphics/required-window-list-keys, optional-window-list-keys
extern const CFStringRef kCGWindowNumber SINCE(10.5);
extern const CFStringRef kCGWindowOwnerName SINCE(10.5);
extern const CFStringRef kCGWindowName SINCE(10.5);
extern const CFStringRef kCGWindowLayer SINCE(10.5);
extern const CFStringRef kCGWindowBounds SINCE(10.5);

// coregraphics/cgimage
typedef struct CGImage* CGImageRef;

// coregraphics/cgpreflightscreencaptureaccess(), cgrequestscreencaptureaccess()
bool CGPreflightScreenCaptureAccess(void) SINCE(10.15);
bool CGRequestScreenCaptureAccess(void) SINCE(10.15);

#pragma clang assume_nonnull end

#ifdef __cplusplus
}
#endif
