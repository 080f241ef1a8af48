#include "reading/LineCropper.h"

#include "reading/Components.h"
#include "reading/LineDetector.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace pelloran {

namespace {

// Lengths and areas are in pixels of a window 1080 pixels high.
constexpr double brightnessRank = 0.75;   // of stroke pixels that are darker than what counts as the line's brightness
constexpr double letterReach = 6;         // half the widest stroke of a letter, with room
constexpr double leastContrast = 0.35;    // of the line's brightness: between a letter and its outline
constexpr double leastRelief = 0.20;      // of the line's brightness: ribbons are as light, but broad
constexpr double speckArea = 5;           // sparks and grain; the dot of an i has 10 and more
constexpr double lowestLetter = 12;       // with the next: what is lower and wider is a strip of ribbon, not a letter
constexpr double widestStrip = 48;        // bold letters that touch are wider, but not as low
constexpr double sideReach = 4;           // of letters beyond the box of the strokes that were found
constexpr double longestLetterRun = 44;   // the Chinese one is a single stroke as wide as the character
constexpr double brightInk = 0.75;        // of the line's brightness
constexpr double leastBrightShare = 0.15; // of a letter's pixels in bright ink; remains of ribbon have none
constexpr double sparkShare = 0.25;       // of the middle letter's area; smaller is punctuation or a spark
constexpr double sparkDistance = 4;       // punctuation keeps closer to its letter
constexpr double dimInk = 0.30;           // of the line's brightness: thin strokes
constexpr double dimInkReach = 2.5;       // from brighter ink
constexpr double leastStrokeShare = 0.25; // of a letter's pixels in detected strokes; blots of light have fewer
constexpr double paleInk = 0.25;          // of the line's brightness: ink begins, so that edges stay soft
constexpr double fullInk = 0.90;          // of the line's brightness
constexpr double leastRowInk = 0.04;      // of the fullest row: less lies between two rows of text
constexpr double leastRowShare = 0.2;     // of all ink: a row of text, not an accent
constexpr double lowestRow = 8;           // height of a row of text
constexpr int narrowestPicture = 16;      // pixels

struct Blob {
    int area = 0;
    int strokePixels = 0;
    int brightPixels = 0;
    int left = 1 << 30;
    int top = 1 << 30;
    int right = -1;
    int bottom = -1;
};

// The groups of `components`, from the second place on.
std::vector<Blob> blobsOf(const Components& components, const Plane& mask, const Plane& bright) {
    std::vector<Blob> blobs(components.groups.size() + 1);
    for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < mask.width; ++x) {
            const auto place = std::size_t(y) * std::size_t(mask.width) + std::size_t(x);
            if (components.numbers[place] == 0) {
                continue;
            }
            Blob& blob = blobs[std::size_t(components.numbers[place])];
            ++blob.area;
            blob.strokePixels += mask.pixels[place];
            blob.brightPixels += bright.pixels[place];
            blob.left = std::min(blob.left, x);
            blob.right = std::max(blob.right, x);
            blob.top = std::min(blob.top, y);
            blob.bottom = std::max(blob.bottom, y);
        }
    }
    return blobs;
}

bool isLetter(const Blob& blob, const Plane& plane, const QRect& box, double unit) {
    const bool runsOut =
        blob.top == 0 || blob.left == 0 || blob.bottom == plane.height - 1 || blob.right == plane.width - 1;
    const int middleX = (blob.left + blob.right) / 2;
    const int middleY = (blob.top + blob.bottom) / 2;
    return !runsOut && blob.area >= speckArea * unit * unit && blob.strokePixels >= leastStrokeShare * blob.area &&
           blob.brightPixels >= leastBrightShare * blob.area &&
           !(blob.right - blob.left > widestStrip * unit && blob.bottom - blob.top < lowestLetter * unit) &&
           middleY >= box.top() && middleY <= box.bottom() && middleX >= box.left() - sideReach * unit &&
           middleX <= box.right() + sideReach * unit;
}

// Sparks far from every letter: small, and with nothing above or below them as the dot of an i has.
void removeSparks(const std::vector<Blob>& blobs, std::vector<std::uint8_t>& isLetterBlob, double unit) {
    std::vector<int> areas;
    for (std::size_t i = 0; i < blobs.size(); ++i) {
        if (isLetterBlob[i]) {
            areas.push_back(blobs[i].area);
        }
    }
    if (areas.empty()) {
        return;
    }
    std::ranges::nth_element(areas, areas.begin() + std::ptrdiff_t(areas.size() / 2));
    const double small = sparkShare * areas[areas.size() / 2];
    std::vector<std::size_t> sparks;
    for (std::size_t i = 0; i < blobs.size(); ++i) {
        if (!isLetterBlob[i] || blobs[i].area >= small) {
            continue;
        }
        bool alone = true;
        for (std::size_t k = 0; k < blobs.size(); ++k) {
            alone &= !isLetterBlob[k] || blobs[k].area < small ||
                     blobs[i].left - blobs[k].right > sparkDistance * unit ||
                     blobs[k].left - blobs[i].right > sparkDistance * unit;
        }
        if (alone) {
            sparks.push_back(i);
        }
    }
    for (const std::size_t spark : sparks) {
        isLetterBlob[spark] = 0;
    }
}

// The line's own brightness: of its strokes, most of which are letters.
int brightnessOf(const Plane& plane, const Plane& mask, const QRect& box) {
    std::array<int, 256> counts{};
    int total = 0;
    const QRect part = box.intersected(QRect(0, 0, plane.width, plane.height));
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            if (mask.at(x, y)) {
                ++counts[plane.at(x, y)];
                ++total;
            }
        }
    }
    int below = 0;
    for (int value = 0; value < 256; ++value) {
        below += counts[std::size_t(value)];
        if (below > brightnessRank * total) {
            return value;
        }
    }
    return 0;
}

// What the letters stand on: light things that are broad or run out of the plane, and all that hangs together with
// them. The dark outlines keep the letters apart from it.
Plane backdropOf(const Plane& plane, Plane broad) {
    for (int y = 0; y < plane.height; ++y) {
        broad.row(y)[0] = plane.at(0, y);
        broad.row(y)[plane.width - 1] = plane.at(plane.width - 1, y);
    }
    std::copy_n(plane.row(0), plane.width, broad.row(0));
    std::copy_n(plane.row(plane.height - 1), plane.width, broad.row(plane.height - 1));
    return floodedFrom(std::move(broad), plane);
}

QRect inkedArea(const Plane& kept) {
    int left = kept.width;
    int right = -1;
    int top = kept.height;
    int bottom = -1;
    for (int y = 0; y < kept.height; ++y) {
        for (int x = 0; x < kept.width; ++x) {
            if (kept.at(x, y)) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = y;
            }
        }
    }
    return {QPoint(left, top), QPoint(right, bottom)};
}

int countRows(const std::vector<double>& rows, double unit) {
    const double fullest = *std::ranges::max_element(rows);
    const double total = std::accumulate(rows.begin(), rows.end(), 0.0);
    int count = 0;
    double ink = 0;
    int height = 0;
    for (std::size_t y = 0; y <= rows.size(); ++y) {
        if (y < rows.size() && rows[y] > leastRowInk * fullest) {
            ink += rows[y];
            ++height;
            continue;
        }
        if (ink >= leastRowShare * total && height >= lowestRow * unit) {
            ++count;
        }
        ink = 0;
        height = 0;
    }
    return count;
}

double runsPerColumn(const Plane& kept) {
    int runs = 0;
    int columns = 0;
    for (int x = 0; x < kept.width; ++x) {
        int runsHere = 0;
        bool inside = false;
        for (int y = 0; y < kept.height; ++y) {
            const bool ink = kept.at(x, y) != 0;
            runsHere += ink && !inside;
            inside = ink;
        }
        runs += runsHere;
        columns += runsHere > 0;
    }
    return columns ? double(runs) / columns : 0;
}

} // namespace

std::optional<CleanLine> cleanLine(const Plane& plane, const QRect& box, double unit, const Cleaning& cleaning) {
    if (plane.pixels.empty()) {
        return std::nullopt;
    }
    const Plane mask = strokes(plane, unit);
    const int brightness = brightnessOf(plane, mask, box);
    if (brightness == 0) {
        return std::nullopt;
    }

    const int reach = std::max(1, int(std::lround(letterReach * unit)));
    const Plane floor = darkestAround(plane, reach);
    const Plane backdrop = backdropOf(plane, lightestAround(floor, reach));
    Plane lit(plane.width, plane.height);
    for (std::size_t i = 0; i < lit.pixels.size(); ++i) {
        const int value = plane.pixels[i];
        lit.pixels[i] = value >= cleaning.inkLevel * brightness &&
                        value - floor.pixels[i] >= leastContrast * brightness &&
                        value - backdrop.pixels[i] >= leastRelief * brightness;
    }
    removeLongRuns(lit, int(longestLetterRun * unit));
    Plane bright(plane.width, plane.height);
    for (std::size_t i = 0; i < bright.pixels.size(); ++i) {
        bright.pixels[i] = plane.pixels[i] >= brightInk * brightness;
    }
    const Components components = componentsOf(lit);
    const std::vector<int>& numbers = components.numbers;
    const std::vector<Blob> blobs = blobsOf(components, mask, bright);
    std::vector<std::uint8_t> isLetterBlob(blobs.size());
    for (std::size_t number = 1; number < blobs.size(); ++number) {
        isLetterBlob[number] = isLetter(blobs[number], plane, box, unit);
    }
    removeSparks(blobs, isLetterBlob, unit);
    Plane kept(plane.width, plane.height);
    for (std::size_t i = 0; i < kept.pixels.size(); ++i) {
        kept.pixels[i] = isLetterBlob[std::size_t(numbers[i])];
    }
    // Thin strokes are dimmer than thick ones, but never far from them; what is dim further out is the ribbon.
    for (int step = 0; step < int(std::lround(dimInkReach * unit)); ++step) {
        const Plane wider = lightestAround(kept, 1);
        for (std::size_t i = 0; i < kept.pixels.size(); ++i) {
            const int value = plane.pixels[i];
            kept.pixels[i] |= wider.pixels[i] && !numbers[i] && value >= dimInk * brightness &&
                              value - floor.pixels[i] >= dimInk * brightness &&
                              value - backdrop.pixels[i] >= leastRelief * brightness;
        }
    }
    const QRect area = inkedArea(kept);
    if (area.isEmpty()) {
        return std::nullopt;
    }

    // Letters keep their soft edges: a ring of one pixel around them counts with what brightness it has.
    const Plane ring = lightestAround(kept, 1);
    CleanLine line;
    line.ink = Plane(plane.width, plane.height);
    for (std::size_t i = 0; i < kept.pixels.size(); ++i) {
        if (ring.pixels[i] && (kept.pixels[i] || !numbers[i])) {
            const double level = (double(plane.pixels[i]) / brightness - paleInk) / (fullInk - paleInk);
            line.ink.pixels[i] = std::uint8_t(std::lround(255 * std::clamp(level, 0.0, 1.0)));
        }
    }

    line.area = area;
    line.arch = archOf(kept, area, unit, cleaning.otherTurn);
    const InkProfile profile = inkProfile(kept, line.arch);
    const auto [top, bottom] = inkedRange(profile.rows);
    const auto [left, right] = inkedRange(profile.columns);
    line.letters = QRectF(left - profile.columnOrigin, top - profile.rowOrigin, right - left, bottom - top);
    line.fill =
        std::accumulate(profile.rows.begin(), profile.rows.end(), 0.0) / (line.letters.width() * line.letters.height());
    line.rows = countRows(profile.rows, unit);
    line.runsPerColumn = runsPerColumn(kept);
    return line;
}

Plane pictureOf(const CleanLine& line, const PictureShape& shape) {
    const double margin = shape.margin * line.letters.height();
    const double scale = shape.height / (line.letters.height() + 2 * margin); // of the line's pixels
    const int width = std::max(narrowestPicture, int(std::lround((line.letters.width() + 2 * margin) * scale)));
    Plane result(width, shape.height);
    for (int column = 0; column < width; ++column) {
        for (int row = 0; row < shape.height; ++row) {
            double ink = 0;
            for (const double partX : {0.25, 0.75}) {
                const double along = line.letters.left() - margin + (column + partX) / scale - 0.5;
                const double middle = line.arch.at(along) + line.arch.level;
                const double lean = line.arch.turn * line.arch.slopeAt(along);
                for (const double partY : {0.25, 0.75}) {
                    const double offset = line.letters.top() - margin + (row + partY) / scale - 0.5;
                    ink += sampleAt(line.ink, along - offset * lean, middle + offset) / 4;
                }
            }
            result.row(row)[column] = std::uint8_t(255 - std::lround(ink));
        }
    }
    return result;
}

} // namespace pelloran
