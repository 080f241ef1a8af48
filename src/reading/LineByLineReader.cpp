#include "LineByLineReader.h"

#include "FreeReading.h"
#include "PlacedReading.h"

namespace pelloran {

LineByLineReader::LineByLineReader(std::unique_ptr<LineReader> lines)
    : lineReader(std::move(lines)) {}

ReadText LineByLineReader::read(const QImage& image, const ReadingHints& hints) {
    if (image.isNull() || (hints.names && hints.names->isEmpty())) {
        return {};
    }
    ReadText placed;
    if (hints.names && hints.script.value_or(remembered.value_or(Script::latin)) == Script::latin) {
        ReadingTools tools{*lineReader, remembered};
        placed = hints.offers == ReadingHints::Offers::cards ? readCardsAtPlaces(tools, image, *hints.names)
                                                             : readHeroesAtPlaces(tools, image, *hints.names);
        const std::size_t enough = hints.offers == ReadingHints::Offers::cards ? 1 : 3; // classes are all known
        if (placed.tokens.size() >= enough) {
            remembered = Script::latin;
            return placed;
        }
    }
    ReadingTools tools{*lineReader, remembered};
    ReadText anywhere = readAnywhere(tools, image, hints);
    if (placed.tokens.size() > anywhere.tokens.size()) {
        std::swap(placed, anywhere);
    }
    anywhere.unsettled.insert(anywhere.unsettled.end(), placed.unsettled.begin(), placed.unsettled.end());
    return anywhere;
}

} // namespace pelloran
