#include "platform/x11/PixelLayout.h"

#include <gtest/gtest.h>

#include <vector>

namespace pelloran::x11 {

namespace {

std::vector<std::byte> bytes(std::initializer_list<int> values) {
    std::vector<std::byte> result;
    for (const int value : values) {
        result.push_back(static_cast<std::byte>(value));
    }
    return result;
}

TEST(PixelLayout, LinesBeginAtMultiplesOfThePadding) {
    struct Case {
        const char* why;
        int bitsPerPixel;
        int linePadding;
        int width;
        std::size_t expected;
    };

    const Case cases[] = {
        {"32 bits need none", 32, 32, 5, 20},         {"24 packed bits", 24, 32, 3, 12},
        {"24 packed bits, one more", 24, 32, 5, 16},  {"odd number of 16 bits", 16, 32, 3, 8},
        {"even number of 16 bits", 16, 32, 4, 8},     {"byte by byte", 24, 8, 3, 9},
        {"the widest window", 32, 32, 65535, 262140},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ((PixelLayout{.bitsPerPixel = c.bitsPerPixel, .linePadding = c.linePadding}.bytesPerLine(c.width)),
                  c.expected);
    }
}

TEST(ToImage, ReadsEveryLayoutOfColours) {
    struct Case {
        const char* why;
        PixelLayout layout;
        std::vector<std::byte> pixel;
        QRgb expected;
    };

    const Case cases[] = {
        {"the usual one", {}, bytes({0x33, 0x22, 0x11, 0x00}), qRgb(0x11, 0x22, 0x33)},
        {"transparency is dropped", {}, bytes({0x33, 0x22, 0x11, 0x80}), qRgb(0x11, 0x22, 0x33)},
        {"a server of the other byte order",
         {.mostSignificantByteFirst = true},
         bytes({0x00, 0x11, 0x22, 0x33}),
         qRgb(0x11, 0x22, 0x33)},
        {"blue first",
         {.redMask = 0x0000ff, .greenMask = 0x00ff00, .blueMask = 0xff0000},
         bytes({0x11, 0x22, 0x33, 0x00}),
         qRgb(0x11, 0x22, 0x33)},
        {"24 packed bits", {.bitsPerPixel = 24}, bytes({0x33, 0x22, 0x11, 0x00}), qRgb(0x11, 0x22, 0x33)},
        {"5, 6 and 5 bits: white is white",
         {16, 32, false, 0xf800, 0x07e0, 0x001f},
         bytes({0xff, 0xff, 0, 0}),
         qRgb(255, 255, 255)},
        {"5, 6 and 5 bits: red", {16, 32, false, 0xf800, 0x07e0, 0x001f}, bytes({0x00, 0x80, 0, 0}), qRgb(132, 0, 0)},
        {"10 bits a colour",
         {32, 32, false, 0x3ff00000, 0x000ffc00, 0x000003ff},
         bytes({0xff, 0x03, 0x00, 0x20}), // red 512, blue 1023
         qRgb(128, 0, 255)},
        {"3, 3 and 2 bits", {8, 32, false, 0x07, 0x38, 0xc0}, bytes({0xc7, 0, 0, 0}), qRgb(255, 0, 255)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const QImage image = toImage(c.pixel, {1, 1}, c.layout);
        ASSERT_FALSE(image.isNull());
        EXPECT_EQ(image.format(), QImage::Format_RGB32);
        EXPECT_EQ(reinterpret_cast<const QRgb*>(image.constScanLine(0))[0], c.expected);
    }
}

TEST(ToImage, FindsEachPixelOfEachLine) {
    for (const int bitsPerPixel : {16, 24, 32}) {
        SCOPED_TRACE(bitsPerPixel);
        const PixelLayout layout{.bitsPerPixel = bitsPerPixel, .redMask = 0xf0, .greenMask = 0x0f, .blueMask = 0xf000};
        const QSize size(5, 3);
        std::vector<std::byte> packed(layout.bytesPerLine(size.width()) * 3, std::byte{0xee});
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                const std::size_t at = layout.bytesPerLine(5) * y + std::size_t{1} * x * bitsPerPixel / 8;
                packed[at] = static_cast<std::byte>(x << 4 | y);
                packed[at + 1] = std::byte{0};
            }
        }
        const QImage image = toImage(packed, size, layout);
        ASSERT_EQ(image.size(), size);
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                EXPECT_EQ(image.pixel(x, y), qRgb(x * 17, y * 17, 0)) << x << ' ' << y;
            }
        }
    }
}

TEST(ToImage, RefusesWhatItCannotRead) {
    const std::vector<std::byte> enough(4096);

    struct Case {
        const char* why;
        PixelLayout layout;
        QSize size;
        std::size_t bytes;
    };

    const Case cases[] = {
        {"a palette has no masks", {8, 32, false, 0, 0, 0}, {4, 4}, 4096},
        {"black and white", {1, 32, false, 1, 1, 1}, {4, 4}, 4096},
        {"pixels of 64 bits", {64, 32, false, 0xff, 0xff, 0xff}, {4, 4}, 4096},
        {"no padding makes no line", {.linePadding = 0}, {4, 4}, 4096},
        {"one byte short", {}, {4, 4}, 63},
        {"no bytes", {}, {4, 4}, 0},
        {"no size", {}, {0, 0}, 4096},
        {"negative size", {}, {-4, 4}, 4096},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_TRUE(toImage(std::span(enough).first(c.bytes), c.size, c.layout).isNull());
    }
    EXPECT_FALSE(toImage(std::span(enough).first(64), {4, 4}, {}).isNull());
}

} // namespace

} // namespace pelloran::x11
