#pragma once

#include "names/Lexicon.h"
#include "platform/TextReader.h"
#include "reading/chinese/ChineseLineReader.h"
#include "reading/ReadingTools.h"
#include "reading/SteadyLines.h"

#include <QRectF>
#include <QSize>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace pelloran {

// A line that is read.
struct PlacedLine {
    QRectF box;          // of the letters, in pixels of the window
    NameKinds kinds;     // of cards with such lines
    bool inPlace = true; // where this game's screens have such lines
    LinePlace band{};    // in which a name in its place would stand
};

// What has been read at one of the three places of offers.
class PlacedSlot {
public:
    // A further reading of a line.
    void take(const LineReading& read, const PlacedLine& from, const Lexicon& names);

    void take(const ChineseReading& read, const PlacedLine& from);

    // What is offered here: the known name that the readings can only be.
    std::optional<QString> offer() const { return settled ? std::optional(settled->text) : std::nullopt; }

    bool isSettled() const { return settled.has_value(); }

    // Holds a name, known or not.
    bool isPrinted() const { return unknown || settled; }

    // Read exactly.
    bool isExact() const { return settled && settled->distance == 0; }

    // Nothing is gained by reading on.
    bool isDone() const { return unknown || isExact(); }

    // What settled, else what came nearest.
    const LineReading& read() const { return reading; }

    const PlacedLine& source() const { return line; }

private:
    std::optional<Lexicon::Settled> settled;
    LineReading reading;
    double worth = -1; // of the reading, to tell which of several that do not settle is best
    PlacedLine line;
    std::vector<std::pair<QString, NameKinds::Int>> seen; // letters of earlier readings, and of which curve
    bool unknown = false;                                 // the line holds a name that is not known
    std::optional<ChineseReading> looksLike;              // what looked most like Chinese characters and was no name
};

using PlacedSlots = std::array<PlacedSlot, 3>;

std::ptrdiff_t countSettled(const PlacedSlots& slots);

// One picture to be read for a place.
struct PlacedWork {
    std::size_t slot;
    PlacedLine line;
    QImage picture;
};

// Reads as many as may be read.
void readInto(PlacedSlots& slots, std::vector<PlacedWork> work, ReadingTools& tools, const Lexicon& names);

// What has been read at the three places.
struct PlacedRow {
    PlacedSlots slots;
    std::array<double, 3> middles{};  // of the places, in pixels of the window
    std::array<LinePlace, 3> bands{}; // in which names would stand that were not found
    bool isOffer = false;             // else nothing is to be made of it
    bool inPlace = true;              // where this game's screens have such rows

    // Tokens that it makes.
    std::ptrdiff_t countOffers() const;

    // In which a name is, or would be.
    const LinePlace& bandOf(std::size_t slot) const {
        const LinePlace& found = slots[slot].source().band;
        return found.height > 0 ? found : bands[slot];
    }

    // All three names are known: nothing more is to be read.
    bool isComplete() const { return isOffer && countSettled(slots) == std::ssize(slots); }
};

ReadText textOf(const PlacedRow& row, const QSize& window);

} // namespace pelloran
