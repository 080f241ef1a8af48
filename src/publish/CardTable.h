#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <expected>

// The card file from a table with a row per card, as a spreadsheet exports it.
namespace pelloran {

class CardLists;

struct TableCards {
    QByteArray file;     // the card file's bytes, which decode as one
    QStringList remarks; // which rows the lists do not know, each in a sentence
};

// The table is UTF-8, its separator a comma, semicolon or tab. The first row names the columns as the card file names
// its fields ("card_id", "deck_win_rate", or "Deck win rate"); "card_id" has to be there, other names are passed over.
// An empty cell leaves its field out. Numbers have a decimal point and no grouping; a percent sign behind one of a
// percentage is taken off. `fetchedAt` goes into the file as it stands.
//
// What a row leaves open is taken from the lists of cards. Where there are any, a column "dbf_id" takes the place of
// "card_id" or stands beside it; a row that has the number alone and is in no list is left out.
//
// Errors: every cell that is not what its column holds, with its line; more cards than a card file may have, or none;
// with lists also a table with no row that is in one.
std::expected<TableCards, QStringList> cardsFromTable(const QByteArray& table, const QString& fetchedAt,
                                                      const CardLists& lists);

} // namespace pelloran
