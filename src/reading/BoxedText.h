#pragma once

#include "reading/chinese/ChineseLineReader.h"

#include <QImage>
#include <QRect>

namespace pelloran {

// Reads a line of Chinese characters of which only its box is known: of whatever colour, straight or bent as names on
// cards are. For judging the reader on any screen of the game; it tries what the game never needs, and takes as long.
std::optional<QString> readBoxedText(const QImage& window, const QRect& box, ChineseLineReader& reader,
                                     const Lexicon& names);

} // namespace pelloran
