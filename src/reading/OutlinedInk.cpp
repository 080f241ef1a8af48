#include "reading/OutlinedInk.h"

namespace pelloran {

namespace {

constexpr int reach = 3; // pixels

} // namespace

Plane outlinedInk(const Plane& plane, const OutlineLimits& limits) {
    const Plane floor = darkestAround(plane, reach);
    Plane ink(plane.width, plane.height);
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        const int value = plane.pixels[i];
        const int outline = floor.pixels[i];
        ink.pixels[i] =
            value > limits.leastLightness && outline < limits.mostOfOutline && value - outline > limits.leastContrast;
    }
    return ink;
}

} // namespace pelloran
