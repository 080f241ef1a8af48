#pragma once

#include "platform/TextReader.h"
#include "platform/WindowServer.h"
#include "recognition/WindowCapture.h"

#include <QString>

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace pelloran {

// Looks at the game's window for those who must not wait for it: finds the window, captures it, reads its text.
// Everything slow and nothing of the draft's state. All calls come from one thread, the recognition thread, where also
// the window server's connection and the reader are made, at the first need.
class ScreenReader {
public:
    using MakeWindowServer = std::function<std::unique_ptr<WindowServer>()>;
    using MakeTextReader = std::function<std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable>()>;

    ScreenReader(MakeWindowServer makeWindowServer, MakeTextReader makeTextReader);

    // Lines on the game's window, as WindowCapture::findHearthstone chooses it; with no `hints` the window is only
    // captured and no text is read. Why there is no picture is logged when it is another reason than at the last look.
    // A text reader that cannot be made is logged once, gives no lines, and is tried for again next time: the user may
    // be installing what it lacks.
    std::expected<ReadText, WindowCaptureError> look(const QString& ownerHint,
                                                     const std::optional<ReadingHints>& hints);

private:
    TextReader* textReader();

    MakeWindowServer makeWindowServer;
    MakeTextReader makeTextReader;
    std::unique_ptr<WindowServer> windows;
    std::unique_ptr<TextReader> reader;
    QString toldOfCapture; // why there was no picture at the last look; empty: there was one
    bool toldOfMissingReader = false;
};

} // namespace pelloran
