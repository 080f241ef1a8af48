#include "publish/CardTable.h"

#include "data/WinrateFields.h"
#include "publish/CardLists.h"
#include "publish/Csv.h"
#include "publish/Problem.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

constexpr QLatin1StringView idColumn = std::get<0>(strict_json::fields<CardStats>).key;

// Of a cell that is too long.
constexpr qsizetype mostShown = 20;

// What a cell should have been; absent when it is.
using Wanted = std::optional<QString>;

Wanted take(const QString& cell, QString& text) {
    text = cell;
    return text.size() > longestDataText ? u"a text of at most %1 characters"_s.arg(longestDataText) : Wanted();
}

Wanted take(const QString& cell, qint64& number) {
    bool isInteger = false;
    number = cell.toLongLong(&isInteger);
    // Qt stops at a null character and calls what stands before it the whole.
    return isInteger && !cell.contains(QChar::Null) ? Wanted() : u"a whole number"_s;
}

Wanted take(const QString& cell, double& number) {
    bool isNumber = false;
    number = QLocale::c().toDouble(cell, &isNumber);
    // The C locale still takes groups of digits, which leave open what a comma means.
    return isNumber && std::isfinite(number) && !cell.contains(u',') ? Wanted() : u"a number"_s;
}

template <typename Value>
Wanted take(const QString& cell, std::optional<Value>& value) {
    return take(cell, value.emplace());
}

struct TableRow {
    CardStats card;
    std::optional<qint64> dbfId; // see ListedCard
};

struct Column {
    QLatin1StringView name;
    Wanted (*fill)(const QString& cell, TableRow& row);
};

template <std::size_t index>
Wanted fill(const QString& cell, TableRow& row) {
    constexpr auto& field = std::get<index>(strict_json::fields<CardStats>);
    const bool hasSign = isPercentage<std::remove_cvref_t<decltype(field)>> && cell.endsWith(u'%');
    return take(hasSign ? cell.chopped(1).trimmed() : cell, row.card.*field.member);
}

// Told apart from the others, because it is of use only where lists of cards say whose it is.
constexpr Column numberColumn{"dbf_id"_L1, [](const QString& cell, TableRow& row) { return take(cell, row.dbfId); }};

// One for each field of a card.
constexpr auto columns = []<std::size_t... index>(std::index_sequence<index...>) {
    return std::array{Column{std::get<index>(strict_json::fields<CardStats>).key, fill<index>}...};
}(std::make_index_sequence<std::tuple_size_v<decltype(strict_json::fields<CardStats>)>>());

// "Deck win rate " is the column deck_win_rate.
const Column* columnFor(const QString& title, bool withNumbers) {
    const QString name = title.simplified().toLower().replace(u' ', u'_');
    if (withNumbers && name == numberColumn.name) {
        return &numberColumn;
    }
    const auto* const found = std::ranges::find(columns, name, &Column::name);
    return found == columns.end() ? nullptr : found;
}

bool nameCards(const QStringList& titles, bool withNumbers) {
    return std::ranges::any_of(titles, [withNumbers](const QString& title) {
        const Column* column = columnFor(title, withNumbers);
        return column && (column->name == idColumn || column == &numberColumn);
    });
}

// The separator is the one that makes the first line name the cards' column. With another all kinds of things are wrong
// that are not.
std::expected<std::vector<CsvRow>, QStringList> readRows(const QString& text, bool withNumbers) {
    const auto wrong = [](const CsvError& error) {
        return problem(u"line %1: %2"_s.arg(error.line).arg(error.message));
    };
    std::optional<CsvError> inTitles; // unless they are fine with one of the separators
    bool areTitles = false;
    for (const QChar separator : {u',', u';', u'\t'}) {
        const auto titles = parseCsv(text, separator, 1);
        if (!titles) {
            inTitles = inTitles.value_or(titles.error());
            continue;
        }
        areTitles = true;
        if (titles->empty() || !nameCards(titles->front().cells, withNumbers)) {
            continue;
        }
        auto rows = parseCsv(text, separator);
        if (!rows) {
            return wrong(rows.error());
        }
        return *std::move(rows);
    }
    if (!areTitles) {
        return wrong(*inTitles);
    }
    return problem(withNumbers ? u"no column is called \"card_id\" or \"dbf_id\""_s
                               : u"no column is called \"card_id\""_s);
}

// Absent for a row without any; what is wrong goes to `problems`.
std::optional<TableRow> rowFrom(const CsvRow& row, const std::vector<const Column*>& order, QStringList& problems) {
    TableRow result;
    bool isEmpty = true;
    for (qsizetype i = 0; i < row.cells.size(); ++i) {
        // Where tables were put together, each may have begun with a mark of byte order: that is no text.
        const QString cell = QString(row.cells[i]).remove(QChar(QChar::ByteOrderMark)).trimmed();
        if (cell.isEmpty()) {
            continue;
        }
        if (i >= static_cast<qsizetype>(order.size())) {
            problems.append(u"line %1: more cells than there are columns"_s.arg(row.line));
            break;
        }
        const Column* column = order[static_cast<std::size_t>(i)];
        if (!column) {
            continue;
        }
        isEmpty = false;
        if (const Wanted wanted = column->fill(cell, result)) {
            const QString shown = cell.size() > longestDataText ? cell.first(mostShown) + u'…' : cell;
            problems.append(u"line %1, column %2: \"%3\" is not %4"_s.arg(row.line).arg(column->name, shown, *wanted));
        }
    }
    if (isEmpty) {
        return std::nullopt;
    }
    if (result.card.cardId.isEmpty() && !result.dbfId) {
        problems.append(u"line %1: no card_id"_s.arg(row.line));
    }
    return result;
}

} // namespace

std::expected<TableCards, QStringList> cardsFromTable(const QByteArray& table, const QString& fetchedAt,
                                                      const CardLists& lists) {
    if (!table.isValidUtf8()) {
        return problem(u"not UTF-8: export it as \"CSV UTF-8\""_s);
    }
    const auto rows = readRows(QString::fromUtf8(table), !lists.isEmpty());
    if (!rows) {
        return std::unexpected(rows.error());
    }

    QStringList problems;
    std::vector<const Column*> order;
    for (const QString& title : rows->front().cells) {
        const Column* column = columnFor(title, !lists.isEmpty());
        if (column && std::ranges::find(order, column) != order.end()) {
            problems.append(u"there are two columns called \"%1\""_s.arg(column->name));
        }
        order.push_back(column);
    }
    WinrateFile file{
        .playerClass = u"ALL"_s, .timeRange = u"LAST_7_DAYS"_s, .fetchedAt = fetchedAt, .cardCount = {}, .cards = {}};
    Joining joining(lists);
    for (auto csv = rows->begin() + 1; csv != rows->end(); ++csv) {
        if (auto row = rowFrom(*csv, order, problems)) {
            if (joining.join(row->card, row->dbfId, u"line %1"_s.arg(csv->line))) {
                file.cards.push_back(std::move(row->card));
            }
        }
    }
    if (problems.isEmpty() && joining.joinedNone()) {
        problems.append(u"none of its cards is in the lists of cards"_s);
    }
    if (!problems.isEmpty()) {
        return std::unexpected(problems);
    }
    if (file.cards.empty()) {
        return problem(u"no card in it"_s);
    }
    if (file.cards.size() > mostCardRows) {
        return problem(u"more than %1 cards"_s.arg(mostCardRows));
    }
    file.cardCount = static_cast<qint64>(file.cards.size());
    return TableCards{file.encode(), joining.remarks()};
}

} // namespace pelloran
