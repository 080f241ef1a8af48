#pragma once

#include "reading/Plane.h"

namespace pelloran {

// Where white letters with dark outlines are looked for, the game's picture is this many pixels high: capitals are 11
// tall then, and the outline begins within three of a stroke's middle.
inline constexpr double searchScale = 900;

// Lightness, 0 to 255, by which letters with outlines are told from what is behind them.
struct OutlineLimits {
    int leastLightness; // of letters
    int mostOfOutline;
    int leastContrast; // between them
};

// White letters are 250, faded or grey ones 190; the ribbon behind the outline is 105 to 155.
inline constexpr OutlineLimits ofWhiteLetters{150, 105, 90};
// The same in shade: 0.6 of that.
inline constexpr OutlineLimits ofShadedLetters{90, 63, 54};
// In lightness for grey letters the ribbon is below 40 and the outline below 20; thin strokes in small windows are 90.
inline constexpr OutlineLimits ofGreyLetters{75, 60, 50};

// What of a plane of that scale is letters with something much darker beside it: 1, elsewhere 0.
Plane outlinedInk(const Plane& plane, const OutlineLimits& limits = ofWhiteLetters);

} // namespace pelloran
