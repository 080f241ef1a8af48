#include "tests/soak/Trend.h"

#include <algorithm>
#include <cmath>

namespace pelloran::soak {

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    if (values.size() % 2 == 1) {
        return *middle;
    }
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

namespace {

// Of points on the same side of `step`, an index.
std::optional<double> slopeBeside(std::span<const Point> points, std::optional<double> period, std::size_t step) {
    std::vector<double> slopes;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const std::size_t end = i < step ? step : points.size();
        for (std::size_t j = i + 1; j < end; ++j) {
            const double apart = points[j].at - points[i].at;
            const bool alike = !period || std::remainder(apart, *period) == 0;
            if (apart != 0 && alike) {
                slopes.push_back((points[j].value - points[i].value) / apart);
            }
        }
    }
    if (slopes.empty()) {
        return std::nullopt;
    }
    return median(std::move(slopes));
}

} // namespace

std::optional<double> slope(std::span<const Point> points, std::optional<double> period) {
    return slopeBeside(points, period, points.size());
}

std::optional<double> slopeApartFromAStep(std::span<const Point> points, std::optional<double> period) {
    std::optional<double> least = slope(points, period);
    for (std::size_t step = 1; step < points.size(); ++step) {
        const auto beside = slopeBeside(points, period, step);
        if (beside && least) {
            least = std::min(*least, *beside);
        }
    }
    return least;
}

} // namespace pelloran::soak
