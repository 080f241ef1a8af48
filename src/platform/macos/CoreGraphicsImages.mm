#include "platform/macos/CoreGraphicsImages.h"

#include "platform/macos/BitmapLayout.h"

#import <CoreGraphics/CoreGraphics.h>

#include <memory>
#include <span>
#include <type_traits>
#include <vector>

namespace pelloran::macos {

namespace {

template <auto release>
struct Releasing {
    void operator()(auto* object) const { release(object); }
};

template <typename Reference, auto release>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, Releasing<release>>;

// Drawn into a picture of the layout that is read here, whatever its own is.
QImage drawn(CGImageRef picture) {
    const BitmapLayout layout{
        .width = CGImageGetWidth(picture),
        .height = CGImageGetHeight(picture),
        .bitsPerComponent = 8,
        .bitsPerPixel = 32,
        .bytesPerRow = CGImageGetWidth(picture) * 4,
        .bitmapInfo = std::uint32_t{kCGImageAlphaNoneSkipFirst} | std::uint32_t{kCGBitmapByteOrder32Little},
    };
    std::vector<std::byte> bytes(layout.bytesPerRow * layout.height);
    const Owned<CGColorSpaceRef, CGColorSpaceRelease> colours(CGColorSpaceCreateDeviceRGB());
    const Owned<CGContextRef, CGContextRelease> context(
        CGBitmapContextCreate(bytes.data(), layout.width, layout.height, layout.bitsPerComponent, layout.bytesPerRow,
                              colours.get(), layout.bitmapInfo));
    if (!context) {
        return {};
    }
    CGContextDrawImage(context.get(), CGRectMake(0, 0, layout.width, layout.height), picture);
    return opaqueImage(bytes, layout);
}

} // namespace

QImage toImage(CGImageRef picture) {
    const BitmapLayout layout{
        .width = CGImageGetWidth(picture),
        .height = CGImageGetHeight(picture),
        .bitsPerComponent = CGImageGetBitsPerComponent(picture),
        .bitsPerPixel = CGImageGetBitsPerPixel(picture),
        .bytesPerRow = CGImageGetBytesPerRow(picture),
        .bitmapInfo = CGImageGetBitmapInfo(picture),
    };
    if (!layout.isPlain()) {
        return drawn(picture);
    }
    const Owned<CFDataRef, CFRelease> data(CGDataProviderCopyData(CGImageGetDataProvider(picture)));
    if (!data) {
        return drawn(picture);
    }
    return opaqueImage(
        std::as_bytes(std::span(CFDataGetBytePtr(data.get()), static_cast<std::size_t>(CFDataGetLength(data.get())))),
        layout);
}

} // namespace pelloran::macos
