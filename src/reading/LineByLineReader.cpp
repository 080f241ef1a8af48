#include "LineByLineReader.h"

#include "FreeReading.h"
#include "PlacedCards.h"
#include "PlacedHeroes.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace pelloran {

namespace {

constexpr double sameColumn =
    0.05; // of the window's width; offers stand further apart in windows up to five times as wide as high

// Nothing more is to be found elsewhere.
bool isEnough(const ReadText& text, const ReadingHints& hints) {
    // Chinese readings that did not settle stand as they are, and another way to find the line may read it better.
    const bool allKnown =
        std::ranges::all_of(text.tokens, [&](const OCRToken& token) { return hints.names->contains(token.text); });
    // A card may be missing from the names or hidden; classes are all known.
    const std::size_t fewest = hints.offers == ReadingHints::Offers::cards ? 1 : 3;
    return allKnown && text.tokens.size() >= fewest;
}

// Of two ways to read an image the one that found more, with the better readings of the other.
ReadText merged(ReadText first, ReadText second, const ReadingHints& hints) {
    if (second.tokens.size() > first.tokens.size()) {
        std::swap(first, second);
    }
    for (OCRToken& token : first.tokens) {
        for (const OCRToken& other : second.tokens) {
            if (std::abs(other.midX - token.midX) < sameColumn && hints.names &&
                hints.names->resemblance(other.text) > hints.names->resemblance(token.text)) {
                token.text = other.text;
                token.confidence = other.confidence;
            }
        }
    }
    if (!first.columns) {
        first.columns = second.columns;
    }
    first.unsettled.insert(first.unsettled.end(), second.unsettled.begin(), second.unsettled.end());
    return first;
}

} // namespace

LineByLineReader::LineByLineReader(std::unique_ptr<LineReader> lines)
    : lineReader(std::move(lines)) {}

ReadText LineByLineReader::read(const QImage& image, const ReadingHints& hints) {
    if (image.isNull() || (hints.names && hints.names->isEmpty())) {
        return {};
    }
    ReadText placed;
    if (hints.names) {
        placed = readAtPlaces(image, hints);
        if (isEnough(placed, hints)) {
            return placed;
        }
    }
    ReadingTools tools{*lineReader};
    return merged(std::move(placed), readAnywhere(tools, remembered, image, hints), hints);
}

// In the script that the client was last seen to use; in the other one where that finds nothing.
ReadText LineByLineReader::readAtPlaces(const QImage& image, const ReadingHints& hints) {
    std::vector<Script> scripts{Script::latin, Script::chinese};
    if (hints.script) {
        scripts = {*hints.script};
    } else if (remembered == Script::chinese) {
        std::ranges::reverse(scripts);
    }
    std::optional<PlacedCards> cards;
    if (hints.offers == ReadingHints::Offers::cards) {
        cards.emplace(image);
    }
    ReadText best;
    for (const Script script : scripts) {
        ReadingTools tools{*lineReader};
        ReadText text =
            cards ? cards->read(script, tools, *hints.names) : readHeroesAtPlaces(image, script, tools, *hints.names);
        if (!text.tokens.empty()) {
            remembered = script;
        }
        if (text.tokens.size() > best.tokens.size() || best.tokens.empty()) {
            std::swap(best, text);
        }
        best.unsettled.insert(best.unsettled.end(), text.unsettled.begin(), text.unsettled.end());
        if (!best.tokens.empty()) {
            break;
        }
    }
    return best;
}

} // namespace pelloran
