#include "reading/chinese/CharacterShape.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace pelloran {

namespace {

constexpr int side = CharacterShape::side;

constexpr std::uint8_t inkFrom = 77; // three tenths: fainter pixels are the blur around strokes
constexpr int leastInk = 5;          // pixels: fewer are specks
constexpr int leastSide = 3;         // pixels of the box

// A stroke alone, like that of the number one, keeps some thickness.
constexpr int leastTarget = 6;

// Lines of ink are counted in a neighbourhood of this size, in pixels of the square.
constexpr double densityBlur = 0.06 * side;

// Half of the result's spacing is the character's own, half is made even.
constexpr float ownSpacing = 1;

using Line = std::array<float, side>;

// Pixels of one axis that make up each pixel of a longer or shorter one: `weights` has `run` of them for each.
struct Resampling {
    std::vector<int> firsts;
    std::vector<float> weights;
    int run = 0;
};

// The cubic through four neighbours that OpenCV and most programs that scale pictures use; sharp at small factors.
std::array<float, 4> cubicWeights(float fraction) {
    constexpr float slope = -0.75F;
    const auto near = [&](float x) { return ((slope + 2) * x - (slope + 3)) * x * x + 1; };
    const auto far = [&](float x) { return ((slope * x - 5 * slope) * x + 8 * slope) * x - 4 * slope; };
    return {far(1 + fraction), near(fraction), near(1 - fraction), far(2 - fraction)};
}

Resampling enlarging(int from, int to) {
    Resampling result{.firsts = std::vector<int>(std::size_t(to)), .weights = {}, .run = std::min(4, from)};
    result.weights.resize(std::size_t(to) * std::size_t(result.run));
    const float step = float(from) / float(to);
    for (int i = 0; i < to; ++i) {
        const float place = (float(i) + 0.5F) * step - 0.5F;
        const int left = int(std::floor(place));
        const int first = std::clamp(left - 1, 0, from - result.run);
        result.firsts[std::size_t(i)] = first;
        const auto cubic = cubicWeights(place - float(left));
        for (int k = 0; k < 4; ++k) {
            const int source = std::clamp(left - 1 + k, 0, from - 1);
            result.weights[std::size_t(i) * std::size_t(result.run) + std::size_t(source - first)] +=
                cubic[std::size_t(k)];
        }
    }
    return result;
}

Resampling shrinking(int from, int to) {
    const double step = double(from) / to;
    Resampling result{
        .firsts = std::vector<int>(std::size_t(to)), .weights = {}, .run = std::min(from, int(std::ceil(step)) + 1)};
    result.weights.resize(std::size_t(to) * std::size_t(result.run));
    for (int i = 0; i < to; ++i) {
        const double begin = i * step;
        const double end = begin + step;
        const int first = std::clamp(int(begin), 0, from - result.run);
        result.firsts[std::size_t(i)] = first;
        for (int k = 0; k < result.run; ++k) {
            const double covered = std::min(end, first + k + 1.0) - std::max(begin, double(first + k));
            result.weights[std::size_t(i) * std::size_t(result.run) + std::size_t(k)] =
                float(std::max(0.0, covered) / step);
        }
    }
    return result;
}

Resampling resampling(int from, int to) {
    return to < from ? shrinking(from, to) : enlarging(from, to);
}

// The smallest part of `cell` with all its ink; empty where there is too little.
QRect inkBox(const Plane& ink, const QRect& cell) {
    const QRect area = cell.intersected(QRect(0, 0, ink.width, ink.height));
    if (area.isEmpty()) {
        return {};
    }
    std::vector<std::uint8_t> columns(std::size_t(area.width()), 0);
    int top = -1;
    int bottom = -1;
    int count = 0;
    for (int y = 0; y < area.height(); ++y) {
        const std::uint8_t* row = ink.row(area.top() + y) + area.left();
        std::uint8_t darkest = 0;
        for (int x = 0; x < area.width(); ++x) {
            columns[std::size_t(x)] = std::max(columns[std::size_t(x)], row[x]);
            darkest = std::max(darkest, row[x]);
        }
        if (darkest >= inkFrom) {
            top = top < 0 ? y : top;
            bottom = y;
            if (count < leastInk) {
                count +=
                    int(std::count_if(row, row + area.width(), [](std::uint8_t value) { return value >= inkFrom; }));
            }
        }
    }
    if (count < leastInk) {
        return {};
    }
    const auto isInk = [](std::uint8_t value) { return value >= inkFrom; };
    const auto left = int(std::ranges::find_if(columns, isInk) - columns.begin());
    const auto right = int(columns.rend() - std::find_if(columns.rbegin(), columns.rend(), isInk)) - 1;
    return {area.left() + left, area.top() + top, right - left + 1, bottom - top + 1};
}

// The longer side fills the square. The shorter one is drawn out a little, the more the closer it is to the other.
QSize targetOf(const QSize& box) {
    const double ratio = double(std::min(box.width(), box.height())) / std::max(box.width(), box.height());
    const int shorter = std::max(leastTarget, int(side * std::sqrt(std::sin(std::numbers::pi / 2 * ratio))));
    return box.height() >= box.width() ? QSize(shorter, side) : QSize(side, shorter);
}

// `box` of the plane in the upper left of the result.
CharacterShape fitted(const Plane& ink, const QRect& box, const QSize& target) {
    const Resampling down = resampling(box.height(), target.height());
    const Resampling across = resampling(box.width(), target.width());
    CharacterShape result;
    std::vector<float> line(std::size_t(box.width()));
    for (int y = 0; y < target.height(); ++y) {
        std::ranges::fill(line, 0.0F);
        for (int k = 0; k < down.run; ++k) {
            const float weight = down.weights[std::size_t(y) * std::size_t(down.run) + std::size_t(k)] / 255;
            const std::uint8_t* source = ink.row(box.top() + down.firsts[std::size_t(y)] + k) + box.left();
            float* sum = line.data();
            for (int x = 0; x < box.width(); ++x) {
                sum[x] += weight * float(source[x]);
            }
        }
        float* row = result.row(y);
        const float* weights = across.weights.data();
        for (int x = 0; x < target.width(); ++x, weights += across.run) {
            const float* source = line.data() + across.firsts[std::size_t(x)];
            float sum = 0;
            for (int k = 0; k < across.run; ++k) {
                sum += weights[k] * source[k];
            }
            row[x] = sum;
        }
    }
    return result;
}

// For each pixel of an axis of `count` pixels the place on it that it shows, so that lines of ink come to stand evenly.
// `changes` is how much ink begins or ends along each of them.
Line evenPlaces(const Line& changes, int count) {
    constexpr int reach = int(3.5 * densityBlur);
    static const auto kernel = [] {
        std::array<float, reach + 1> values{};
        for (int i = 0; i <= reach; ++i) {
            values[std::size_t(i)] = float(std::exp(-i * i / (2 * densityBlur * densityBlur)));
        }
        return values;
    }();
    // Mirrored at both ends, as often as the reach goes beyond a short axis.
    std::array<float, side + 2 * reach> mirrored{};
    for (int i = 0; i < count + 2 * reach; ++i) {
        const int place = i - reach;
        const int turn = ((place % (2 * count)) + 2 * count) % (2 * count);
        const int original = turn < count ? turn : 2 * count - 1 - turn;
        mirrored[std::size_t(i)] = changes[std::size_t(original)];
    }
    Line density{};
    for (int k = -reach; k <= reach; ++k) {
        const float weight = kernel[std::size_t(std::abs(k))];
        const float* source = mirrored.data() + reach + k;
        for (int i = 0; i < side; ++i) {
            density[std::size_t(i)] += weight * source[i]; // what is beyond `count` is not used
        }
    }
    float sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += density[std::size_t(i)];
    }
    const float mean = sum > 0 ? sum / float(count) : 1;
    std::array<float, side + 1> passed{};
    for (int i = 0; i < count; ++i) {
        passed[std::size_t(i) + 1] = passed[std::size_t(i)] + density[std::size_t(i)] / mean + ownSpacing;
    }
    Line places{};
    const float step = passed[std::size_t(count)] / float(count);
    int source = 0;
    for (int i = 0; i < count; ++i) {
        const float wanted = (float(i) + 0.5F) * step;
        while (source + 1 < count && passed[std::size_t(source) + 1] < wanted) {
            ++source;
        }
        const float begin = passed[std::size_t(source)];
        places[std::size_t(i)] = float(source) + (wanted - begin) / (passed[std::size_t(source) + 1] - begin) - 0.5F;
    }
    return places;
}

// How much ink begins or ends from column to column, and from row to row.
struct Changes {
    Line across{};
    Line down{};
};

Changes changesOf(const CharacterShape& shape, const QSize& size) {
    Changes result;
    const Line nothing{};
    for (int y = 0; y < size.height(); ++y) {
        const float* row = shape.row(y);
        const float* above = y > 0 ? shape.row(y - 1) : nothing.data();
        result.across[0] += std::abs(row[0]);
        for (int x = 1; x < side; ++x) {
            result.across[std::size_t(x)] += std::abs(row[x] - row[x - 1]);
        }
        std::array<float, 8> sums{};
        for (int x = 0; x < side; x += 8) {
            for (int i = 0; i < 8; ++i) {
                sums[std::size_t(i)] += std::abs(row[x + i] - above[x + i]);
            }
        }
        for (const float sum : sums) {
            result.down[std::size_t(y)] += sum;
        }
    }
    return result;
}

// With the lines of ink evenly spread, in the middle of the square.
CharacterShape evened(const CharacterShape& shape, const QSize& size) {
    const Changes changes = changesOf(shape, size);
    const Line across = evenPlaces(changes.across, size.width());
    const Line down = evenPlaces(changes.down, size.height());
    const int left = (side - size.width()) / 2;
    const int top = (side - size.height()) / 2;

    // Nothing on either side of the line, for places that lie half a pixel outside.
    std::array<float, side + 2> line{};
    std::array<int, side> firsts{};
    Line fractions{};
    for (int x = 0; x < size.width(); ++x) {
        const float floor = std::floor(across[std::size_t(x)]);
        firsts[std::size_t(x)] = int(floor) + 1;
        fractions[std::size_t(x)] = across[std::size_t(x)] - floor;
    }
    const Line nothing{};
    CharacterShape result;
    for (int y = 0; y < size.height(); ++y) {
        const float place = down[std::size_t(y)];
        const int first = int(std::floor(place));
        const float fraction = place - float(first);
        const float* upper = first >= 0 ? shape.row(first) : nothing.data();
        const float* lower = first + 1 < size.height() ? shape.row(first + 1) : nothing.data();
        for (int x = 0; x < side; ++x) {
            line[std::size_t(x) + 1] = upper[x] + fraction * (lower[x] - upper[x]);
        }
        float* row = result.row(top + y) + left;
        for (int x = 0; x < size.width(); ++x) {
            const float* source = line.data() + firsts[std::size_t(x)];
            const float value = source[0] + fractions[std::size_t(x)] * (source[1] - source[0]);
            row[x] = std::clamp(value, 0.0F, 1.0F);
        }
    }
    return result;
}

} // namespace

std::optional<CharacterShape> shapeOf(const Plane& ink, const QRect& cell) {
    const QRect box = inkBox(ink, cell);
    if (box.width() < leastSide || box.height() < leastSide) {
        return std::nullopt;
    }
    const QSize target = targetOf(box.size());
    return evened(fitted(ink, box, target), target);
}

} // namespace pelloran
