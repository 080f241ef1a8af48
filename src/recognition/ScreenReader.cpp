#include "recognition/ScreenReader.h"

#include "base/Log.h"
#include "recognition/CardRecognizer.h"

#include <utility>

namespace pelloran {

ScreenReader::ScreenReader(MakeWindowServer windowServerMaker, MakeTextReader textReaderMaker)
    : makeWindowServer(std::move(windowServerMaker))
    , makeTextReader(std::move(textReaderMaker)) {}

std::expected<ReadText, WindowCaptureError> ScreenReader::look(const QString& ownerHint,
                                                               const std::optional<ReadingHints>& hints) {
    if (!windows) {
        windows = makeWindowServer();
    }
    const auto window = WindowCapture::findHearthstone(*windows, ownerHint);
    if (!window) {
        return std::unexpected(WindowCaptureError::noWindow);
    }
    const auto image = WindowCapture::capture(*windows, window->windowId);
    if (!image) {
        return std::unexpected(image.error());
    }
    TextReader* const available = hints ? textReader() : nullptr;
    if (!available) {
        return ReadText();
    }
    return CardRecognizer::ocrTokens(*image, *available, *hints);
}

TextReader* ScreenReader::textReader() {
    if (!reader) {
        auto made = makeTextReader();
        if (made) {
            reader = std::move(*made);
        } else if (!toldOfMissingReader) {
            log(made.error().reason);
            toldOfMissingReader = true;
        }
    }
    return reader.get();
}

} // namespace pelloran
