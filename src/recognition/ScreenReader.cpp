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
    const auto image = capture(ownerHint);
    const QString problem = image ? QString() : explanation(image.error(), windows->permission());
    if (std::exchange(toldOfCapture, problem) != problem && !problem.isEmpty()) {
        log(problem);
    }
    if (!image) {
        return std::unexpected(image.error().error);
    }
    TextReader* const available = hints ? textReader() : nullptr;
    if (!available) {
        return ReadText();
    }
    return CardRecognizer::ocrTokens(*image, *available, *hints);
}

std::expected<QImage, CaptureFailure> ScreenReader::capture(const QString& ownerHint) {
    const auto window = WindowCapture::findHearthstone(*windows, ownerHint);
    if (!window) {
        CaptureFailure failure{WindowCaptureError::noWindow, std::nullopt};
        // Windows that cannot be listed are not the same as none, and finding one does not tell.
        if (!windows->describeWindows(WindowListing::onScreen)) {
            failure.cause = WindowServerFailed{"listing of windows refused", 0};
        }
        return std::unexpected(std::move(failure));
    }
    return WindowCapture::capture(*windows, window->windowId);
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
