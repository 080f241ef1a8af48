#include "base/Log.h"
#include "reading/LineByLineReader.h"

#include <utility>

namespace pelloran {

namespace {

// Reads nothing until the system has a reader of lines.
class AwaitedLineReader final : public LineReader {
public:
    // True when there is one now and was none before.
    bool arrives() {
        if (lines) {
            return false;
        }
        if (auto made = LineReader::create()) {
            lines = *std::move(made);
        }
        return lines != nullptr;
    }

    std::vector<LineReading> read(const std::vector<QImage>& pictures) override {
        return lines ? lines->read(pictures) : std::vector<LineReading>(pictures.size());
    }

private:
    std::unique_ptr<LineReader> lines;
};

// Reads Chinese alone, and Latin letters too from the first look on at which that can be done: the user may be
// installing what it lacks.
class LatinLaterReader final : public TextReader {
public:
    explicit LatinLaterReader(std::unique_ptr<ChineseLineReader> chinese)
        : LatinLaterReader(std::make_unique<AwaitedLineReader>(), std::move(chinese)) {}

    ReadText read(const QImage& image, const ReadingHints& hints) override {
        if (latin.arrives()) {
            reader.forget(); // what was looked at without it
        }
        return reader.read(image, hints);
    }

    bool scalesLinesItself() const override { return reader.scalesLinesItself(); }

    void forget() override { reader.forget(); }

private:
    LatinLaterReader(std::unique_ptr<AwaitedLineReader> awaited, std::unique_ptr<ChineseLineReader> chinese)
        : latin(*awaited)
        , reader(std::move(awaited), std::move(chinese)) {}

    AwaitedLineReader& latin; // the reader's
    LineByLineReader reader;
};

} // namespace

std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> TextReader::create(const ApplicationFiles& files) {
    auto lines = LineReader::create();
    auto chinese = ChineseLineReader::create(files);
    if (!lines && !chinese) {
        return std::unexpected(Unavailable{lines.error()});
    }
    if (!lines) {
        log(lines.error());
        return std::make_unique<LatinLaterReader>(*std::move(chinese));
    }
    if (!chinese) {
        log(QStringLiteral("Chinese names cannot be read: ") + chinese.error());
    }
    return std::make_unique<LineByLineReader>(*std::move(lines), chinese ? *std::move(chinese) : nullptr);
}

} // namespace pelloran
