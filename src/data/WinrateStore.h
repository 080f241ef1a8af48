#pragma once

#include "data/WinrateData.h"
#include "names/NameMatching.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace pelloran {

// The card that lines of text name.
struct CardMatch {
    QString cardId;
    double score = 0; // 0 to 1
    QString text;     // the line as read

    bool operator==(const CardMatch&) const = default;
};

// The statistics of cards and classes in use: answers by identifier or by what was read off the screen. One instance is
// shared, and stays on the main thread; what takes its time, a WinrateData, may be made elsewhere. A load that succeeds
// replaces everything that came from the earlier file, one that fails changes nothing.
class WinrateStore {
public:
    using Loaded = std::expected<void, DataError>;

    // Empty. `files` must outlive the store.
    explicit WinrateStore(const ApplicationFiles& files);
    ~WinrateStore();

    // Adopts what WinrateData::read finds, which it waits for.
    Loaded loadFromBundle();

    // Exchanges what is there for what was read, which takes microseconds; letting go of what was there takes
    // milliseconds, and is left to the owner of `data`. Fails only over the cards, with their error. Where there are
    // none, or no classes, those of before stay. Logs the remark.
    Loaded adopt(WinrateData& data);

    // See CardData::read and ClassData::read.
    Loaded loadCards(const QString& path);
    Loaded loadClasses(const QString& path);

    // Exactly this identifier.
    std::optional<CardStats> stats(const QString& cardId) const;
    // In any case.
    std::optional<ClassWinrateRow> classStats(const QString& key) const;

    // The best of all names for all lines, at a score of NameMatching::cardThreshold or more. Of equal scores the
    // earliest line wins, then the earliest name.
    std::optional<CardMatch> matchName(const QStringList& lines, NameLengths lengths = NameLengths::limited) const;
    // See ClassNameIndex::bestMatch.
    std::optional<ClassMatch> matchClass(const QStringList& lines, NameLengths lengths = NameLengths::limited) const;

    // See ClassNameIndex::heroNamed.
    std::optional<ClassMatch> matchHero(const QString& line, NameLengths lengths = NameLengths::limited) const;

    // Every card by its identifier. What is returned here and below holds until the next load.
    const std::unordered_map<QString, CardStats>& byId() const { return cards.byId; }

    // Every card name. See CardData.
    const std::vector<CardName>& names() const { return cards.names; }

    const ClassesByKey& classesByKey() const { return classes.byKey; }

    // Names and nicknames of all classes. matchClass has a list of its own, with fewer nicknames.
    const std::vector<ClassName>& classNames() const { return classes.names; }

    // What is loaded, in one line each.
    const QString& metaDescription() const { return cards.description; }

    const QString& classMeta() const { return classes.description; }

    // Path of the card file that loadFromBundle or adopt took.
    const QString& cardsSourceDescription() const { return cardsSource; }

    // True when the loaded card file calls its figures made up.
    bool holdsSampleData() const { return cards.isSample; }

    // For settling what was read: every name of a card, with the kinds of all cards that bear it, and everything that
    // names a class or its heroes, at its full length. Never null, and left alone by later loads.
    std::shared_ptr<const Lexicon> cardLexicon() const { return cards.lexicon; }

    std::shared_ptr<const Lexicon> classLexicon() const { return classes.lexicon; }

    // NameMatching's, under the names that the store's interface has for them. Only there for those who program against
    // the store alone: what has names/ asks NameMatching.
    static QString normalize(const QString& text) { return NameMatching::normalize(text); }

    static bool isPlausibleName(const QString& text) { return NameMatching::isPlausibleName(text); }

    static std::size_t lcsLength(const QString& a, const QString& b) { return NameMatching::lcsLength(a, b); }

    static double scoreName(const QString& query, const QString& targetNorm) {
        return NameMatching::scoreName(query, targetNorm);
    }

private:
    const ApplicationFiles& files;
    CardData cards;
    ClassData classes;
    QString cardsSource;
};

} // namespace pelloran
