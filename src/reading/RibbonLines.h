#pragma once

#include "reading/NamePlaces.h"
#include "reading/OutlinedInk.h"
#include "reading/Plane.h"

#include <optional>
#include <vector>

namespace pelloran {

// A name found on the ribbon of a card. Lengths in heights of the game's picture.
struct RibbonLine {
    double score = 0; // ink where letters are, less ink where they are not; pixels at 900 a height
    const NameCurve* curve = nullptr;
    double base = 0;   // of the baseline at `centre`, from the top
    double centre = 0; // of the name, from the middle of the picture
    double left = 0;   // ends of the letters, from `centre`
    double right = 0;
};

// Where to look for baselines, from the top.
struct BaseRange {
    double from = 0.358;
    double to = 0.402;
    bool usual = true; // the usual places are likelier than others within the range
};

// What letters on a ribbon look like.
struct RibbonLetters {
    OutlineLimits outline;
    // Pixels at 900 a height. Smaller things are grain, larger are ribbon, art and frames.
    int lowest;
    int leastArea;
    // In heights of the game's picture, from the baseline downwards: where each name has ink, and where it has next to
    // none: the upper side of the outline, and what is below.
    double bodyTop;
    double aboveTop;
    double aboveBottom;
    double belowTop;
    double belowBottom;
    double tallest;    // over the baseline
    double widestGap;  // between words; beyond it stands something else
    double leastScore; // of a line (see RibbonLine)
};

// Small letters stand from `bodyTop` to the baseline; capitals and accents of neighbours reach above. The score is that
// of three small letters.
inline constexpr RibbonLetters latinOnRibbons{ofWhiteLetters, 5,     10,     -0.0095, -0.020, -0.0145,
                                              0.0012,         0.006, 0.0135, 0.023,   60};
// Of cards in shade, as those are that lie beside the one being taken.
inline constexpr RibbonLetters latinInShade = [] {
    RibbonLetters letters = latinOnRibbons;
    letters.outline = ofShadedLetters;
    return letters;
}();
// Characters have parts of any size, a single stroke among them. Two of few strokes are the least there is.
inline constexpr RibbonLetters chineseOnRibbons{ofGreyLetters, 2,     4,      -0.0125, -0.0225, -0.0170,
                                                0.0020,        0.007, 0.0150, 0.030,   30};

// The name of the card with its middle at `centre`, as each kind of ribbon would have it, the likeliest first; empty
// when there is none. `plane` is lightness at which its letters stand out.
std::vector<RibbonLine> findRibbonLines(const Plane& plane, const GameFrame& frame, double centre,
                                        const BaseRange& range = {}, const RibbonLetters& letters = latinOnRibbons);

// The straightened ribbon around a line, in brightness.
struct RibbonStrip {
    Plane plane;
    int left = 0; // columns in which the line's letters were found
    int right = 0;
};

// Which part of it, in heights of the game's picture.
struct RibbonCut {
    double above; // the baseline
    double below;
    double beside; // the letters, at each end
    int rows;      // pixels
};

RibbonStrip stripOf(const RibbonLine& line, const Plane& plane, const GameFrame& frame, const RibbonCut& cut);

// How the picture of a line is made for the network. Readings that fail are worth another try with other values: the
// network is easily thrown off, and reads the same letters a little larger or thinner right.
struct RibbonRecipe {
    double above = 0.0155; // the baseline, in heights of the game's picture
    double below = 0.006;
    double paper = 0.2; // of the way from the ribbon's brightness to the letters': no ink up to here
    double ink = 0.75;  // all ink from here on
    int height = 36;    // of the picture, in pixels
};

// The straightened letters in black on white; absent where nothing stands out.
std::optional<Plane> pictureOf(const RibbonLine& line, const Plane& plane, const GameFrame& frame,
                               const RibbonRecipe& recipe);

} // namespace pelloran
