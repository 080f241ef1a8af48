#pragma once

#include <QFlags>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace pelloran {

// Kinds of cards, which tell how a card's name runs on its ribbon.
enum class NameKind : std::uint8_t { minion = 1, spell = 2, weapon = 4, hero = 8, location = 16 };
Q_DECLARE_FLAGS(NameKinds, NameKind)
Q_DECLARE_OPERATORS_FOR_FLAGS(NameKinds)

// A name that may stand on the screen.
struct KnownName {
    QString text;    // as the data files have it
    NameKinds kinds; // of the cards that bear it; none: not known, or no card's, and so any
    // One of many that may not all be known: settled as names of cards are, where the lexicon forgives more.
    bool isStrict = false;

    bool operator==(const KnownName&) const = default;
};

// The names that may stand on the screen, ready to settle what was read: a reading that can be only one of them becomes
// that one, any other becomes none. Immutable once made; from any thread. Making or copying one costs next to nothing;
// the first question waits until the names are indexed, about a microsecond for each.
class Lexicon {
public:
    // How far from a name a reading may be.
    struct Tolerance {
        double perCharacter; // greatest distance, for each character of the name
        double margin;       // least distance by which the second name has to be farther away
    };

    // Measured on real screens and on such with the true name taken out of the list: at 0.25 and 0.5 one name in seven
    // that is missing became another one, at these one in fifty.
    static constexpr Tolerance forCards{.perCharacter = 0.16, .margin = 1.0};
    // Few names, far apart.
    static constexpr Tolerance forClasses{.perCharacter = 0.34, .margin = 1.0};

    Lexicon() = default;
    Lexicon(std::vector<KnownName> names, Tolerance tolerance);

    bool isEmpty() const;

    // As given, in that order.
    const std::vector<KnownName>& names() const;

    // True for the other and all its copies: whoever keeps what it made of the names can tell whether it still holds.
    bool isSame(const Lexicon& other) const { return contents == other.contents; }

    // True when the line is a name, but for case, white space and punctuation (see NameMatching::normalize). A line of
    // which nothing is left is none.
    bool contains(const QString& line) const;

    struct Settled {
        QString text;        // of the known name
        double distance = 0; // 0: read exactly

        bool operator==(const Settled&) const = default;
    };

    // Whether the name that the line is, as for contains(), is a strict one.
    bool isStrict(const QString& line) const;

    // The one name that `line` can be. One that is spelled alike, as for contains(), or but for accents and whatever is
    // no letter or digit; none where it could then be either of two. Else the nearest one, of those with Chinese
    // characters or of those without as the line has them, if it is within the tolerance (a Chinese character in three
    // at least) and four characters, no other is too near, and no other begins with the line where the nearest one does
    // not: its end may be hidden. Mistakes that the recogniser is prone to count half (see ReadingDistance). Of names
    // that are the same to contains() the first stands for all. `fitting`, if any, are the kinds of cards that can
    // stand where the line was read: a name of none of these is taken for one character farther away, unless it was
    // read exactly.
    std::optional<Settled> settle(const QString& line, NameKinds fitting = {}) const;

    // How close `line` comes to the nearest name, for choosing between readings of one line: 1 for the same, 0 for
    // nothing in common.
    double resemblance(const QString& line) const;

private:
    struct Index;
    struct Contents;

    Tolerance tolerance{};
    std::shared_ptr<Contents> contents; // null: no names
};

} // namespace pelloran
