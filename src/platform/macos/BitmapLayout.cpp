#include "platform/macos/BitmapLayout.h"

#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace pelloran::macos {

namespace {

// The parts of CGBitmapInfo.
constexpr std::uint32_t alphaMask = 0x1f;
constexpr std::uint32_t floatingPoint = 0x100;
constexpr std::uint32_t byteOrderMask = 0x7000;
constexpr std::uint32_t byteOrderDefault = 0; // most significant byte first
constexpr std::uint32_t byteOrder32Little = 0x2000;
constexpr std::uint32_t byteOrder32Big = 0x4000;
constexpr std::uint32_t pixelFormatMask = 0xf0000; // 0: one component after the other

// CGImageAlphaInfo.
enum Alpha : std::uint32_t {
    premultipliedLast = 1,
    premultipliedFirst,
    straightLast,
    straightFirst,
    skipLast,
    skipFirst
};

// Where the bytes of a pixel are.
struct Places {
    int red;
    int green;
    int blue;
    int alpha;
    bool straight; // colours are to be multiplied by alpha to stand over black
};

std::optional<Places> placesOf(const BitmapLayout& layout) {
    if (layout.bitsPerComponent != 8 || layout.bitsPerPixel != 32 ||
        (layout.bitmapInfo & (floatingPoint | pixelFormatMask)) != 0) {
        return std::nullopt;
    }
    const std::uint32_t alpha = layout.bitmapInfo & alphaMask;
    Places places{};
    switch (alpha) {
    case premultipliedLast:
    case straightLast:
    case skipLast:
        places = {.red = 0, .green = 1, .blue = 2, .alpha = 3, .straight = alpha == straightLast};
        break;
    case premultipliedFirst:
    case straightFirst:
    case skipFirst:
        places = {.red = 1, .green = 2, .blue = 3, .alpha = 0, .straight = alpha == straightFirst};
        break;
    default: // no fourth byte, or another colour in it
        return std::nullopt;
    }
    switch (layout.bitmapInfo & byteOrderMask) {
    case byteOrderDefault:
    case byteOrder32Big:
        return places;
    case byteOrder32Little:
        return Places{3 - places.red, 3 - places.green, 3 - places.blue, 3 - places.alpha, places.straight};
    default:
        return std::nullopt;
    }
}

QRgb overBlack(QRgb colour, QRgb alpha) {
    return (colour * alpha + 127) / 255;
}

} // namespace

bool BitmapLayout::isPlain() const {
    return placesOf(*this).has_value();
}

QImage opaqueImage(std::span<const std::byte> bytes, const BitmapLayout& layout) {
    constexpr std::size_t mostPixels = std::numeric_limits<std::int16_t>::max(); // a side; more than any display
    const auto places = placesOf(layout);
    if (!places || layout.width == 0 || layout.height == 0 || layout.width > mostPixels || layout.height > mostPixels ||
        layout.bytesPerRow < layout.width * 4) {
        return {};
    }
    // The last row may end with its pixels.
    const std::size_t rowsBefore = layout.height - 1;
    if (layout.bytesPerRow > bytes.size() || rowsBefore > (bytes.size() - layout.width * 4) / layout.bytesPerRow) {
        return {};
    }
    QImage image(static_cast<int>(layout.width), static_cast<int>(layout.height), QImage::Format_RGB32);
    if (image.isNull()) { // out of memory
        return {};
    }
    for (std::size_t y = 0; y < layout.height; ++y) {
        const std::byte* from = bytes.data() + y * layout.bytesPerRow;
        auto* to = reinterpret_cast<QRgb*>(image.scanLine(static_cast<int>(y)));
        for (std::size_t x = 0; x < layout.width; ++x, from += 4) {
            QRgb red = std::to_integer<QRgb>(from[places->red]);
            QRgb green = std::to_integer<QRgb>(from[places->green]);
            QRgb blue = std::to_integer<QRgb>(from[places->blue]);
            if (places->straight) {
                const QRgb alpha = std::to_integer<QRgb>(from[places->alpha]);
                red = overBlack(red, alpha);
                green = overBlack(green, alpha);
                blue = overBlack(blue, alpha);
            }
            to[x] = 0xff000000 | red << 16 | green << 8 | blue;
        }
    }
    return image;
}

QImage atNominalSize(const QImage& picture, QSize points) {
    if (picture.isNull() || points.isEmpty()) {
        return {};
    }
    if (picture.size() == points) {
        return picture;
    }
    const double across = static_cast<double>(picture.width()) / points.width();
    const double down = static_cast<double>(picture.height()) / points.height();
    // A side's length in points is rounded, so by up to a point the other side may tell something else.
    const double slack = across / points.height() + across / points.width();
    if (across < 1 || down < 1 || std::abs(across - down) > slack) {
        return {};
    }
    return picture.scaled(points, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_RGB32);
}

} // namespace pelloran::macos
