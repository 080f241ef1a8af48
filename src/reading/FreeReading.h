#pragma once

#include "platform/TextReader.h"
#include "ReadingTools.h"

namespace pelloran {

// Reads lines of light letters with dark outlines wherever they stand, in either script; those that make a row of three
// first.
ReadText readAnywhere(ReadingTools& tools, const QImage& window, const ReadingHints& hints);

} // namespace pelloran
