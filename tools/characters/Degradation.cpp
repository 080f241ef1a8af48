#include "tools/characters/Degradation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <vector>

namespace pelloran::characters {

namespace {

constexpr int border = 8; // px around the glyph, for what moves outwards
constexpr int knots = 5;  // of the bending, along each side
constexpr int least = 12; // px of an em
constexpr int most = 27;  // px of an em
constexpr int enlargement = 4;

struct Raster {
    Raster(int columns, int rows)
        : width(columns)
        , height(rows)
        , values(std::size_t(columns) * std::size_t(rows)) {}

    float* row(int y) { return values.data() + std::size_t(y) * std::size_t(width); }

    const float* row(int y) const { return values.data() + std::size_t(y) * std::size_t(width); }

    float at(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height ? row(y)[x] : 0; }

    int width;
    int height;
    std::vector<float> values;
};

Raster bordered(const Plane& glyph) {
    Raster result(glyph.width + 2 * border, glyph.height + 2 * border);
    for (int y = 0; y < glyph.height; ++y) {
        std::ranges::transform(std::span(glyph.row(y), std::size_t(glyph.width)), result.row(y + border) + border,
                               [](std::uint8_t value) { return float(value) / 255; });
    }
    return result;
}

// Strokes `pixels` thicker (or thinner if negative), as far as whole pixels allow: the extreme over a disc.
Raster withThickness(const Raster& raster, int pixels) {
    const int size = std::abs(pixels) + 1;
    const auto isInDisc = [&](int x, int y) {
        const double centre = (size - 1) / 2.0;
        return std::hypot(x - centre, y - centre) <= centre + 0.25;
    };
    Raster result = raster;
    for (int dy = 0; dy < size; ++dy) {
        for (int dx = 0; dx < size; ++dx) {
            if (!isInDisc(dx, dy)) {
                continue;
            }
            const int shiftX = dx - size / 2;
            const int shiftY = dy - size / 2;
            const int left = std::max(0, -shiftX);
            const int right = std::min(raster.width, raster.width - shiftX);
            for (int y = std::max(0, -shiftY); y < std::min(raster.height, raster.height - shiftY); ++y) {
                const float* source = raster.row(y + shiftY) + shiftX;
                float* target = result.row(y);
                for (int x = left; x < right; ++x) {
                    target[x] = pixels > 0 ? std::max(target[x], source[x]) : std::min(target[x], source[x]);
                }
            }
        }
    }
    return result;
}

std::array<float, 4> cubicWeights(float fraction) {
    constexpr float slope = -0.75F;
    const auto near = [&](float x) { return ((slope + 2) * x - (slope + 3)) * x * x + 1; };
    const auto far = [&](float x) { return ((slope * x - 5 * slope) * x + 8 * slope) * x - 4 * slope; };
    return {far(1 + fraction), near(fraction), near(1 - fraction), far(2 - fraction)};
}

// Smoothly to a larger size, each way for itself.
Raster enlarged(const Raster& raster, int width, int height) {
    Raster wide(width, raster.height);
    for (int x = 0; x < width; ++x) {
        const float place = (float(x) + 0.5F) * float(raster.width) / float(width) - 0.5F;
        const int left = int(std::floor(place));
        const auto weights = cubicWeights(place - float(left));
        for (int y = 0; y < raster.height; ++y) {
            float sum = 0;
            for (int k = 0; k < 4; ++k) {
                sum += weights[std::size_t(k)] * raster.row(y)[std::clamp(left - 1 + k, 0, raster.width - 1)];
            }
            wide.row(y)[x] = sum;
        }
    }
    Raster result(width, height);
    for (int y = 0; y < height; ++y) {
        const float place = (float(y) + 0.5F) * float(raster.height) / float(height) - 0.5F;
        const int top = int(std::floor(place));
        const auto weights = cubicWeights(place - float(top));
        float* target = result.row(y);
        for (int k = 0; k < 4; ++k) {
            const float* source = wide.row(std::clamp(top - 1 + k, 0, raster.height - 1));
            for (int x = 0; x < width; ++x) {
                target[x] += weights[std::size_t(k)] * source[x];
            }
        }
    }
    return result;
}

// To a smaller size; each pixel the mean of what it covers.
Raster reduced(const Raster& raster, int width, int height) {
    const auto spread = [](int from, int to, const auto& add) {
        const double step = double(from) / to;
        for (int i = 0; i < to; ++i) {
            const double begin = i * step;
            const double end = std::min(begin + step, double(from));
            for (int source = int(begin); source < from && source < end; ++source) {
                const double covered = std::min(end, source + 1.0) - std::max(begin, double(source));
                add(i, source, float(covered / step));
            }
        }
    };
    Raster low(raster.width, height);
    spread(raster.height, height, [&](int y, int source, float weight) {
        for (int x = 0; x < raster.width; ++x) {
            low.row(y)[x] += weight * raster.row(source)[x];
        }
    });
    Raster result(width, height);
    spread(raster.width, width, [&](int x, int source, float weight) {
        for (int y = 0; y < height; ++y) {
            result.row(y)[x] += weight * low.row(y)[source];
        }
    });
    return result;
}

Raster noise(Random& random, double deviation) {
    Raster result(knots, knots);
    for (float& value : result.values) {
        value = float(random.normal(deviation));
    }
    return result;
}

Raster bent(const Raster& raster, double strength, Random& random) {
    const Raster across = enlarged(noise(random, 3 * strength), raster.width, raster.height);
    const Raster down = enlarged(noise(random, 3 * strength), raster.width, raster.height);
    const auto slant = float(random.normal(0.04 * strength));
    const auto rise = float(0.02 + random.normal(0.04 * strength)); // lines of names rise a little more often
    const float middleX = float(raster.width) / 2;
    const float middleY = float(raster.height) / 2;
    Raster result(raster.width, raster.height);
    for (int y = 0; y < raster.height; ++y) {
        for (int x = 0; x < raster.width; ++x) {
            const float placeX = float(x) + across.row(y)[x] + slant * (float(y) - middleY);
            const float placeY = float(y) + down.row(y)[x] + rise * (float(x) - middleX);
            const int left = int(std::floor(placeX));
            const int top = int(std::floor(placeY));
            const float fractionX = placeX - float(left);
            const float fractionY = placeY - float(top);
            const float upper = raster.at(left, top) + fractionX * (raster.at(left + 1, top) - raster.at(left, top));
            const float lower =
                raster.at(left, top + 1) + fractionX * (raster.at(left + 1, top + 1) - raster.at(left, top + 1));
            result.row(y)[x] = upper + fractionY * (lower - upper);
        }
    }
    return result;
}

Raster transposed(const Raster& raster) {
    Raster result(raster.height, raster.width);
    for (int y = 0; y < raster.height; ++y) {
        for (int x = 0; x < raster.width; ++x) {
            result.row(x)[y] = raster.row(y)[x];
        }
    }
    return result;
}

Raster blurredDown(const Raster& raster, double deviation) {
    const int reach = std::max(1, int(std::ceil(3 * deviation)));
    std::vector<float> kernel;
    float sum = 0;
    for (int i = -reach; i <= reach; ++i) {
        kernel.push_back(float(std::exp(-i * i / (2 * deviation * deviation))));
        sum += kernel.back();
    }
    Raster result(raster.width, raster.height);
    for (int y = 0; y < raster.height; ++y) {
        float* target = result.row(y);
        for (int i = -reach; i <= reach; ++i) {
            if (y + i < 0 || y + i >= raster.height) {
                continue; // nothing there
            }
            const float weight = kernel[std::size_t(i + reach)] / sum;
            const float* source = raster.row(y + i);
            for (int x = 0; x < raster.width; ++x) {
                target[x] += weight * source[x];
            }
        }
    }
    return result;
}

Raster blurred(const Raster& raster, double deviation) {
    return transposed(blurredDown(transposed(blurredDown(raster, deviation)), deviation));
}

// The value that this share of the pixels stay below.
float percentile(const Raster& raster, double share) {
    std::vector<float> values = raster.values;
    const auto place = values.begin() + std::ptrdiff_t(share * double(values.size() - 1));
    std::ranges::nth_element(values, place);
    return *place;
}

} // namespace

Plane degraded(const Plane& glyph, const Degradation& degradation, Random& random) {
    Raster raster = bordered(glyph);
    double mean = 0;
    for (const float value : raster.values) {
        mean += double(value) / double(raster.values.size());
    }
    // Thin strokes would vanish if they were made thinner.
    const int thicker = random.whole(-2, 3);
    if (thicker > 0 || (thicker < 0 && mean > 0.18)) {
        raster = withThickness(raster, thicker);
    }
    raster = bent(raster, degradation.strength, random);

    const int drawn = random.whole(least, most);
    const double scale = double(degradation.emHeight.value_or(drawn)) / emSize;
    const double flattening = random.uniform(0.95, 1.5);
    const int height = std::max(4, int(std::lround(raster.height * scale)));
    const int width = std::max(4, int(std::lround(raster.width * scale * flattening)));
    raster = blurred(raster, 0.8 * random.uniform(0.3, 0.8) / scale);
    raster = reduced(raster, width, height);
    raster = enlarged(raster, enlargement * width, enlargement * height);

    const float full = std::max(0.2F, percentile(raster, 0.97));
    const auto floor = float(random.uniform(0.05, 0.3));
    const auto range = float(random.uniform(0.5, 0.75));
    Plane result(raster.width, raster.height);
    std::ranges::transform(raster.values, result.pixels.begin(), [&](float value) {
        return std::uint8_t(std::lround(255 * std::clamp((value / full - floor) / range, 0.0F, 1.0F)));
    });
    return result;
}

} // namespace pelloran::characters
