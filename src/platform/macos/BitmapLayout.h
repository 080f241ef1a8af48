#pragma once

#include <QImage>
#include <QSize>

#include <cstddef>
#include <cstdint>
#include <span>

namespace pelloran::macos {

// How Core Graphics has laid out a picture's bytes, in its own words and numbers.
struct BitmapLayout {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bitsPerComponent = 0;
    std::size_t bitsPerPixel = 0;
    std::size_t bytesPerRow = 0; // may be more than the pixels take
    std::uint32_t bitmapInfo = 0;

    // Whether `opaqueImage` can read it: four bytes a pixel, three of them colours, which is how windows come.
    bool isPlain() const;
};

// The picture over black. Null when the layout is not plain, the picture is empty or too large, or the bytes are fewer
// than it needs.
QImage opaqueImage(std::span<const std::byte> bytes, const BitmapLayout& layout);

// The picture of a window of that many points at one pixel a point: as it is, or brought down where the display has
// more. Null when it is a picture of something of another shape or smaller: the window has changed meanwhile.
QImage atNominalSize(const QImage& picture, QSize points);

} // namespace pelloran::macos
