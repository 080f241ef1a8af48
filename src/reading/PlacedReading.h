#pragma once

#include "platform/TextReader.h"
#include "ReadingTools.h"

namespace pelloran {

// Reads the names of offers where this game's screens have them, or where three lines of letters stand as theirs do.
// Latin letters only; needs the known names. Two of the three names have to settle, or nothing is an offer: a word on its
// own is a keyword, a button or a row of a deck list.
ReadText readCardsAtPlaces(ReadingTools& tools, const QImage& window, const Lexicon& names);
ReadText readHeroesAtPlaces(ReadingTools& tools, const QImage& window, const Lexicon& names);

} // namespace pelloran
