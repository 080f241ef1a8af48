#pragma once

#include "platform/TextReader.h"
#include "ReadingTools.h"

namespace pelloran {

// Reads the names of offers where this game's screens have them, or where three lines of letters stand as theirs do.
// Latin letters only; needs the known names. One known name on its own is no offer: it is a keyword, a button or a row of a
// deck list. A second one has to stand beside it, known too or read the same twice.
ReadText readCardsAtPlaces(ReadingTools& tools, const QImage& window, const Lexicon& names);
ReadText readHeroesAtPlaces(ReadingTools& tools, const QImage& window, const Lexicon& names);

} // namespace pelloran
