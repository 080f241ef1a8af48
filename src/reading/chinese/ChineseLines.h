#pragma once

#include "reading/chinese/ChineseInk.h"
#include "reading/chinese/ChineseLineReader.h"
#include "reading/HeroLines.h"
#include "reading/LineCropper.h"
#include "reading/RibbonLines.h"

namespace pelloran {

// The part of a ribbon with its characters: they stand on the baseline and are 0.014 heights tall, printed ones 0.018
// around the same middle. What was found of a line may be all but a character at each end.
inline constexpr RibbonCut chineseCut{.above = 0.0205, .below = 0.0075, .beside = 0.025, .rows = stripRows};

// A line is looked at in several ways, one after the other until it is clear.
enum class ChineseLooks { first, further, all };

// Reads the name on a card's ribbon. `grey` is lightness in which grey letters stand out. None where no characters are.
std::optional<ChineseReading> readRibbon(const RibbonLine& line, const Plane& grey, const GameFrame& frame,
                                         ChineseLooks looks, ChineseLineReader& reader, const Lexicon& names);

// How dense letters are, whatever their script.
struct StrokeCount {
    int strokes = 0; // met on the way down all columns with ink
    int columns = 0;

    StrokeCount& operator+=(const StrokeCount& other) {
        strokes += other.strokes;
        columns += other.columns;
        return *this;
    }

    double perColumn() const { return columns ? double(strokes) / columns : 0; }
};

StrokeCount strokesOn(const RibbonLine& line, const Plane& grey, const GameFrame& frame);

// Reads a line below a hero.
std::optional<ChineseReading> readHeroLine(const HeroLine& line, ChineseLineReader& reader, const Lexicon& names);

// Reads a line that was found anywhere.
std::optional<ChineseReading> readCleanLine(const CleanLine& line, const ChineseAcceptance& acceptance,
                                            ChineseLineReader& reader, const Lexicon& names);

} // namespace pelloran
