#pragma once

#include "names/Lexicon.h"
#include "platform/TextReader.h"
#include "ReadingTools.h"

#include <QRectF>
#include <QSize>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace pelloran {

// A line of which pictures are read.
struct PlacedLine {
    QRectF box;          // of the letters, in pixels of the window
    NameKinds kinds;     // of cards with such lines
    bool inPlace = true; // where this game's screens have such lines
};

// What has been read at one of the three places of offers.
class PlacedSlot {
public:
    // A further reading of a line.
    void take(const LineReading& read, const PlacedLine& from, const Lexicon& names);

    // What is offered here: the known name that the readings can only be. A Chinese reading that is no known name
    // stands as it is: letters of it may be misread, and whoever compares it with the names forgives that.
    std::optional<QString> offer() const;

    bool isSettled() const { return settled.has_value(); }

    // Settled, or a Chinese reading of which few letters can be wrong.
    bool isNearName() const { return settled || (offer() && worth >= nearName); }

    // Holds a name, known or not.
    bool isPrinted() const { return unknown || offer(); }

    // Nothing is gained by reading on.
    bool isDone() const { return unknown || (settled && settled->distance == 0); }

    // What settled, else what came nearest.
    const LineReading& read() const { return reading; }

    const PlacedLine& source() const { return line; }

private:
    static constexpr double nearName = 0.74; // resemblance: one of four letters is wrong

    std::optional<Lexicon::Settled> settled;
    LineReading reading;
    double worth = -1; // of the reading, to tell which of several that do not settle is best
    PlacedLine line;
    std::vector<std::pair<QString, NameKinds::Int>> seen; // letters of earlier readings, and of which curve
    bool unknown = false;                                 // the line holds a name that is not known
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
void readInto(PlacedSlots& slots, std::vector<PlacedWork> work, Script script, ReadingTools& tools,
              const Lexicon& names);

// `middles` of the three places in pixels of the window. Unless it `isOffer` all is unsettled.
ReadText textOf(const PlacedSlots& slots, bool isOffer, const std::array<double, 3>& middles, const QSize& window);

} // namespace pelloran
