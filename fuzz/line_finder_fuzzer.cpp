// Any picture, of any size, to each of the searches for lines of text: at the ribbons of cards, below heroes, in rows
// of three, and anywhere. What is found lies within the picture, in the order promised, and not more of it than
// promised.

#include "fuzz/AnyPlanes.h"
#include "fuzz/Require.h"
#include "reading/HeroLines.h"
#include "reading/LetterRows.h"
#include "reading/LineCropper.h"
#include "reading/LineDetector.h"
#include "reading/LinePicker.h"
#include "reading/NamePlaces.h"
#include "reading/RibbonLines.h"

#include <QImage>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;
using fuzzing::wholeOf;

void checkRows(const std::vector<TextBox>& boxes, double unit, RowOrder order) {
    std::vector<std::size_t> seen;
    for (const LineRow& row : rowsOf(boxes, unit, order)) {
        require(!row.empty() && row.size() <= 3);
        require(std::ranges::is_sorted(row, {}, [&](std::size_t index) { return boxes.at(index).area.left(); }));
        seen.insert(seen.end(), row.begin(), row.end());
    }
    std::ranges::sort(seen);
    require(seen.size() == boxes.size());
    for (std::size_t i = 0; i < seen.size(); ++i) {
        require(seen[i] == i);
    }
}

void checkLine(const CleanLine& line, const Plane& crop) {
    require(line.ink.width == crop.width && line.ink.height == crop.height);
    require(!line.area.isEmpty() && wholeOf(crop).contains(line.area));
    require(line.letters.width() > 0 && line.letters.height() > 0);
    require(std::isfinite(line.fill) && line.fill > 0 && line.runsPerColumn >= 1 && line.rows >= 0);
    if (line.rows == 1) {
        require(pictureOf(line, {36, 0.16}).height == 36);
    }
}

void detect(const Plane& plane, Bytes& bytes) {
    const double unit = 0.25 + bytes.take() / 100.0;
    const std::vector<TextBox> boxes = detectLines(plane, unit);
    require(boxes.size() <= 12);
    require(
        std::ranges::is_sorted(boxes, std::greater{}, [unit](const TextBox& box) { return nameLikeness(box, unit); }));
    for (const TextBox& box : boxes) {
        require(!box.area.isEmpty() && wholeOf(plane).contains(box.area));
        require(box.ink > 0 && box.darkness >= 0 && box.darkness <= 1);
        const int margin = int(std::lround(9 * unit));
        const QRect around = box.area.adjusted(-margin, -margin, margin, margin).intersected(wholeOf(plane));
        const Plane crop = cropped(plane, around);
        for (const Cleaning& cleaning : {Cleaning{}, Cleaning{.otherTurn = true}, Cleaning{.inkLevel = 0.48}}) {
            if (const auto line = cleanLine(crop, box.area.translated(-around.topLeft()), unit, cleaning)) {
                checkLine(*line, crop);
            }
        }
    }
    checkRows(boxes, unit, RowOrder::mostInkFirst);
    checkRows(boxes, unit, RowOrder::lowestFirst);
    // A box that nobody found.
    const QRect any(bytes.take() * plane.width / 256, bytes.take() * plane.height / 256, 1 + bytes.take(),
                    1 + bytes.take() / 4);
    if (const auto line = cleanLine(plane, any, unit, {})) {
        checkLine(*line, plane);
    }
}

// Of the picture of the game of which the plane is a part, such that what stands at that place is in its middle.
GameFrame frameAround(const Plane& plane, double x, double y, Bytes& bytes) {
    const double height = 300 + 4 * bytes.take();
    return {height, (plane.width + bytes.take() / 8.0) / 2 - x * height,
            (plane.height + bytes.take() / 8.0) / 2 - y * height};
}

void findRibbons(const Plane& plane, Bytes& bytes) {
    const double centre = cardCentres[std::size_t(bytes.take()) % 3];
    const GameFrame frame = frameAround(plane, centre, 0.375, bytes);
    const std::array letters{&latinOnRibbons, &latinInShade, &chineseOnRibbons};
    const auto lines = findRibbonLines(plane, frame, centre, {}, *letters[std::size_t(bytes.take()) % letters.size()]);
    require(lines.size() <= nameCurves.size());
    require(std::ranges::is_sorted(lines, std::greater{}, &RibbonLine::score));
    for (const RibbonLine& line : lines) {
        require(line.left < line.right && line.left >= -0.11 && line.right <= 0.11);
        require(line.base > 0.34 && line.base < 0.42 && std::abs(line.centre - centre) < 0.03);
        const RibbonStrip strip = stripOf(line, plane, frame, {0.0205, 0.0075, 0.025, 64});
        require(strip.plane.height == 64 && strip.left <= strip.right && strip.right <= strip.plane.width);
        const auto picture = pictureOf(line, plane, frame, {});
        require(!picture || (picture->height == 36 && picture->width > 0 && picture->width < 36 * 12));
    }
}

void findRows(const Plane& plane, Bytes& bytes) {
    const GameFrame usual = frameAround(plane, cardCentres[1], 0.385, bytes);
    const auto rows = findLetterRows(plane, usual);
    require(rows.size() <= 3);
    for (const LetterRow& row : rows) {
        require(row.frame.height > 0.9 * usual.height && row.frame.height < 1.1 * usual.height);
        require(row.level > 0.3 && row.level < 0.5);
    }
}

// Of the colours on which heroes' names stand.
QImage onGround(const Plane& plane, int ground) {
    QImage image(plane.width, plane.height, QImage::Format_RGB32);
    for (int y = 0; y < plane.height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < plane.width; ++x) {
            const int ink = plane.at(x, y);
            row[x] = ground % 3 == 0   ? qRgb(200 - ink * 3 / 4, 175 - ink * 2 / 3, 135 - ink / 2)
                     : ground % 3 == 1 ? qRgb(60 + ink * 3 / 4, 5 + ink * 15 / 16, 3 + ink * 15 / 16)
                                       : qRgb(ink, ink, ink);
        }
    }
    return image;
}

void findHeroes(const Plane& plane, Bytes& bytes) {
    const QImage window = onGround(plane, bytes.take());
    const double centre = heroCentres[std::size_t(bytes.take()) % 2][std::size_t(bytes.take()) % 3];
    const GameFrame frame = frameAround(plane, centre, 0.525, bytes);
    for (const double stroke : {usualStroke, thinStroke}) {
        const auto lines = findHeroLines(window, frame, centre, stroke);
        require(lines.size() <= mostHeroLines);
        require(std::ranges::is_sorted(lines, std::greater{}, [](const HeroLine& line) { return line.letters.top(); }));
        for (const HeroLine& line : lines) {
            require(line.letters.width() > 0 && line.letters.height() > 0);
            require(line.letters.left() >= -1 && line.letters.right() <= line.ink.width + 1);
            // To the pixel that scaling may round up.
            require(QRectF(window.rect()).adjusted(-2, -2, 2, 2).contains(line.area));
            for (const HeroRecipe& recipe : {HeroRecipe{}, HeroRecipe{.margin = 0.25, .height = 48}}) {
                const Plane picture = pictureOf(line, recipe);
                require(picture.height == recipe.height && picture.width > 0 && picture.width < 4000);
            }
        }
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const int what = bytes.take();
    const int width = bytes.take() * (1 + what / 4 % 3);
    const int height = bytes.take() * (1 + what / 16 % 2) / 2;
    const Plane plane = fuzzing::planeFrom(bytes, width, height);
    switch (what % 4) {
    case 0:
        findRibbons(plane, bytes);
        break;
    case 1:
        findHeroes(plane, bytes);
        break;
    case 2:
        findRows(plane, bytes);
        break;
    default:
        detect(plane, bytes);
    }
    return 0;
}
