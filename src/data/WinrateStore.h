#pragma once

#include "data/WinrateFormats.h"
#include "names/CardNameIndex.h"
#include "names/ClassNameIndex.h"
#include "names/Lexicon.h"
#include "names/NameMatching.h"
#include "platform/ApplicationFiles.h"

#include <QHashFunctions>
#include <QString>
#include <QStringList>

#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace pelloran {

struct CardFile;

// By class in upper case.
using ClassesByKey = std::map<QString, ClassWinrateRow>;

// A name of a card, as the search knows it.
struct CardName {
    QString norm; // WinrateStore::normalize of `original`; may be empty, and then never matches
    QString cardId;
    QString original;

    bool operator==(const CardName&) const = default;
};

// A name or a nickname of a class.
struct ClassName {
    QString norm;
    QString key;     // the class in upper case
    QString display; // its name in the language in force when the file was loaded

    bool operator==(const ClassName&) const = default;
};

// The card that lines of text name.
struct CardMatch {
    QString cardId;
    double score = 0; // 0 to 1
    QString text;     // the line as read

    bool operator==(const CardMatch&) const = default;
};

// The statistics of cards and classes in use: finds the data files, loads and indexes them, and answers by identifier
// or by what was read off the screen. One instance is shared; loads and look-ups stay on the main thread. A load that
// succeeds replaces everything that came from the earlier file, one that fails changes nothing.
class WinrateStore {
public:
    using Loaded = std::expected<void, DataError>;

    // Empty. `files` must outlive the store.
    explicit WinrateStore(const ApplicationFiles& files);
    ~WinrateStore();

    // Finds and loads the card file, then the class file, in the user's configuration folder, the program's resources,
    // or the folders of a development checkout. Fails only over the card file, with what loadCards gives or with
    // "Pelloran" 1 where there is none; classes are loaded only when the cards are, and where they fail to, stay as
    // they were.
    Loaded loadFromBundle();

    // Errors: the file system's, the parser's or the decoder's; "Pelloran" 2 for a file without rows.
    Loaded loadCards(const QString& path);
    Loaded loadClasses(const QString& path);

    // Exactly this identifier.
    std::optional<CardStats> stats(const QString& cardId) const;
    // In any case.
    std::optional<ClassWinrateRow> classStats(const QString& key) const;

    // See NameMatching.
    static QString normalize(const QString& text);
    static bool isPlausibleName(const QString& text);
    static std::size_t lcsLength(const QString& a, const QString& b);
    static double scoreName(const QString& query, const QString& targetNorm);

    // The best of all names for all lines, at a score of NameMatching::cardThreshold or more. Of equal scores the
    // earliest line wins, then the earliest name.
    std::optional<CardMatch> matchName(const QStringList& lines, NameLengths lengths = NameLengths::limited) const;
    // See ClassNameIndex::bestMatch.
    std::optional<ClassMatch> matchClass(const QStringList& lines, NameLengths lengths = NameLengths::limited) const;

    // Every card by its identifier; of several rows with one identifier the first.
    const std::unordered_map<QString, CardStats>& byId() const { return cards; }

    // Every card name in the order of the file, Chinese before English; of repeated rows too.
    const std::vector<CardName>& names() const { return cardNames; }

    // By class in upper case; of several rows of one class the last.
    const ClassesByKey& classesByKey() const { return classes; }

    // Names and nicknames of all classes. matchClass has a list of its own, with fewer nicknames.
    const std::vector<ClassName>& classNames() const { return namesOfClasses; }

    // What is loaded, in one line each.
    const QString& metaDescription() const { return cardMeta; }

    const QString& classMeta() const { return metaOfClasses; }

    // Path of the card file that loadFromBundle found.
    const QString& cardsSourceDescription() const { return cardsSource; }

    // True when the loaded card file calls its figures made up.
    bool holdsSampleData() const { return sample; }

    // The same, also never null, for settling what was read: every name of a card, with the kinds of all cards that
    // bear it, and everything that names a class, at its full length.
    std::shared_ptr<const Lexicon> cardLexicon() const { return lexiconOfCards; }

    std::shared_ptr<const Lexicon> classLexicon() const { return lexiconOfClasses; }

private:
    void applyCards(const CardFile& file);
    void applyClasses(const ClassWinrateFile& file);

    const ApplicationFiles& files;
    std::unordered_map<QString, CardStats> cards;
    std::vector<CardName> cardNames;
    CardNameIndex cardIndex;
    ClassesByKey classes;
    std::vector<ClassName> namesOfClasses;
    ClassNameIndex classIndex;
    QString cardMeta;
    QString metaOfClasses;
    QString cardsSource;
    bool sample = false;
    std::shared_ptr<const Lexicon> lexiconOfCards;
    std::shared_ptr<const Lexicon> lexiconOfClasses;
};

} // namespace pelloran
