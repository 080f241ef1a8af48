// Any small picture, in any format and with rows of any length in memory: what every search for text begins with. All
// of it is held against the plainest way to say it.

#include "fuzz/AnyPlanes.h"
#include "fuzz/Require.h"
#include "reading/Components.h"
#include "reading/LineDetector.h"
#include "reading/SteadyLines.h"
#include "recognition/WindowCapture.h"
#include "tests/reading/PlaneReference.h"

#include <QImage>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;
using fuzzing::wholeOf;

// Whatever lies behind the end of a row must not be seen.
void readStrided(Bytes& bytes) {
    constexpr QImage::Format formats[] = {
        QImage::Format_RGB32,    QImage::Format_ARGB32,     QImage::Format_ARGB32_Premultiplied,
        QImage::Format_RGB888,   QImage::Format_RGB16,      QImage::Format_RGBA8888,
        QImage::Format_RGBA64,   QImage::Format_Grayscale8, QImage::Format_Mono,
        QImage::Format_Indexed8, QImage::Format_Alpha8,     QImage::Format_BGR30,
        QImage::Format_RGB555,   QImage::Format_RGBX64,     QImage::Format_Grayscale16,
        QImage::Format_MonoLSB};
    const QImage::Format format = formats[bytes.take() % 16];
    const int width = bytes.take() % 80;
    const int height = bytes.take() % 80;
    const int gap = bytes.take() % 40 * 4;
    const Lettering lettering = Lettering(bytes.take() % 3);
    const QRect area(bytes.take() - 128, bytes.take() - 128, bytes.take(), bytes.take());
    const QImage packed(width, height, format);
    const qsizetype stride = packed.bytesPerLine() + gap;
    std::vector<std::uint8_t> memory(std::size_t(stride) * std::size_t(height) + 1);
    fuzzing::Grain grain(bytes.take());
    std::ranges::generate(memory, [&] { return grain.next(); });
    const auto picture = [&] {
        QImage image(memory.data(), width, height, stride, format);
        if (format == QImage::Format_Indexed8 || format == QImage::Format_Mono || format == QImage::Format_MonoLSB) {
            QList<QRgb> colors;
            for (int i = 0; i < (format == QImage::Format_Indexed8 ? 256 : 2); ++i) {
                colors.push_back(qRgb(i * 91, i * 37, 255 - i));
            }
            image.setColorTable(colors);
        }
        return image;
    };
    const Plane first = lightness(picture(), area, lettering);
    const QRect part = area.intersected(QRect(0, 0, width, height));
    require(part.isEmpty() ? first.pixels.empty() : first.width == part.width() && first.height == part.height());
    // Windows are opaque: what they say of transparency counts for nothing, and Qt would divide by it.
    if (format != QImage::Format_ARGB32 && format != QImage::Format_ARGB32_Premultiplied) {
        const QImage opaque = picture().convertToFormat(QImage::Format_RGB32);
        for (int y = 0; y < first.height; y += 1 + first.height / 8) {
            for (int x = 0; x < first.width; x += 1 + first.width / 8) {
                const QRgb pixel = opaque.pixel(part.left() + x, part.top() + y);
                require(first.at(x, y) == testing::plainLightness(pixel, lettering));
            }
        }
    }
    for (int y = 0; y < height; ++y) {
        const auto row = memory.begin() + std::ptrdiff_t(y * stride);
        std::fill(row + packed.bytesPerLine(), row + stride, std::uint8_t(0));
    }
    require(lightness(picture(), area, lettering) == first);
}

void checkComponents(const Plane& mask) {
    require(componentsOf(mask) == testing::plainComponents(mask));
}

void checkFlood(const Plane& plane, Bytes& bytes) {
    Plane seed(plane.width, plane.height);
    for (int spots = bytes.take() % 8; spots > 0 && !plane.pixels.empty(); --spots) {
        const int x = bytes.take() * plane.width / 256;
        const int y = bytes.take() * plane.height / 256;
        seed.row(y)[x] = std::min(plane.at(x, y), std::uint8_t(bytes.take()));
    }
    require(floodedFrom(seed, plane) == testing::plainFlood(seed, plane));
}

void checkExtremes(const Plane& plane, int radius) {
    const Plane dark = darkestAround(plane, radius);
    const Plane light = lightestAround(plane, radius);
    require(dark.width == plane.width && light.height == plane.height);
    for (int y = 0; y < plane.height; y += 1 + plane.height / 7) {
        for (int x = 0; x < plane.width; x += 1 + plane.width / 7) {
            const QRect square =
                QRect(x - radius, y - radius, 2 * radius + 1, 2 * radius + 1).intersected(wholeOf(plane));
            const Plane around = cropped(plane, square);
            require(dark.at(x, y) == std::ranges::min(around.pixels));
            require(light.at(x, y) == std::ranges::max(around.pixels));
        }
    }
}

// Each pixel lies between the darkest and the lightest of those where it comes from.
void checkResampled(const Plane& plane, double scale) {
    const Plane scaled = resampled(plane, scale);
    const int width = int(std::lround(plane.width * scale));
    const int height = int(std::lround(plane.height * scale));
    if (width <= 0 || height <= 0) {
        require(scaled == plane);
        return;
    }
    require(scaled.width == width && scaled.height == height);
    require(scaled.pixels.size() == std::size_t(width) * std::size_t(height));
    constexpr int reach = 2;    // pixels that scaling looks beyond
    constexpr int rounding = 2; // of its sums
    for (int y = 0; y < height; y += 1 + height / 8) {
        for (int x = 0; x < width; x += 1 + width / 8) {
            const QRect from(QPoint(x * plane.width / width - reach, y * plane.height / height - reach),
                             QPoint((x + 1) * plane.width / width + reach, (y + 1) * plane.height / height + reach));
            const auto [darkest, lightest] =
                std::ranges::minmax(cropped(plane, from.intersected(wholeOf(plane))).pixels);
            require(scaled.at(x, y) >= darkest - rounding && scaled.at(x, y) <= lightest + rounding);
        }
    }
}

struct PixelRange {
    int first = 0;
    int count = 0;
};

// Those of which some part lies within these fractions of their number.
PixelRange pixelsBetween(double begin, double length, int number) {
    const double from = begin * number;
    const double to = from + length * number;
    PixelRange range;
    for (int pixel = 0; pixel < number; ++pixel) {
        if (std::min(from, to) < pixel + 1 && std::max(from, to) > pixel) {
            range.first = range.count == 0 ? pixel : range.first;
            ++range.count;
        }
    }
    return range;
}

void checkSizes(const Plane& plane, Bytes& bytes) {
    const double scale = bytes.take() / 64.0;
    checkResampled(plane, scale);
    const int times = bytes.take() % 10;
    require(shrunk(plane, times) == testing::plainShrunk(plane, times));
    const double x = bytes.take() / 2.0 - 3; // halves, of which sums are exact
    const double y = bytes.take() / 2.0 - 3;
    require(sampleAt(plane, x, y) == testing::plainSample(plane, x, y));
    const QRectF fraction(bytes.take() / 128.0 - 0.5, bytes.take() / 128.0 - 0.5, bytes.take() / 64.0 - 2,
                          std::bit_cast<double>(bytes.takeNumber(8)));
    const PixelRange columns = pixelsBetween(fraction.x(), fraction.width(), plane.width);
    const PixelRange rows = pixelsBetween(fraction.y(), fraction.height(), plane.height);
    const auto piece = WindowCapture::crop(imageOf(plane), fraction);
    require(piece.has_value() == (columns.count > 2 && rows.count > 2));
    require(!piece || *piece == imageOf(plane).copy(columns.first, rows.first, columns.count, rows.count));
    const double share = bytes.take() / 255.0;
    for (const double each : {0.5, share}) {
        require(percentile(plane, each) == testing::plainPercentile(plane, each));
    }
}

void checkSteadiness(const Plane& plane, Bytes& bytes) {
    const QImage window = imageOf(plane).convertToFormat(QImage::Format_RGB32);
    LinePlace place{bytes.take() - 4.0, bytes.take() - 4.0, bytes.take() / 4.0, {}};
    for (double& top : place.tops) {
        top = bytes.take() / 2.0 - 4;
    }
    const Plane sample = sampleOf(window, place);
    require(sample.pixels.empty() || (sample.width > 0 && sample.height <= 24));
    require(sample.pixels.empty() || isSteady(sample, sample));
    Plane other = sample;
    std::ranges::reverse(other.pixels);
    const double far = difference(sample, other);
    require(far >= 0 && far <= 255);
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const int what = bytes.take();
    if (what % 8 == 0) {
        readStrided(bytes);
        return 0;
    }
    const int width = bytes.take() % 64; // what goes wrong at all does so in small pictures
    const int height = bytes.take() % 64;
    const Plane plane = fuzzing::planeFrom(bytes, width, height);
    switch (what % 8) {
    case 1:
        checkComponents(plane);
        checkComponents(strokes(plane, 0.2 + bytes.take() / 100.0));
        break;
    case 2:
    case 3:
        checkFlood(plane, bytes);
        break;
    case 4:
        checkExtremes(plane, bytes.take() % 12);
        break;
    case 5:
        checkSteadiness(plane, bytes);
        break;
    default:
        checkSizes(plane, bytes);
    }
    return 0;
}
