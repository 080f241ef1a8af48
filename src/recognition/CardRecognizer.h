#pragma once

#include "model/DraftModel.h"
#include "names/NameMatching.h"
#include "platform/TextReader.h"

#include <QImage>
#include <QString>

#include <array>
#include <vector>

namespace pelloran {

struct RecognitionCandidate;
class WinrateStore;

// Turns the picture of the game's window into one match per slot. Reading is slow and needs nothing of ours; matching
// is fast and looks into the store. So the two halves are apart: `ocrTokens` runs wherever the reader lives, everything
// else on the main thread. Holds no state but the store, which must outlive it.
class CardRecognizer {
public:
    // Lines of more than fourteen characters are mostly rules text and name no card. With `limitedUnlessExact` one that
    // equals a name in full does, and so do such lines for classes, of which the limit is matchClass's; and where the
    // reader knows the places of the three offers, names go by these. With `limited` slots follow from positions alone,
    // which makes the left offer of the middle one when the left one was not read.
    explicit CardRecognizer(const WinrateStore& winrates, NameLengths lengths = NameLengths::limited);

    // Lines with their centre inside these bands, in fractions of the window, can be names of what is offered.
    static QRectF cardBand();
    static QRectF heroBand();

    // What a reader may know of the lines looked for: the band, the lettering, and the names of the data now in use.
    ReadingHints cardHints() const;
    ReadingHints heroHints() const;

    // All lines of the image: read as it is, then, unless the reader brings lines to its own size anyway, once more
    // enlarged to 1.5 times. On the reader's thread. No image, no lines.
    static ReadText ocrTokens(const QImage& image, TextReader& reader, const ReadingHints& hints);

    // One pass of the reader; tokens without text are dropped. On the reader's thread.
    static ReadText runVisionTokens(const QImage& bitmap, TextReader& reader, const ReadingHints& hints);

    // One match per slot, in the order left, middle, right.
    std::vector<SlotMatch> recognizeCards(const ReadText& text) const;
    std::vector<SlotMatch> recognizeHeroes(const ReadText& text) const;

    // Reading and matching in one, for callers on a single thread.
    std::vector<SlotMatch> recognizeCards(const QImage& image, TextReader& reader) const;
    std::vector<SlotMatch> recognizeHeroes(const QImage& image, TextReader& reader) const;

private:
    std::vector<SlotMatch> assign(const std::vector<RecognitionCandidate>& candidates, const ReadText& text,
                                  const QString& methodPrefix) const;

    const WinrateStore& store;
    const NameLengths lengths;
};

// A line that matched: a card's identifier or a class's key, and where the line stands.
struct RecognitionCandidate {
    QString id;
    double score = 0; // 0 to 1
    QString text;     // the line as the reader gave it: as read, or the known name that it settled on
    double midX = 0;  // fractions of the window
    double midY = 0;

    bool operator==(const RecognitionCandidate&) const = default;
};

// One candidate per id, in order of first appearance. A later one of the same id takes the place only with a higher
// score.
std::vector<RecognitionCandidate> mergeCards(const std::vector<RecognitionCandidate>& candidates);

// The same for classes; but of two scores within 0.02 of each other the lower line on the screen counts, because the
// class's name stands below the hero's, which may hold a class name too.
std::vector<RecognitionCandidate> mergeHeroes(const std::vector<RecognitionCandidate>& candidates);

// Of four or more candidates ordered by midX, the best one in each third of the span they cover; the first three when a
// third is empty. Up to three candidates stay as they are.
std::vector<RecognitionCandidate> pickThreeHorizontally(const std::vector<RecognitionCandidate>& candidates);

// One match per slot from candidates in any order.
std::vector<SlotMatch> assignToSlots(std::vector<RecognitionCandidate> candidates, const QString& methodPrefix);

// The same where the middles of the three offers are known, left to right: each candidate goes to the nearest, of
// several at one place the best. What is further than half the distance between two offers from all of them is none.
std::vector<SlotMatch> assignToColumns(const std::vector<RecognitionCandidate>& candidates,
                                       const std::array<double, 3>& columns, const QString& methodPrefix);

} // namespace pelloran
