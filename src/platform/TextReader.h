#pragma once

#include <QImage>
#include <QRectF>
#include <QSet>
#include <QString>

#include <expected>
#include <memory>
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

    bool operator==(const OCRToken&) const = default;
};

// The names that may stand on the screen. Immutable once made, so that the thread that reads and the thread that owns
// the data can share one.
struct KnownNames {
    QString (*normalize)(const QString& text) = nullptr; // pure; brings a line as read into the form of `normalized`
    QSet<QString> normalized;

    bool contains(const QString& line) const { return normalize && normalized.contains(normalize(line)); }
};

// What the caller knows about the text it is looking for. A reader may use any of it to be faster and surer, and may
// ignore all of it.
struct ReadingHints {
    enum class Lettering {
        white,         // names on cards
        whiteOrGolden, // names of hero classes
    };

    QRectF band{0, 0, 1,
                1}; // where lines matter, in fractions of the image, y from the top; others will be thrown away
    Lettering lettering = Lettering::white;
    std::shared_ptr<const KnownNames> names; // may be null
};

// Reads the lines of text in a picture of a game's window. Made and used on one thread; may use workers of its own.
class TextReader {
public:
    struct Unavailable {
        QString reason; // for the user: what is missing and what to install
    };

    static std::expected<std::unique_ptr<TextReader>, Unavailable> create();

    virtual ~TextReader() = default;

    // Any size, any format; a null image has no lines. Blocks until done. A failure inside gives no lines.
    virtual std::vector<OCRToken> read(const QImage& image, const ReadingHints& hints) = 0;

    // True when the reader brings every line to the size it reads best, so that a second look at an enlarged copy of
    // the image would tell nothing new.
    virtual bool scalesLinesItself() const = 0;

    // Drops what earlier images taught it (such as the script the client uses).
    virtual void forget() = 0;
};

} // namespace pelloran
