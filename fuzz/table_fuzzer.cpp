// Any bytes as a table of cards. What is taken has to be a card file that clients take, with what the table's cells
// say, and what is not has to say why.

#include "data/CardFile.h"
#include "data/WinrateFields.h"
#include "fuzz/Require.h"
#include "publish/CardLists.h"
#include "publish/CardTable.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <system_error>
#include <tuple>
#include <vector>

namespace {

using namespace pelloran;
using fuzzing::require;

using Row = std::map<QString, QString>; // cells by the names of their columns, none empty

QStringList cellsOf(const QString& line, QChar separator) {
    QStringList cells;
    for (const QString& cell : line.split(separator)) {
        cells.append(QString(cell).remove(QChar(QChar::ByteOrderMark)).trimmed());
    }
    return cells;
}

// The rows of a table in the plainest way to read one. Absent where it has quotes.
std::optional<std::vector<Row>> plainRows(const QByteArray& table) {
    const QString text = QString::fromUtf8(table).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (text.contains(u'"')) {
        return std::nullopt;
    }
    const QStringList lines = QString(text).replace(u'\r', u'\n').split(u'\n', Qt::SkipEmptyParts);
    for (const QChar separator : {u',', u';', u'\t'}) {
        QStringList titles;
        for (const QString& title : lines.value(0).split(separator)) {
            titles.append(title.simplified().toLower().replace(u' ', u'_'));
        }
        if (!titles.contains(u"card_id")) {
            continue;
        }
        std::vector<Row> rows;
        for (const QString& line : lines.mid(1)) {
            const QStringList cells = cellsOf(line, separator);
            Row row;
            for (qsizetype i = 0; i < std::min(cells.size(), titles.size()); ++i) {
                if (!cells[i].isEmpty()) {
                    row[titles[i]] = cells[i];
                }
            }
            rows.push_back(row);
        }
        return rows;
    }
    return std::nullopt;
}

template <typename Number>
bool isNumber(Number number, const QString& cell) {
    constexpr QChar minus(0x2212);
    const QByteArray digits = QString(cell).replace(minus, u'-').toLatin1();
    const char* const begin = digits.constData() + (digits.startsWith('+') ? 1 : 0);
    const char* const end = digits.constData() + digits.size();
    Number plain{};
    const auto [rest, error] = std::from_chars(begin, end, plain);
    return error == std::errc() && rest == end && plain == number;
}

bool says(const QString& cell, const QString& text) {
    return cell == text;
}

bool says(const QString& cell, qint64 number) {
    return isNumber(number, cell);
}

bool says(const QString& cell, double number) {
    return isNumber(number, cell.endsWith(u'%') ? cell.chopped(1).trimmed() : cell);
}

template <typename Value>
bool says(const QString& cell, const std::optional<Value>& value) {
    return value ? says(cell, *value) : cell.isEmpty();
}

bool isWhatRowSays(const CardStats& card, const Row& row) {
    const auto cell = [&](QLatin1StringView name) {
        const auto found = row.find(name);
        return found == row.end() ? QString() : found->second;
    };
    return std::apply([&](const auto&... field) { return (says(cell(field.key), card.*field.member) && ...); },
                      strict_json::fields<CardStats>);
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto cards = cardsFromTable(bytes, QStringLiteral("then"), CardLists());
    if (!cards) {
        require(!cards.error().isEmpty());
        return 0;
    }
    const auto decoded = CardFile::decode(cards->file, QStringLiteral("table"));
    require(decoded && !decoded->rows.empty());
    if (auto rows = plainRows(bytes)) {
        // A row that says nothing of a card is none.
        std::erase_if(*rows, [](const Row& row) { return isWhatRowSays(CardStats(), row); });
        require(std::ranges::equal(decoded->rows, *rows, isWhatRowSays));
    }
    return 0;
}
