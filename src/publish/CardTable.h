#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <expected>

// The card file from a table with a row per card, as a spreadsheet exports it.
namespace pelloran {

// The table is UTF-8, its separator a comma, semicolon or tab. The first row names the columns as the card file names
// its fields ("card_id", "deck_win_rate", or "Deck win rate"); "card_id" has to be there, other names are passed over.
// An empty cell leaves its field out. Numbers have a decimal point and no grouping; a percent sign behind one of a
// percentage is taken off. `fetchedAt` goes into the file as it stands. Gives the file's bytes, which decode as a card
// file. Errors: every cell that is not what its column holds, with its line.
std::expected<QByteArray, QStringList> cardFileFromTable(const QByteArray& table, const QString& fetchedAt);

} // namespace pelloran
