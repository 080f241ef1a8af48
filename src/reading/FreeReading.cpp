#include "reading/FreeReading.h"

#include "reading/chinese/ChineseLines.h"
#include "reading/LineCropper.h"
#include "reading/LineDetector.h"
#include "reading/LinePicker.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pelloran {

namespace {

// Lengths are pixels of a window 1080 pixels high.
constexpr double halfTallestLine = 37; // a line centred on the band's edge reaches this far out of it
constexpr double halfLongestLine = 210;
constexpr double cropMargin = 9;      // around a box, to see what runs out of it
constexpr double widestSpacing = 500; // with the middle one missing, 550 and more
constexpr double nameWidth = 250;     // the longest names; ribbons are 280 wide
constexpr double nameHeight = 46;     // of most names, arch included
constexpr double narrowestName = 24;  // one Chinese character
constexpr double largestUnit = 1.6;   // finer pictures are halved before lines are looked for
constexpr float sureEnough = 0.75F;   // mean confidence of a script that is the right one
constexpr double denseLetters = 1.88; // strokes down a column: 1.4 to 1.8 in Latin names, 1.9 to 3.1 in Chinese ones
constexpr double guessBonus = 0.3;    // in confidence, for the script that the shape of the letters suggests
constexpr double fullestLine = 0.62;  // part of a line's box that is ink; more is the paper between dark letters

// What to try on a line, one after the other, until its text is a known name. The network is easily thrown off: the
// same letters a little larger or thinner are often read right.
struct Attempt {
    Cleaning cleaning;
    double margin; // around the letters, as a multiple of the script's own
};

constexpr std::array attempts{
    Attempt{{}, 1},
    Attempt{{.otherTurn = true}, 1},
    Attempt{{.inkLevel = 0.48}, 0.65},
    Attempt{{.inkLevel = 0.70}, 1.45},
    Attempt{{}, 0.4},
};

// The form of a line in which the network reads it best.
constexpr int latinHeight = 36;      // pixels of the picture
constexpr double latinMargin = 0.16; // around the letters, as a part of their height

constexpr std::size_t fewestCards = 2; // one may be missing from the names
constexpr std::size_t fewestClasses = 3;
// Where the middles of names can stand, in heights of the picture: of cards, below which names of choices in battle
// stand from 0.48 on, and of classes.
constexpr std::pair cardLevels{0.33, 0.45};
constexpr std::pair heroLevels{0.45, 0.60};

// The game keeps its proportions and is as tall as the window, unless that is narrower than 4:3.
double unitOf(const QImage& image) {
    return std::min(double(image.height()), image.width() * 0.75) / 1080;
}

QRect rectangleIn(const QRectF& fractions, const QSize& size) {
    return QRectF(fractions.x() * size.width(), fractions.y() * size.height(), fractions.width() * size.width(),
                  fractions.height() * size.height())
        .toAlignedRect();
}

Script other(Script script) {
    return script == Script::latin ? Script::chinese : Script::latin;
}

// A line in the picture and what has been made of it.
struct Line {
    TextBox box; // in pixels of the image
    Plane crop;
    QPoint origin; // of the crop, in the image
    std::optional<CleanLine> clean;
    std::vector<LineReading> readings; // different ones; only the known name where there is one
    bool known = false;
};

// The lines of one image, read row by row.
class FreeReading {
public:
    FreeReading(ReadingTools& readingTools, std::optional<Script>& rememberedScript, const QImage& picture,
                const ReadingHints& readingHints)
        : tools(readingTools)
        , remembered(rememberedScript)
        , image(picture)
        , hints(readingHints)
        , unit(unitOf(picture))
        , script(readingHints.script) {}

    ReadText text() {
        findLines();
        cleanLines();
        const RowOrder order =
            hints.offers == ReadingHints::Offers::cards ? RowOrder::mostInkFirst : RowOrder::lowestFirst;
        std::vector<TextBox> boxes;
        boxes.reserve(lines.size());
        for (const Line& line : lines) {
            boxes.push_back(line.box);
        }
        rows = rowsOf(boxes, unit, order);
        if (hints.names) {
            std::erase_if(rows, [this](const LineRow& row) { return !canBeOffers(row); });
        }
        readRows();
        return hints.names ? offer() : everything();
    }

private:
    void readRows();
    void findLines();
    void cleanLines();
    Line lineAt(const TextBox& box) const;
    std::optional<std::size_t> findThird(const LineRow& row, std::size_t place);
    bool finishes(LineRow& row);
    bool hasKnown(const LineRow& row) const;
    void retry(const LineRow& row);
    void readOnce(const LineRow& row, const Attempt& attempt);
    std::vector<LineReading> readWith(Script script, const LineRow& row, double margin);
    double worth(const std::vector<LineReading>& results) const;
    Script guess(const LineRow& row) const;
    const LineReading& bestOf(const Line& line) const;
    std::optional<QString> offered(const LineReading& reading) const;
    bool canBeOffers(const LineRow& row) const;
    OCRToken tokenOf(const Line& line, const LineReading& reading) const;
    ReadText offer() const;
    ReadText everything() const;

    std::size_t fewestOffers() const {
        return hints.offers == ReadingHints::Offers::cards ? fewestCards : fewestClasses;
    }

    bool isKnown(const QString& text) const { return hints.names && hints.names->contains(text); }

    ReadingTools& tools;
    std::optional<Script>& remembered;
    const QImage& image;
    const ReadingHints& hints;
    const double unit;
    std::vector<Line> lines;
    Plane plane; // of `planeArea` of the image
    QRect planeArea;
    std::vector<LineRow> rows;
    std::optional<Script> script; // of this image, once sure
};

void FreeReading::readRows() {
    for (LineRow& row : rows) {
        readOnce(row, attempts.front());
        if (hasKnown(row) && finishes(row)) {
            return;
        }
        if (tools.readingsLeft == 0) {
            break;
        }
    }
    for (LineRow& row : rows) {
        if (!hasKnown(row) && finishes(row)) {
            return;
        }
    }
}

void FreeReading::findLines() {
    const QRect band = rectangleIn(hints.band, image.size());
    const int marginX = int(halfLongestLine * unit);
    const int marginY = int(halfTallestLine * unit);
    // Names of classes may be golden.
    const Lettering lettering =
        hints.offers == ReadingHints::Offers::cards ? Lettering::white : Lettering::whiteOrGolden;
    planeArea = band.adjusted(-marginX, -marginY, marginX, marginY).intersected(image.rect());
    plane = lightness(image, planeArea, lettering);
    int halvings = 0;
    while (unit / (1 << halvings) > largestUnit) {
        ++halvings;
    }
    const int step = 1 << halvings;
    for (TextBox box : halvings ? detectLines(shrunk(plane, halvings), unit / step) : detectLines(plane, unit)) {
        box.area = QRect(box.area.topLeft() * step, box.area.size() * step).translated(planeArea.topLeft());
        if (band.contains(box.area.center())) {
            lines.push_back(lineAt(box));
        }
    }
}

Line FreeReading::lineAt(const TextBox& box) const {
    const int margin = int(std::lround(cropMargin * unit));
    const QRect around = box.area.adjusted(-margin, -margin, margin, margin).intersected(planeArea);
    return {box, cropped(plane, around.translated(-planeArea.topLeft())), around.topLeft(), {}, {}};
}

// With two names of a row at hand, the third is where it must be, whatever hid it from the search.
std::optional<std::size_t> FreeReading::findThird(const LineRow& row, std::size_t place) {
    const QRectF first(lines[row[0]].box.area);
    const QRectF second(lines[row[1]].box.area);
    const double spacing = second.center().x() - first.center().x();
    const std::array middles{first.center().x() - spacing, (first.center().x() + second.center().x()) / 2,
                             second.center().x() + spacing};
    const bool middleIsMissing = spacing > widestSpacing * unit;
    if (middleIsMissing != (place == 1) || spacing < leastSpacing * unit) {
        return std::nullopt;
    }
    QRectF box(0, 0, nameWidth * unit, nameHeight * unit);
    box.moveCenter({middles[place], (first.center().y() + second.center().y()) / 2});
    if (!planeArea.contains(box.toAlignedRect())) {
        return std::nullopt;
    }
    Line line = lineAt({box.toAlignedRect(), 0, 0});
    line.clean = cleanLine(line.crop, line.box.area.translated(-line.origin), unit, attempts.front().cleaning);
    if (!line.clean || line.clean->rows != 1 || line.clean->letters.width() < narrowestName * unit) {
        return std::nullopt;
    }
    lines.push_back(std::move(line));
    return lines.size() - 1;
}

// Reads on in a row until each name is known or everything has been tried. True if this is the row of names: a known
// name on its own may be a word of the rules, beside other lines it is an offer.
bool FreeReading::finishes(LineRow& row) {
    retry(row);
    if (!hasKnown(row)) {
        return false;
    }
    if (row.size() == 2) {
        for (std::size_t place = 0; place < 3; ++place) {
            if (const auto third = findThird(row, place)) {
                readOnce({*third}, attempts.front());
                retry({*third});
                if (lines[*third].known) {
                    row.insert(row.begin() + std::ptrdiff_t(place), *third);
                    break;
                }
                lines.pop_back(); // a guess at a place is no line of text
            }
        }
    }
    return row.size() > 1;
}

void FreeReading::cleanLines() {
    for (Line& line : lines) {
        line.clean = cleanLine(line.crop, line.box.area.translated(-line.origin), unit, attempts.front().cleaning);
    }
    std::erase_if(
        lines, [](const Line& line) { return !line.clean || line.clean->rows != 1 || line.clean->fill > fullestLine; });
}

bool FreeReading::hasKnown(const LineRow& row) const {
    return std::ranges::any_of(row, [&](std::size_t index) { return lines[index].known; });
}

void FreeReading::retry(const LineRow& row) {
    if (!hints.names) {
        return;
    }
    for (std::size_t attempt = 1; attempt < attempts.size() && tools.readingsLeft > 0; ++attempt) {
        LineRow unknown;
        for (const std::size_t index : row) {
            Line& line = lines[index];
            if (line.known) {
                continue;
            }
            auto clean = cleanLine(line.crop, line.box.area.translated(-line.origin), unit, attempts[attempt].cleaning);
            if (clean && clean->rows == 1) {
                line.clean = std::move(clean);
                unknown.push_back(index);
            }
        }
        readOnce(unknown, attempts[attempt]);
    }
}

void FreeReading::readOnce(const LineRow& row, const Attempt& attempt) {
    if (row.empty()) {
        return;
    }
    Script chosen = script ? *script : remembered.value_or(guess(row));
    std::vector<LineReading> results = readWith(chosen, row, attempt.margin);
    double value = worth(results);
    if (!script && value < double(sureEnough)) {
        std::vector<LineReading> otherResults = readWith(other(chosen), row, attempt.margin);
        if (const double otherValue = worth(otherResults); otherValue > value + guessBonus) {
            results = std::move(otherResults);
            value = otherValue;
            chosen = other(chosen);
        }
    }
    if (value >= double(sureEnough)) {
        remembered = chosen;
    }
    if (value >= double(sureEnough) || row.size() > 1) { // a single line may be a number
        script = chosen;
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
        Line& line = lines[row[i]];
        const bool known = isKnown(results[i].text);
        if (known) {
            line.readings = {results[i]};
            line.known = known;
        } else if (!results[i].text.isEmpty() &&
                   std::ranges::find(line.readings, results[i].text, &LineReading::text) == line.readings.end()) {
            line.readings.push_back(results[i]);
        }
    }
}

std::vector<LineReading> FreeReading::readWith(Script with, const LineRow& row, double margin) {
    std::vector<LineReading> results(row.size()); // those beyond what may be read stay nothing
    if (with == Script::chinese) {
        for (std::size_t i = 0; i < row.size() && tools.chinese && hints.names; ++i) {
            const bool classes = hints.offers == ReadingHints::Offers::heroes;
            // Letters that are no name by its measures are not to become one by those for Latin letters.
            const auto reading = readCleanLine(*lines[row[i]].clean, classes ? ofChineseClasses : ofChineseCards,
                                               *tools.chinese, *hints.names);
            if (reading && reading->isName) {
                results[i] = {reading->text, 1 - reading->nameCost / 2};
            }
        }
        return results;
    }
    std::vector<QImage> work;
    for (const std::size_t index : row) {
        work.push_back(imageOf(pictureOf(*lines[index].clean, {latinHeight, latinMargin * margin})));
    }
    std::ranges::copy(tools.read(std::move(work)), results.begin());
    return results;
}

// A known name is worth more than any confidence.
double FreeReading::worth(const std::vector<LineReading>& results) const {
    double sum = 0;
    for (const LineReading& result : results) {
        sum += isKnown(result.text) ? double(results.size()) : double(result.confidence);
    }
    return sum / double(results.size());
}

Script FreeReading::guess(const LineRow& row) const {
    double runs = 0;
    for (const std::size_t index : row) {
        runs += lines[index].clean->runsPerColumn;
    }
    return runs > denseLetters * double(row.size()) ? Script::chinese : Script::latin;
}

// One reading a line: two that resemble different names would make two offers of one. Confidence is a poor judge of
// misread names; how close they come to a name that exists is a good one.
const LineReading& FreeReading::bestOf(const Line& line) const {
    if (line.readings.size() == 1 || !hints.names) {
        return *std::ranges::max_element(line.readings, {}, &LineReading::confidence);
    }
    return *std::ranges::max_element(line.readings, {}, [this](const LineReading& reading) {
        return std::pair(hints.names->resemblance(reading.text), reading.confidence);
    });
}

// What becomes of a reading, if anything.
std::optional<QString> FreeReading::offered(const LineReading& reading) const {
    const auto settled = hints.names->settle(reading.text);
    return settled ? std::optional(settled->text) : std::nullopt;
}

// Three beside each other at the height at which cards have their names and heroes their classes; of cards also two,
// where one was not found.
bool FreeReading::canBeOffers(const LineRow& row) const {
    if (row.size() < fewestOffers()) {
        return false;
    }
    const auto [highest, lowest] = hints.offers == ReadingHints::Offers::cards ? cardLevels : heroLevels;
    return std::ranges::all_of(row, [&](std::size_t index) {
        const double middle = QRectF(lines[index].box.area).center().y() / (1080 * unit);
        return middle >= highest && middle <= lowest;
    });
}

OCRToken FreeReading::tokenOf(const Line& line, const LineReading& reading) const {
    const QRectF box(line.clean->area.translated(line.origin));
    return {reading.text,
            reading.confidence,
            box.center().x() / image.width(),
            box.center().y() / image.height(),
            box.width() / image.width(),
            box.height() / image.height()};
}

// The row in which most lines can be names, if it has enough of them: a known word on its own is a keyword or a button.
// With them all other lines, for whoever asks.
ReadText FreeReading::offer() const {
    ReadText best;
    std::vector<OCRToken> others;
    for (const LineRow& row : rows) {
        ReadText text;
        for (const std::size_t index : row) {
            const Line& line = lines[index];
            if (line.readings.empty()) {
                continue;
            }
            const LineReading& reading = bestOf(line);
            OCRToken token = tokenOf(line, reading);
            if (const auto name = offered(reading)) {
                if (token.text != *name) {
                    token.letters = std::exchange(token.text, *name);
                }
                text.tokens.push_back(token);
            } else {
                text.unsettled.push_back(token);
            }
        }
        if (row.size() == 3) {
            text.columns.emplace();
            for (std::size_t i = 0; i < row.size(); ++i) {
                (*text.columns)[i] = QRectF(lines[row[i]].box.area).center().x() / image.width();
            }
        }
        if (text.tokens.size() >= fewestOffers() && text.tokens.size() > best.tokens.size()) {
            std::swap(best, text);
        }
        others.insert(others.end(), text.tokens.begin(), text.tokens.end());
        others.insert(others.end(), text.unsettled.begin(), text.unsettled.end());
    }
    best.unsettled.insert(best.unsettled.end(), others.begin(), others.end());
    return best;
}

// Where nobody knows the names.
ReadText FreeReading::everything() const {
    ReadText text;
    for (const Line& line : lines) {
        if (!line.readings.empty()) {
            text.tokens.push_back(tokenOf(line, bestOf(line)));
        }
    }
    return text;
}

} // namespace

ReadText readAnywhere(ReadingTools& tools, std::optional<Script>& remembered, const QImage& window,
                      const ReadingHints& hints) {
    return FreeReading(tools, remembered, window, hints).text();
}

} // namespace pelloran
