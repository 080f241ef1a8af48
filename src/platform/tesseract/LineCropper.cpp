#include "LineCropper.h"

#include "LineDetector.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace pelloran {

namespace {

// Lengths and areas are in pixels of a window 1080 pixels high.
constexpr double brightnessRank = 0.75;   // of stroke pixels that are darker than what counts as the line's brightness
constexpr double speckArea = 5;           // sparks and grain; the dot of an i has 10 and more
constexpr double leastStrokeShare = 0.25; // of a letter's pixels in detected strokes; blots of light have fewer
constexpr double paleInk = 0.40;          // of the line's brightness: ink begins, so that edges stay soft
constexpr double fullInk = 0.90;          // of the line's brightness
constexpr double steepest = 0.22;         // slope of a wave on a ribbon
constexpr double roundest = 0.001;        // bend per square of half the width
constexpr double waviest = 0.000014;      // wave per cube of half the width
constexpr std::size_t mostSamples = 900;  // pixels that vote on the arch
constexpr double leastRowInk = 0.04;      // of the fullest row: less lies between two rows of text
constexpr double leastRowShare = 0.2;     // of all ink: a row of text, not an accent
constexpr double lowestRow = 8;           // height of a row of text
constexpr int narrowestPicture = 16;      // pixels

struct Blob {
    int area = 0;
    int strokePixels = 0;
    int left = 1 << 30;
    int top = 1 << 30;
    int right = -1;
    int bottom = -1;
};

// Connected groups of pixels of `lit`, numbered from 1 in `numbers`.
std::vector<Blob> blobsOf(const Plane& lit, const Plane& mask, std::vector<int>& numbers) {
    std::vector<Blob> blobs(1);
    numbers.assign(lit.pixels.size(), 0);
    std::vector<int> pending;
    for (int start = 0; start < int(lit.pixels.size()); ++start) {
        if (!lit.pixels[std::size_t(start)] || numbers[std::size_t(start)]) {
            continue;
        }
        const int number = int(blobs.size());
        Blob blob;
        numbers[std::size_t(start)] = number;
        pending.push_back(start);
        while (!pending.empty()) {
            const int place = pending.back();
            const int x = place % lit.width;
            const int y = place / lit.width;
            pending.pop_back();
            ++blob.area;
            blob.strokePixels += mask.pixels[std::size_t(place)];
            blob.left = std::min(blob.left, x);
            blob.right = std::max(blob.right, x);
            blob.top = std::min(blob.top, y);
            blob.bottom = std::max(blob.bottom, y);
            for (int nearY = std::max(0, y - 1); nearY <= std::min(lit.height - 1, y + 1); ++nearY) {
                for (int nearX = std::max(0, x - 1); nearX <= std::min(lit.width - 1, x + 1); ++nearX) {
                    const int near = nearY * lit.width + nearX;
                    if (lit.pixels[std::size_t(near)] && !numbers[std::size_t(near)]) {
                        numbers[std::size_t(near)] = number;
                        pending.push_back(near);
                    }
                }
            }
        }
        blobs.push_back(blob);
    }
    return blobs;
}

bool isLetter(const Blob& blob, const Plane& plane, const QRect& box, double unit) {
    const bool runsOut =
        blob.top == 0 || blob.left == 0 || blob.bottom == plane.height - 1 || blob.right == plane.width - 1;
    const int middleX = (blob.left + blob.right) / 2;
    const int middleY = (blob.top + blob.bottom) / 2;
    return !runsOut && blob.area >= speckArea * unit * unit && blob.strokePixels >= leastStrokeShare * blob.area &&
           middleY >= box.top() && middleY <= box.bottom() && middleX >= box.left() - 4 * unit &&
           middleX <= box.right() + 4 * unit;
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

// Straight lines have full rows and empty ones: the sum of the squares of the rows' ink is greatest.
class ArchSearch {
public:
    ArchSearch(const Plane& kept, const QRect& area)
        : rows(std::size_t(3 * kept.height)) {
        std::size_t total = 0;
        for (const std::uint8_t pixel : kept.pixels) {
            total += pixel;
        }
        const std::size_t every = total / mostSamples + 1;
        best.middle = (area.left() + area.right()) / 2.0;
        best.half = std::max(1.0, area.width() / 2.0);
        std::size_t seen = 0;
        for (int x = 0; x < kept.width; ++x) {
            for (int y = 0; y < kept.height; ++y) {
                if (kept.at(x, y) && seen++ % every == 0) {
                    samples.push_back({float((x - best.middle) / best.half), float(y + kept.height)});
                }
            }
        }
    }

    Arch find(double unit) {
        const double half = best.half / unit;
        const double slopeLimit = steepest * half * unit;
        const double bendLimit = roundest * half * half * unit;
        const double waveLimit = waviest * half * half * half * unit;
        bestSharpness = sharpness(best);
        for (int bend = -3; bend <= 3; ++bend) {
            for (int slope = -3; slope <= 3; ++slope) {
                for (int wave = -1; wave <= 1; ++wave) {
                    Arch arch = best;
                    arch.bend = bend / 3.0 * bendLimit;
                    arch.slope = slope / 3.0 * slopeLimit;
                    arch.wave = wave * 0.6 * waveLimit;
                    consider(arch);
                }
            }
        }
        best = winner;
        refine(slopeLimit / 3, bendLimit / 3, waveLimit / 2, unit);
        return best;
    }

private:
    struct Sample {
        float t;
        float y;
    };

    void refine(double slopeStep, double bendStep, double waveStep, double unit) {
        while (std::max({slopeStep, bendStep, waveStep}) > 0.3 * unit) {
            slopeStep /= 2;
            bendStep /= 2;
            waveStep /= 2;
            for (int round = 0; round < 3; ++round) {
                for (const int direction : {-1, 1}) {
                    for (double Arch::* part : {&Arch::bend, &Arch::slope, &Arch::wave}) {
                        Arch arch = winner;
                        arch.*part += direction * (part == &Arch::bend    ? bendStep
                                                   : part == &Arch::slope ? slopeStep
                                                                          : waveStep);
                        consider(arch);
                    }
                }
            }
        }
        best = winner;
    }

    void consider(const Arch& arch) {
        const double value = sharpness(arch);
        if (value > bestSharpness || !decided) {
            bestSharpness = value;
            winner = arch;
            decided = true;
        }
    }

    double sharpness(const Arch& arch) {
        std::ranges::fill(rows, 0);
        const float slope = float(arch.slope);
        const float bend = float(arch.bend);
        const float wave = float(arch.wave);
        const int last = int(rows.size()) - 1;
        for (const Sample& sample : samples) {
            const float shift = sample.t * (slope + sample.t * (bend + sample.t * wave));
            ++rows[std::size_t(std::clamp(int(sample.y - shift + 0.5F), 0, last))];
        }
        double sum = 0;
        for (const int row : rows) {
            sum += double(row) * row;
        }
        return sum;
    }

    std::vector<Sample> samples;
    std::vector<int> rows;
    Arch best;
    Arch winner;
    double bestSharpness = 0;
    bool decided = false;
};

// Ink by rows of the straightened line, the first of them `height` rows above the plane.
std::vector<double> rowInk(const Plane& kept, const Arch& arch) {
    std::vector<double> rows(std::size_t(3 * kept.height));
    for (int x = 0; x < kept.width; ++x) {
        const double shift = arch.at(x);
        for (int y = 0; y < kept.height; ++y) {
            if (kept.at(x, y)) {
                const auto row = std::ptrdiff_t(std::lround(y - shift)) + kept.height;
                rows[std::size_t(std::clamp<std::ptrdiff_t>(row, 0, std::ptrdiff_t(rows.size()) - 1))] += 1;
            }
        }
    }
    return rows;
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

double sample(const Plane& plane, double x, double y) {
    const int left = int(std::floor(x));
    const int top = int(std::floor(y));
    const double fractionX = x - left;
    const double fractionY = y - top;
    const auto at = [&](int column, int row) -> double {
        return column >= 0 && row >= 0 && column < plane.width && row < plane.height ? plane.at(column, row) : 0;
    };
    return (at(left, top) * (1 - fractionX) + at(left + 1, top) * fractionX) * (1 - fractionY) +
           (at(left, top + 1) * (1 - fractionX) + at(left + 1, top + 1) * fractionX) * fractionY;
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

    Plane lit(plane.width, plane.height);
    for (std::size_t i = 0; i < lit.pixels.size(); ++i) {
        lit.pixels[i] = plane.pixels[i] >= cleaning.inkLevel * brightness;
    }
    std::vector<int> numbers;
    const std::vector<Blob> blobs = blobsOf(lit, mask, numbers);
    std::vector<std::uint8_t> isLetterBlob(blobs.size());
    QRect area;
    for (std::size_t number = 1; number < blobs.size(); ++number) {
        const Blob& blob = blobs[number];
        isLetterBlob[number] = isLetter(blob, plane, box, unit);
        if (isLetterBlob[number]) {
            area |= QRect(QPoint(blob.left, blob.top), QPoint(blob.right, blob.bottom));
        }
    }
    if (area.isEmpty()) {
        return std::nullopt;
    }

    // Letters keep their soft edges: a ring of one pixel around them counts with what brightness it has.
    Plane kept(plane.width, plane.height);
    for (std::size_t i = 0; i < kept.pixels.size(); ++i) {
        kept.pixels[i] = isLetterBlob[std::size_t(numbers[i])];
    }
    const Plane ring = lightestAround(kept, 1);
    CleanLine line;
    line.ink = Plane(plane.width, plane.height);
    for (std::size_t i = 0; i < kept.pixels.size(); ++i) {
        if (ring.pixels[i] && (kept.pixels[i] || !lit.pixels[i])) {
            const double level = (double(plane.pixels[i]) / brightness - paleInk) / (fullInk - paleInk);
            line.ink.pixels[i] = std::uint8_t(std::lround(255 * std::clamp(level, 0.0, 1.0)));
        }
    }

    line.area = area;
    line.arch.middle = (area.left() + area.right()) / 2.0;
    line.arch.half = std::max(1.0, area.width() / 2.0);
    if (cleaning.straighten) {
        line.arch = ArchSearch(kept, area).find(unit);
    }
    const std::vector<double> rows = rowInk(kept, line.arch);
    const auto inked = [](double ink) { return ink > 0; };
    const auto top = std::ranges::find_if(rows, inked) - rows.begin();
    const auto bottom = std::find_if(rows.rbegin(), rows.rend(), inked).base() - rows.begin();
    line.letters = QRectF(area.left(), double(top - plane.height), area.width(), double(bottom - top));
    line.rows = countRows(rows, unit);
    line.runsPerColumn = runsPerColumn(kept);
    return line;
}

Plane picture(const CleanLine& line, const PictureShape& shape) {
    const double margin = shape.margin * line.letters.height();
    const double scale = shape.height / (line.letters.height() + 2 * margin); // of the line's pixels
    const int width = std::max(narrowestPicture, int(std::lround((line.letters.width() + 2 * margin) * scale)));
    Plane result(width, shape.height);
    for (int column = 0; column < width; ++column) {
        for (int row = 0; row < shape.height; ++row) {
            double ink = 0;
            for (const double partX : {0.25, 0.75}) {
                const double x = line.letters.left() - margin + (column + partX) / scale - 0.5;
                const double shift = line.arch.at(x);
                for (const double partY : {0.25, 0.75}) {
                    const double y = line.letters.top() - margin + (row + partY) / scale - 0.5 + shift;
                    ink += sample(line.ink, x, y) / 4;
                }
            }
            result.row(row)[column] = std::uint8_t(255 - std::lround(ink));
        }
    }
    return result;
}

} // namespace pelloran
