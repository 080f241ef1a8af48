#pragma once

#include "names/NameMatching.h"

#include <QStringList>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pelloran {

// The class that lines of text name.
struct ClassMatch {
    QString key;      // the class in upper case, such as "MAGE"
    double score = 0; // 0 to 1
    QString text;     // the line as read

    bool operator==(const ClassMatch&) const = default;
};

// What a class is called.
struct NamedClass {
    QString key; // in upper case
    QStringList names;
    QStringList heroNames = {}; // of its heroes. NOLINT(readability-redundant-member-init): may be left out
};

// Everything the classes are called, ready to be searched. Immutable once made; from any thread.
class ClassNameIndex {
public:
    ClassNameIndex() = default;
    explicit ClassNameIndex(const std::vector<NamedClass>& classes);

    // A line that is exactly a name ends the search. Else the best of the lines that contain a name or are part of one,
    // if it reaches NameMatching::classThreshold; a nickname beats it where it scores less. Of equal scores the
    // earliest line wins, then the name that comes first: all names in the order given, then all keys.
    std::optional<ClassMatch> bestMatch(const QStringList& lines, NameLengths lengths = NameLengths::limited) const;

    // The class whose hero has this name, all of it; none for a name that heroes of several classes have. For lines
    // where no class stands.
    std::optional<ClassMatch> heroNamed(const QString& line, NameLengths lengths = NameLengths::limited) const;

    // Names of heroes of one class alone, as they were given.
    QStringList heroTexts() const;

    // Everything by which a class can be named, as it was given: names, then keys, then nicknames. Too long ones too.
    QStringList texts() const;

private:
    struct Candidate {
        QString text;
        QString norm;
        std::u32string characters;
        QString key;
    };

    void add(const QString& name, const QString& key);

    CharacterTable table;
    std::vector<Candidate> candidates;
    std::map<QString, QString> nicknames; // which normalising leaves as they are, to the class's key

    struct Hero {
        QString text;
        QString key; // "" for a name that several classes have
    };

    std::map<QString, Hero> heroes; // by the normalised name
};

} // namespace pelloran
