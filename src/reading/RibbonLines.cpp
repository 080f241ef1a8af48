#include "reading/RibbonLines.h"

#include "reading/Components.h"
#include "reading/OutlinedInk.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace pelloran {

namespace {

// Lengths in heights of the game's picture, unless said otherwise.
constexpr double roomAbove = 0.022; // of the strip searched, over the highest baseline
constexpr double roomBelow = 0.012; // under the lowest
constexpr double halfStrip = 0.105; // names reach 0.1 from the middle of the card
constexpr double halfPicture = 0.108;

// Pixels of the strip.
constexpr int tallestLetter = 21;
constexpr int widestLetter = 40; // a few that touch

constexpr double penaltyAbove = 1;
constexpr double penaltyBelow = 2;

constexpr double baseTolerance = 0.004; // at which a line is half as likely as at its usual place
constexpr int leastColumns = 8;         // with ink
constexpr double recentreFrom =
    0.003; // names are centred on their cards; what is further off is found anew around itself
constexpr double furthestCentre = 0.025;
constexpr double recentreRange = 0.006;

// Bicubic weights at 64 places between pixels (Keys, a = -0.75, as sharpens a little).
constexpr int phases = 64;

// Four numbers that are reckoned with at once; compilers make vector code of it.
using Quad = float __attribute__((vector_size(16)));

std::array<Quad, phases + 1> cubicWeights() {
    std::array<Quad, phases + 1> table{};
    constexpr double a = -0.75;
    for (int i = 0; i <= phases; ++i) {
        const double t = double(i) / phases;
        const auto outer = [](double d) { return ((a * d - 5 * a) * d + 8 * a) * d - 4 * a; };
        const auto inner = [](double d) { return ((a + 2) * d - (a + 3)) * d * d + 1; };
        table[std::size_t(i)] = Quad{float(outer(t + 1)), float(inner(t)), float(inner(1 - t)), float(outer(2 - t))};
    }
    return table;
}

// A part of the plane unbent along a curve.
struct Strip {
    double centre;    // of the card
    double base;      // of the baseline in the middle
    double above;     // the baseline
    double below;     // the baseline
    double halfWidth; // to both sides of the centre
    double scale;     // pixels of the result a height
    double pivot = 0; // under the base: here letters, which are turned with the curve, keep their places
    double from = -1; // from the centre: only what lies between is wanted
    double to = 1;
};

// A part of a plane in numbers to reckon with, its margins repeated where it reaches beyond.
struct Patch {
    Patch(const Plane& plane, const QRect& area)
        : width(area.width())
        , pixels(std::size_t(area.width()) * std::size_t(area.height())) {
        const int inner = std::clamp(area.left(), 0, plane.width);
        const int end = std::clamp(area.right() + 1, inner, plane.width);
        for (int y = 0; y < area.height(); ++y) {
            const std::uint8_t* from = plane.row(std::clamp(area.top() + y, 0, plane.height - 1));
            float* to = pixels.data() + std::ptrdiff_t(y) * width;
            float* const innerTo = std::fill_n(to, inner - area.left(), float(from[0]));
            float* const rest = std::copy(from + inner, from + end, innerTo);
            std::fill(rest, to + width, float(from[plane.width - 1]));
        }
    }

    int width;
    std::vector<float> pixels;
};

Plane unbent(const Plane& plane, const GameFrame& frame, const NameCurve& curve, const Strip& strip) {
    static const auto weights = cubicWeights();
    const int whole = std::max(1, int(std::lround(2 * strip.halfWidth * strip.scale)));
    const int first = std::clamp(int((strip.halfWidth + strip.from) * strip.scale), 0, whole);
    const int columns = std::clamp(int((strip.halfWidth + strip.to) * strip.scale), first, whole) - first;
    const int rows = std::max(1, int(std::lround((strip.above + strip.below) * strip.scale)));
    Plane result(columns, rows);
    if (columns == 0) {
        return result;
    }

    // Where the pixels at the pivot lie in the plane, and how far those below lean to the left.
    struct Column {
        float x;
        float y;
        float lean;
    };

    std::vector<Column> places;
    places.reserve(std::size_t(columns));
    double left = plane.width;
    double right = 0;
    double top = plane.height;
    double bottom = 0;
    const double step = frame.height / strip.scale;
    const double above = (strip.above + strip.pivot) * strip.scale - 0.5; // rows over the pivot
    for (int column = 0; column < columns; ++column) {
        const double fromCentre = (first + column + 0.5) / strip.scale - strip.halfWidth;
        const double x = frame.pixelX(strip.centre + fromCentre) - 0.5;
        const double y = frame.pixelY(strip.base + strip.pivot + curve.at(fromCentre)) - 0.5;
        const double lean = curve.slopeAt(fromCentre) * step;
        places.push_back({float(x), float(y), float(lean)});
        for (const double depth : {-above, rows - 1 - above}) {
            left = std::min(left, x - depth * lean);
            right = std::max(right, x - depth * lean);
            top = std::min(top, y + depth * step);
            bottom = std::max(bottom, y + depth * step);
        }
    }
    // Beyond the plane nothing changes any more.
    const auto within = [](double place, int size) { return std::clamp(place, -3.0, size + 2.0); };
    const QRect area(
        QPoint(int(std::floor(within(left, plane.width))) - 2, int(std::floor(within(top, plane.height))) - 2),
        QPoint(int(std::ceil(within(right, plane.width))) + 3, int(std::ceil(within(bottom, plane.height))) + 3));
    const Patch patch(plane, area);
    constexpr float half = 0.5F; // to the nearest phase
    const float lastX = float(area.width() - 3);
    const float lastY = float(area.height() - 3);
    for (Column& column : places) {
        column.x -= float(area.left());
        column.y -= float(area.top());
    }
    for (int row = 0; row < rows; ++row) {
        const float depth = float(row - above);
        const float down = depth * float(step);
        std::uint8_t* out = result.row(row);
        for (const Column& column : places) {
            const float x = std::min(std::max(column.x - depth * column.lean, 1.0F), lastX);
            const float y = std::min(std::max(column.y + down, 1.0F), lastY);
            const int leftX = int(x);
            const int topY = int(y);
            const Quad& weightX = weights[std::size_t((x - float(leftX)) * phases + half)];
            const Quad& weightY = weights[std::size_t((y - float(topY)) * phases + half)];
            const float* from = patch.pixels.data() + std::ptrdiff_t(topY - 1) * patch.width + leftX - 1;
            Quad sums{};
            for (int j = 0; j < 4; ++j, from += patch.width) {
                Quad pixels;
                std::memcpy(&pixels, from, sizeof pixels);
                sums += weightY[j] * pixels;
            }
            sums *= weightX;
            const float sum = (sums[0] + sums[2]) + (sums[1] + sums[3]);
            *out++ = std::uint8_t(std::min(std::max(sum + 0.5F, 0.0F), 255.0F));
        }
    }
    return result;
}

// What of a strip is letters: 1, elsewhere 0.
Plane lettersIn(const Plane& strip, const RibbonLetters& letters) {
    Plane mask = outlinedInk(strip, letters.outline);
    const Components components = componentsOf(mask);
    std::vector<std::uint8_t> isLetter(components.groups.size() + 1);
    for (std::size_t i = 0; i < components.groups.size(); ++i) {
        const QRect& box = components.groups[i].box;
        isLetter[i + 1] = box.height() >= letters.lowest && box.height() <= tallestLetter &&
                          box.width() <= widestLetter && components.groups[i].area >= letters.leastArea &&
                          box.left() > 0 && box.right() < strip.width - 1;
    }
    for (std::size_t i = 0; i < mask.pixels.size(); ++i) {
        mask.pixels[i] = isLetter[std::size_t(components.numbers[i])];
    }
    return mask;
}

int searchPixels(double length) {
    return int(std::lround(length * searchScale));
}

// The letters of a strip around one curve, and the best baseline in it.
struct Search {
    Plane letters;
    double score = 0;
    double base = 0;
    int row = 0; // of the baseline
};

Search searchAlong(const Plane& plane, const GameFrame& frame, const NameCurve& curve, const RibbonLetters& letters,
                   double centre, double from, double to) {
    Search found;
    // The search begins far above most baselines. Turned about its beginning, letters would move outwards on the way.
    const double likely = std::clamp((curve.bases[0] + curve.bases[1]) / 2, from, to);
    const Strip strip{centre, from, roomAbove, to - from + roomBelow, halfStrip, searchScale, likely - from};
    found.letters = lettersIn(unbent(plane, frame, curve, strip), letters);
    std::vector<int> inkAbove(std::size_t(found.letters.height) + 1); // each row, in all rows over it
    for (int y = 0; y < found.letters.height; ++y) {
        int ink = 0;
        for (int x = 0; x < found.letters.width; ++x) {
            ink += found.letters.row(y)[x];
        }
        inkAbove[std::size_t(y) + 1] = inkAbove[std::size_t(y)] + ink;
    }
    const auto inkBetween = [&](int top, int bottom) {
        const auto at = [&](int y) { return inkAbove[std::size_t(std::clamp(y, 0, found.letters.height))]; };
        return at(bottom) - at(top);
    };
    const int first = searchPixels(roomAbove);
    for (int row = first; row <= first + searchPixels(to - from); ++row) {
        const auto at = [row](double offset) { return row + searchPixels(offset); };
        const double score = inkBetween(at(letters.bodyTop), row) -
                             penaltyAbove * inkBetween(at(letters.aboveTop), at(letters.aboveBottom)) -
                             penaltyBelow * inkBetween(at(letters.belowTop), at(letters.belowBottom));
        if (score > found.score) {
            found.score = score;
            found.row = row;
            found.base = from + (row - first) / searchScale;
        }
    }
    return found;
}

// Ends of the name on a baseline, from the middle of the strip; the longest run where something else stands beside it.
std::optional<std::pair<double, double>> extentOf(const Search& search, const RibbonLetters& letters) {
    const int top = std::max(0, search.row - searchPixels(letters.tallest));
    const int width = search.letters.width;
    int bestStart = 0;
    int bestEnd = 0;
    int bestInk = 0;
    int start = -1;
    int last = -1;
    int ink = 0;
    const auto close = [&] {
        if (start >= 0 && ink > bestInk) {
            bestStart = start;
            bestEnd = last + 1;
            bestInk = ink;
        }
    };
    for (int x = 0; x < width; ++x) {
        bool inked = false;
        for (int y = top; y <= std::min(search.row, search.letters.height - 1); ++y) {
            inked |= search.letters.row(y)[x] != 0;
        }
        if (!inked) {
            continue;
        }
        if (start < 0 || x - last > searchPixels(letters.widestGap)) {
            close();
            start = x;
            ink = 0;
        }
        last = x;
        ++ink;
    }
    close();
    if (bestInk < leastColumns) {
        return std::nullopt;
    }
    return std::pair((bestStart - width / 2.0) / searchScale, (bestEnd - width / 2.0) / searchScale);
}

double likelihood(const NameCurve& curve, double base) {
    double nearest = 1;
    for (const double usual : curve.bases) {
        nearest = std::min(nearest, std::abs(base - usual));
    }
    const double far = nearest / baseTolerance;
    return 1 / (1 + far * far);
}

} // namespace

std::vector<RibbonLine> findRibbonLines(const Plane& plane, const GameFrame& frame, double centre,
                                        const BaseRange& range, const RibbonLetters& letters) {
    std::vector<RibbonLine> lines;
    if (plane.pixels.empty()) {
        return lines;
    }
    for (const NameCurve& curve : nameCurves) {
        Search search = searchAlong(plane, frame, curve, letters, centre, range.from, range.to);
        auto ends = search.score > 0 ? extentOf(search, letters) : std::nullopt;
        if (!ends) {
            continue;
        }
        RibbonLine line{search.score, &curve, search.base, centre, 0, 0};
        const double middle = (ends->first + ends->second) / 2;
        if (std::abs(middle) > recentreFrom) {
            line.centre += std::clamp(middle, -furthestCentre, furthestCentre);
            search = searchAlong(plane, frame, curve, letters, line.centre, line.base - recentreRange,
                                 line.base + recentreRange);
            ends = search.score > 0 ? extentOf(search, letters) : std::nullopt;
            if (!ends) {
                continue;
            }
            line.score = search.score;
            line.base = search.base;
        }
        line.left = ends->first;
        line.right = ends->second;
        line.score *= curve.likelihood * (range.usual ? likelihood(curve, line.base) : 1);
        lines.push_back(line);
    }
    std::ranges::stable_sort(lines, std::greater{}, &RibbonLine::score);
    if (!lines.empty() && lines.front().score < letters.leastScore) {
        lines.clear();
    }
    return lines;
}

RibbonStrip stripOf(const RibbonLine& line, const Plane& plane, const GameFrame& frame, const RibbonCut& cut) {
    const double scale = cut.rows / (cut.above + cut.below);
    RibbonStrip strip;
    const double from = std::max(-halfPicture, line.left - cut.beside);
    const double to = std::min(halfPicture, line.right + cut.beside);
    strip.plane = unbent(plane, frame, *line.curve,
                         {line.centre, line.base, cut.above, cut.below, halfPicture, scale, 0, from, to});
    strip.left = std::clamp(int((line.left - from) * scale), 0, strip.plane.width);
    strip.right = std::clamp(int((line.right - from) * scale), strip.left, strip.plane.width);
    return strip;
}

std::optional<Plane> pictureOf(const RibbonLine& line, const Plane& plane, const GameFrame& frame,
                               const RibbonRecipe& recipe) {
    constexpr double margin = 0.007; // beside the letters
    constexpr int leastRelief = 40;  // of the letters over the ribbon, 0 to 255
    const double scale = recipe.height / (recipe.above + recipe.below);
    const Plane letters = stripOf(line, plane, frame, {recipe.above, recipe.below, margin, recipe.height}).plane;
    if (letters.pixels.empty()) {
        return std::nullopt;
    }

    const double ribbon = percentile(letters, 0.5);
    const double fill = percentile(letters, 0.97);
    if (fill - ribbon < leastRelief) {
        return std::nullopt;
    }

    Plane ink(letters.width, letters.height);
    Plane mask(letters.width, letters.height);
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        const double t = (letters.pixels[i] - ribbon) / (fill - ribbon);
        const double amount = std::clamp((t - recipe.paper) / (recipe.ink - recipe.paper), 0.0, 1.0);
        ink.pixels[i] = std::uint8_t(std::lround(255 * amount));
        mask.pixels[i] = ink.pixels[i] > 127;
    }
    // The ribbon's edge, the art above and the gem below: what touches the edge without reaching into the letters.
    const int top = int((recipe.above + latinOnRibbons.bodyTop) * scale);
    const int bottom = int(recipe.above * scale);
    const Components components = componentsOf(mask);
    std::vector<std::uint8_t> isJunk(components.groups.size() + 1);
    for (std::size_t i = 0; i < components.groups.size(); ++i) {
        const QRect& box = components.groups[i].box;
        const bool touchesTop = box.top() == 0;
        const bool touchesBottom = box.bottom() == ink.height - 1;
        const bool touchesSide = box.left() == 0 || box.right() == ink.width - 1;
        isJunk[i + 1] = (touchesTop && box.bottom() + 1 < top + 0.35 * (bottom - top)) ||
                        (touchesBottom && box.top() > bottom - 0.2 * (bottom - top)) || (touchesTop && touchesBottom) ||
                        (touchesSide && (touchesTop || touchesBottom));
    }
    Plane junk(ink.width, ink.height);
    for (std::size_t i = 0; i < junk.pixels.size(); ++i) {
        junk.pixels[i] = isJunk[std::size_t(components.numbers[i])];
    }
    const Plane around = lightestAround(junk, 1);
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        ink.pixels[i] = around.pixels[i] ? 255 : std::uint8_t(255 - ink.pixels[i]);
    }
    return ink;
}

} // namespace pelloran
