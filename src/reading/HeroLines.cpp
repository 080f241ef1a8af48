#include "reading/HeroLines.h"

#include "reading/Components.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pelloran {

namespace {

// Heights of the game's picture.
constexpr double stripTop = 0.485; // hero names stand at 0.509, classes at 0.530
constexpr double stripBottom = 0.565;
constexpr double halfStrip = 0.122;
constexpr double furthestOffCentre = 0.04; // lines are centred below their heroes

constexpr double searchScale = 1080; // pixels a height; those that follow are such
constexpr int shortestStroke = 5;
constexpr int tallestLetter = 26;
constexpr int widestLetter = 46;
// Letters run together in small windows; frames are as wide, but thinner or taller.
constexpr int widestWord = 160;
constexpr int lowestWord = 8;
constexpr double leastInkOfRow = 1.5;    // pixels
constexpr double leastShareOfRow = 0.08; // of the fullest row's ink
constexpr double enoughInkOfRow = 5;     // pixels: a short class below a long name has no more in some rows
constexpr int lowestLine = 7;
constexpr int tallestLine = 32;
constexpr int narrowestLine = 18; // two Chinese characters

constexpr int leastInk = 30;       // 0 to 255; less is the grain of the paper
constexpr double paperRank = 0.80; // of the brightest channel's values: letters cover less than a fifth
constexpr double inkRank = 0.03;
constexpr int leastContrast = 60;
// Parchment is (200, 175, 135), felt (60, 5, 3).
constexpr int darkestParchmentRed = 150;
constexpr int leastWarmth = 25; // red over blue
constexpr int darkestFeltRed = 30;
constexpr int lightestFeltRed = 110;

bool isTooLarge(const QRect& box) {
    const bool isWord = box.width() <= widestWord && box.height() >= lowestWord;
    return box.height() > tallestLetter || (box.width() > widestLetter && !isWord);
}

// The middle one of the values of each channel.
std::array<int, 3> medianColor(const QImage& strip) {
    std::array<std::array<int, 256>, 3> counts{};
    for (int y = 0; y < strip.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(strip.constScanLine(y));
        for (int x = 0; x < strip.width(); ++x) {
            ++counts[0][std::size_t(qRed(row[x]))];
            ++counts[1][std::size_t(qGreen(row[x]))];
            ++counts[2][std::size_t(qBlue(row[x]))];
        }
    }
    std::array<int, 3> median{};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        for (int below = 0; below <= strip.width() * strip.height() / 2 && median[channel] < 256; ++median[channel]) {
            below += counts[channel][std::size_t(median[channel])];
        }
        --median[channel];
    }
    return median;
}

Plane brightestChannel(const QImage& strip) {
    Plane plane(strip.width(), strip.height());
    for (int y = 0; y < plane.height; ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(strip.constScanLine(y));
        for (int x = 0; x < plane.width; ++x) {
            plane.row(y)[x] = std::uint8_t(std::max({qRed(row[x]), qGreen(row[x]), qBlue(row[x])}));
        }
    }
    return plane;
}

} // namespace

std::vector<HeroLine> findHeroLines(const QImage& window, const GameFrame& frame, double centre, double stroke) {
    const QRect area = QRectF(QPointF(frame.pixelX(centre - halfStrip), frame.pixelY(stripTop)),
                              QPointF(frame.pixelX(centre + halfStrip), frame.pixelY(stripBottom)))
                           .toAlignedRect()
                           .intersected(window.rect());
    std::vector<HeroLine> lines;
    if (area.width() < 2 || area.height() < 2) {
        return lines;
    }
    const QImage strip = window.copy(area).convertToFormat(QImage::Format_RGB32);
    const auto [red, green, blue] = medianColor(strip);
    const bool parchment = red >= darkestParchmentRed && red >= green && green >= blue && red - blue >= leastWarmth;
    const bool felt = red >= darkestFeltRed && red <= lightestFeltRed && red >= 2 * std::max(green, blue);
    if (!parchment && !felt) {
        return lines;
    }
    const double scale = searchScale / frame.height;
    const Plane channel = resampled(brightestChannel(strip), scale);
    const int paper = percentile(channel, parchment ? paperRank : 1 - paperRank);
    const int letter = percentile(channel, parchment ? inkRank : 1 - inkRank);
    if (std::abs(paper - letter) < leastContrast || (paper > letter) != parchment) {
        return lines;
    }
    Plane ink(channel.width, channel.height);
    Plane mask(channel.width, channel.height);
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        const double amount = std::clamp(double(paper - channel.pixels[i]) / (paper - letter), 0.0, 1.0);
        ink.pixels[i] = std::uint8_t(std::lround(255 * amount));
        mask.pixels[i] = amount > stroke;
    }
    const Components components = componentsOf(mask);
    std::vector<std::uint8_t> isLetter(components.groups.size() + 1);
    for (std::size_t i = 0; i < components.groups.size(); ++i) {
        const QRect& box = components.groups[i].box;
        // The strokes of a Chinese character may be low on their own, but not short as well.
        isLetter[i + 1] = std::max(box.height(), box.width()) >= shortestStroke && !isTooLarge(box);
    }
    std::vector<int> inkOfRow(std::size_t(mask.height) + 1); // and an empty one after the last
    for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < mask.width; ++x) {
            const auto place = std::size_t(y) * std::size_t(mask.width) + std::size_t(x);
            mask.pixels[place] = isLetter[std::size_t(components.numbers[place])];
            inkOfRow[std::size_t(y)] += mask.pixels[place];
        }
    }
    // What is too large for a letter goes, with its soft edges. Strokes too small or too faint for the mask stay:
    // Chinese characters have them.
    Plane large(mask.width, mask.height);
    for (std::size_t i = 0; i < large.pixels.size(); ++i) {
        if (const int number = components.numbers[i]; number > 0) {
            const QRect& box = components.groups[std::size_t(number) - 1].box;
            large.pixels[i] = isTooLarge(box);
        }
    }
    const Plane around = lightestAround(large, 1);
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        ink.pixels[i] = around.pixels[i] || ink.pixels[i] < leastInk ? std::uint8_t(0) : ink.pixels[i];
    }
    // A single descender may reach down to the next line.
    const double most = *std::ranges::max_element(inkOfRow);
    const double enough = enoughInkOfRow * stroke / usualStroke;
    int begin = -1;
    for (int y = 0; y <= mask.height; ++y) {
        if (inkOfRow[std::size_t(y)] > std::clamp(leastShareOfRow * most, leastInkOfRow, enough)) {
            begin = begin < 0 ? y : begin;
            continue;
        }
        if (begin >= 0 && y - begin >= lowestLine && y - begin <= tallestLine) {
            int left = mask.width;
            int right = -1;
            for (int row = begin; row < y; ++row) {
                for (int x = 0; x < mask.width; ++x) {
                    if (mask.row(row)[x]) {
                        left = std::min(left, x);
                        right = std::max(right, x);
                    }
                }
            }
            const double offCentre = std::abs((left + right + 1) / 2.0 - area.width() * scale / 2);
            if (right - left + 1 >= narrowestLine && offCentre <= furthestOffCentre * searchScale) {
                const QRectF letters(left, begin - 1, right - left + 1, y - begin + 2);
                lines.push_back(
                    {{}, letters, QRectF(letters.topLeft() / scale + area.topLeft(), letters.size() / scale)});
            }
        }
        begin = -1;
    }
    std::ranges::reverse(lines);
    lines.resize(std::min(lines.size(), mostHeroLines));
    for (HeroLine& line : lines) {
        line.ink = ink;
    }
    return lines;
}

Plane pictureOf(const HeroLine& line, const HeroRecipe& recipe) {
    constexpr double edge = 1.5; // pixels; beyond it other lines begin
    const double margin = recipe.margin * line.letters.height();
    const double scale = recipe.height / (line.letters.height() + 2 * margin);
    Plane result(std::max(1, int((line.letters.width() + 2 * margin) * scale)), recipe.height);
    for (int y = 0; y < result.height; ++y) {
        for (int x = 0; x < result.width; ++x) {
            const double row = line.letters.top() - margin + (y + 0.5) / scale - 0.5;
            const bool isOther = row < line.letters.top() - edge || row > line.letters.bottom() + edge;
            const double ink =
                isOther ? 0 : sampleAt(line.ink, line.letters.left() - margin + (x + 0.5) / scale - 0.5, row) / 255;
            const double amount = std::clamp((ink - recipe.paper) / (recipe.ink - recipe.paper), 0.0, 1.0);
            result.row(y)[x] = std::uint8_t(std::lround(255 - 255 * amount));
        }
    }
    return result;
}

} // namespace pelloran
