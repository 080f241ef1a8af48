#include "reading/chinese/CharacterFeature.h"

#include <algorithm>
#include <cmath>

// All loops run over whole rows of a fixed length without branches, so that compilers make vector code of them.

namespace pelloran {

namespace {

constexpr int side = CharacterShape::side;
constexpr int directions = featureDirections;
constexpr int grid = featureGrid;

// Width of the neighbourhood of each place of the grid, whose places are 8 pixels apart.
constexpr double neighbourhood = 5;

using Line = std::array<float, side>;
using DirectionLines = std::array<Line, directions>;

// For each pixel along an axis its weights for the places of the grid.
using GridWeights = std::array<std::array<float, grid>, side>;

const GridWeights& gridWeights() {
    static const GridWeights weights = [] {
        GridWeights result{};
        for (int i = 0; i < side; ++i) {
            for (int place = 0; place < grid; ++place) {
                const double centre = (place + 0.5) * side / grid - 0.5;
                const double distance = (i - centre) / neighbourhood;
                result[std::size_t(i)][std::size_t(place)] = float(std::exp(-distance * distance / 2));
            }
        }
        return result;
    }();
    return weights;
}

// Shape with a margin of nothing, wide enough for the blur and the gradient to need no edge cases.
constexpr int margin = 2;
constexpr int stride = side + 2 * margin;
using Padded = std::array<float, std::size_t(stride) * stride>;

// Every pixel the mean of its neighbourhood of 3 by 3; the outermost ones stay empty.
Padded blurred(const CharacterShape& shape) {
    Padded sums{}; // of three neighbours in a row
    for (int y = 0; y < side; ++y) {
        std::array<float, stride + 2> line{};
        std::copy_n(shape.row(y), side, line.begin() + margin + 1);
        float* row = sums.data() + std::size_t(y + margin) * stride;
        for (int x = 0; x < stride; ++x) {
            row[x] = (line[std::size_t(x)] + line[std::size_t(x) + 1] + line[std::size_t(x) + 2]) / 9;
        }
    }
    Padded result{};
    for (int y = 1; y + 1 < stride; ++y) {
        const float* row = sums.data() + std::size_t(y) * stride;
        float* target = result.data() + std::size_t(y) * stride;
        for (int x = 0; x < stride; ++x) {
            target[x] = row[x - stride] + row[x] + row[x + stride];
        }
    }
    return result;
}

// Adds the gradients of a row of pixels, each split between the two of the eight directions next to it. `centre` is the
// row's first pixel, its neighbours around it.
void addGradients(const float* centre, DirectionLines& lines) {
    const float* above = centre - stride;
    const float* below = centre + stride;
    Line straight;
    Line diagonal;
    Line horizontal;
    Line vertical;
    for (int x = 0; x < side; ++x) {
        const float across =
            (above[x + 1] - above[x - 1]) + 2 * (centre[x + 1] - centre[x - 1]) + (below[x + 1] - below[x - 1]);
        const float down = (below[x - 1] + 2 * below[x] + below[x + 1]) - (above[x - 1] + 2 * above[x] + above[x + 1]);
        const float absoluteAcross = std::abs(across);
        const float absoluteDown = std::abs(down);
        const float larger = std::max(absoluteAcross, absoluteDown);
        const float smaller = std::min(absoluteAcross, absoluteDown);
        const float slope = smaller / (larger + 1e-9F);
        // The angle from the axis in parts of an eighth of a turn, to 0.3 degrees.
        const float angle = slope + 0.3476F * slope * (1 - slope);
        const float strength = std::sqrt(across * across + down * down);
        const auto i = std::size_t(x);
        diagonal[i] = strength * angle;
        straight[i] = strength - diagonal[i];
        horizontal[i] = across;
        vertical[i] = down;
    }
    for (std::size_t x = 0; x < side; ++x) {
        const float across = horizontal[x];
        const float down = vertical[x];
        const float flat = std::abs(across) >= std::abs(down) ? straight[x] : 0;
        const float steep = straight[x] - flat;
        const float onward = across > 0 ? diagonal[x] : 0;
        const float back = diagonal[x] - onward;
        lines[0][x] += across > 0 ? flat : 0;
        lines[1][x] += down > 0 ? onward : 0;
        lines[2][x] += down > 0 ? steep : 0;
        lines[3][x] += down > 0 ? back : 0;
        lines[4][x] += across > 0 ? 0 : flat;
        lines[5][x] += down > 0 ? 0 : back;
        lines[6][x] += down > 0 ? 0 : steep;
        lines[7][x] += down > 0 ? 0 : onward;
    }
}

// Beyond three times the neighbourhood nothing counts.
bool isNear(int y, int place) {
    return std::abs(y - ((place + 0.5) * side / grid - 0.5)) < 3 * neighbourhood;
}

} // namespace

CharacterFeature featureOf(const CharacterShape& shape) {
    const GridWeights& weights = gridWeights();
    const Padded smooth = blurred(shape);

    // Down first: two rows at a time, which lie close enough together to count as one.
    std::array<DirectionLines, grid> sums{};
    for (int y = 0; y < side; y += 2) {
        DirectionLines lines{};
        addGradients(smooth.data() + std::size_t(y + margin) * stride + margin, lines);
        addGradients(smooth.data() + std::size_t(y + 1 + margin) * stride + margin, lines);
        for (int place = 0; place < grid; ++place) {
            if (!isNear(y, place)) {
                continue;
            }
            const float weight =
                (weights[std::size_t(y)][std::size_t(place)] + weights[std::size_t(y) + 1][std::size_t(place)]) / 2;
            float* sum = sums[std::size_t(place)][0].data();
            const float* source = lines[0].data();
            for (int i = 0; i < directions * side; ++i) {
                sum[i] += weight * source[i];
            }
        }
    }

    CharacterFeature feature{};
    for (int direction = 0; direction < directions; ++direction) {
        for (int place = 0; place < grid; ++place) {
            const Line& line = sums[std::size_t(place)][std::size_t(direction)];
            std::array<float, grid> cells{};
            for (std::size_t x = 0; x < side; ++x) {
                for (std::size_t i = 0; i < grid; ++i) {
                    cells[i] += line[x] * weights[x][i];
                }
            }
            std::ranges::copy(cells, feature.begin() + std::ptrdiff_t(direction * grid + place) * grid);
        }
    }

    // The root of each value takes the strongest strokes down; then the sum of the values is the square of the length.
    float total = 0;
    for (const float value : feature) {
        total += value;
    }
    const float scale = total > 0 ? 1 / total : 0;
    for (float& value : feature) {
        value = std::sqrt(value * scale);
    }
    return feature;
}

} // namespace pelloran
