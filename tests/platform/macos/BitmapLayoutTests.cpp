#include "platform/macos/BitmapLayout.h"

#include <gtest/gtest.h>

#include <vector>

namespace pelloran::macos {

namespace {

std::vector<std::byte> bytes(std::initializer_list<int> values) {
    std::vector<std::byte> result;
    for (const int value : values) {
        result.push_back(static_cast<std::byte>(value));
    }
    return result;
}

constexpr std::uint32_t little = 0x2000;
constexpr std::uint32_t big = 0x4000;

BitmapLayout layoutOf(std::size_t width, std::size_t height, std::size_t bytesPerRow, std::uint32_t info) {
    return {.width = width,
            .height = height,
            .bitsPerComponent = 8,
            .bitsPerPixel = 32,
            .bytesPerRow = bytesPerRow,
            .bitmapInfo = info};
}

TEST(BitmapLayout, EveryOrderOfFourBytesIsRead) {
    struct Case {
        const char* why;
        std::uint32_t info;
        std::vector<std::byte> pixel;
    };

    const Case cases[] = {
        {"as windows come: BGRA", little | 2, bytes({3, 2, 1, 255})},
        {"BGRX", little | 6, bytes({3, 2, 1, 0})},
        {"RGBA", big | 1, bytes({1, 2, 3, 255})},
        {"RGBX", big | 5, bytes({1, 2, 3, 0})},
        {"the default order is the big one", 1, bytes({1, 2, 3, 255})},
        {"ARGB", big | 2, bytes({255, 1, 2, 3})},
        {"XRGB", 6, bytes({0, 1, 2, 3})},
        {"ABGR", little | 1, bytes({255, 3, 2, 1})},
        {"straight RGBA", 3, bytes({1, 2, 3, 255})},
        {"straight BGRA", little | 4, bytes({3, 2, 1, 255})},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const BitmapLayout layout = layoutOf(1, 1, 4, c.info);
        EXPECT_TRUE(layout.isPlain());
        const QImage image = opaqueImage(c.pixel, layout);
        ASSERT_EQ(image.size(), QSize(1, 1));
        EXPECT_EQ(image.format(), QImage::Format_RGB32);
        EXPECT_EQ(image.pixel(0, 0), 0xff010203);
    }
}

TEST(BitmapLayout, TranslucentPixelsStandOverBlack) {
    struct Case {
        const char* why;
        std::uint32_t info;
        std::vector<std::byte> pixel;
        QRgb expected;
    };

    const Case cases[] = {
        {"premultiplied colours are that already", 1, bytes({50, 60, 70, 128}), 0xff323c46},
        {"a transparent corner", 1, bytes({0, 0, 0, 0}), 0xff000000},
        {"straight ones are brought there", 3, bytes({100, 200, 255, 128}), 0xff326480},
        {"straight and transparent", 3, bytes({100, 200, 255, 0}), 0xff000000},
        {"an unused byte says nothing", 5, bytes({100, 200, 255, 128}), 0xff64c8ff},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(opaqueImage(c.pixel, layoutOf(1, 1, 4, c.info)).pixel(0, 0), c.expected);
    }
}

TEST(BitmapLayout, RowsMayBeLongerThanTheirPixels) {
    const auto data = bytes({3, 2, 1, 0, 6,  5,  4,  0, 99, 99, 99, 99, //
                             9, 8, 7, 0, 12, 11, 10, 0});
    const QImage image = opaqueImage(data, layoutOf(2, 2, 12, little | 6));
    ASSERT_EQ(image.size(), QSize(2, 2));
    EXPECT_EQ(image.pixel(0, 0), 0xff010203);
    EXPECT_EQ(image.pixel(1, 0), 0xff040506);
    EXPECT_EQ(image.pixel(0, 1), 0xff070809);
    EXPECT_EQ(image.pixel(1, 1), 0xff0a0b0c) << "the last row may end with its pixels";
}

TEST(BitmapLayout, WhatIsNotPlainIsNotGuessedAt) {
    struct Case {
        const char* why;
        std::size_t bitsPerComponent;
        std::size_t bitsPerPixel;
        std::uint32_t info;
    };

    const Case cases[] = {
        {"no alpha: another colour is in the fourth byte", 8, 32, 0},
        {"alpha alone", 8, 32, 7},
        {"three bytes", 8, 24, 0},
        {"grey", 8, 8, 0},
        {"16 bits a colour, as wide colours come", 16, 64, 1},
        {"floating point", 8, 32, 0x100 | 1},
        {"ten bits a colour", 10, 32, 6},
        {"packed otherwise", 8, 32, 0x10000 | 6},
        {"16 bits turned around", 8, 32, 0x1000 | 6},
    };
    const std::vector<std::byte> enough(64);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const BitmapLayout layout{.width = 1,
                                  .height = 1,
                                  .bitsPerComponent = c.bitsPerComponent,
                                  .bitsPerPixel = c.bitsPerPixel,
                                  .bytesPerRow = 32,
                                  .bitmapInfo = c.info};
        EXPECT_FALSE(layout.isPlain());
        EXPECT_TRUE(opaqueImage(enough, layout).isNull());
    }
}

TEST(BitmapLayout, NothingIsReadBeyondTheBytes) {
    struct Case {
        const char* why;
        std::size_t width;
        std::size_t height;
        std::size_t bytesPerRow;
        std::size_t bytes;
    };

    constexpr std::size_t huge = std::size_t{1} << 62;
    const Case cases[] = {
        {"a byte is missing in the only row", 2, 1, 8, 7},
        {"a byte is missing in the last row", 2, 3, 12, 31},
        {"rows shorter than their pixels", 2, 1, 7, 64},
        {"no bytes", 2, 1, 8, 0},
        {"no width", 0, 1, 8, 64},
        {"no height", 2, 0, 8, 64},
        {"a width that overflows", huge, 1, huge, 64},
        {"a height that overflows", 1, huge, 4, 64},
        {"rows of a length that overflows", 1, 4, huge, 64},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_TRUE(
            opaqueImage(std::vector<std::byte>(c.bytes), layoutOf(c.width, c.height, c.bytesPerRow, 6)).isNull());
    }
    EXPECT_FALSE(opaqueImage(std::vector<std::byte>(32), layoutOf(2, 3, 12, 6)).isNull()) << "and this is just enough";
}

QImage filled(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(0xff336699);
    return image;
}

TEST(BitmapLayout, PicturesHaveAPixelAPoint) {
    struct Case {
        const char* why;
        QSize picture;
        QSize points;
        bool fits;
    };

    const Case cases[] = {
        {"one pixel a point already", {1280, 748}, {1280, 748}, true},
        {"a Retina display", {2560, 1496}, {1280, 748}, true},
        {"a display scaled by half", {1920, 1122}, {1280, 748}, true},
        {"half a point was rounded away", {2561, 1497}, {1280, 748}, true},
        {"wider: the window grew", {1400, 748}, {1280, 748}, false},
        {"higher", {1280, 800}, {1280, 748}, false},
        {"twice as wide alone", {2560, 748}, {1280, 748}, false},
        {"smaller: there is no less than a pixel a point", {640, 374}, {1280, 748}, false},
        {"turned", {748, 1280}, {1280, 748}, false},
        {"no points", {1280, 748}, {0, 0}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const QImage image = atNominalSize(filled(c.picture), c.points);
        if (c.fits) {
            ASSERT_EQ(image.size(), c.points);
            EXPECT_FALSE(image.hasAlphaChannel());
            EXPECT_EQ(image.devicePixelRatio(), 1);
            EXPECT_EQ(image.pixel(c.points.width() / 2, c.points.height() / 2), 0xff336699);
        } else {
            EXPECT_TRUE(image.isNull());
        }
    }
    EXPECT_TRUE(atNominalSize(QImage(), {1280, 748}).isNull());
}

} // namespace

} // namespace pelloran::macos
