#include "platform/TextReader.h"

#include "LineCropper.h"
#include "LineDetector.h"
#include "LineReader.h"

#include <algorithm>
#include <cmath>

namespace pelloran {

namespace {

// Lengths are pixels of a window 1080 pixels high.
constexpr double halfTallestLine = 37; // a line centred on the band's edge reaches this far out of it
constexpr double halfLongestLine = 210;
constexpr double cropMargin = 9;         // around a box, to see what runs out of it
constexpr double halfColumn = 120;       // offers stand 320 apart; lines of one offer are centred on it
constexpr double largestUnit = 1.6;      // finer pictures are halved before lines are looked for
constexpr std::size_t mostReadings = 16; // in one image
constexpr float sureEnough = 0.75F;      // mean confidence of a script that is the right one
constexpr double denseLetters = 2.3;     // strokes down a column: Chinese above, Latin below

// The game keeps its proportions and is as tall as the window, unless that is narrower than 4:3.
double unitOf(const QImage& image) {
    return std::min(double(image.height()), image.width() * 0.75) / 1080;
}

struct Attempt {
    std::size_t line;
    Cleaning cleaning;
};

// A line in the picture and what has been made of it.
struct Line {
    QRect area; // pixels of the image
    Plane crop;
    QRect box; // within the crop
    double unit;
    LineReading best;
    QRect letters; // pixels of the image, once cropped
    bool exact = false;
};

struct Column {
    double middle = 0;
    std::vector<std::size_t> lines;
    std::vector<Attempt> attempts;
    std::size_t tried = 0;
    bool exact = false;
};

Script other(Script script) {
    return script == Script::latin ? Script::chinese : Script::latin;
}

class TesseractTextReader final : public TextReader {
public:
    explicit TesseractTextReader(std::unique_ptr<LineReader> lineReader)
        : reader(std::move(lineReader)) {}

    std::vector<OCRToken> read(const QImage& image, const ReadingHints& hints) override;

    // Every line is brought to the height its network was made for, whatever the size of the window.
    bool scalesLinesItself() const override { return true; }

    void forget() override { remembered.reset(); }

private:
    std::unique_ptr<LineReader> reader;
    std::optional<Script> remembered;
};

QRect rectangleIn(const QRectF& fractions, const QSize& size) {
    return QRectF(fractions.x() * size.width(), fractions.y() * size.height(), fractions.width() * size.width(),
                  fractions.height() * size.height())
        .toAlignedRect();
}

std::vector<Line> findLines(const QImage& image, const ReadingHints& hints, double unit) {
    const QRect band = rectangleIn(hints.band, image.size());
    const int marginX = int(halfLongestLine * unit);
    const int marginY = int(halfTallestLine * unit);
    const QRect area = band.adjusted(-marginX, -marginY, marginX, marginY).intersected(image.rect());
    const Plane plane = lightness(image, area, hints.lettering);
    int halvings = 0;
    while (unit / (1 << halvings) > largestUnit) {
        ++halvings;
    }
    const std::vector<TextBox> boxes =
        halvings ? detectLines(shrunk(plane, halvings), unit / (1 << halvings)) : detectLines(plane, unit);
    std::vector<Line> lines;
    for (const TextBox& found : boxes) {
        const QRect box(found.area.topLeft() * (1 << halvings), found.area.size() * (1 << halvings));
        const QRect inImage = box.translated(area.topLeft());
        if (!band.contains(inImage.center())) {
            continue;
        }
        const int margin = int(std::lround(cropMargin * unit));
        const QRect cropArea =
            box.adjusted(-margin, -margin, margin, margin).intersected(QRect(0, 0, plane.width, plane.height));
        Line line{inImage, Plane(cropArea.width(), cropArea.height()), box.translated(-cropArea.topLeft()), unit, {},
                  inImage};
        for (int y = 0; y < cropArea.height(); ++y) {
            std::copy_n(plane.row(cropArea.top() + y) + cropArea.left(), cropArea.width(), line.crop.row(y));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<Column> columnsOf(const std::vector<Line>& lines, double unit) {
    std::vector<Column> columns;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const double middle = lines[i].area.center().x();
        const auto column = std::ranges::find_if(
            columns, [&](const Column& known) { return std::abs(known.middle - middle) < halfColumn * unit; });
        if (column == columns.end()) {
            columns.push_back({middle, {i}, {}});
        } else {
            column->lines.push_back(i);
        }
    }
    return columns;
}

std::vector<OCRToken> TesseractTextReader::read(const QImage& image, const ReadingHints& hints) {
    if (image.isNull()) {
        return {};
    }
    const double unit = unitOf(image);
    std::vector<Line> lines = findLines(image, hints, unit);
    std::vector<Column> columns = columnsOf(lines, unit);
    for (Column& column : columns) {
        for (std::size_t i = 0; i < column.lines.size(); ++i) {
            column.attempts.push_back({column.lines[i], {}});
        }
        if (hints.names) {
            column.attempts.insert(column.attempts.begin() + 1, {column.lines.front(), {.inkLevel = 0.5}});
            column.attempts.push_back({column.lines.front(), {.inkLevel = 0.72}});
        }
    }

    std::size_t readings = 0;
    std::size_t exactColumns = 0;
    Script script = remembered.value_or(Script::latin);
    bool cold = !remembered;
    while (readings < mostReadings && exactColumns < 3) {
        std::vector<std::pair<std::size_t, std::size_t>> chosen; // column, line
        std::vector<CleanLine> cleaned;
        for (std::size_t c = 0; c < columns.size(); ++c) {
            Column& column = columns[c];
            while (!column.exact && column.tried < column.attempts.size()) {
                const Attempt attempt = column.attempts[column.tried++];
                Line& line = lines[attempt.line];
                const auto clean = cleanLine(line.crop, line.box, line.unit, attempt.cleaning);
                if (!clean || clean->rows != 1) {
                    continue;
                }
                line.letters = clean->area.translated(line.area.topLeft() - line.box.topLeft());
                chosen.emplace_back(c, attempt.line);
                cleaned.push_back(*clean);
                break;
            }
        }
        if (chosen.empty()) {
            break;
        }
        const auto readAll = [&](Script with) {
            std::vector<LineReader::Work> work;
            for (const CleanLine& line : cleaned) {
                work.push_back({picture(line, pictureShape(with)), with});
            }
            readings += work.size();
            return reader->read(work);
        };
        const auto worth = [&](const std::vector<LineReading>& results) {
            double sum = 0;
            for (const LineReading& result : results) {
                sum += result.confidence + (hints.names && hints.names->contains(result.text) ? 10 : 0);
            }
            return sum / double(results.size());
        };
        if (cold) {
            std::vector<double> runs;
            for (const CleanLine& line : cleaned) {
                runs.push_back(line.runsPerColumn);
            }
            std::ranges::sort(runs);
            script = runs[runs.size() / 2] > denseLetters ? Script::chinese : Script::latin;
        }
        std::vector<LineReading> results = readAll(script);
        if (worth(results) < double(sureEnough) && !(readings > results.size())) {
            std::vector<LineReading> otherResults = readAll(other(script));
            if (worth(otherResults) > worth(results)) {
                results = std::move(otherResults);
                script = other(script);
            }
        }
        cold = false;
        if (worth(results) >= double(sureEnough)) {
            remembered = script;
        }
        for (std::size_t i = 0; i < results.size(); ++i) {
            Line& line = lines[chosen[i].second];
            const bool exact = hints.names && hints.names->contains(results[i].text);
            if (exact || (!line.exact && results[i].confidence > line.best.confidence)) {
                line.best = results[i];
                line.exact = exact;
            }
            if (exact && !columns[chosen[i].first].exact) {
                columns[chosen[i].first].exact = true;
                ++exactColumns;
            }
        }
    }

    std::vector<OCRToken> tokens;
    for (const Column& column : columns) {
        for (const std::size_t index : column.lines) {
            const Line& line = lines[index];
            if (line.best.text.isEmpty() || (column.exact && !line.exact)) {
                continue;
            }
            const QRectF box(line.letters);
            tokens.push_back({line.best.text, line.best.confidence, box.center().x() / image.width(),
                              box.center().y() / image.height(), box.width() / image.width(),
                              box.height() / image.height()});
        }
    }
    return tokens;
}

} // namespace

std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> TextReader::create() {
    auto reader = LineReader::create();
    if (!reader) {
        return std::unexpected(Unavailable{reader.error()});
    }
    return std::make_unique<TesseractTextReader>(std::move(*reader));
}

} // namespace pelloran
