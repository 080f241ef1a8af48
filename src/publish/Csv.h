#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>
#include <expected>
#include <limits>
#include <vector>

// Tables as spreadsheets export them: RFC 4180, with the separator as an argument and lone line feeds or carriage
// returns as line ends too.
namespace pelloran {

struct CsvRow {
    int line = 0; // where it begins, from 1
    QStringList cells;

    bool operator==(const CsvRow&) const = default;
};

struct CsvError {
    int line = 0;
    QString message;

    bool operator==(const CsvError&) const = default;
};

// Every line that holds anything. A cell in double quotes may hold separators, line ends and, doubled, quotes; it fails
// when its closing quote is missing or followed by more of the cell. Behind `mostRows` nothing is looked at.
std::expected<std::vector<CsvRow>, CsvError> parseCsv(QStringView text, QChar separator,
                                                      std::size_t mostRows = std::numeric_limits<std::size_t>::max());

} // namespace pelloran
