#pragma once

#include "app/evaluation/Truth.h"
#include "localisation/AppLanguage.h"
#include "model/DraftModel.h"

#include <QImage>
#include <QRect>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace pelloran {

class WinrateStore;

} // namespace pelloran

// What recognition made of a picture, held against the truth. Reads no picture itself.
namespace pelloran::evaluation {

// What one look at a picture came to.
struct Look {
    DraftPhase rules = DraftPhase::cardPick; // never idle
    std::vector<SlotMatch> matches;          // by slot
    double milliseconds = 0;
    double cpuMilliseconds = 0; // of all threads

    // Shows what the other look shows.
    bool agreesWith(const Look& other) const;
};

enum class Verdict {
    right,
    wrong,        // shows another card or class
    unread,       // shows nothing
    missing,      // shows nothing, and could not: the data in use has no such name
    wrongMissing, // shows another card or class in place of one that the data has no name for
    falseOffer,   // shows something on a picture without a pick
};

struct Answer {
    DraftPhase rules = DraftPhase::cardPick;
    SlotMatch match;
    std::optional<QString> shown;   // name of what was matched, in the picture's language
    std::optional<Offer> offered;   // absent: nothing, or not legible
    std::optional<Verdict> verdict; // absent: the slot does not count

    bool operator==(const Answer&) const = default;
};

// What was made of one boxed text. Never a false offer.
struct TextAnswer {
    BoxedText offered;
    std::optional<QString> read;
    Verdict verdict = Verdict::unread;

    bool operator==(const TextAnswer&) const = default;
};

// Reads what stands in the box: one of the names that the data in use has, or nothing.
using BoxReader = std::function<std::optional<QString>(const QImage& window, const QRect& box)>;

// Compares with the names of the data in use. Cards that were printed again share a name, and a name is all there is to
// read; so equal names are right, whatever the identifiers.
class Judge {
public:
    // `store` must outlive the judge and not be loaded anew in its time.
    explicit Judge(const WinrateStore& store);

    // By slot.
    std::vector<Answer> judge(const Truth& truth, const Look& look) const;

    // Has each of the boxed texts read on its own. They count by the names of cards in the picture's language.
    std::vector<TextAnswer> judgeTexts(const Truth& truth, const QImage& window, const BoxReader& reader) const;

private:
    struct Known {
        QString shown;
        QStringList normalized; // the names it goes by
    };

    std::optional<Known> known(const Truth& truth, const QString& id, DraftPhase rules) const;
    bool isKnown(const Truth& truth, const Offer& offer) const;
    Answer judge(const Truth& truth, DraftPhase rules, const SlotMatch& match) const;

    const WinrateStore& store;
    std::map<AppLanguage::Value, QSet<QString>> cardNames; // normalised
    QSet<QString> classNames;                              // normalised, of all languages
};

} // namespace pelloran::evaluation
