#include "reading/LinePicker.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace pelloran {

namespace {

// Pixels of a window 1080 pixels high.
constexpr double rowTolerance = 30;     // names of one pick differ in height, and arch up or down
constexpr double spacingTolerance = 60; // names are centred on their cards, but cards hover
constexpr double rivalShare = 0.3;      // of the best row's promise: also likely to be one of names

double promiseOf(const LineRow& row, const std::vector<TextBox>& boxes, double unit) {
    double sum = 0;
    for (const std::size_t index : row) {
        sum += nameLikeness(boxes[index], unit);
    }
    return sum;
}

// The most promising three of `candidates` that stand evenly apart; empty if none do.
LineRow evenThree(const LineRow& candidates, const std::vector<TextBox>& boxes, double unit) {
    const auto middle = [&](std::size_t index) { return QRectF(boxes[index].area).center().x() / unit; };
    LineRow best;
    double bestPromise = 0;
    for (const std::size_t left : candidates) {
        for (const std::size_t centre : candidates) {
            for (const std::size_t right : candidates) {
                const double first = middle(centre) - middle(left);
                const double second = middle(right) - middle(centre);
                if (first < leastSpacing || second < leastSpacing || std::abs(first - second) > spacingTolerance) {
                    continue;
                }
                const LineRow row{left, centre, right};
                if (promiseOf(row, boxes, unit) > bestPromise) {
                    best = row;
                    bestPromise = promiseOf(row, boxes, unit);
                }
            }
        }
    }
    return best;
}

} // namespace

std::vector<LineRow> rowsOf(const std::vector<TextBox>& boxes, double unit, RowOrder order) {
    const auto level = [&](std::size_t index) { return QRectF(boxes[index].area).center().y(); };
    LineRow rest(boxes.size());
    for (std::size_t i = 0; i < rest.size(); ++i) {
        rest[i] = i;
    }
    std::ranges::sort(rest, {}, [&](std::size_t index) { return std::pair(-nameLikeness(boxes[index], unit), index); });

    std::vector<LineRow> rows;
    while (!rest.empty()) {
        LineRow best;
        for (const std::size_t seed : rest) {
            LineRow row;
            for (const std::size_t index : rest) {
                if (std::abs(level(index) - level(seed)) <= rowTolerance * unit) {
                    row.push_back(index);
                }
            }
            if (const LineRow three = evenThree(row, boxes, unit); !three.empty()) {
                row = three;
            } else {
                row.resize(std::min<std::size_t>(row.size(), 2));
            }
            if (promiseOf(row, boxes, unit) > promiseOf(best, boxes, unit)) {
                best = row;
            }
        }
        if (best.empty()) {
            best = {rest.front()};
        }
        std::erase_if(rest, [&](std::size_t index) { return std::ranges::find(best, index) != best.end(); });
        std::ranges::sort(best, {}, [&](std::size_t index) { return boxes[index].area.left(); });
        rows.push_back(best);
    }
    double best = 0;
    for (const LineRow& row : rows) {
        best = std::max(best, promiseOf(row, boxes, unit));
    }
    std::ranges::sort(rows, {}, [&](const LineRow& row) {
        const double own = promiseOf(row, boxes, unit);
        const bool rivals = order == RowOrder::lowestFirst && own >= rivalShare * best;
        return std::tuple(!rivals, rivals ? -level(row.front()) : -own, row.front());
    });
    return rows;
}

} // namespace pelloran
