#pragma once

#include "reading/PlacedSlots.h"

namespace pelloran {

// Reads the classes below the heroes where this game's screens have them. All classes are known, so fewer than two of
// them, or two without a line of text in the third place, are no offer.
PlacedRow readHeroesAtPlaces(const QImage& window, Script script, ReadingTools& tools, const Lexicon& names);

// The same where `earlier`, of a window of this size, was read; what is settled in it is not read again.
PlacedRow readHeroesAgain(const QImage& window, Script script, ReadingTools& tools, const Lexicon& names,
                          const PlacedRow& earlier);

} // namespace pelloran
