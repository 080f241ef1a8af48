#pragma once

#include "PlacedSlots.h"

namespace pelloran {

// Reads the classes below the heroes where this game's screens have them. All classes are known, so fewer than two of
// them are no offer.
ReadText readHeroesAtPlaces(const QImage& window, Script script, ReadingTools& tools, const Lexicon& names);

} // namespace pelloran
