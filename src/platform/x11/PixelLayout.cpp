#include "platform/x11/PixelLayout.h"

#include <QSysInfo>

#include <bit>
#include <cstring>

namespace pelloran::x11 {

namespace {

constexpr QRgb opaque = 0xff000000;

// One colour of a packed pixel, brought to 0 to 255.
class Channel {
public:
    explicit Channel(std::uint32_t channelMask)
        : mask(channelMask)
        , shift(std::countr_zero(channelMask))
        , highest(channelMask >> shift) {}

    QRgb of(std::uint32_t pixel) const {
        const std::uint64_t value = (pixel & mask) >> shift;
        return static_cast<QRgb>((value * 255 + highest / 2) / highest);
    }

private:
    std::uint32_t mask;
    int shift;
    std::uint32_t highest;
};

// What nearly every server has: the very layout of QImage, but for the unused byte.
bool isPlain(const PixelLayout& layout) {
    const bool hostOrder = layout.mostSignificantByteFirst == (QSysInfo::ByteOrder == QSysInfo::BigEndian);
    return layout.bitsPerPixel == 32 && hostOrder && layout.redMask == 0xff0000 && layout.greenMask == 0x00ff00 &&
           layout.blueMask == 0x0000ff;
}

void copyPlainLine(const std::byte* from, QRgb* to, int width) {
    for (int x = 0; x < width; ++x) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, from + std::size_t{4} * x, sizeof pixel);
        to[x] = pixel | opaque;
    }
}

std::uint32_t packedPixel(const std::byte* from, int bytes, bool mostSignificantFirst) {
    std::uint32_t pixel = 0;
    for (int i = 0; i < bytes; ++i) {
        pixel = pixel << 8 | std::to_integer<std::uint32_t>(from[mostSignificantFirst ? i : bytes - 1 - i]);
    }
    return pixel;
}

} // namespace

std::size_t PixelLayout::bytesPerLine(int width) const {
    const auto padding = static_cast<std::size_t>(linePadding);
    const std::size_t bits = static_cast<std::size_t>(width) * bitsPerPixel;
    return (bits + padding - 1) / padding * padding / 8;
}

QImage toImage(std::span<const std::byte> bytes, QSize size, const PixelLayout& layout) {
    const int pixelBytes = layout.bitsPerPixel / 8;
    const bool usable = pixelBytes >= 1 && pixelBytes <= 4 && layout.bitsPerPixel % 8 == 0 && layout.linePadding >= 8 &&
                        layout.redMask != 0 && layout.greenMask != 0 && layout.blueMask != 0 && !size.isEmpty();
    if (!usable || bytes.size() < layout.bytesPerLine(size.width()) * size.height()) {
        return {};
    }
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull()) { // out of memory
        return {};
    }
    const bool plain = isPlain(layout);
    const Channel red(layout.redMask);
    const Channel green(layout.greenMask);
    const Channel blue(layout.blueMask);
    const std::size_t lineBytes = layout.bytesPerLine(size.width());
    for (int y = 0; y < size.height(); ++y) {
        const std::byte* from = bytes.data() + y * lineBytes;
        auto* to = reinterpret_cast<QRgb*>(image.scanLine(y));
        if (plain) {
            copyPlainLine(from, to, size.width());
            continue;
        }
        for (int x = 0; x < size.width(); ++x) {
            const std::uint32_t pixel =
                packedPixel(from + std::size_t{1} * x * pixelBytes, pixelBytes, layout.mostSignificantByteFirst);
            to[x] = opaque | red.of(pixel) << 16 | green.of(pixel) << 8 | blue.of(pixel);
        }
    }
    return image;
}

} // namespace pelloran::x11
