#include "OutlinedInk.h"

namespace pelloran {

namespace {

constexpr int reach = 3; // pixels
// Lightness, 0 to 255: the letters are 250, faded or grey ones 190; the ribbon behind the outline is 105 to 155.
constexpr int leastLightness = 150;
constexpr int mostOfOutline = 105;
constexpr int leastContrast = 90;

} // namespace

Plane outlinedInk(const Plane& plane) {
    const Plane floor = darkestAround(plane, reach);
    Plane ink(plane.width, plane.height);
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        const int value = plane.pixels[i];
        const int outline = floor.pixels[i];
        ink.pixels[i] = value > leastLightness && outline < mostOfOutline && value - outline > leastContrast;
    }
    return ink;
}

} // namespace pelloran
