#include "PlacedSlots.h"

#include "names/ReadingDistance.h"

#include <algorithm>

namespace pelloran {

namespace {

constexpr qsizetype fewestLetters = 4; // of a reading that says what is printed
constexpr qsizetype fewestChineseLetters = 2;
constexpr float sureEnough = 0.5F; // confidence of such a reading

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
    const bool chinese = countChineseLetters(read.text) > 0;
    // Confidence is a poor judge of misread Chinese names; how close they come to a name that exists is a good one.
    const double value = result ? 1 : chinese ? names.resemblance(read.text) : double(read.confidence);
    if (result ? !settled || result->distance < settled->distance : !settled && value > worth) {
        settled = result;
        reading = read;
        worth = value;
        line = from;
    }
    // A line that comes out the same from different pictures of it says what is printed there. If that cannot well be a
    // known name, it is one that is missing from the list, however near another one may be.
    const QString letters = ReadingDistance::folded(read.text);
    if (chinese || letters.size() < fewestLetters || read.confidence < sureEnough) {
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

std::optional<QString> PlacedSlot::offer() const {
    if (settled) {
        return settled->text;
    }
    return countChineseLetters(reading.text) >= fewestChineseLetters ? std::optional(reading.text) : std::nullopt;
}

std::ptrdiff_t countSettled(const PlacedSlots& slots) {
    return std::ranges::count_if(slots, &PlacedSlot::isSettled);
}

void readInto(PlacedSlots& slots, std::vector<PlacedWork> work, Script script, ReadingTools& tools,
              const Lexicon& names) {
    if (work.empty()) {
        return;
    }
    std::vector<LineReader::Work> pictures;
    pictures.reserve(work.size());
    for (const PlacedWork& each : work) {
        pictures.push_back({each.picture, script});
    }
    const std::vector<LineReading> readings = tools.read(std::move(pictures));
    for (std::size_t i = 0; i < readings.size(); ++i) {
        slots[work[i].slot].take(readings[i], work[i].line, names);
    }
}

ReadText textOf(const PlacedSlots& slots, bool isOffer, const std::array<double, 3>& middles, const QSize& window) {
    ReadText text;
    for (const PlacedSlot& slot : slots) {
        if (const auto offer = slot.offer(); offer && isOffer) {
            text.tokens.push_back(tokenOf(*offer, slot, window));
        } else if (!slot.read().text.isEmpty()) {
            text.unsettled.push_back(tokenOf(slot.read().text, slot, window));
        }
    }
    if (isOffer) {
        text.columns = middles;
        for (double& middle : *text.columns) {
            middle /= window.width();
        }
    }
    return text;
}

} // namespace pelloran
