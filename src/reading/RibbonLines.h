#pragma once

#include "NamePlaces.h"
#include "Plane.h"

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

// The name of the card with its middle at `centre`, as each kind of ribbon would have it, the likeliest first; empty
// when there is none. `plane` is lightness at which white letters stand out.
std::vector<RibbonLine> findRibbonLines(const Plane& plane, const GameFrame& frame, double centre,
                                        const BaseRange& range = {});

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
