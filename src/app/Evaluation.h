#pragma once

#include "localisation/AppLanguage.h"
#include "model/DraftModel.h"

#include <QByteArray>
#include <QImage>
#include <QJsonObject>
#include <QRect>
#include <QSet>
#include <QString>
#include <QStringList>

#include <array>
#include <expected>
#include <functional>
#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

// How well pictures are recognised whose truth is known: reading truth files, judging what recognition made of a
// picture and adding it all up. Reads no picture itself; docs/formats.md describes what is read and printed.
namespace pelloran {

class WinrateStore;

namespace evaluation {

// What is really offered in one slot, as far as the truth file says.
struct Offer {
    QString id;   // a card's identifier or a class's key; "" where only the name is known
    QString name; // as printed, in the language of the picture; "" where only the identifier is known

    bool operator==(const Offer&) const = default;
};

// A text that stands on the picture, wherever and whatever it is.
struct BoxedText {
    QRect box; // in pixels
    QString text;
    QString ink; // "light", "dark" or "orange"; "" where the truth file does not say

    bool operator==(const BoxedText&) const = default;
};

struct Truth {
    DraftPhase phase = DraftPhase::idle;        // idle: the picture shows no pick at all
    AppLanguage language = AppLanguage::en;     // never `system`
    std::array<std::optional<Offer>, 3> offers; // by slot; absent: not legible, does not count
    std::optional<QString> file;                // name of the picture; absent: the truth file's own, but for the ending
    QString lettering{}; // in which the names are set, such as "printed"; "" where nothing is said
    std::vector<BoxedText> texts{};

    bool operator==(const Truth&) const = default;
};

// An error is a sentence on what is wrong with the file.
std::expected<Truth, QString> parseTruth(const QByteArray& json);

// The rules by which such a picture is looked at: without a pick on it those of either, since none may find anything.
std::vector<DraftPhase> rulesFor(const Truth& truth);

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

// One picture with all that came of it.
struct Picture {
    QString path;
    Truth truth;
    std::vector<Look> looks;         // one for each of rulesFor(truth): the first at this picture
    std::vector<Look> repeated;      // more of the same, with what the earlier ones taught the reader
    std::vector<Answer> answers;     // to `looks`
    std::vector<TextAnswer> texts{}; // empty where they were not asked for
};

// A line for each slot that is not as it should be, and for each boxed text.
QStringList remarks(const Picture& picture);

QJsonObject toJson(const Picture& picture);

// The median, the ninth decile and so on: the value below which the share `quantile` of the values lies, on the line
// between the two values next to it. Absent without values.
std::optional<double> quantile(std::vector<double> values, double quantile);

struct TextTally {
    int boxes = 0; // the sum of the next four
    int right = 0;
    int wrong = 0;
    int unread = 0;
    int notInData = 0;
    int wrongMissing = 0; // of those not in the data

    void add(const TextAnswer& answer);
};

struct Tally {
    int pictures = 0;
    int slots = 0; // whose offer is legible: the sum of the next four
    int right = 0;
    int wrong = 0;
    int unread = 0;
    int notInData = 0;
    int wrongMissing = 0; // of those not in the data
    int falseOffers = 0;
    int changed = 0;                  // repeated looks that show something else than the first
    std::vector<double> milliseconds; // of the first looks
    std::vector<double> cpuMilliseconds;
    std::vector<double> repeatedCpuMilliseconds;

    void add(const Picture& picture);
};

// Of all pictures, and by language, lettering and phase; boxed texts by themselves, and by language and ink.
class Totals {
public:
    void add(const Picture& picture);

    // Lines of a table in columns of equal width, and of a second one where boxed texts were read. The first has a
    // column for the lettering where any is known.
    QStringList table() const;

    QJsonObject toJson() const;

private:
    Tally all;
    TextTally allTexts;
    std::map<std::tuple<QString, QString, QString>, Tally> groups; // by language, lettering and name of the phase
    std::map<std::pair<QString, QString>, TextTally> textGroups;   // by language and ink
};

} // namespace evaluation

} // namespace pelloran
