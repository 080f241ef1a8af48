#pragma once

#include "data/WinrateFormats.h"
#include "names/CardNameIndex.h"
#include "names/ClassNameIndex.h"
#include "names/Lexicon.h"

#include <QString>

#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

// What is made of the data files before anybody looks anything up: found, decoded and indexed, as plain values. From
// any thread, so that the main thread only has to take them in.
namespace pelloran {

class ApplicationFiles;

// By class in upper case.
using ClassesByKey = std::map<QString, ClassWinrateRow>;

// What they are called, in the order of their keys.
std::vector<NamedClass> namedClasses(const ClassesByKey& classes);

// A name of a card, as the search knows it.
struct CardName {
    QString norm; // NameMatching::normalize of `original`; may be empty, and then never matches
    QString cardId;
    QString original;

    bool operator==(const CardName&) const = default;
};

// A name or a nickname of a class.
struct ClassName {
    QString norm;
    QString key;     // the class in upper case
    QString display; // its name in the language in force when the file was read

    bool operator==(const ClassName&) const = default;
};

// A card file.
struct CardData {
    std::unordered_map<QString, CardStats> byId; // of several rows with one identifier the first
    std::vector<CardName> names; // in the order of the file, Chinese before English; of repeated rows too
    CardNameIndex index;         // of `names`
    std::shared_ptr<const Lexicon> lexicon = std::make_shared<const Lexicon>(); // never null
    QString description;                                                        // in one line
    bool isSample = false;                                                      // its figures are made up
    QString fetchedAt; // when they were taken, in the file's own words

    // Errors: the file system's, the parser's or the decoder's; "Pelloran" 2 for a file without rows.
    static std::expected<CardData, DataError> read(const QString& path);
};

// A class file.
struct ClassData {
    ClassesByKey byKey;                                                         // of several rows of one class the last
    std::vector<ClassName> names;                                               // and nicknames of all classes
    ClassNameIndex index;                                                       // has fewer nicknames
    std::shared_ptr<const Lexicon> lexicon = std::make_shared<const Lexicon>(); // never null
    QString description;                                                        // in one line
    bool isSample = false;                                                      // its figures are made up

    // Errors: the file system's, the parser's or the decoder's.
    static std::expected<ClassData, DataError> read(const QString& path);
};

// Both files, or why there are none.
struct WinrateData {
    std::expected<CardData, DataError> cards;
    QString cardsSource;              // path of the card file
    std::optional<ClassData> classes; // only where there are cards
    QString remark;                   // for the log: why there is a class file but no class data; else empty
    QString classesSource = {};       // path of the class file. NOLINT(readability-redundant-member-init)

    // Finds and reads the card file, then the class file, in the user's configuration folder, the program's resources,
    // or the folders of a development checkout. Errors: what CardData::read gives, with the path, or "Pelloran" 1 where
    // there is no card file.
    static WinrateData read(const ApplicationFiles& files);
};

} // namespace pelloran
