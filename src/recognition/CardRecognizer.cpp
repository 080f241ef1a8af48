#include "recognition/CardRecognizer.h"

#include "data/WinrateStore.h"
#include "names/NameMatching.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace pelloran {

namespace {

// A weaker match is more often a wrong one than a badly read one.
constexpr double minimumScore = 0.86;

// Of a line that equals a name in full, and of no other.
constexpr double exactScore = 1.0;

// Normalised names outside these lengths are cost digits, keywords or rules text.
constexpr std::size_t minimumNameLength = 2;
constexpr std::size_t maximumNameLength = 14;

// Small names gain from being enlarged before they are read.
constexpr double enlargement = 1.5;

// Scores this close are equally good.
constexpr double heroTieMargin = 0.02;

// Lines that stand so near to each other below heroes belong to one: even on the widest windows the next hero is twice
// as far.
constexpr double heroColumn = 0.05;

constexpr double oneThird = 1.0 / 3.0;
constexpr double twoThirds = 2.0 / 3.0;

struct Band {
    double left, right, top, bottom;

    // Bounds included.
    bool holds(const OCRToken& token) const {
        return token.midY >= top && token.midY <= bottom && token.midX >= left && token.midX <= right;
    }

    QRectF rectangle() const { return {QPointF(left, top), QPointF(right, bottom)}; }
};

// To the right of the cards lies the deck list, below the heroes the buttons.
constexpr Band cards{.left = 0.08, .right = 0.72, .top = 0.28, .bottom = 0.78};
constexpr Band heroes{.left = 0.08, .right = 0.92, .top = 0.3, .bottom = 0.85};

// Absent where a whole number of pixels cannot express the product.
std::optional<int> enlarged(int length) {
    const double product = length * enlargement;
    if (!std::isfinite(product) || product > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(product);
}

QImage enlargedCopy(const QImage& image) {
    const auto width = enlarged(image.width());
    const auto height = enlarged(image.height());
    if (!width || !height) {
        return {};
    }
    return image.scaled(*width, *height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

template <typename Match>
RecognitionCandidate candidate(const QString& id, const Match& match, const OCRToken& token) {
    return {id, match.score, match.text, token.midX, token.midY};
}

// Keeps the first candidate of each id until a later one of the same id `replaces` it.
std::vector<RecognitionCandidate> merge(const std::vector<RecognitionCandidate>& candidates, auto replaces) {
    std::vector<RecognitionCandidate> merged;
    for (const RecognitionCandidate& later : candidates) {
        const auto kept = std::ranges::find(merged, later.id, &RecognitionCandidate::id);
        if (kept == merged.end()) {
            merged.push_back(later);
        } else if (replaces(later, *kept)) {
            *kept = later;
        }
    }
    return merged;
}

DraftSlot nearestColumn(double midX, const std::array<double, 3>& columns) {
    const auto slots = DraftSlot::allCases();
    return *std::ranges::min_element(slots, {}, [&](DraftSlot slot) { return std::abs(midX - columns[slot]); });
}

bool isSameColumn(double midX, double otherX, const ReadText& text) {
    return text.columns ? nearestColumn(midX, *text.columns) == nearestColumn(otherX, *text.columns)
                        : std::abs(midX - otherX) < heroColumn;
}

DraftSlot slotOfSingle(double midX) {
    return midX < oneThird ? DraftSlot::left : midX < twoThirds ? DraftSlot::middle : DraftSlot::right;
}

std::vector<SlotMatch> withoutMatches(const QString& methodPrefix, bool isEmpty) {
    const QString method = methodPrefix + (isEmpty ? QStringLiteral("-empty") : QStringLiteral("-miss"));
    std::vector<SlotMatch> matches;
    for (const DraftSlot slot : DraftSlot::allCases()) {
        matches.push_back({slot, std::nullopt, 0, method, QString()});
    }
    return matches;
}

std::pair<DraftSlot, DraftSlot> slotsOfPair(double firstX, double secondX) {
    const DraftSlot first = firstX < 0.45 ? DraftSlot::left : DraftSlot::middle;
    const DraftSlot second = secondX > 0.55 ? DraftSlot::right : DraftSlot::middle;
    if (first == second) {
        return {DraftSlot::left, DraftSlot::right};
    }
    return {first, second};
}

} // namespace

CardRecognizer::CardRecognizer(const WinrateStore& winrates, NameLengths nameLengths)
    : store(winrates)
    , lengths(nameLengths) {}

QRectF CardRecognizer::cardBand() {
    return cards.rectangle();
}

QRectF CardRecognizer::heroBand() {
    return heroes.rectangle();
}

ReadingHints CardRecognizer::cardHints() const {
    return {cardBand(), ReadingHints::Offers::cards, {}, store.cardLexicon()};
}

ReadingHints CardRecognizer::heroHints() const {
    return {heroBand(), ReadingHints::Offers::heroes, {}, store.classLexicon()};
}

ReadText CardRecognizer::ocrTokens(const QImage& image, TextReader& reader, const ReadingHints& hints) {
    if (image.isNull()) {
        return {};
    }
    ReadText text = runVisionTokens(image, reader, hints);
    // A reader that finds lines first and scales each to the size it reads best has done what the second look is for.
    if (reader.scalesLinesItself()) {
        return text;
    }
    if (const QImage copy = enlargedCopy(image); !copy.isNull()) {
        const ReadText more = runVisionTokens(copy, reader, hints);
        text.tokens.insert(text.tokens.end(), more.tokens.begin(), more.tokens.end());
        text.unsettled.insert(text.unsettled.end(), more.unsettled.begin(), more.unsettled.end());
    }
    return text;
}

ReadText CardRecognizer::runVisionTokens(const QImage& bitmap, TextReader& reader, const ReadingHints& hints) {
    ReadText text = reader.read(bitmap, hints);
    for (OCRToken& token : text.tokens) {
        token.text = token.text.trimmed();
    }
    std::erase_if(text.tokens, [](const OCRToken& token) { return token.text.isEmpty(); });
    return text;
}

std::vector<SlotMatch> CardRecognizer::recognizeCards(const ReadText& text) const {
    std::vector<RecognitionCandidate> candidates;
    for (const OCRToken& token : text.tokens) {
        if (!cards.holds(token)) {
            continue;
        }
        const std::size_t length = characterCount(NameMatching::normalize(token.text));
        const bool tooLong = length > maximumNameLength;
        if (length < minimumNameLength || (tooLong && lengths == NameLengths::limited)) {
            continue;
        }
        const auto match = store.matchName({token.text}, lengths);
        if (match && match->score >= (tooLong ? exactScore : minimumScore)) {
            candidates.push_back(candidate(match->cardId, *match, token));
        }
    }
    candidates = mergeCards(candidates);
    std::ranges::stable_sort(candidates, {}, &RecognitionCandidate::midX);
    return assign(pickThreeHorizontally(candidates), text, QStringLiteral("card-layout"));
}

std::vector<SlotMatch> CardRecognizer::recognizeHeroes(const ReadText& text) const {
    std::vector<RecognitionCandidate> candidates;
    std::vector<RecognitionCandidate> byHero;
    for (const OCRToken& token : text.tokens) {
        if (!heroes.holds(token)) {
            continue;
        }
        const auto match = store.matchClass({token.text}, lengths);
        if (match && match->score >= minimumScore) {
            candidates.push_back(candidate(match->key, *match, token));
        } else if (const auto hero = store.matchHero(token.text, lengths)) {
            byHero.push_back(candidate(hero->key, *hero, token));
        }
    }
    // Newer screens have heroes by their names alone. Where the class is printed too, that is what counts.
    std::erase_if(byHero, [&](const RecognitionCandidate& hero) {
        return std::ranges::any_of(candidates, [&](const RecognitionCandidate& named) {
            return named.id == hero.id || isSameColumn(named.midX, hero.midX, text);
        });
    });
    candidates.insert(candidates.end(), byHero.begin(), byHero.end());
    return assign(mergeHeroes(candidates), text, QStringLiteral("class-layout"));
}

std::vector<SlotMatch> CardRecognizer::assign(const std::vector<RecognitionCandidate>& candidates, const ReadText& text,
                                              const QString& methodPrefix) const {
    return text.columns && lengths != NameLengths::limited ? assignToColumns(candidates, *text.columns, methodPrefix)
                                                           : assignToSlots(candidates, methodPrefix);
}

std::vector<SlotMatch> CardRecognizer::recognizeCards(const QImage& image, TextReader& reader) const {
    return recognizeCards(ocrTokens(image, reader, cardHints()));
}

std::vector<SlotMatch> CardRecognizer::recognizeHeroes(const QImage& image, TextReader& reader) const {
    return recognizeHeroes(ocrTokens(image, reader, heroHints()));
}

std::vector<RecognitionCandidate> mergeCards(const std::vector<RecognitionCandidate>& candidates) {
    return merge(candidates, [](const auto& later, const auto& kept) { return later.score > kept.score; });
}

std::vector<RecognitionCandidate> mergeHeroes(const std::vector<RecognitionCandidate>& candidates) {
    return merge(candidates, [](const auto& later, const auto& kept) {
        const double gain = later.score - kept.score;
        return gain > heroTieMargin || (std::abs(gain) <= heroTieMargin && later.midY > kept.midY);
    });
}

std::vector<RecognitionCandidate> pickThreeHorizontally(const std::vector<RecognitionCandidate>& candidates) {
    if (candidates.size() < 4) {
        return candidates;
    }
    const double first = candidates.front().midX;
    const double span = std::max(candidates.back().midX - first, 0.001);
    std::array<const RecognitionCandidate*, 3> best{};
    for (const RecognitionCandidate& candidate : candidates) {
        const double position = (candidate.midX - first) / span;
        const std::size_t column = position < 0.33 ? 0 : position < 0.66 ? 1 : 2;
        if (!best[column] || candidate.score > best[column]->score) {
            best[column] = &candidate;
        }
    }
    if (std::ranges::find(best, nullptr) != best.end()) {
        return {candidates.begin(), candidates.begin() + 3};
    }
    return {*best[0], *best[1], *best[2]};
}

std::vector<SlotMatch> assignToSlots(std::vector<RecognitionCandidate> candidates, const QString& methodPrefix) {
    std::ranges::stable_sort(candidates, {}, &RecognitionCandidate::midX);

    std::vector<SlotMatch> matches = withoutMatches(methodPrefix, candidates.empty());
    const auto assign = [&](DraftSlot slot, const RecognitionCandidate& candidate) {
        matches[slot] = {slot, candidate.id, candidate.score, methodPrefix, candidate.text};
    };
    if (candidates.size() == 1) {
        assign(slotOfSingle(candidates[0].midX), candidates[0]);
    } else if (candidates.size() == 2) {
        const auto [first, second] = slotsOfPair(candidates[0].midX, candidates[1].midX);
        assign(first, candidates[0]);
        assign(second, candidates[1]);
    } else if (candidates.size() >= 3) {
        for (const DraftSlot slot : DraftSlot::allCases()) {
            assign(slot, candidates[slot]);
        }
    }
    return matches;
}

std::vector<SlotMatch> assignToColumns(const std::vector<RecognitionCandidate>& candidates,
                                       const std::array<double, 3>& columns, const QString& methodPrefix) {
    const double reach = (columns[2] - columns[0]) / 4;
    std::vector<SlotMatch> matches = withoutMatches(methodPrefix, candidates.empty());
    for (const RecognitionCandidate& candidate : candidates) {
        const DraftSlot nearest = nearestColumn(candidate.midX, columns);
        SlotMatch& match = matches[nearest];
        if (std::abs(candidate.midX - columns[nearest]) < reach &&
            (!match.cardId || candidate.score > match.confidence)) {
            match = {nearest, candidate.id, candidate.score, methodPrefix, candidate.text};
        }
    }
    return matches;
}

} // namespace pelloran
