#include "reading/LineByLineReader.h"

#include "base/Log.h"
#include "reading/FreeReading.h"
#include "reading/NamePlaces.h"
#include "reading/PlacedCards.h"
#include "reading/PlacedHeroes.h"
#include "reading/SteadyLines.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>
#include <vector>

namespace pelloran {

namespace {

// Of 60 names in real clerical script, all were read at 768, 34 at 576; of such as the stage paints, all and 63 of 78.
constexpr int leastChineseHeight = 700;

// A pick of which not all is known is read anew after so many looks, though it looks the same.
constexpr int lookAnew = 5;

// Nothing more is to be found elsewhere: a card may be missing from the names or hidden; classes are all known.
bool isEnough(const ReadText& text, const ReadingHints& hints) {
    return text.tokens.size() >= (hints.offers == ReadingHints::Offers::cards ? 1U : 3U);
}

// Of two ways to read an image the one that found more.
ReadText merged(ReadText first, ReadText second) {
    if (second.tokens.size() > first.tokens.size()) {
        std::swap(first, second);
    }
    if (!first.columns) {
        first.columns = second.columns;
    }
    first.unsettled.insert(first.unsettled.end(), second.unsettled.begin(), second.unsettled.end());
    return first;
}

} // namespace

LineByLineReader::LineByLineReader(std::unique_ptr<LineReader> lines, std::unique_ptr<ChineseLineReader> chineseLines)
    : lineReader(std::move(lines))
    , chineseReader(std::move(chineseLines)) {}

ReadText LineByLineReader::read(const QImage& image, const ReadingHints& hints) {
    if (image.isNull() || (hints.names && hints.names->isEmpty())) {
        return {};
    }
    ReadingTools tools{*lineReader, chineseReader.get()};
    if (!hints.names) {
        return readAnywhere(tools, remembered, image, hints);
    }
    if (auto text = readWhatChanged(image, hints)) {
        return *text;
    }
    Look look = readAtPlaces(image, hints);
    if (!isEnough(look.text, hints)) {
        look.text = merged(std::move(look.text), readAnywhere(tools, remembered, image, hints));
        look.inPlaceOnly = false;
    }
    ReadText text = look.text;
    remember(std::move(look), image);
    return text;
}

void LineByLineReader::forget() {
    remembered.reset();
    last.reset();
}

bool LineByLineReader::Look::suits(const QSize& size, const ReadingHints& asked) const {
    return size == window && asked.offers == hints.offers && asked.script == hints.script && asked.names == hints.names;
}

bool LineByLineReader::Look::isSteady(std::size_t slot, const QImage& image) const {
    return pelloran::isSteady(samples[slot], sampleOf(image, row.bandOf(slot)));
}

void LineByLineReader::Look::keep(std::size_t slot, const QImage& image, bool again) {
    samples[slot] = sampleOf(image, row.bandOf(slot));
    isSure[slot] = row.slots[slot].isExact() || again;
}

void LineByLineReader::remember(Look look, const QImage& image) {
    const bool comparable = last && last->suits(image.size(), look.hints);
    for (std::size_t slot = 0; slot < look.samples.size(); ++slot) {
        const bool again =
            comparable && last->row.slots[slot].offer() == look.row.slots[slot].offer() && last->isSteady(slot, image);
        look.keep(slot, image, again);
    }
    last = std::move(look);
}

// Nothing where there is no look to compare with, or where less is read than was: then all is to be read, as without an
// earlier look.
std::optional<ReadText> LineByLineReader::readWhatChanged(const QImage& image, const ReadingHints& hints) {
    if (!last || !last->suits(image.size(), hints)) {
        last.reset();
        return std::nullopt;
    }
    std::array<bool, 3> changed{};
    for (std::size_t slot = 0; slot < changed.size(); ++slot) {
        changed[slot] = !last->isSure[slot] || !last->isSteady(slot, image);
    }
    if (std::ranges::none_of(changed, std::identity())) {
        // What was not read may have been under a glow for as long as it was looked at.
        if (last->row.isComplete() || ++last->repeated % lookAnew != 0) {
            return last->text;
        }
        return std::nullopt;
    }
    if (!last->row.isOffer || !last->row.inPlace || !last->inPlaceOnly) {
        return std::nullopt;
    }
    PlacedRow row = last->row;
    for (std::size_t slot = 0; slot < changed.size(); ++slot) {
        if (changed[slot] || !row.slots[slot].isSettled()) {
            row.slots[slot] = {};
        }
    }
    if (countSettled(row.slots) == 0) {
        return std::nullopt;
    }
    ReadingTools tools{*lineReader, chineseReader.get()};
    row = hints.offers == ReadingHints::Offers::cards
              ? PlacedCards(image, row.slots).readUsual(last->script, tools, *hints.names)
              : readHeroesAgain(image, last->script, tools, *hints.names, row);
    const bool isLess = countSettled(row.slots) < countSettled(last->row.slots);
    if (!row.isOffer || !row.inPlace || isLess) {
        return std::nullopt;
    }
    Look look = *last; // what is steady stays compared with what was read: little by little it could become anything
    look.row = std::move(row);
    look.text = textOf(look.row, image.size());
    for (std::size_t slot = 0; slot < changed.size(); ++slot) {
        if (changed[slot]) {
            look.keep(slot, image,
                      last->row.slots[slot].offer() == look.row.slots[slot].offer() && last->isSteady(slot, image));
        }
    }
    last = std::move(look);
    return last->text;
}

// In the script that the client was last seen to use, or in that which the lines look like; in the other one where that
// finds nothing.
LineByLineReader::Look LineByLineReader::readAtPlaces(const QImage& image, const ReadingHints& hints) {
    std::optional<PlacedCards> cards;
    if (hints.offers == ReadingHints::Offers::cards) {
        cards.emplace(image);
    }
    std::vector<Script> scripts{Script::latin, Script::chinese};
    if (hints.script) {
        scripts = {*hints.script};
    } else if ((remembered ? *remembered : cards ? cards->likelyScript() : Script::chinese) == Script::chinese) {
        std::ranges::reverse(scripts);
    }
    std::array<ReadingTools, 2> tools{ReadingTools{*lineReader, chineseReader.get()},
                                      ReadingTools{*lineReader, chineseReader.get()}};
    if (cards) {
        // The one of which a name is seen at once, before either is read to the end in vain.
        const auto seen = std::ranges::find_if(
            scripts, [&](Script script) { return cards->glance(script, tools[std::size_t(script)], *hints.names); });
        if (seen != scripts.end()) {
            std::rotate(scripts.begin(), seen, seen + 1);
        }
    }
    const bool isGuess = !hints.script && !remembered;
    Look best{image.size(), hints, scripts.front(), {}};
    std::vector<OCRToken> unsettled;
    for (const Script script : scripts) {
        ReadingTools& own = tools[std::size_t(script)];
        PlacedRow row =
            cards ? cards->read(script, own, *hints.names) : readHeroesAtPlaces(image, script, own, *hints.names);
        ReadText text = textOf(row, image.size());
        unsettled.insert(unsettled.end(), text.unsettled.begin(), text.unsettled.end());
        if (script == scripts.front() || row.countOffers() > best.row.countOffers()) {
            best.script = script;
            best.row = std::move(row);
            best.text = std::move(text);
        }
        if (!best.text.tokens.empty()) {
            remembered = script;
            break;
        }
    }
    best.text.unsettled = std::move(unsettled);
    // Of a script that was only tried, characters have to be seen: it may be another one, or nothing may stand there.
    const bool isChinese =
        best.script == Script::chinese && (!isGuess || std::ranges::any_of(best.row.slots, &PlacedSlot::isPrinted));
    if (isChinese && !best.row.isComplete()) {
        tellOfSmallWindow(image.size());
    }
    return best;
}

void LineByLineReader::tellOfSmallWindow(const QSize& window) {
    const double height = frameOf(window).height;
    if (height < leastChineseHeight && !toldOfSmallWindow) {
        log(QStringLiteral("the game's picture is %1 pixels high; Chinese names are read surely from %2 on")
                .arg(std::lround(height))
                .arg(leastChineseHeight));
        toldOfSmallWindow = true;
    }
}

} // namespace pelloran
