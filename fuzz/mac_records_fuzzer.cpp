// Any window records, bitmaps, lines and locales as a Mac's system may hand them over. What comes of them is within the
// limits that the rest of the program reckons with.

#include "fuzz/Bytes.h"
#include "fuzz/Require.h"
#include "platform/macos/BitmapLayout.h"
#include "platform/macos/CaptureErrors.h"
#include "platform/macos/LocaleNames.h"
#include "platform/macos/RecognisedText.h"
#include "platform/macos/WindowRecord.h"
#include "recognition/WindowCapture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;

double doubleFrom(Bytes& bytes) {
    return std::bit_cast<double>(bytes.takeNumber(8));
}

// The numbers at which something changes, and those beside them.
std::int64_t edgeFrom(Bytes& bytes) {
    constexpr std::array<std::int64_t, 8> edges{0,
                                                400,
                                                300,
                                                std::numeric_limits<std::int16_t>::max(),
                                                std::numeric_limits<int>::max(),
                                                std::numeric_limits<int>::min(),
                                                std::numeric_limits<std::uint32_t>::max(),
                                                std::numeric_limits<std::int64_t>::max() - 8};
    const int which = bytes.take();
    return edges[std::size_t(which) % edges.size()] + which / 64;
}

macos::Value valueFrom(Bytes& bytes) {
    switch (bytes.take() % 6) {
    case 0:
        return {};
    case 1:
        return std::bit_cast<std::int64_t>(bytes.takeNumber(8));
    case 2:
        return edgeFrom(bytes);
    case 3:
        return doubleFrom(bytes);
    case 4:
        return double(edgeFrom(bytes)) - 0.5;
    default:
        return fuzzing::nameFrom(bytes);
    }
}

bool isFinite(const std::optional<double>& number) {
    return !number || std::isfinite(*number);
}

void describeWindows(Bytes& bytes) {
    std::vector<WindowDescription> descriptions;
    for (int count = 1 + bytes.take() % 4; count > 0; --count) {
        macos::WindowRecord record{.number = valueFrom(bytes),
                                   .ownerName = valueFrom(bytes),
                                   .name = valueFrom(bytes),
                                   .layer = valueFrom(bytes),
                                   .bounds = {}};
        if (bytes.take() & 1) {
            record.bounds = {valueFrom(bytes), valueFrom(bytes), valueFrom(bytes), valueFrom(bytes)};
        }
        const WindowDescription& window = descriptions.emplace_back(macos::describe(record));
        require(window.ownerName.has_value() == std::holds_alternative<QString>(record.ownerName));
        require(window.bounds.has_value() == record.bounds.has_value());
        if (window.bounds) {
            require(isFinite(window.bounds->x) && isFinite(window.bounds->y));
            require(isFinite(window.bounds->width) && isFinite(window.bounds->height));
        }
        if (const auto* layer = std::get_if<std::int64_t>(&record.layer)) {
            require(window.layer && (*window.layer == 0) == (*layer == 0));
        }
        const auto points = macos::pointsOf(window);
        require(!points || (points->width() >= 0 && points->height() >= 0 && points->width() <= 32767 &&
                            points->height() <= 32767));
    }
    const auto windows = WindowCapture::parse(descriptions, true);
    require(std::ranges::all_of(windows, [](const HSWindowInfo& window) { return window.bounds.isValid(); }));
    (void)WindowCapture::chooseHearthstone(windows, fuzzing::nameFrom(bytes));
}

// Small where a number is one byte, else anything.
std::size_t lengthFrom(Bytes& bytes, bool small) {
    return small ? std::size_t(bytes.take()) % 48 : std::size_t(bytes.takeNumber(8));
}

// A pixel as Core Graphics means it: a number of 32 bits in one of two byte orders, over black.
QRgb plainPixel(const QByteArray& pixels, int x, int y, const macos::BitmapLayout& layout) {
    QByteArray pixel = pixels.sliced(qsizetype(layout.bytesPerRow) * y + qsizetype{4} * x, 4);
    if ((layout.bitmapInfo & 0x7000) == 0x2000) {
        std::ranges::reverse(pixel);
    }
    const std::uint32_t info = layout.bitmapInfo & 0x1f;
    const bool alphaFirst = info % 2 == 0;
    const bool straight = info == 3 || info == 4;
    const auto byte = [&](int place) { return int(std::uint8_t(pixel[place])); };
    const int alpha = straight ? byte(alphaFirst ? 0 : 3) : 255;
    const auto colour = [&](int place) { return int(std::lround(byte(place + alphaFirst) * alpha / 255.0)); };
    return qRgb(colour(0), colour(1), colour(2));
}

void readBitmap(Bytes& bytes) {
    const int how = bytes.take();
    const macos::BitmapLayout layout{.width = lengthFrom(bytes, how & 1),
                                     .height = lengthFrom(bytes, how & 2),
                                     .bitsPerComponent = how & 4 ? 8 : lengthFrom(bytes, true),
                                     .bitsPerPixel = how & 4 ? 32 : lengthFrom(bytes, true),
                                     .bytesPerRow = how & 8 ? 192 + lengthFrom(bytes, true) : lengthFrom(bytes, false),
                                     .bitmapInfo = std::uint32_t(bytes.takeNumber(how & 16 ? 2 : 4))};
    const QSize points(bytes.take() % 64 - 1, bytes.take() % 64 - 1);
    QByteArray pixels = bytes.rest();
    if (how & 32) {
        pixels.resize(std::max(pixels.size(), qsizetype{48} * 256), '\x5A');
    }
    const QImage image =
        macos::opaqueImage(std::as_bytes(std::span(pixels.constData(), std::size_t(pixels.size()))), layout);
    require(image.isNull() || layout.isPlain());
    if (!image.isNull()) {
        require(image.width() == int(layout.width) && image.height() == int(layout.height));
        for (int y = 0; y < image.height(); y += 1 + image.height() / 16) {
            for (int x = 0; x < image.width(); x += 1 + image.width() / 8) {
                require(image.pixel(x, y) == plainPixel(pixels, x, y, layout));
            }
        }
        const QImage nominal = macos::atNominalSize(image, points);
        require(nominal.isNull() || nominal.size() == points);
    }
}

void readTexts(Bytes& bytes) {
    std::vector<macos::RecognisedLine> lines;
    macos::RepeatedTrouble trouble;
    QString told;
    int goodReadings = 0;
    QStringList tags;
    for (int count = bytes.take() % 8; count > 0; --count) {
        const QString text = fuzzing::nameFrom(bytes);
        lines.push_back({text, float(bytes.take()) / 255, doubleFrom(bytes), doubleFrom(bytes), doubleFrom(bytes),
                         doubleFrom(bytes)});
        goodReadings = text.isEmpty() ? goodReadings + 1 : 0;
        told = goodReadings > 2 ? QString() : told;
        require(trouble.isNews(text) == (!text.isEmpty() && text != told));
        told = text.isEmpty() ? told : text;
        tags.push_back(text);
        const QString locale = macos::localeIdentifierOf(text);
        require(!locale.contains(u'@') && !locale.contains(u'-') && locale.size() <= text.size());
    }
    const auto tokens = macos::tokensOf(lines);
    require(std::ranges::none_of(tokens, [](const OCRToken& token) { return token.text.trimmed().isEmpty(); }));
    require(std::ranges::none_of(macos::languageTagsOf(tags),
                                 [](const QString& tag) { return tag.isEmpty() || tag.contains(u'_'); }));
    (void)macos::captureError("call", bytes.take() & 1, std::bit_cast<std::int64_t>(bytes.takeNumber(8)));
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    switch (bytes.take() % 4) {
    case 0:
        readBitmap(bytes);
        break;
    case 1:
        readTexts(bytes);
        break;
    default:
        describeWindows(bytes);
    }
    return 0;
}
