#include "publish/CardTable.h"

#include "publish/Csv.h"
#include "publish/Problem.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

enum class Kind { text, integer, number, percentage };

struct Column {
    QLatin1StringView name;
    Kind kind;
};

constexpr QLatin1StringView idColumn = "card_id"_L1;
constexpr std::array columns{
    Column{idColumn, Kind::text},
    Column{"name_zh"_L1, Kind::text},
    Column{"name_en"_L1, Kind::text},
    Column{"cost"_L1, Kind::integer},
    Column{"rarity"_L1, Kind::text},
    Column{"type"_L1, Kind::text},
    Column{"card_class"_L1, Kind::text},
    Column{"set"_L1, Kind::text},
    Column{"deck_win_rate"_L1, Kind::percentage},
    Column{"drawn_win_rate"_L1, Kind::percentage},
    Column{"played_win_rate"_L1, Kind::percentage},
    Column{"popularity"_L1, Kind::number},
    Column{"avg_copies_in_deck"_L1, Kind::number},
    Column{"num_games"_L1, Kind::integer},
};

// "Deck win rate " is the column deck_win_rate.
const Column* columnFor(const QString& title) {
    const QString name = title.simplified().toLower().replace(u' ', u'_');
    const auto* const found = std::ranges::find(columns, name, &Column::name);
    return found == columns.end() ? nullptr : found;
}

std::optional<double> number(QString cell, bool isPercentage) {
    if (isPercentage && cell.endsWith(u'%')) {
        cell = cell.chopped(1).trimmed();
    }
    bool isNumber = false;
    const double value = QLocale::c().toDouble(cell, &isNumber);
    // The C locale still takes groups of digits, which leave open what a comma means.
    return isNumber && std::isfinite(value) && !cell.contains(u',') ? std::optional(value) : std::nullopt;
}

QJsonValue valueOf(const QString& cell, Kind kind) {
    switch (kind) {
    case Kind::text:
        return cell;
    case Kind::integer: {
        bool isInteger = false;
        const qint64 value = cell.toLongLong(&isInteger);
        return isInteger ? QJsonValue(value) : QJsonValue(QJsonValue::Undefined);
    }
    case Kind::number:
    case Kind::percentage: {
        const auto value = number(cell, kind == Kind::percentage);
        return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Undefined);
    }
    }
    return QJsonValue::Undefined;
}

QString inWords(Kind kind) {
    switch (kind) {
    case Kind::text:
        return u"a text"_s;
    case Kind::integer:
        return u"a whole number"_s;
    case Kind::number:
    case Kind::percentage:
        return u"a number"_s;
    }
    return {};
}

// The separator is the one that makes the first line name the cards' column.
std::expected<std::vector<CsvRow>, QStringList> readRows(const QString& text) {
    QString trouble = u"no column is called \"card_id\""_s;
    for (const QChar separator : {u',', u';', u'\t'}) {
        auto rows = parseCsv(text, separator);
        if (!rows) {
            trouble = u"line %1: %2"_s.arg(rows.error().line).arg(rows.error().message);
            continue;
        }
        const auto namesCards = [](const QString& title) {
            const Column* column = columnFor(title);
            return column && column->name == idColumn;
        };
        if (!rows->empty() && std::ranges::any_of(rows->front().cells, namesCards)) {
            return *rows;
        }
    }
    return problem(trouble);
}

// Field by field; what is wrong goes to `problems`.
QJsonObject cardFrom(const CsvRow& row, const std::vector<const Column*>& order, QStringList& problems) {
    QJsonObject card;
    bool isEmpty = true;
    for (qsizetype i = 0; i < row.cells.size(); ++i) {
        const QString cell = row.cells[i].trimmed();
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
        const QJsonValue value = valueOf(cell, column->kind);
        if (value.isUndefined()) {
            problems.append(
                u"line %1, column %2: \"%3\" is not %4"_s.arg(row.line).arg(column->name, cell, inWords(column->kind)));
        }
        card.insert(column->name, value);
    }
    if (!isEmpty && !card.contains(idColumn)) {
        problems.append(u"line %1: no card_id"_s.arg(row.line));
    }
    return card;
}

} // namespace

std::expected<QByteArray, QStringList> cardFileFromTable(const QByteArray& table, const QString& fetchedAt) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(table);
    if (decoder.hasError()) {
        return problem(u"not UTF-8: export it as \"CSV UTF-8\""_s);
    }
    const auto rows = readRows(text);
    if (!rows) {
        return std::unexpected(rows.error());
    }

    QStringList problems;
    std::vector<const Column*> order;
    for (const QString& title : rows->front().cells) {
        const Column* column = columnFor(title);
        if (column && std::ranges::find(order, column) != order.end()) {
            problems.append(u"there are two columns called \"%1\""_s.arg(column->name));
        }
        order.push_back(column);
    }
    QJsonArray cards;
    for (auto row = rows->begin() + 1; row != rows->end(); ++row) {
        const QJsonObject card = cardFrom(*row, order, problems);
        if (!card.isEmpty()) {
            cards.append(card);
        }
    }
    if (!problems.isEmpty()) {
        return std::unexpected(problems);
    }
    if (cards.isEmpty()) {
        return problem(u"no card in it"_s);
    }
    const QJsonObject file{
        {u"player_class"_s, u"ALL"_s}, {u"time_range"_s, u"LAST_7_DAYS"_s},
        {u"fetched_at"_s, fetchedAt},  {u"card_count"_s, cards.size()},
        {u"cards"_s, cards},
    };
    return QJsonDocument(file).toJson(QJsonDocument::Compact);
}

} // namespace pelloran
