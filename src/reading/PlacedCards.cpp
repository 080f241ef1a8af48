#include "PlacedCards.h"

#include "LetterRows.h"
#include "RibbonLines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace pelloran {

namespace {

constexpr std::ptrdiff_t fewestOffers = 2; // beside each other
constexpr std::size_t mostRetries = 12;    // in one frame of reference, after one reading of each line
constexpr float hopeless = 0.45F; // greatest confidence: no line of these is a name, another try would not make it one

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
constexpr double rivalShare = 0.35;      // of the best score: the next ribbon is worth a try

// Characters are as tall as capitals or a little taller, and stand on the same line.
constexpr std::array chineseAttempts{
    Attempt{0, {.above = 0.0235, .below = 0.0065, .paper = 0.1, .ink = 0.5, .height = 56}},
    Attempt{0, {.above = 0.0210, .below = 0.0050, .paper = 0.1, .ink = 0.5, .height = 48}},
    Attempt{0, {.above = 0.0235, .below = 0.0065, .height = 48}},
    Attempt{0, {.above = 0.0260, .below = 0.0090, .paper = 0.1, .ink = 0.6, .height = 56}},
    Attempt{1, {.above = 0.0235, .below = 0.0065, .paper = 0.1, .ink = 0.5, .height = 56}},
};

constexpr double roomAbove =
    0.010; // of a baseline over the middle of a name's letters, where that is all that is known
constexpr double roomBelow = 0.020;

} // namespace

// The names on three cards' ribbons.
class PlacedCards::Row {
public:
    Row(const Plane& band, QPoint bandOrigin, const GameFrame& gameFrame, const BaseRange& range)
        : plane(band)
        , origin(bandOrigin)
        , frame(gameFrame) {
        int halvings = 0;
        while (frame.height / (1 << halvings) > largestHeight) {
            ++halvings;
        }
        const Plane small = halvings ? shrunk(plane, halvings) : Plane();
        for (std::size_t slot = 0; slot < lines.size(); ++slot) {
            lines[slot] =
                halvings ? findRibbonLines(small, frame.seenFrom({}, 1.0 / (1 << halvings)), cardCentres[slot], range)
                         : findRibbonLines(plane, frame, cardCentres[slot], range);
        }
    }

    PlacedSlots read(Script script, ReadingTools& tools, const Lexicon& names) const {
        PlacedSlots slots;
        std::size_t retries = 0;
        const std::span<const Attempt> attempts = script == Script::latin ? std::span<const Attempt>(latinAttempts)
                                                                          : std::span<const Attempt>(chineseAttempts);
        for (const Attempt& attempt : attempts) {
            const bool isFirst = &attempt == attempts.data();
            std::vector<PlacedWork> work;
            for (std::size_t slot = 0; slot < slots.size(); ++slot) {
                const auto& found = lines[slot];
                if (slots[slot].isDone() || attempt.line >= found.size() ||
                    found[attempt.line].score < rivalShare * found.front().score ||
                    (!isFirst && retries == mostRetries)) {
                    continue;
                }
                const RibbonLine& line = found[attempt.line];
                if (const auto picture = pictureOf(line, plane, frame, attempt.recipe)) {
                    work.push_back(
                        {slot, {boxOf(line), line.curve->kinds, offsetOf(line) <= furthestOffset}, imageOf(*picture)});
                    retries += !isFirst;
                }
            }
            readInto(slots, std::move(work), script, tools, names);
            if (isFirst && isHopeless(slots)) {
                break;
            }
        }
        return slots;
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

    static bool isHopeless(const PlacedSlots& slots) {
        float surest = 0;
        for (const PlacedSlot& slot : slots) {
            surest = std::max(surest, slot.read().confidence);
        }
        return countSettled(slots) == 0 && surest < hopeless;
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
    const QPoint origin;   // of the plane in the window
    const GameFrame frame; // in the plane
    std::array<std::vector<RibbonLine>, 3> lines;
};

PlacedCards::PlacedCards(const QImage& picture)
    : window(picture) {
    const GameFrame whole = frameOf(window.size());
    area = QRectF(QPointF(whole.pixelX(bandLeft), whole.pixelY(bandTop)),
                  QPointF(whole.pixelX(bandRight), whole.pixelY(bandBottom)))
               .toAlignedRect()
               .intersected(window.rect());
    plane = lightness(window, area, Lettering::white);
    frame = whole.seenFrom(area.topLeft(), 1);
    usual = std::make_unique<Row>(plane, area.topLeft(), frame, BaseRange());
}

PlacedCards::~PlacedCards() = default;

const std::vector<PlacedCards::Row>& PlacedCards::movedRows() {
    if (!moved) {
        moved.emplace();
        for (const LetterRow& row : findLetterRows(plane, frame)) {
            moved->emplace_back(plane, area.topLeft(), row.frame,
                                BaseRange{row.level - roomAbove, row.level + roomBelow, false});
        }
    }
    return *moved;
}

ReadText PlacedCards::read(Script script, ReadingTools& tools, const Lexicon& names) {
    PlacedSlots best = usual->read(script, tools, names);
    std::array<double, 3> middles = usual->middles();
    // Off their places names are probably in a picture that is shifted or of another size, and may have been cut.
    const bool isClear = countSettled(best) > 0 && std::ranges::all_of(best, &PlacedSlot::isPrinted);
    const bool isInPlace =
        std::ranges::all_of(best, [](const PlacedSlot& slot) { return !slot.isSettled() || slot.source().inPlace; });
    if (!isClear || !isInPlace) {
        for (const Row& row : movedRows()) {
            const PlacedSlots slots = row.read(script, tools, names);
            if (countSettled(slots) >= countSettled(best) + isInPlace) {
                best = slots;
                middles = row.middles();
            }
            if (countSettled(best) == std::ssize(best)) {
                break;
            }
        }
    }
    const bool isOffer = std::ranges::any_of(best, &PlacedSlot::isNearName) &&
                         std::ranges::count_if(best, &PlacedSlot::isPrinted) >= fewestOffers;
    return textOf(best, isOffer, middles, window.size());
}

} // namespace pelloran
