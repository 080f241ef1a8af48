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
    const auto game = WindowCapture::captureGame(*windows, ownerHint);
    const QString problem = game ? QString() : explanation(game.error(), windows->permission());
    if (std::exchange(toldOfCapture, problem) != problem && !problem.isEmpty()) {
        log(problem);
    }
    if (!game) {
        return std::unexpected(game.error().error);
    }
    TextReader* const available = hints ? textReader() : nullptr;
    if (!available) {
        return ReadText();
    }
    return CardRecognizer::ocrTokens(game->image, *available, *hints);
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
