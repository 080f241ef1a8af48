#pragma once

#include "platform/TextReader.h"
#include "reading/ReadingTools.h"

namespace pelloran {

// Reads lines of light letters with dark outlines wherever they stand, in either script; those that make a row of three
// first. `remembered` is the script that the client was last seen to use, and becomes the one that it is seen to use
// now.
ReadText readAnywhere(ReadingTools& tools, std::optional<Script>& remembered, const QImage& window,
                      const ReadingHints& hints);

} // namespace pelloran
