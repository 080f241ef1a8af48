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

// coregraphics/cgimage and its functions' pages: counting references takes null, too
typedef struct CGImage* CGImageRef;
typedef uint32_t CGBitmapInfo;
CGImageRef _Nullable CGImageRetain(CGImageRef _Nullable image);
void CGImageRelease(CGImageRef _Nullable image);
__SIZE_TYPE__ CGImageGetWidth(CGImageRef _Nullable image);
__SIZE_TYPE__ CGImageGetHeight(CGImageRef _Nullable image);
__SIZE_TYPE__ CGImageGetBitsPerComponent(CGImageRef _Nullable image);
__SIZE_TYPE__ CGImageGetBitsPerPixel(CGImageRef _Nullable image);
__SIZE_TYPE__ CGImageGetBytesPerRow(CGImageRef _Nullable image);
CGBitmapInfo CGImageGetBitmapInfo(CGImageRef _Nullable image);

// coregraphics/cgimagealphainfo, cgimagebyteorderinfo, cgbitmapinfo
enum CGImageAlphaInfo : uint32_t {
    kCGImageAlphaNoneSkipFirst = 6,
};

enum : CGBitmapInfo {
    kCGBitmapByteOrder32Little = 2 << 12,
};

// coregraphics/cgdataprovider, cgimage/dataprovider, cgdataprovider/data
typedef struct CGDataProvider* CGDataProviderRef;
CGDataProviderRef _Nullable CGImageGetDataProvider(CGImageRef _Nullable image);
CFDataRef _Nullable CGDataProviderCopyData(CGDataProviderRef _Nullable provider) __attribute__((cf_returns_retained));

// coregraphics/cgcolorspacecreatedevicergb(), cgcolorspacerelease
typedef struct CGColorSpace* CGColorSpaceRef;
CGColorSpaceRef _Nullable CGColorSpaceCreateDeviceRGB(void);
void CGColorSpaceRelease(CGColorSpaceRef _Nullable space);

// coregraphics/cgcontext, cgbitmapcontextcreate(_:_:_:_:_:_:_:), cgcontext/draw(_:in:bytiling:), cgcontextrelease
typedef struct CGContext* CGContextRef;
CGContextRef _Nullable CGBitmapContextCreate(void* _Nullable data, __SIZE_TYPE__ width, __SIZE_TYPE__ height,
                                             __SIZE_TYPE__ bitsPerComponent, __SIZE_TYPE__ bytesPerRow,
                                             CGColorSpaceRef _Nullable space, uint32_t bitmapInfo);
void CGContextDrawImage(CGContextRef _Nullable context, CGRect rect, CGImageRef _Nullable image);
void CGContextRelease(CGContextRef _Nullable context);

// coregraphics/cgrectmake, cgrectnull
CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height);
extern const CGRect CGRectNull;

// coregraphics/cgmaindisplayid()
typedef uint32_t CGDirectDisplayID;
CGDirectDisplayID CGMainDisplayID(void);

// coregraphics/cgpreflightscreencaptureaccess(), cgrequestscreencaptureaccess()
bool CGPreflightScreenCaptureAccess(void) SINCE(10.15);
bool CGRequestScreenCaptureAccess(void) SINCE(10.15);

// coregraphics/cgsessioncopycurrentdictionary(): null outside of a session with a desktop
CFDictionaryRef _Nullable CGSessionCopyCurrentDictionary(void) __attribute__((cf_returns_retained)) SINCE(10.3);

#pragma clang assume_nonnull end

#ifdef __cplusplus
}
#endif
