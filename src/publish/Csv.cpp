#include "publish/Csv.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

constexpr QChar quote = u'"';

// Goes through the text once, cell by cell.
class CsvReader {
public:
    CsvReader(QStringView table, QChar between)
        : text(table)
        , separator(between) {}

    std::expected<std::vector<CsvRow>, CsvError> read(std::size_t mostRows) {
        std::vector<CsvRow> rows;
        while (!atEnd() && rows.size() < mostRows) {
            CsvRow row{line, {}};
            do {
                auto cell = readCell();
                if (!cell) {
                    return std::unexpected(cell.error());
                }
                row.cells.append(*cell);
            } while (take(separator));
            takeLineEnd();
            if (row.cells.size() > 1 || !row.cells.first().isEmpty()) {
                rows.push_back(std::move(row));
            }
        }
        return rows;
    }

private:
    bool atEnd() const { return at == text.size(); }

    bool atCellEnd() const { return atEnd() || text[at] == separator || text[at] == u'\n' || text[at] == u'\r'; }

    bool take(QChar wanted) {
        const bool is = !atEnd() && text[at] == wanted;
        at += is ? 1 : 0;
        return is;
    }

    void takeLineEnd() {
        const bool carriageReturn = take(u'\r');
        if (take(u'\n') || carriageReturn) {
            ++line;
        }
    }

    std::expected<QString, CsvError> readCell() {
        if (take(quote)) {
            return readQuoted();
        }
        const qsizetype begin = at;
        while (!atCellEnd()) {
            ++at;
        }
        return text.sliced(begin, at - begin).toString();
    }

    std::expected<QString, CsvError> readQuoted() {
        const int openedAt = line;
        QString cell;
        while (!atEnd()) {
            if (take(quote)) {
                if (!take(quote)) {
                    if (!atCellEnd()) {
                        return std::unexpected(CsvError{line, u"there is text behind a closing quote"_s});
                    }
                    return cell;
                }
                cell += quote;
                continue;
            }
            line += text[at] == u'\n' ? 1 : 0;
            cell += text[at++];
        }
        return std::unexpected(CsvError{openedAt, u"a quoted cell has no closing quote"_s});
    }

    QStringView text;
    QChar separator;
    qsizetype at = 0;
    int line = 1;
};

} // namespace

std::expected<std::vector<CsvRow>, CsvError> parseCsv(QStringView text, QChar separator, std::size_t mostRows) {
    return CsvReader(text, separator).read(mostRows);
}

} // namespace pelloran
