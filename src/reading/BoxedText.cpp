#include "reading/BoxedText.h"

#include "reading/chinese/ChineseLines.h"
#include "reading/NamePlaces.h"
#include "reading/RibbonLines.h"

#include <algorithm>
#include <array>

namespace pelloran {

namespace {

// What is letters: light and grey, light, dark, or of a bright colour.
enum class Ink { grey, white, dark, bright };
constexpr std::array inks{Ink::grey, Ink::white, Ink::dark, Ink::bright};

constexpr double room = 0.2; // around the box, as a part of its height

// Choices in battle show cards larger than a pick does. In heights of this picture, the height of one in which a pick's
// cards would be as large; measured on one screen.
constexpr std::array cardHeights{1.0, 1.18, 1.25};
constexpr std::array rises{0.0, -0.002, 0.002}; // of the baseline, in such heights
constexpr double characterHeight = 0.014;

Plane planeOf(const QImage& image, Ink ink) {
    if (ink == Ink::grey || ink == Ink::white) {
        return lightness(image, image.rect(), ink == Ink::grey ? Lettering::grey : Lettering::white);
    }
    Plane plane(image.width(), image.height());
    for (int y = 0; y < plane.height; ++y) {
        const auto* pixels = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < plane.width; ++x) {
            const QRgb pixel = pixels[x];
            plane.row(y)[x] = std::uint8_t(ink == Ink::dark ? 255 - qGray(pixel)
                                                            : std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)}));
        }
    }
    return plane;
}

// A way to see the line.
struct Way {
    Ink ink;
    const NameCurve* curve; // null: straight
    double height;          // of cards
    double rise;
};

std::vector<Way> allWays() {
    std::vector<Way> ways;
    for (const Ink ink : inks) {
        ways.push_back({ink, nullptr, 0, 0});
    }
    for (const NameCurve& curve : nameCurves) {
        for (const double height : cardHeights) {
            for (const double rise : rises) {
                ways.push_back({Ink::grey, &curve, height, rise});
            }
        }
    }
    return ways;
}

} // namespace

std::optional<QString> readBoxedText(const QImage& window, const QRect& box, ChineseLineReader& reader,
                                     const Lexicon& names) {
    const int margin = int(room * box.height());
    // Enough for the ends of a bent line.
    const QRect around =
        box.adjusted(-box.height(), -box.height(), box.height(), box.height()).intersected(window.rect());
    if (!window.rect().contains(box) || box.height() < 2 || box.width() < 2) {
        return std::nullopt;
    }
    const QImage picture = window.copy(around).convertToFormat(QImage::Format_RGB32);
    const QRect inner = box.translated(-around.topLeft());
    const QRect straight = inner.adjusted(-margin, -margin, margin, margin).intersected(picture.rect());
    static const std::vector<Way> ways = allWays();
    const auto sight = [&](std::size_t index) -> std::optional<Plane> {
        const Way& way = ways[index];
        const Plane plane = planeOf(picture, way.ink);
        if (!way.curve) {
            const double scale = double(stripRows) / straight.height();
            const Plane strip = resampled(cropped(plane, straight), scale);
            const Extent seen{int(margin * scale), strip.width - int(margin * scale)};
            return trimmedLine(inkOf(strip, seen), seen);
        }
        const double height = frameOf(window.size()).height * way.height;
        const GameFrame frame{height, QRectF(inner).center().x(), 0};
        const double half = box.width() / 2.0 / height;
        const RibbonLine line{0, way.curve, QRectF(inner).center().y() / height + characterHeight / 2 + way.rise,
                              0, -half,     half};
        const RibbonStrip strip = stripOf(line, plane, frame, chineseCut);
        const Extent seen{strip.left, strip.right};
        return trimmedLine(inkOf(strip.plane, seen), seen);
    };
    const auto reading = reader.read(ways.size(), sight, names, ofChineseCards);
    return reading && reading->isName ? std::optional(reading->text) : std::nullopt;
}

} // namespace pelloran
