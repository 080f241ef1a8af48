#include "reading/Arch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace pelloran {

namespace {

// Lengths are in pixels of a window 1080 pixels high.
constexpr double steepest = 0.22;        // slope of a wave on a ribbon
constexpr double roundest = 0.001;       // bend per square of half the width: ribbons are all about 280 wide
constexpr double waviest = 0.000014;     // wave per cube of half the width
constexpr std::size_t mostSamples = 900; // pixels that vote on the arch
constexpr double uprightProof = 1;       // of the sharpness of columns as they are: letters are turned

double sharpness(const std::vector<double>& bins) {
    return std::inner_product(bins.begin(), bins.end(), bins.begin(), 0.0);
}

// Straight lines have full rows and empty ones: the sum of the squares of the rows' ink is greatest. Looks for it on a
// coarse grid first, then climbs.
class ArchSearch {
public:
    ArchSearch(const Plane& letters, const QRect& area, double pixelUnit)
        : unit(pixelUnit)
        , rows(3 * std::size_t(letters.height)) {
        best.centre = (area.left() + area.right()) / 2.0;
        best.half = std::max(1.0, area.width() / 2.0);
        const double half = best.half / unit;
        limits = {steepest * half * unit, roundest * half * half * unit, waviest * half * half * half * unit};

        // Whole columns are left out, never rows: a sieve of rows would see rows where there are none.
        const auto total = std::size_t(std::ranges::count(letters.pixels, 1));
        const int every = int(total / mostSamples) + 1;
        for (int x = 0; x < letters.width; x += every) {
            for (int y = 0; y < letters.height; ++y) {
                if (letters.at(x, y)) {
                    samples.push_back({float((x - best.centre) / best.half), float(y + letters.height)});
                }
            }
        }
        bestSharpness = sharpnessOf(best);
    }

    Arch find() {
        const Arch flat = best;
        for (int bend = -3; bend <= 3; ++bend) {
            for (int slope = -3; slope <= 3; ++slope) {
                for (int wave = -1; wave <= 1; ++wave) {
                    Arch arch = flat;
                    arch.slope = slope / 3.0 * limits[0];
                    arch.bend = bend / 3.0 * limits[1];
                    arch.wave = wave / 2.0 * limits[2];
                    consider(arch);
                }
            }
        }
        climb({limits[0] / 6, limits[1] / 6, limits[2] / 4});
        return best;
    }

private:
    static constexpr std::array parts{&Arch::slope, &Arch::bend, &Arch::wave};

    struct Sample {
        float t;
        float y;
    };

    void climb(std::array<double, 3> steps) {
        while (std::ranges::max(steps) > 0.15 * unit) {
            for (int round = 0; round < 3; ++round) {
                for (std::size_t part = 0; part < parts.size(); ++part) {
                    for (const double step : {-steps[part], steps[part]}) {
                        Arch arch = best;
                        arch.*parts[part] += step;
                        consider(arch);
                    }
                }
            }
            for (double& step : steps) {
                step /= 2;
            }
        }
    }

    void consider(const Arch& arch) {
        for (std::size_t part = 0; part < parts.size(); ++part) {
            if (std::abs(arch.*parts[part]) > limits[part]) {
                return;
            }
        }
        if (const double value = sharpnessOf(arch); value > bestSharpness) {
            bestSharpness = value;
            best = arch;
        }
    }

    double sharpnessOf(const Arch& arch) {
        std::ranges::fill(rows, 0);
        const auto slope = float(arch.slope);
        const auto bend = float(arch.bend);
        const auto wave = float(arch.wave);
        const int last = int(rows.size()) - 1;
        for (const Sample& sample : samples) {
            const float shift = sample.t * (slope + sample.t * (bend + sample.t * wave));
            const auto row = int(sample.y - shift); // rounding either way is the same for all letters
            ++rows[std::size_t(std::clamp(row, 0, last))];
        }
        double sum = 0;
        for (const int row : rows) {
            sum += double(row) * row;
        }
        return sum;
    }

    const double unit;
    std::vector<Sample> samples;
    std::vector<int> rows;
    std::array<double, 3> limits{}; // of the parts, in pixels
    Arch best;
    double bestSharpness = 0;
};

} // namespace

InkProfile inkProfile(const Plane& letters, const Arch& arch) {
    InkProfile profile;
    profile.rowOrigin = 2 * letters.height;
    profile.columnOrigin = letters.height;
    profile.rows.resize(4 * std::size_t(letters.height));
    profile.columns.resize(std::size_t(letters.width) + 2 * std::size_t(letters.height));
    const auto add = [](std::vector<double>& bins, double at) {
        const auto last = std::ptrdiff_t(bins.size()) - 1;
        bins[std::size_t(std::clamp<std::ptrdiff_t>(std::lround(at), 0, last))] += 1;
    };
    for (int x = 0; x < letters.width; ++x) {
        for (int y = 0; y < letters.height; ++y) {
            if (letters.at(x, y)) {
                const QPointF place = arch.straightened(x, y);
                add(profile.rows, place.y() + profile.rowOrigin);
                add(profile.columns, place.x() + profile.columnOrigin);
            }
        }
    }
    return profile;
}

std::pair<int, int> inkedRange(const std::vector<double>& bins) {
    const auto inked = [](double ink) { return ink > 0; };
    return {int(std::ranges::find_if(bins, inked) - bins.begin()),
            int(std::find_if(bins.rbegin(), bins.rend(), inked).base() - bins.begin())};
}

Arch archOf(const Plane& letters, const QRect& area, double unit, bool otherTurn) {
    Arch arch = ArchSearch(letters, area, unit).find();
    InkProfile profile = inkProfile(letters, arch);
    const auto [top, bottom] = inkedRange(profile.rows);
    arch.level = (top + bottom - 1) / 2.0 - profile.rowOrigin;
    profile = inkProfile(letters, arch);

    // Upright strokes fill single columns only if turned letters are turned back, and moved ones are not.
    Arch turned = arch;
    turned.turn = 1;
    const bool seemTurned = sharpness(inkProfile(letters, turned).columns) > uprightProof * sharpness(profile.columns);
    return seemTurned != otherTurn ? turned : arch;
}

} // namespace pelloran
