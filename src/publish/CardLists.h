#pragma once

#include "data/WinrateFormats.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <vector>

// Public lists of the game's cards, from which data files take what every source of figures would have to repeat.
namespace pelloran {

// What the lists say of a card. Figures are absent.
struct ListedCard {
    CardStats card;
    std::optional<qint64> dbfId; // the game's number for it, by which some sources of figures call it
};

// What a hero is called, and the class that the name tells.
struct ListedHero {
    QString name;
    QString heroClass; // in upper case

    bool operator==(const ListedHero&) const = default;
};

// What the lists have for a row of figures.
struct ListedRow {
    const ListedCard* card = nullptr; // null: the row's card is in none of them
    bool isContradictory = false;     // they have the row's number for a card of another identifier
};

class CardLists {
public:
    // No list: nothing is found.
    CardLists() = default;

    // A list is an array of objects with `id`, `dbfId`, `name`, `rarity`, `cost`, `type`, `cardClass` and `set`, of
    // which only `id` has to be there; other keys are passed over. `name` is an object of texts by locale, or a text
    // in the locale of the whole list. That is the one before the file (`enUS=FILE`), else the one in the name of the
    // file or of its folder, else the one that the names themselves look like. Of what two lists say the first counts.
    // Errors: what cannot be read, is not such a list (with the first place that is not), has a card twice, or is in a
    // language that data files have no names in.
    static std::expected<CardLists, QStringList> read(const QStringList& lists);

    bool isEmpty() const { return cards.empty(); }

    // By the identifier, else by the number.
    ListedRow find(const QString& cardId, std::optional<qint64> dbfId) const;

    // What heroes are called, Chinese and English, in the order of the lists; for each class each name once, however it
    // is written. Heroes that are neutral or of no class tell none: such are the bosses of adventures, of which many
    // bear the name of a hero that players choose.
    std::vector<ListedHero> heroes() const;

private:
    class Reader;

    std::vector<ListedCard> cards;
    QHash<QString, std::size_t> byId;
    QHash<qint64, std::size_t> byDbfId;
};

// Fills rows of figures from the lists, and keeps in mind where it could not. `lists` must outlive it.
class Joining {
public:
    explicit Joining(const CardLists& cardLists);

    // Gives the row what it does not say itself; an empty text says nothing. `place` tells people which row it is.
    // False for a row that stays without an identifier.
    bool join(CardStats& row, std::optional<qint64> dbfId, const QString& place);

    // There were rows and lists, and no row is in any.
    bool joinedNone() const;

    // One sentence for all rows that are in no list, one for all whose number is another card's, and one for those
    // that the number alone tells of, whatever they are called.
    QStringList remarks() const;

private:
    const CardLists& lists;
    bool joinedAny = false;
    QStringList missing;
    QStringList contradictory;
    QStringList byNumberAlone;
};

} // namespace pelloran
