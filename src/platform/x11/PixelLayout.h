#pragma once

#include <QImage>
#include <QSize>

#include <cstddef>
#include <cstdint>
#include <span>

namespace pelloran::x11 {

// How an X server packs the pixels of a picture.
struct PixelLayout {
    int bitsPerPixel = 32;
    int linePadding = 32; // bits; lines begin at multiples of it
    bool mostSignificantByteFirst = false;
    std::uint32_t redMask = 0xff0000;
    std::uint32_t greenMask = 0x00ff00;
    std::uint32_t blueMask = 0x0000ff;

    // Of one line of `width` pixels.
    std::size_t bytesPerLine(int width) const;
};

// The picture as opaque RGB. Null when the pixels are not whole bytes (1 to 4) of colour under masks, or `bytes` are
// fewer than the size needs.
QImage toImage(std::span<const std::byte> bytes, QSize size, const PixelLayout& layout);

} // namespace pelloran::x11
