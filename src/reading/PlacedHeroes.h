#pragma once

#include "PlacedSlots.h"

namespace pelloran {

// Reads the classes below the heroes where this game's screens have them. All classes are known, so fewer than two of
// them, or two without a line of text in the third place, are no offer.
ReadText readHeroesAtPlaces(const QImage& window, Script script, ReadingTools& tools, const Lexicon& names);

} // namespace pelloran
