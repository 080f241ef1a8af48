#include "LineDetector.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace pelloran {

namespace {

// Lengths are pixels of a window 1080 pixels high, in which names stand 27 to 48 pixels tall; lightness is 0 to 255.
constexpr double smallestUnit = 0.3; // letters of less than ten pixels cannot be read
constexpr double strokeReach = 4.5;  // half the widest stroke, and how far a dark outline may be from a stroke's middle
constexpr int dimmestStroke = 110;   // letters are white or pale gold, also in shade
constexpr int outlineContrast = 75;  // between a stroke and its outline; the grain of wood and cloth has less
constexpr int strokeRelief = 45;     // by which a stroke stands out of the wider light things around it
constexpr double longestStroke = 34; // horizontally; edges of ribbons and frames run on
constexpr double cellSize = 3;       // strokes are counted on a coarse grid: gaps between letters span few cells
constexpr int leastInkOfCell = 2;    // pixels; single ones are grain and sparks
constexpr double widestGap = 20;     // between letters and words of a name
constexpr double lowestLine = 11;    // less is a row of sparks or an edge
constexpr double tallestLine = 74;   // an arched name, with room
constexpr double shortestLine = 22;  // one Chinese character
constexpr double longestLine = 420;  // wider than any card
constexpr double leastFill = 0.06;   // of a box by strokes; less is scattered light
constexpr std::size_t mostLines = 12; // three offers have a name each, a second name and some rows of rules

int pixels(double length, double unit) {
    return std::max(1, int(std::lround(length * unit)));
}

void removeLongRuns(Plane& mask, int longest) {
    for (int y = 0; y < mask.height; ++y) {
        std::uint8_t* row = mask.row(y);
        for (int x = 0; x < mask.width;) {
            if (!row[x]) {
                ++x;
                continue;
            }
            const int start = x;
            while (x < mask.width && row[x]) {
                ++x;
            }
            if (x - start > longest) {
                std::fill(row + start, row + x, std::uint8_t(0));
            }
        }
    }
}

// The cells of the grid that hold ink, with the gaps between neighbours in a row of cells filled.
Plane inkedCells(const Plane& mask, int cell, int widestGapInCells) {
    Plane cells((mask.width + cell - 1) / cell, (mask.height + cell - 1) / cell);
    std::vector<int> counts(std::size_t(cells.width));
    for (int cellY = 0; cellY < cells.height; ++cellY) {
        std::ranges::fill(counts, 0);
        for (int y = cellY * cell; y < std::min(mask.height, (cellY + 1) * cell); ++y) {
            const std::uint8_t* row = mask.row(y);
            for (int cellX = 0; cellX < cells.width; ++cellX) {
                for (int x = cellX * cell; x < std::min(mask.width, (cellX + 1) * cell); ++x) {
                    counts[std::size_t(cellX)] += row[x];
                }
            }
        }
        std::uint8_t* row = cells.row(cellY);
        int lastInked = -1;
        for (int cellX = 0; cellX < cells.width; ++cellX) {
            if (counts[std::size_t(cellX)] < leastInkOfCell) {
                continue;
            }
            if (lastInked >= 0 && cellX - lastInked - 1 <= widestGapInCells) {
                std::fill(row + lastInked, row + cellX, std::uint8_t(1));
            }
            row[cellX] = 1;
            lastInked = cellX;
        }
    }
    return cells;
}

// Connected groups of cells, as a label per cell (0: none) and the number of labels.
struct Labels {
    std::vector<int> ofCell;
    int count = 0;
};

Labels labelled(const Plane& cells) {
    Labels labels;
    labels.ofCell.assign(cells.pixels.size(), 0);
    std::vector<int> pending;
    for (int start = 0; start < int(cells.pixels.size()); ++start) {
        if (!cells.pixels[std::size_t(start)] || labels.ofCell[std::size_t(start)]) {
            continue;
        }
        labels.ofCell[std::size_t(start)] = ++labels.count;
        pending.push_back(start);
        while (!pending.empty()) {
            const int x = pending.back() % cells.width;
            const int y = pending.back() / cells.width;
            pending.pop_back();
            for (int nearY = std::max(0, y - 1); nearY <= std::min(cells.height - 1, y + 1); ++nearY) {
                for (int nearX = std::max(0, x - 1); nearX <= std::min(cells.width - 1, x + 1); ++nearX) {
                    const int near = nearY * cells.width + nearX;
                    if (cells.pixels[std::size_t(near)] && !labels.ofCell[std::size_t(near)]) {
                        labels.ofCell[std::size_t(near)] = labels.count;
                        pending.push_back(near);
                    }
                }
            }
        }
    }
    return labels;
}

struct Extent {
    int left = 1 << 30;
    int top = 1 << 30;
    int right = -1;
    int bottom = -1;
    int ink = 0;
    long darkness = 0;
};

bool looksLikeLine(const TextBox& box, double unit) {
    const double width = box.area.width() / unit;
    const double height = box.area.height() / unit;
    return height >= lowestLine && height <= tallestLine && width >= shortestLine && width <= longestLine &&
           box.ink >= leastFill * box.area.width() * box.area.height();
}

// Names have the most ink of all lines on a card, and the blackest outlines.
double promise(const TextBox& box) {
    return box.ink * box.darkness * box.darkness;
}

} // namespace

Plane strokes(const Plane& plane, double unit) {
    const int radius = std::max(1, int(std::lround(strokeReach * unit - 0.5)));
    const Plane floor = darkestAround(plane, radius);
    const Plane opened = lightestAround(floor, radius);
    Plane mask(plane.width, plane.height);
    for (std::size_t i = 0; i < mask.pixels.size(); ++i) {
        const int value = plane.pixels[i];
        mask.pixels[i] = std::uint8_t((value > dimmestStroke) & (value - floor.pixels[i] > outlineContrast) &
                                      (value - opened.pixels[i] > strokeRelief));
    }
    removeLongRuns(mask, pixels(longestStroke, unit));
    return mask;
}

std::vector<TextBox> detectLines(const Plane& plane, double unit) {
    if (unit < smallestUnit || plane.pixels.empty()) {
        return {};
    }
    const Plane mask = strokes(plane, unit);
    const Plane outlines = darkestAround(plane, pixels(strokeReach, unit));
    const int cell = pixels(cellSize, unit);
    const Plane cells = inkedCells(mask, cell, int(widestGap * unit / cell));
    const Labels labels = labelled(cells);

    std::vector<Extent> extents(std::size_t(labels.count) + 1);
    for (int y = 0; y < mask.height; ++y) {
        const int* rowLabels = labels.ofCell.data() + std::size_t(y / cell) * std::size_t(cells.width);
        for (int x = 0; x < mask.width; ++x) {
            if (!mask.at(x, y)) {
                continue;
            }
            Extent& extent = extents[std::size_t(rowLabels[x / cell])];
            extent.left = std::min(extent.left, x);
            extent.right = std::max(extent.right, x);
            extent.top = std::min(extent.top, y);
            extent.bottom = std::max(extent.bottom, y);
            ++extent.ink;
            extent.darkness += 255 - outlines.at(x, y);
        }
    }

    std::vector<TextBox> boxes;
    for (std::size_t label = 1; label < extents.size(); ++label) { // label 0: specks outside every cell
        const Extent& extent = extents[label];
        const TextBox box{QRect(QPoint(extent.left, extent.top), QPoint(extent.right, extent.bottom)), extent.ink,
                          extent.ink ? double(extent.darkness) / extent.ink / 255 : 0};
        if (extent.ink && looksLikeLine(box, unit)) {
            boxes.push_back(box);
        }
    }
    std::ranges::stable_sort(boxes, std::ranges::greater(), promise);
    boxes.resize(std::min(boxes.size(), mostLines));
    return boxes;
}

} // namespace pelloran
