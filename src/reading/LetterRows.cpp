#include "reading/LetterRows.h"

#include "reading/Components.h"
#include "reading/OutlinedInk.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace pelloran {

namespace {

// Pixels of the search.
constexpr int lowestLetter = 5;
constexpr int tallestLetter = 28;
constexpr int widestLetter = 48;
constexpr int leastLetterArea = 12;
constexpr double mostFilled = 0.85; // of a letter's box; full ones are lights and frames
constexpr std::size_t mostLetters = 600;
constexpr std::size_t mostLines = 40;
constexpr std::size_t mostRows = 3;

// Letters of one line.
constexpr double widestGap = 1.15; // of the taller one's height
constexpr double deepestOverlap = 0.5;
constexpr double steepestStep = 0.55; // between middles
constexpr double largestRatio = 2.4;  // of heights
constexpr int fewestLetters = 3;
constexpr double narrowestLine = 2.2; // letters' heights
constexpr double tallestLine = 4.5;

// Three of them, in heights of the frame they imply.
constexpr double unevenness = 0.055; // of the spacing
constexpr double largestStep = 0.022;
constexpr double lowestMedian = 0.0060; // height of the middle letter
constexpr double highestMedian = 0.0175;
constexpr double widestName = 0.215;
// Against the usual frame. Mulligans and choices in battle stand at 0.48 to 0.52.
constexpr double largestScaling = 0.09;
constexpr double largestShift = 0.035;
constexpr double highestLevel = 0.345;
constexpr double lowestLevel = 0.425;
// What says the same as an earlier row.
constexpr double sameHeight = 0.03;
constexpr double sameMiddle = 20;

struct LetterLine {
    QRect box;
    double letterHeight = 0; // of the middle one
    int letters = 0;

    double middleX() const { return box.left() + box.width() / 2.0; }

    double middleY() const { return box.top() + box.height() / 2.0; }
};

std::vector<QRect> lettersOf(const Plane& plane) {
    std::vector<Components::Group> letters;
    for (const Components::Group& group : componentsOf(outlinedInk(plane)).groups) {
        const QRect& box = group.box;
        if (box.height() >= lowestLetter && box.height() <= tallestLetter && box.width() <= widestLetter &&
            group.area >= leastLetterArea && group.area <= mostFilled * box.width() * box.height() + 6 &&
            box.width() >= 0.3 * box.height()) {
            letters.push_back(group);
        }
    }
    // Of too many the largest: letters of names are larger than those of rules.
    std::ranges::stable_sort(letters, std::greater{}, &Components::Group::area);
    letters.resize(std::min(letters.size(), mostLetters));
    std::vector<QRect> boxes;
    for (const Components::Group& letter : letters) {
        boxes.push_back(letter.box);
    }
    std::ranges::sort(boxes, {}, [](const QRect& box) { return std::pair(box.left(), box.top()); });
    return boxes;
}

bool areNeighbours(const QRect& a, const QRect& b) {
    const double height = std::max(a.height(), b.height());
    const double gap = b.left() - (a.left() + a.width());
    const double step = std::abs((a.top() + a.height() / 2.0) - (b.top() + b.height() / 2.0));
    return gap <= widestGap * height && gap >= -deepestOverlap * height && step <= steepestStep * height &&
           height <= largestRatio * std::min(a.height(), b.height());
}

std::vector<LetterLine> linesOf(const std::vector<QRect>& letters) {
    std::vector<std::size_t> parent(letters.size());
    std::iota(parent.begin(), parent.end(), 0);
    const auto root = [&parent](std::size_t i) {
        while (parent[i] != i) {
            i = parent[i] = parent[parent[i]];
        }
        return i;
    };
    for (std::size_t i = 0; i < letters.size(); ++i) {
        for (std::size_t k = i + 1; k < letters.size() && letters[k].left() - letters[i].left() <= 100; ++k) {
            if (areNeighbours(letters[i], letters[k])) {
                parent[root(i)] = root(k);
            }
        }
    }
    std::vector<std::vector<std::size_t>> groups(letters.size());
    for (std::size_t i = 0; i < letters.size(); ++i) {
        groups[root(i)].push_back(i);
    }
    std::vector<LetterLine> lines;
    for (const auto& group : groups) {
        if (std::ssize(group) < fewestLetters) {
            continue;
        }
        LetterLine line;
        std::vector<int> heights;
        for (const std::size_t index : group) {
            line.box |= letters[index];
            heights.push_back(letters[index].height());
        }
        std::ranges::nth_element(heights, heights.begin() + std::ssize(heights) / 2);
        line.letterHeight = heights[heights.size() / 2];
        line.letters = int(group.size());
        if (line.box.width() >= narrowestLine * line.letterHeight &&
            line.box.height() <= tallestLine * line.letterHeight) {
            lines.push_back(line);
        }
    }
    std::ranges::stable_sort(lines, std::greater{}, &LetterLine::letters);
    lines.resize(std::min(lines.size(), mostLines));
    return lines;
}

struct Triple {
    int letters = 0;
    double height = 0; // of the frame, in pixels of the search
    double middle = 0; // of the middle name
    double level = 0;  // of the letters' middles: the middle one of the three
};

std::vector<Triple> triplesOf(const std::vector<LetterLine>& lines) {
    std::vector<Triple> triples;
    for (const LetterLine& left : lines) {
        for (const LetterLine& centre : lines) {
            const double spacing = centre.middleX() - left.middleX();
            if (std::abs(spacing / cardSpacing / searchScale - 1) > 2 * largestScaling) {
                continue;
            }
            for (const LetterLine& right : lines) {
                if (std::abs(right.middleX() - centre.middleX() - spacing) > unevenness * spacing) {
                    continue;
                }
                const double height = (right.middleX() - left.middleX()) / 2 / cardSpacing;
                std::array levels{left.middleY(), centre.middleY(), right.middleY()};
                std::ranges::sort(levels);
                const auto fits = [height](const LetterLine& line) {
                    return line.letterHeight >= lowestMedian * height && line.letterHeight <= highestMedian * height &&
                           line.box.width() <= widestName * height;
                };
                if (levels[2] - levels[0] <= largestStep * height && fits(left) && fits(centre) && fits(right)) {
                    triples.push_back(
                        {left.letters + centre.letters + right.letters, height, centre.middleX(), levels[1]});
                }
            }
        }
    }
    std::ranges::stable_sort(triples, std::greater{}, &Triple::letters);
    return triples;
}

} // namespace

std::vector<LetterRow> findLetterRows(const Plane& plane, const GameFrame& usual) {
    const double scale = searchScale / usual.height;
    const std::vector<Triple> triples = triplesOf(linesOf(lettersOf(resampled(plane, scale))));
    const double usualMiddle = usual.pixelX(cardCentres[1]) * scale;
    std::vector<LetterRow> rows;
    std::vector<Triple> seen;
    for (const Triple& triple : triples) {
        const double level = (triple.level / scale - usual.top) / usual.height;
        const bool isElsewhere = std::abs(triple.height / searchScale - 1) > largestScaling ||
                                 std::abs(triple.middle - usualMiddle) > largestShift * searchScale ||
                                 level < highestLevel || level > lowestLevel;
        const bool isKnown = std::ranges::any_of(seen, [&](const Triple& other) {
            return std::abs(other.height - triple.height) < sameHeight * other.height &&
                   std::abs(other.middle - triple.middle) < sameMiddle;
        });
        if (isElsewhere || isKnown) {
            continue;
        }
        seen.push_back(triple);
        const double height = triple.height / scale;
        const double middle = triple.middle / scale;
        rows.push_back({GameFrame{height, middle - cardCentres[1] * height, usual.top},
                        (triple.level / scale - usual.top) / height});
        if (rows.size() == mostRows) {
            break;
        }
    }
    return rows;
}

} // namespace pelloran
