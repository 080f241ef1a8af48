#include "reading/chinese/CharacterCells.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace pelloran {

namespace {

constexpr double reach = 0.3;        // of a cut from where it should be, in widths of a character
constexpr double ofUnevenness = 6;   // cost of the square of a cell's deviation, in widths of a character
constexpr double ofInk = 4;          // cost of a column full of ink
constexpr double narrowest = 0.4;    // of what it should be, a cell
constexpr double ofTooNarrow = 1000; // cost: only where nothing else is possible

} // namespace

CharacterCutter::CharacterCutter(const Plane& line)
    : width(line.width)
    , ink(std::size_t(line.width)) {
    std::vector<double> columns(ink.size());
    for (int y = 0; y < line.height; ++y) {
        const std::uint8_t* row = line.row(y);
        for (int x = 0; x < width; ++x) {
            columns[std::size_t(x)] += row[x];
        }
    }
    for (int x = 0; x < width; ++x) {
        const int before = std::max(0, x - 1);
        const int after = std::min(width - 1, x + 1);
        ink[std::size_t(x)] = (columns[std::size_t(before)] + columns[std::size_t(x)] + columns[std::size_t(after)]) /
                              (3.0 * 255 * line.height);
    }
}

std::vector<CharacterCell> CharacterCutter::cells(std::span<const float> widths) const {
    if (widths.empty()) {
        return {};
    }
    const double sum = std::accumulate(widths.begin(), widths.end(), 0.0);
    const double pitch = width / sum;

    struct Cut {
        int place;
        double cost;
        std::size_t before; // of the cuts one earlier
    };

    std::vector<std::vector<Cut>> cuts{{{0, 0, 0}}};
    double right = 0;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        right += widths[i] * pitch;
        const double wanted = widths[i] * pitch;
        int first = width;
        int last = width;
        if (i + 1 < widths.size()) {
            first = std::clamp(int(right - reach * pitch), 1, std::max(1, width - 1));
            last = std::clamp(int(right + reach * pitch), first, std::max(1, width - 1));
        }
        std::vector<Cut> next;
        for (int place = first; place <= last; ++place) {
            Cut best{place, std::numeric_limits<double>::max(), 0};
            const double through = place < width ? ofInk * ink[std::size_t(place)] : 0;
            for (std::size_t j = 0; j < cuts.back().size(); ++j) {
                const Cut& earlier = cuts.back()[j];
                if (earlier.place > place) {
                    continue;
                }
                const double cell = place - earlier.place;
                const double deviation = (cell - wanted) / pitch;
                const double cost = earlier.cost + ofUnevenness * deviation * deviation + through +
                                    (cell < narrowest * wanted ? ofTooNarrow : 0);
                if (cost < best.cost) {
                    best.cost = cost;
                    best.before = j;
                }
            }
            next.push_back(best);
        }
        cuts.push_back(std::move(next));
    }
    std::vector<CharacterCell> result(widths.size());
    std::size_t at = 0;
    for (std::size_t i = widths.size(); i-- > 0;) {
        const Cut& cut = cuts[i + 1][at];
        result[i] = {cuts[i][cut.before].place, cut.place};
        at = cut.before;
    }
    return result;
}

} // namespace pelloran
