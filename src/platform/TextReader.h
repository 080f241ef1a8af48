#pragma once

#include "names/Lexicon.h"
#include "platform/ApplicationFiles.h"

#include <QImage>
#include <QRectF>
#include <QString>

#include <array>
#include <expected>
#include <memory>
#include <optional>
#include <vector>

namespace pelloran {

// One recognised line of text.
struct OCRToken {
    QString text;         // without white space at both ends; never empty
    float confidence = 0; // the reader's own, 0 to 1
    double midX = 0;      // centre of the line's box from the left, as a fraction of the image's width
    double midY = 0;      // centre of the line's box from the top, as a fraction of the image's height
    double width = 0;     // of the box, as a fraction of the image's width
    double height = 0;    // of the box, as a fraction of the image's height
    // What was read before a known name was taken for it, where that is another text; else empty. For whoever asks why.
    QString letters = {}; // NOLINT(readability-redundant-member-init): may be left out

    bool operator==(const OCRToken&) const = default;
};

// Kinds of letters, each read in a way of its own.
enum class Script { latin, chinese };

// What the caller knows about the text it is looking for. A reader may use any of it to be faster and surer, and may
// ignore all of it.
struct ReadingHints {
    // Whose names: it decides where they stand, what colours they have, and which row is theirs.
    enum class Offers { cards, heroes };

    // Where lines matter, in fractions of the image, y from the top; others will be thrown away.
    QRectF band{0, 0, 1, 1};
    Offers offers = Offers::cards;
    // The client's script; absent: the reader finds out.
    std::optional<Script> script;
    // May be null. With them, a line that none of them settles is no token; Chinese lines are read only with them.
    std::shared_ptr<const Lexicon> names;
};

// What a reader made of an image.
struct ReadText {
    std::vector<OCRToken> tokens;
    // Lines that were read and are no offer: no known name settles them, or nothing stands beside them. For whoever
    // asks why; nothing is to be made of them.
    std::vector<OCRToken> unsettled;
    // The middles of the three places offered, left to right, as fractions of the image's width, where the reader knows
    // them: with a name missing, positions alone do not tell which.
    std::optional<std::array<double, 3>> columns;

    bool operator==(const ReadText&) const = default;
};

// Reads the lines of text in a picture of a game's window. Made and used on one thread; may use workers of its own.
class TextReader {
public:
    struct Unavailable {
        QString reason; // for the user: what is missing and what to install
    };

    // What is missing for one script alone is logged, and the other is read. `files` need not outlive the call.
    static std::expected<std::unique_ptr<TextReader>, Unavailable> create(const ApplicationFiles& files);

    virtual ~TextReader() = default;

    // Any size, any format; a null image has no lines. Blocks until done. A failure inside gives no lines.
    virtual ReadText read(const QImage& image, const ReadingHints& hints) = 0;

    // True when the reader brings every line to the size it reads best, so that a second look at an enlarged copy of
    // the image would tell nothing new.
    virtual bool scalesLinesItself() const = 0;

    // Drops what earlier images taught it (such as the script the client uses).
    virtual void forget() = 0;
};

} // namespace pelloran
