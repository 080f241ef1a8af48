#pragma once

#include "platform/macos/RecognisedText.h"
#include "platform/TextReader.h"

namespace pelloran::macos {

// Reads whole windows with the system's own recogniser, Chinese and English at once. Knows nothing of the names and of
// where they stand, so every line of the window is a token, and lettering it finds too small gains from a second look
// at an enlarged picture.
class VisionTextReader final : public TextReader {
public:
    ReadText read(const QImage& image, const ReadingHints& hints) override;
    bool scalesLinesItself() const override;
    void forget() override;

private:
    RepeatedTrouble trouble;
};

} // namespace pelloran::macos
