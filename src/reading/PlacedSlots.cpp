#include "reading/PlacedSlots.h"

#include "names/ReadingDistance.h"

#include <algorithm>
#include <utility>

namespace pelloran {

namespace {

constexpr qsizetype fewestLetters = 4; // of a Latin reading that says what is printed
constexpr float sureEnough = 0.5F;     // its confidence
constexpr float printedCost = 0.5F;    // of Chinese characters that are no known name, yet clearly characters

OCRToken tokenOf(const QString& text, const PlacedSlot& slot, const QSize& window) {
    const QRectF& box = slot.source().box;
    return {text,
            slot.read().confidence,
            box.center().x() / window.width(),
            box.center().y() / window.height(),
            box.width() / window.width(),
            box.height() / window.height()};
}

} // namespace

void PlacedSlot::take(const LineReading& read, const PlacedLine& from, const Lexicon& names) {
    if (read.text.isEmpty() || isDone()) {
        return;
    }
    const bool wasSettled = settled.has_value();
    const auto result = names.settle(read.text, from.kinds);
    const double value = result ? 1 : double(read.confidence);
    if (result ? !settled || result->distance < settled->distance : !settled && value > worth) {
        settled = result;
        reading = read;
        worth = value;
        line = from;
    }
    // A line that comes out the same from different pictures of it says what is printed there. If that cannot well be a
    // known name, it is one that is missing from the list, however near another one may be.
    const QString letters = ReadingDistance::folded(read.text);
    if (letters.size() < fewestLetters || read.confidence < sureEnough) {
        return;
    }
    // Where a reading along another curve has settled, only one along the same curve says the same again.
    const std::pair sight(letters, from.kinds.toInt());
    const bool again = std::ranges::any_of(
        seen, [&](const auto& earlier) { return wasSettled ? earlier == sight : earlier.first == letters; });
    if (again && !(result && ReadingDistance::isLikely(read.text, result->text))) {
        unknown = true;
        settled.reset();
        reading = read;
        line = from;
    }
    seen.push_back(sight);
}

void PlacedSlot::take(const ChineseReading& read, const PlacedLine& from) {
    const bool another = !settled && looksLike && looksLike->text.size() == read.text.size() &&
                         contradicts(looksLike->letterCost, read.nameCost);
    const bool isName = read.isName && !another;
    const float confidence = std::clamp(1 - read.nameCost, 0.0F, 1.0F);
    if (settled || (!isName && double(confidence) <= worth)) {
        return;
    }
    reading = {read.text, confidence};
    worth = confidence;
    line = from;
    if (isName) {
        settled = {read.text, 0};
    }
    unknown = !isName && read.letterCost <= printedCost && read.text.size() > 1;
    if (!isName && (!looksLike || read.letterCost < looksLike->letterCost)) {
        looksLike = read;
    }
}

std::ptrdiff_t countSettled(const PlacedSlots& slots) {
    return std::ranges::count_if(slots, &PlacedSlot::isSettled);
}

void readInto(PlacedSlots& slots, std::vector<PlacedWork> work, ReadingTools& tools, const Lexicon& names) {
    if (work.empty()) {
        return;
    }
    std::vector<QImage> pictures;
    pictures.reserve(work.size());
    for (const PlacedWork& each : work) {
        pictures.push_back(each.picture);
    }
    const std::vector<LineReading> readings = tools.read(std::move(pictures));
    for (std::size_t i = 0; i < readings.size(); ++i) {
        slots[work[i].slot].take(readings[i], work[i].line, names);
    }
}

std::ptrdiff_t PlacedRow::countOffers() const {
    return isOffer ? std::ranges::count_if(slots, [](const PlacedSlot& slot) { return slot.offer().has_value(); }) : 0;
}

ReadText textOf(const PlacedRow& row, const QSize& window) {
    ReadText text;
    for (const PlacedSlot& slot : row.slots) {
        if (const auto offer = slot.offer(); offer && row.isOffer) {
            OCRToken token = tokenOf(*offer, slot, window);
            if (slot.read().text != *offer) {
                token.letters = slot.read().text;
            }
            text.tokens.push_back(std::move(token));
        } else if (!slot.read().text.isEmpty()) {
            text.unsettled.push_back(tokenOf(slot.read().text, slot, window));
        }
    }
    if (row.isOffer) {
        text.columns = row.middles;
        for (double& middle : *text.columns) {
            middle /= window.width();
        }
    }
    return text;
}

} // namespace pelloran
