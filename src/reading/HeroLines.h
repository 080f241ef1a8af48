#pragma once

#include "reading/NamePlaces.h"
#include "reading/Plane.h"

#include <QImage>
#include <QRectF>

#include <cstddef>
#include <vector>

namespace pelloran {

// A straight line of text below a hero: dark on parchment or light on felt, without outlines.
struct HeroLine {
    Plane ink;      // of all that stands below the hero, 0 (none) to 255, 1080 pixels a height of the game's picture
    QRectF letters; // box of this line's letters in `ink`
    QRectF area;    // the same in pixels of the window
};

inline constexpr std::size_t mostHeroLines = 3; // below one hero

inline constexpr double usualStroke = 0.5;
inline constexpr double thinStroke = 0.35; // of Chinese characters in small windows

// The lines below the hero with its middle at `centre` (see NamePlaces), the lowest first: the class stands below the
// hero's name. At most `mostHeroLines`. `stroke` is the least share of full ink that is taken for a stroke: bold
// letters run together at low shares, thin ones are lost at high ones.
std::vector<HeroLine> findHeroLines(const QImage& window, const GameFrame& frame, double centre,
                                    double stroke = usualStroke);

// How the picture of such a line is made for the network.
struct HeroRecipe {
    double margin = 0.16; // around the letters, as a part of their height
    double paper = 0.15;  // no ink up to here, 0 to 1
    double ink = 0.75;    // all ink from here on
    int height = 36;      // of the picture, in pixels
};

// The letters in black on white.
Plane pictureOf(const HeroLine& line, const HeroRecipe& recipe);

} // namespace pelloran
