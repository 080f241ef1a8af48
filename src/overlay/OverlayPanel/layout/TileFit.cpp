#include "overlay/OverlayPanel/layout/TileFit.h"

#include <algorithm>
#include <numeric>

namespace pelloran {

namespace {

constexpr double smallestSpacing = 0;
constexpr double smallestPadding = 5;

} // namespace

TileFit fitTile(const std::vector<int>& heights, double spacing, double padding, double available) {
    const double lines = std::accumulate(heights.begin(), heights.end(), 0);
    const double gaps = heights.empty() ? 0 : static_cast<double>(heights.size() - 1);
    TileFit fit{.spacing = spacing, .padding = padding};
    double excess = lines + gaps * spacing + 2 * padding - available;
    if (excess > 0 && gaps > 0) {
        fit.spacing = std::max(spacing - excess / gaps, std::min(smallestSpacing, spacing));
        excess -= gaps * (spacing - fit.spacing);
    }
    if (excess > 0) {
        fit.padding = std::max(padding - excess / 2, std::min(smallestPadding, padding));
        excess -= 2 * (padding - fit.padding);
    }
    // Sums of halves are exact, quotients are not.
    fit.fits = excess <= 1e-6;
    return fit;
}

} // namespace pelloran
