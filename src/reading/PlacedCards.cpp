#include "reading/PlacedCards.h"

#include "reading/chinese/ChineseLines.h"
#include "reading/RibbonLines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace pelloran {

namespace {

constexpr std::ptrdiff_t fewestOffers = 2; // beside each other
constexpr std::size_t mostRetries = 12;    // in one frame of reference, after one reading of each line
// Greatest confidence by script: no line of these is a name, another try would not make it one.
constexpr std::array hopeless{0.45F, 0.20F};

// Part of the window that can hold the names of cards, in heights of the picture: with room for the strips.
constexpr double bandTop = 0.30;
constexpr double bandBottom = 0.48;
constexpr double bandLeft = -0.60; // from the middle
constexpr double bandRight = 0.26;
constexpr double capitals = 0.012;     // their height
constexpr double largestHeight = 1500; // pixels of the picture; finer ones are halved for the search

struct Attempt {
    std::size_t line; // 0: the likeliest ribbon, 1: the next
    RibbonRecipe recipe;
};

constexpr std::array latinAttempts{
    Attempt{0, {}},
    Attempt{1, {}},
    Attempt{0, {.above = 0.0145, .below = 0.0055, .ink = 0.70}},
    Attempt{0, {.above = 0.0185, .below = 0.0075, .paper = 0, .ink = 0.9}},
    Attempt{0, {.paper = 0.4, .ink = 0.8, .height = 48}},
    Attempt{1, {.above = 0.0145, .below = 0.0055}},
};
constexpr double furthestOffset = 0.004; // of a baseline from its place; measured ones are within 0.001
constexpr double plainScore = 150;       // of a line: below, its letters may be in shade
constexpr double clearlyMore = 1.5;      // is found in shade where the letters are
constexpr double rivalShare = 0.35;      // of the best score: the next ribbon is worth a try

// Strokes met on the way down a column with ink, over three names: 1.36 to 1.62 in 160 Latin picks, 1.50 to 2.32 in 220
// Chinese ones, one in twenty below 1.6.
constexpr double denseLetters = 1.6;

// Of a baseline over and under the middle of a name's letters, where that is all that is known.
constexpr double roomAbove = 0.010;
constexpr double roomBelow = 0.020;

// What has to look the same for a name to be the same: the whole width of the ribbon, and of its height what letters
// of either script take up.
constexpr double bandAbove = 0.0175; // the baseline
constexpr double bandBelow = 0.0055;
constexpr double halfBand = 0.1; // from the middle of the card
// Where no name was found: all that names can take up.
constexpr double emptyTop = 0.355;
constexpr double emptyHeight = 0.050;

bool isOffer(const PlacedSlots& slots) {
    return std::ranges::any_of(slots, &PlacedSlot::isSettled) &&
           std::ranges::count_if(slots, &PlacedSlot::isPrinted) >= fewestOffers;
}

} // namespace

// The names on three cards' ribbons, in one script.
class PlacedCards::Row {
public:
    Row(const Plane& band, QPoint bandOrigin, const GameFrame& gameFrame, const BaseRange& range, Script lettersScript,
        PlacedSlots known = {})
        : plane(band)
        , origin(bandOrigin)
        , frame(gameFrame)
        , script(lettersScript)
        , slots(std::move(known)) {
        int halvings = 0;
        while (frame.height / (1 << halvings) > largestHeight) {
            ++halvings;
        }
        const Plane small = halvings ? shrunk(plane, halvings) : Plane();
        const GameFrame smallFrame = frame.seenFrom({}, 1.0 / (1 << halvings));
        const auto linesOf = [&](std::size_t slot, const RibbonLetters& letters) {
            return findRibbonLines(halvings ? small : plane, smallFrame, cardCentres[slot], range, letters);
        };
        for (std::size_t slot = 0; slot < lines.size(); ++slot) {
            if (slots[slot].isSettled()) {
                continue;
            }
            lines[slot] = linesOf(slot, script == Script::latin ? latinOnRibbons : chineseOnRibbons);
            if (script == Script::latin && scoreOf(lines[slot]) < plainScore) {
                auto shaded = linesOf(slot, latinInShade);
                if (scoreOf(shaded) > clearlyMore * scoreOf(lines[slot])) {
                    lines[slot] = std::move(shaded);
                }
            }
        }
    }

    // Of all lines together, along the likeliest ribbons; 0 where there are none.
    double strokesPerColumn() const {
        StrokeCount count;
        for (const auto& found : lines) {
            if (!found.empty()) {
                count += strokesOn(found.front(), plane, frame);
            }
        }
        return count.perColumn();
    }

    // Reads each line once, along the likeliest ribbon.
    void glance(ReadingTools& tools, const Lexicon& names) {
        if (!glanced && script == Script::latin) {
            readLatin(latinAttempts.front(), tools, names);
        } else if (!glanced && tools.chinese) {
            for (std::size_t slot = 0; slot < slots.size(); ++slot) {
                if (!lines[slot].empty()) {
                    readChinese(slot, lines[slot].front(), ChineseLooks::first, *tools.chinese, names);
                }
            }
        }
        glanced = true;
    }

    const PlacedSlots& read(ReadingTools& tools, const Lexicon& names) {
        glance(tools, names);
        if (finished || isHopeless()) {
            return slots;
        }
        finished = true;
        if (script == Script::latin) {
            for (const Attempt& attempt : std::span(latinAttempts).subspan(1)) {
                readLatin(attempt, tools, names);
            }
        } else if (tools.chinese) {
            for (std::size_t slot = 0; slot < slots.size(); ++slot) {
                for (const RibbonLine& line : lines[slot]) {
                    const bool isFirst = &line == &lines[slot].front();
                    if (line.score >= rivalShare * lines[slot].front().score) {
                        readChinese(slot, line, isFirst ? ChineseLooks::further : ChineseLooks::all, *tools.chinese,
                                    names);
                    }
                }
            }
        }
        return slots;
    }

    const PlacedSlots& read() const { return slots; }

    std::array<LinePlace, 3> emptyBands() const {
        std::array<LinePlace, 3> bands{};
        for (std::size_t slot = 0; slot < bands.size(); ++slot) {
            const double middle = frame.pixelX(cardCentres[slot]) + origin.x();
            const double half = halfBand * frame.height;
            bands[slot] = LinePlace::along(middle - half, middle + half, emptyHeight * frame.height,
                                           [&](double) { return frame.pixelY(emptyTop) + origin.y(); });
        }
        return bands;
    }

    std::array<double, 3> middles() const {
        std::array<double, 3> result{};
        for (std::size_t i = 0; i < result.size(); ++i) {
            result[i] = frame.pixelX(cardCentres[i]) + origin.x();
        }
        return result;
    }

private:
    static double scoreOf(const std::vector<RibbonLine>& found) { return found.empty() ? 0 : found.front().score; }

    static double offsetOf(const RibbonLine& line) {
        double least = 1;
        for (const double usual : line.curve->bases) {
            least = std::min(least, std::abs(line.base - usual));
        }
        return least;
    }

    bool isHopeless() const {
        float surest = 0;
        for (const PlacedSlot& slot : slots) {
            surest = std::max(surest, slot.read().confidence);
        }
        return countSettled(slots) == 0 && surest < hopeless[std::size_t(script)];
    }

    void readLatin(const Attempt& attempt, ReadingTools& tools, const Lexicon& names) {
        std::vector<PlacedWork> work;
        for (std::size_t slot = 0; slot < slots.size(); ++slot) {
            const auto& found = lines[slot];
            if (slots[slot].isDone() || attempt.line >= found.size() ||
                found[attempt.line].score < rivalShare * found.front().score || (glanced && retries == mostRetries)) {
                continue;
            }
            const RibbonLine& line = found[attempt.line];
            if (const auto picture = pictureOf(line, plane, frame, attempt.recipe)) {
                work.push_back({slot, placeOf(line, slot), imageOf(*picture)});
                retries += glanced;
            }
        }
        readInto(slots, std::move(work), tools, names);
    }

    void readChinese(std::size_t slot, const RibbonLine& line, ChineseLooks looks, ChineseLineReader& reader,
                     const Lexicon& names) {
        if (slots[slot].isSettled()) {
            return;
        }
        if (const auto reading = readRibbon(line, plane, frame, looks, reader, names)) {
            slots[slot].take(*reading, placeOf(line, slot));
        }
    }

    PlacedLine placeOf(const RibbonLine& line, std::size_t slot) const {
        return {boxOf(line), line.curve->kinds, offsetOf(line) <= furthestOffset, bandOf(line, slot)};
    }

    QRectF boxOf(const RibbonLine& line) const {
        double top = 1;
        double bottom = 0;
        for (const double x : {line.left, (line.left + line.right) / 2, line.right}) {
            top = std::min(top, line.base + line.curve->at(x) - capitals);
            bottom = std::max(bottom, line.base + line.curve->at(x));
        }
        return QRectF(QPointF(frame.pixelX(line.centre + line.left), frame.pixelY(top)),
                      QPointF(frame.pixelX(line.centre + line.right), frame.pixelY(bottom)))
            .translated(origin);
    }

    LinePlace bandOf(const RibbonLine& line, std::size_t slot) const {
        const double middle = frame.pixelX(cardCentres[slot]) + origin.x();
        const double half = halfBand * frame.height;
        return LinePlace::along(middle - half, middle + half, (bandAbove + bandBelow) * frame.height, [&](double x) {
            const double fromCentre = (x - origin.x() - frame.centreX) / frame.height - line.centre;
            return frame.pixelY(line.base + line.curve->at(fromCentre) - bandAbove) + origin.y();
        });
    }

    const Plane& plane;
    const QPoint origin;   // of the plane in the window
    const GameFrame frame; // in the plane
    const Script script;
    std::array<std::vector<RibbonLine>, 3> lines; // of what is not settled
    PlacedSlots slots;
    std::size_t retries = 0;
    bool glanced = false;
    bool finished = false;
};

// The window in the lightness in which letters of one script stand out, with the lines on it.
struct PlacedCards::Sheet {
    Sheet(const QImage& window, const QRect& area, const GameFrame& frame, Script letters, const PlacedSlots& known)
        : script(letters)
        , plane(lightness(window, area, script == Script::latin ? Lettering::white : Lettering::grey))
        , usual(plane, area.topLeft(), frame, BaseRange(), script, known) {}

    const Script script;
    const Plane plane;
    Row usual;
    std::optional<std::vector<Row>> moved; // looked for at the first need
};

PlacedCards::PlacedCards(const QImage& picture, PlacedSlots known)
    : window(picture)
    , settledBefore(std::move(known)) {
    const GameFrame whole = frameOf(window.size());
    area = QRectF(QPointF(whole.pixelX(bandLeft), whole.pixelY(bandTop)),
                  QPointF(whole.pixelX(bandRight), whole.pixelY(bandBottom)))
               .toAlignedRect()
               .intersected(window.rect());
    frame = whole.seenFrom(area.topLeft(), 1);
}

PlacedCards::~PlacedCards() = default;

PlacedCards::Sheet& PlacedCards::sheetOf(Script script) {
    auto& sheet = sheets[std::size_t(script)];
    if (!sheet) {
        sheet = std::make_unique<Sheet>(window, area, frame, script, settledBefore);
    }
    return *sheet;
}

std::vector<PlacedCards::Row>& PlacedCards::movedRows(Sheet& sheet) {
    if (!letterRows) {
        letterRows = findLetterRows(sheetOf(Script::latin).plane, frame);
    }
    if (!sheet.moved) {
        sheet.moved.emplace();
        for (const LetterRow& row : *letterRows) {
            sheet.moved->emplace_back(sheet.plane, area.topLeft(), row.frame,
                                      BaseRange{row.level - roomAbove, row.level + roomBelow, false}, sheet.script);
        }
    }
    return *sheet.moved;
}

Script PlacedCards::likelyScript() {
    return sheetOf(Script::chinese).usual.strokesPerColumn() >= denseLetters ? Script::chinese : Script::latin;
}

bool PlacedCards::glance(Script script, ReadingTools& tools, const Lexicon& names) {
    Row& row = sheetOf(script).usual;
    row.glance(tools, names);
    return countSettled(row.read()) > 0;
}

PlacedRow PlacedCards::readUsual(Script script, ReadingTools& tools, const Lexicon& names) {
    Row& usual = sheetOf(script).usual;
    PlacedRow row{usual.read(tools, names), usual.middles(), usual.emptyBands()};
    row.inPlace = std::ranges::all_of(
        row.slots, [](const PlacedSlot& slot) { return !slot.isSettled() || slot.source().inPlace; });
    row.isOffer = isOffer(row.slots);
    return row;
}

PlacedRow PlacedCards::read(Script script, ReadingTools& tools, const Lexicon& names) {
    PlacedRow best = readUsual(script, tools, names);
    const bool isInPlace = best.inPlace;
    // Off their places names are probably in a picture that is shifted or of another size, and may have been cut.
    const bool isClear = countSettled(best.slots) > 0 && std::ranges::all_of(best.slots, &PlacedSlot::isPrinted);
    if (!isClear || !isInPlace) {
        for (Row& row : movedRows(sheetOf(script))) {
            const PlacedSlots& slots = row.read(tools, names);
            if (countSettled(slots) >= countSettled(best.slots) + isInPlace) {
                best = {slots, row.middles(), row.emptyBands(), isOffer(slots), false};
            }
            if (countSettled(best.slots) == std::ssize(best.slots)) {
                break;
            }
        }
    }
    return best;
}

} // namespace pelloran
