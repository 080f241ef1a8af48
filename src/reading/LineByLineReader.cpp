#include "LineByLineReader.h"

#include "FreeReading.h"
#include "PlacedCards.h"
#include "PlacedHeroes.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace pelloran {

LineByLineReader::LineByLineReader(std::unique_ptr<LineReader> lines)
    : lineReader(std::move(lines)) {}

ReadText LineByLineReader::read(const QImage& image, const ReadingHints& hints) {
    if (image.isNull() || (hints.names && hints.names->isEmpty())) {
        return {};
    }
    ReadText placed;
    if (hints.names) {
        placed = readAtPlaces(image, hints);
        // A card may be missing from the names or hidden; classes are all known.
        const std::size_t enough = hints.offers == ReadingHints::Offers::cards ? 1 : 3;
        if (placed.tokens.size() >= enough) {
            return placed;
        }
    }
    ReadingTools tools{*lineReader};
    ReadText anywhere = readAnywhere(tools, remembered, image, hints);
    if (placed.tokens.size() > anywhere.tokens.size()) {
        std::swap(placed, anywhere);
    }
    anywhere.unsettled.insert(anywhere.unsettled.end(), placed.unsettled.begin(), placed.unsettled.end());
    return anywhere;
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
        ReadText text = cards ? cards->read(script, tools, *hints.names)
                              : readHeroesAtPlaces(image, script, tools, *hints.names);
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
