#include "PlacedReading.h"

#include "HeroLines.h"
#include "LetterRows.h"
#include "names/ReadingDistance.h"
#include "RibbonLines.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pelloran {

namespace {

constexpr std::ptrdiff_t fewestOffers = 2; // beside each other
constexpr std::size_t mostRetries = 6; // in one frame of reference, after one reading of each line
constexpr float hopeless = 0.45F;      // mean confidence: no line of these is a name, another try would not make it one

// Part of the window that can hold the names of cards, in heights of the picture: with room for the strips.
constexpr double bandTop = 0.30;
constexpr double bandBottom = 0.48;
constexpr double bandLeft = -0.60; // from the middle
constexpr double bandRight = 0.26;
constexpr double capitals = 0.012; // their height
constexpr double largestHeight = 1500; // pixels of the picture; finer ones are halved for the search

struct CardAttempt {
    std::size_t line; // 0: the likeliest ribbon, 1: the next
    RibbonRecipe recipe;
};

constexpr std::array cardAttempts{
    CardAttempt{0, {}},
    CardAttempt{1, {}},
    CardAttempt{0, {.above = 0.0145, .below = 0.0055, .ink = 0.70}},
    CardAttempt{0, {.above = 0.0185, .below = 0.0075, .paper = 0, .ink = 0.9}},
    CardAttempt{0, {.paper = 0.4, .ink = 0.8, .height = 48}},
    CardAttempt{1, {.above = 0.0145, .below = 0.0055}},
};
constexpr double furthestOffset = 0.004; // of a baseline from its place; measured ones are within 0.001
constexpr double runnerUpShare = 0.35; // of the best score: the next ribbon is worth a try

constexpr std::array heroAttempts{
    HeroRecipe{},
    HeroRecipe{.margin = 0.25},
    HeroRecipe{.margin = 0.2, .height = 48},
    HeroRecipe{.paper = 0.3, .ink = 0.7},
    HeroRecipe{.margin = 0.1, .paper = 0, .ink = 0.9},
};

// Where a reading comes from.
struct Line {
    QRectF box;          // of the letters, in pixels of the window
    NameKinds kinds;     // of cards with such lines
    bool inPlace = true; // where this game's screens have such lines
};

// What has been read at one of the three places.
class Slot {
public:
    // A further reading of a line, and what the names make of it.
    void take(const LineReading& read, const Line& from, const std::optional<Lexicon::Settled>& result) {
        if (read.text.isEmpty() || isDone()) {
            return;
        }
        const bool better = result ? !settled || result->distance < settled->distance
                                   : !settled && read.confidence >= reading.confidence;
        if (better) {
            settled = result;
            reading = read;
            line = from;
        }
        // A line that comes out the same from different pictures of it says what is printed there. If that cannot well be
        // a known name, it is one that is missing from the list, however near another one may be.
        const QString letters = ReadingDistance::folded(read.text);
        const bool printed = letters.size() >= fewestLetters && read.confidence >= sureEnough;
        if (printed && std::ranges::find(seen, letters) != seen.end() && !(result && result->likely)) {
            unknown = true;
            settled.reset();
            reading = read;
            line = from;
        } else if (printed) {
            seen.push_back(letters);
        }
    }

    const std::optional<Lexicon::Settled>& name() const { return settled; }

    // What settled, else what was surest.
    const LineReading& read() const { return reading; }

    const Line& source() const { return line; }

    // Nothing is gained by reading on.
    bool isDone() const { return unknown || (settled && settled->distance == 0); }

    // Holds a name, known or not.
    bool isPrinted() const { return unknown || settled; }

private:
    static constexpr qsizetype fewestLetters = 4;
    static constexpr float sureEnough = 0.5F;

    std::optional<Lexicon::Settled> settled;
    LineReading reading;
    Line line;
    std::vector<QString> seen; // letters of earlier readings
    bool unknown = false;
};

using Slots = std::array<Slot, 3>;

std::ptrdiff_t countSettled(const Slots& places) {
    return std::ranges::count_if(places, [](const Slot& slot) { return slot.name().has_value(); });
}

OCRToken tokenOf(const QString& text, const Slot& slot, const QSize& window) {
    return {text,
            slot.read().confidence,
            slot.source().box.center().x() / window.width(),
            slot.source().box.center().y() / window.height(),
            slot.source().box.width() / window.width(),
            slot.source().box.height() / window.height()};
}

ReadText textOf(const Slots& places, bool isOffer, const std::array<double, 3>& middles, const QSize& window) {
    ReadText text;
    for (const Slot& slot : places) {
        if (slot.name() && isOffer) {
            text.tokens.push_back(tokenOf(slot.name()->text, slot, window));
        } else if (!slot.read().text.isEmpty()) {
            text.unsettled.push_back(tokenOf(slot.read().text, slot, window));
        }
    }
    if (isOffer) {
        text.columns = middles;
        for (double& middle : *text.columns) {
            middle /= window.width();
        }
    }
    return text;
}

struct Job {
    std::size_t slot;
    Line line;
};

void readJobs(ReadingTools& tools, const Lexicon& names, const std::vector<Job>& jobs,
              std::vector<LineReader::Work> work, Slots& places) {
    const std::vector<LineReading> readings = tools.read(std::move(work));
    for (std::size_t i = 0; i < readings.size(); ++i) {
        const Job& job = jobs[i];
        places[job.slot].take(readings[i], job.line, names.settle(readings[i].text, job.line.kinds));
    }
}

// The picture of the window and the names on its cards' ribbons.
class CardRow {
public:
    CardRow(const Plane& band, QPoint bandOrigin, const GameFrame& gameFrame, const BaseRange& range)
        : plane(band)
        , origin(bandOrigin)
        , frame(gameFrame) {
        int halvings = 0;
        while (frame.height / (1 << halvings) > largestHeight) {
            ++halvings;
        }
        const Plane small = halvings ? shrunk(plane, halvings) : Plane();
        for (std::size_t slot = 0; slot < lines.size(); ++slot) {
            lines[slot] = halvings ? findRibbonLines(small, frame.seenFrom({}, 1.0 / (1 << halvings)),
                                                     cardCentres[slot], range)
                                   : findRibbonLines(plane, frame, cardCentres[slot], range);
        }
    }

    Slots read(ReadingTools& tools, const Lexicon& names) const {
        Slots places;
        std::size_t retries = 0;
        for (const CardAttempt& attempt : cardAttempts) {
            const bool isFirst = &attempt == &cardAttempts.front();
            std::vector<Job> jobs;
            std::vector<LineReader::Work> work;
            for (std::size_t slot = 0; slot < places.size(); ++slot) {
                const auto& found = lines[slot];
                if (places[slot].isDone() || attempt.line >= found.size() ||
                    found[attempt.line].score < runnerUpShare * found.front().score ||
                    (!isFirst && retries == mostRetries)) {
                    continue;
                }
                const RibbonLine& line = found[attempt.line];
                if (const auto picture = pictureOf(line, plane, frame, attempt.recipe)) {
                    jobs.push_back({slot, {boxOf(line), line.curve->kinds, offsetOf(line) <= furthestOffset}});
                    work.push_back({imageOf(*picture), Script::latin});
                    retries += !isFirst;
                }
            }
            if (work.empty()) {
                continue;
            }
            readJobs(tools, names, jobs, std::move(work), places);
            if (isFirst && isHopeless(places)) {
                break;
            }
        }
        return places;
    }

    std::array<double, 3> middles() const {
        std::array<double, 3> result{};
        for (std::size_t i = 0; i < result.size(); ++i) {
            result[i] = frame.pixelX(cardCentres[i]) + origin.x();
        }
        return result;
    }

private:
    static double offsetOf(const RibbonLine& line) {
        double least = 1;
        for (const double usual : line.curve->bases) {
            least = std::min(least, std::abs(line.base - usual));
        }
        return least;
    }

    static bool isHopeless(const Slots& places) {
        float surest = 0;
        for (const Slot& slot : places) {
            surest = std::max(surest, slot.read().confidence);
        }
        return countSettled(places) == 0 && surest < hopeless;
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

    const Plane& plane;
    const QPoint origin; // of the plane in the window
    const GameFrame frame; // in the plane
    std::array<std::vector<RibbonLine>, 3> lines;
};

} // namespace

ReadText readCardsAtPlaces(ReadingTools& tools, const QImage& window, const Lexicon& names) {
    const GameFrame usual = frameOf(window.size());
    const QRect area = QRectF(QPointF(usual.pixelX(bandLeft), usual.pixelY(bandTop)),
                              QPointF(usual.pixelX(bandRight), usual.pixelY(bandBottom)))
                           .toAlignedRect()
                           .intersected(window.rect());
    if (area.isEmpty()) {
        return {};
    }
    const Plane plane = lightness(window, area, Lettering::white);
    const GameFrame frame = usual.seenFrom(area.topLeft(), 1);

    const CardRow row(plane, area.topLeft(), frame, {});
    Slots best = row.read(tools, names);
    std::array<double, 3> middles = row.middles();
    // Off their places names are probably in a picture that is shifted or of another size, and may have been cut.
    const bool isClear = std::ranges::all_of(best, &Slot::isPrinted);
    const bool isInPlace =
        std::ranges::all_of(best, [](const Slot& slot) { return !slot.name() || slot.source().inPlace; });
    if (!isClear || !isInPlace) {
        constexpr double roomAbove = 0.010; // of a baseline over the middle of a name's letters
        constexpr double roomBelow = 0.020;
        for (const LetterRow& other : findLetterRows(plane, frame)) {
            const CardRow moved(plane, area.topLeft(), other.frame,
                                {other.baseline - roomAbove, other.baseline + roomBelow, false});
            const Slots slots = moved.read(tools, names);
            if (countSettled(slots) >= countSettled(best) + isInPlace) {
                best = slots;
                middles = moved.middles();
            }
            if (countSettled(best) == std::ssize(best)) {
                break;
            }
        }
    }
    // New cards are missing from the names for a while, so one may be known and the others only be there.
    const bool isOffer = countSettled(best) > 0 && std::ranges::count_if(best, &Slot::isPrinted) >= fewestOffers;
    return textOf(best, isOffer, middles, window.size());
}

ReadText readHeroesAtPlaces(ReadingTools& tools, const QImage& window, const Lexicon& names) {
    const GameFrame frame = frameOf(window.size());
    ReadText best;
    for (const auto& centres : heroCentres) {
        std::array<std::vector<HeroLine>, 3> lines;
        std::array<double, 3> middles{};
        for (std::size_t slot = 0; slot < lines.size(); ++slot) {
            lines[slot] = findHeroLines(window, frame, centres[slot]);
            middles[slot] = frame.pixelX(centres[slot]);
        }
        Slots places;
        const auto readLines = [&](std::size_t index, const HeroRecipe& recipe) {
            std::vector<Job> jobs;
            std::vector<LineReader::Work> work;
            for (std::size_t slot = 0; slot < places.size(); ++slot) {
                if (!places[slot].name() && index < lines[slot].size()) {
                    jobs.push_back({slot, {lines[slot][index].area, {}}});
                    work.push_back({imageOf(pictureOf(lines[slot][index], recipe)), Script::latin});
                }
            }
            if (!work.empty()) {
                readJobs(tools, names, jobs, std::move(work), places);
            }
        };
        for (std::size_t index = 0; index < 3; ++index) {
            readLines(index, heroAttempts.front());
        }
        for (std::size_t attempt = 1; attempt < heroAttempts.size() && countSettled(places) > 0; ++attempt) {
            readLines(0, heroAttempts[attempt]);
        }
        const ReadText text = textOf(places, countSettled(places) >= fewestOffers, middles, window.size());
        if (text.tokens.size() > best.tokens.size() || best.tokens.empty()) {
            best = text;
        }
        if (best.tokens.size() == places.size()) {
            break;
        }
    }
    return best;
}

} // namespace pelloran
