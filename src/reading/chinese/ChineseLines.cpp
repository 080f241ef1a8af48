#include "reading/chinese/ChineseLines.h"

#include <array>
#include <functional>
#include <span>

namespace pelloran {

namespace {

// In which way a line is looked at, one after the other until it is clear.
struct Look {
    double offset; // of the strip
    InkRange range;
    int level;       // see trimmedLine()
    bool fromMiddle; // what hangs together around the middle, rather than all that was found
};

constexpr std::array looks{
    Look{0, {}, 128, false},         Look{0, {}, 128, true}, // something else stands on the ribbon
    Look{0, {0.10, 1.0}, 80, false},                         // thin strokes
    Look{0.0015, {}, 128, false},                            // an edge of the ribbon in the strip
    Look{-0.0015, {}, 128, false},
};

// Around the letters, as a part of their height. Thin strokes at the edges of a line below a hero were not found.
constexpr double roomBelowHero = 0.45;
constexpr double roomAnywhere = 0.25;
// Ink from which on a line below a hero is looked at, one after the other until it is clear: thin strokes are faint in
// small windows.
constexpr std::array heroLevels{60, 110};

std::optional<Plane> lineOn(const RibbonLine& ribbon, const Plane& grey, const GameFrame& frame, const Look& look) {
    RibbonLine moved = ribbon;
    moved.base += look.offset;
    const RibbonStrip strip = stripOf(moved, grey, frame, chineseCut);
    const Extent seen{strip.left, strip.right};
    const int middle = (seen.left + seen.right) / 2;
    return trimmedLine(inkOf(strip.plane, seen, look.range),
                       look.fromMiddle ? Extent{middle - stripRows / 3, middle + stripRows / 3} : seen, look.level);
}

// Names of which some may be missing are not taken as lightly as those that are all known.
std::optional<ChineseReading> readStrictly(std::size_t count,
                                           const std::function<std::optional<Plane>(std::size_t)>& sight,
                                           const ChineseAcceptance& acceptance, ChineseLineReader& reader,
                                           const Lexicon& names) {
    auto reading = reader.read(count, sight, names, acceptance);
    if (reading && reading->isName && names.isStrict(reading->text)) {
        reading = reader.read(count, sight, names, ofChineseCards);
    }
    return reading;
}

} // namespace

std::optional<ChineseReading> readRibbon(const RibbonLine& line, const Plane& grey, const GameFrame& frame,
                                         ChineseLooks which, ChineseLineReader& reader, const Lexicon& names) {
    const auto chosen = which == ChineseLooks::first     ? std::span(looks).first(1)
                        : which == ChineseLooks::further ? std::span(looks).subspan(1)
                                                         : std::span(looks);
    return reader.read(
        chosen.size(), [&](std::size_t index) { return lineOn(line, grey, frame, chosen[index]); }, names,
        ofChineseCards);
}

StrokeCount strokesOn(const RibbonLine& ribbon, const Plane& grey, const GameFrame& frame) {
    StrokeCount count;
    const auto line = lineOn(ribbon, grey, frame, looks.front());
    for (int x = 0; line && x < line->width; ++x) {
        int strokes = 0;
        for (int y = 0; y < line->height; ++y) {
            strokes += line->at(x, y) > 127 && (y == 0 || line->at(x, y - 1) <= 127);
        }
        count += {strokes, strokes > 0};
    }
    return count;
}

std::optional<ChineseReading> readHeroLine(const HeroLine& line, ChineseLineReader& reader, const Lexicon& names) {
    const double room = roomBelowHero * line.letters.height();
    const QRect area = line.letters.adjusted(-room, -room, room, room)
                           .toAlignedRect()
                           .intersected(QRect(0, 0, line.ink.width, line.ink.height));
    if (area.isEmpty()) {
        return std::nullopt;
    }
    const Plane ink = resampled(cropped(line.ink, area), double(stripRows) / area.height());
    return readStrictly(
        heroLevels.size(), [&](std::size_t index) { return trimmedLine(ink, {0, ink.width}, heroLevels[index]); },
        ofChineseClasses, reader, names);
}

std::optional<ChineseReading> readCleanLine(const CleanLine& line, const ChineseAcceptance& acceptance,
                                            ChineseLineReader& reader, const Lexicon& names) {
    Plane ink = pictureOf(line, {stripRows, roomAnywhere});
    for (std::uint8_t& pixel : ink.pixels) {
        pixel = std::uint8_t(255 - pixel);
    }
    return readStrictly(1, [&](std::size_t) { return trimmedLine(ink, {0, ink.width}); }, acceptance, reader, names);
}

} // namespace pelloran
