#include "reading/LineDetector.h"

#include "reading/Components.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace pelloran {

namespace {

// Lengths are pixels of a window 1080 pixels high, in which names stand 27 to 48 pixels tall; lightness is 0 to 255.
constexpr double smallestUnit = 0.3; // letters of less than ten pixels cannot be read
constexpr double strokeReach = 4.5;  // half the widest stroke, and how far a dark outline may be from a stroke's middle
constexpr int dimmestStroke = 110;   // letters are white or pale gold, also in shade
constexpr int outlineContrast = 75;  // between a stroke and its outline; the grain of wood and cloth has less
constexpr int strokeRelief = 45;     // by which a stroke stands out of the wider light things around it
constexpr double longestStroke = 42; // horizontally; edges of ribbons and frames run on
constexpr double cellSize = 3;       // strokes are counted on a coarse grid: gaps between letters span few cells
constexpr int leastInkOfCell = 2;    // pixels; single ones are grain and sparks
constexpr double widestGap = 20;     // between letters and words of a name
constexpr double leastInkOfPiece = 40; // of a piece of a line; sparks have less
constexpr double lowestPiece = 8;      // the rest of an edge is lower
constexpr double widestJoint = 26;     // between pieces of one name
constexpr double sharedHeight = 0.5;   // of the lower of two pieces
constexpr double longestName = 265;    // ribbons are 280 wide
constexpr double tallestName = 64;     // a second row of text would make it taller
constexpr double lowestLine = 11;      // less is a row of sparks or an edge
constexpr double tallestLine = 74;     // an arched name, with room
constexpr double heightOfNames = 36;   // with their arch; rules are set in letters half as tall
constexpr double shortestLine = 22;    // one Chinese character
constexpr double longestLine = 420;    // wider than any card
constexpr double leastFill = 0.06;     // of a box by strokes; less is scattered light
constexpr std::size_t mostLines = 12;  // three offers have a name each, a second name and some rows of rules

int pixels(double length, double unit) {
    return std::max(1, int(std::lround(length * unit)));
}

// The cells of the grid that hold ink, with the gaps between neighbours in a row of cells filled.
Plane inkedCells(const Plane& mask, int cell, int widestGapInCells) {
    Plane cells((mask.width + cell - 1) / cell, (mask.height + cell - 1) / cell);
    const int leastInk = std::min(leastInkOfCell, cell); // in windows less than 540 high a cell is a single pixel
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
            if (counts[std::size_t(cellX)] < leastInk) {
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

struct Extent {
    int left = 1 << 30;
    int top = 1 << 30;
    int right = -1;
    int bottom = -1;
    int ink = 0;
    long darkness = 0;

    void add(const Extent& other) {
        left = std::min(left, other.left);
        top = std::min(top, other.top);
        right = std::max(right, other.right);
        bottom = std::max(bottom, other.bottom);
        ink += other.ink;
        darkness += other.darkness;
    }
};

// Characters with few strokes leave gaps: joins pieces that stand close together on one line, unless that would make
// more than a name of them.
void joinNeighbours(std::vector<Extent>& pieces, double unit) {
    const auto belongTogether = [unit](const Extent& a, const Extent& b) {
        const int gap = std::max(a.left, b.left) - std::min(a.right, b.right);
        const int shared = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
        const int smaller = std::min(a.bottom - a.top, b.bottom - b.top);
        const int width = std::max(a.right, b.right) - std::min(a.left, b.left);
        const int height = std::max(a.bottom, b.bottom) - std::min(a.top, b.top);
        return gap <= widestJoint * unit && shared >= sharedHeight * smaller && width <= longestName * unit &&
               height <= tallestName * unit;
    };
    for (bool joined = true; joined;) {
        joined = false;
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            for (std::size_t k = i + 1; k < pieces.size();) {
                if (belongTogether(pieces[i], pieces[k])) {
                    pieces[i].add(pieces[k]);
                    pieces.erase(pieces.begin() + std::ptrdiff_t(k));
                    joined = true;
                } else {
                    ++k;
                }
            }
        }
    }
}

bool looksLikeLine(const TextBox& box, double unit) {
    const double width = box.area.width() / unit;
    const double height = box.area.height() / unit;
    return height >= lowestLine && height <= tallestLine && width >= shortestLine && width <= longestLine &&
           box.ink >= leastFill * box.area.width() * box.area.height();
}

} // namespace

double nameLikeness(const TextBox& box, double unit) {
    const double size = std::min(box.area.height() / unit, heightOfNames) / heightOfNames;
    return box.ink * box.darkness * box.darkness * size * size;
}

Plane strokes(const Plane& plane, double unit) {
    const int radius = std::max(1, int(std::lround(strokeReach * unit - 0.5)));
    const Plane floor = darkestAround(plane, radius);
    const Plane opened = lightestAround(floor, radius);
    Plane mask(plane.width, plane.height);
    for (std::size_t i = 0; i < mask.pixels.size(); ++i) {
        const int value = plane.pixels[i];
        mask.pixels[i] = value > dimmestStroke && value - floor.pixels[i] > outlineContrast &&
                         value - opened.pixels[i] > strokeRelief;
    }
    removeLongRuns(mask, pixels(longestStroke, unit));
    return mask;
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

std::vector<TextBox> detectLines(const Plane& plane, double unit) {
    if (unit < smallestUnit || plane.pixels.empty()) {
        return {};
    }
    const Plane mask = strokes(plane, unit);
    const Plane outlines = darkestAround(plane, pixels(strokeReach, unit));
    const int cell = pixels(cellSize, unit);
    const Plane cells = inkedCells(mask, cell, int(widestGap * unit / cell));
    const Components components = componentsOf(cells);

    std::vector<Extent> extents(components.groups.size() + 1);
    for (int y = 0; y < mask.height; ++y) {
        const int* rowLabels = components.numbers.data() + std::size_t(y / cell) * std::size_t(cells.width);
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

    extents.erase(extents.begin()); // specks outside every cell
    std::erase_if(extents, [unit](const Extent& extent) {
        return extent.ink < leastInkOfPiece * unit * unit || extent.bottom - extent.top < lowestPiece * unit;
    });
    joinNeighbours(extents, unit);

    std::vector<TextBox> boxes;
    for (const Extent& extent : extents) {
        const TextBox box{QRect(QPoint(extent.left, extent.top), QPoint(extent.right, extent.bottom)), extent.ink,
                          extent.ink ? double(extent.darkness) / extent.ink / 255 : 0};
        if (extent.ink && looksLikeLine(box, unit)) {
            boxes.push_back(box);
        }
    }
    const auto rank = [unit](const TextBox& box) {
        return std::tuple(-nameLikeness(box, unit), box.area.top(), box.area.left());
    };
    std::ranges::sort(boxes, {}, rank);
    boxes.resize(std::min(boxes.size(), mostLines));
    return boxes;
}

} // namespace pelloran
