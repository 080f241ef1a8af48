#include "publish/Csv.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran {
namespace {

TEST(Csv, ReadsRowsOfCells) {
    struct Case {
        const char* why;
        const char16_t* text;
        std::vector<CsvRow> rows;
    };

    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    const Case cases[] = {
        {"nothing", u"", {}},
        {"one line without an end", u"a,b", {{1, {a, b}}}},
        {"every kind of line end", u"a\nb\ra\r\nb", {{1, {a}}, {2, {b}}, {3, {a}}, {4, {b}}}},
        {"a line with nothing in it is none", u"a\n\n\nb\n", {{1, {a}}, {4, {b}}}},
        {"empty cells count", u",a,\n,", {{1, {{}, a, {}}}, {2, {{}, {}}}}},
        {"a quoted separator", u"\"a,b\",b", {{1, {QStringLiteral("a,b"), b}}}},
        {"a doubled quote", u"\"a\"\"b\"", {{1, {QStringLiteral("a\"b")}}}},
        {"a quoted line end counts as a line", u"\"a\nb\",a\nb", {{1, {QStringLiteral("a\nb"), a}}, {3, {b}}}},
        {"an empty quoted cell", u"\"\",a", {{1, {{}, a}}}},
        {"a quote inside an unquoted cell is itself", u"a\"b\"", {{1, {QStringLiteral("a\"b\"")}}}},
        {"spaces belong to the cell", u" a , b", {{1, {QStringLiteral(" a "), QStringLiteral(" b")}}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto rows = parseCsv(c.text, u',');
        ASSERT_TRUE(rows);
        EXPECT_EQ(*rows, c.rows);
    }
}

TEST(Csv, SeparatesAtWhatItIsTold) {
    const auto rows = parseCsv(u"a;b,c;\"d;e\"", u';');
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->front().cells, (QStringList{QStringLiteral("a"), QStringLiteral("b,c"), QStringLiteral("d;e")}));
}

TEST(Csv, TellsTheLineOfAQuoteGoneWrong) {
    struct Case {
        const char* why;
        const char16_t* text;
        int line;
    };

    const Case cases[] = {
        {"never closed: where it opened", u"a\n\"b\nc\nd", 2},
        {"text behind the closing one: there", u"a\n\"b\nc\"d", 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto rows = parseCsv(c.text, u',');
        ASSERT_FALSE(rows);
        EXPECT_EQ(rows.error().line, c.line);
        EXPECT_FALSE(rows.error().message.isEmpty());
    }
}

// Whatever the cells hold, a table written by the rules reads back as it was.
TEST(Csv, ReadsBackWhatIsWrittenByTheRules) {
    const QString alphabet = QStringLiteral("a,;\"\n\r 卡");
    quint32 random = 1;
    const auto next = [&random](quint32 below) {
        random = random * 1664525 + 1013904223;
        return (random >> 16) % below;
    };
    for (int round = 0; round < 2000; ++round) {
        QList<QStringList> table;
        QString text;
        for (quint32 row = 0; row < 1 + next(3); ++row) {
            QStringList cells;
            QStringList written;
            for (quint32 column = 0; column < 2 + next(3); ++column) {
                QString cell;
                for (quint32 length = next(5); length > 0; --length) {
                    cell += alphabet[static_cast<qsizetype>(next(static_cast<quint32>(alphabet.size())))];
                }
                cells.append(cell);
                written.append(u'"' + QString(cell).replace(QStringLiteral("\""), QStringLiteral("\"\"")) + u'"');
            }
            table.append(cells);
            text += written.join(u',') + QStringLiteral("\r\n");
        }
        const auto read = parseCsv(text, u',');
        ASSERT_TRUE(read) << text.toStdString();
        ASSERT_EQ(static_cast<qsizetype>(read->size()), table.size()) << text.toStdString();
        for (qsizetype row = 0; row < table.size(); ++row) {
            ASSERT_EQ((*read)[static_cast<std::size_t>(row)].cells, table[row]) << text.toStdString();
        }
    }
}

} // namespace
} // namespace pelloran
