#include "publish/CardTable.h"

#include "data/CardFile.h"
#include "data/WinrateFormats.h"
#include "publish/CardLists.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran {
namespace {

const QString noTime = QStringLiteral("then");

// Without lists of cards.
std::expected<QByteArray, QStringList> cardFileFromTable(const QByteArray& table, const QString& fetchedAt) {
    auto cards = cardsFromTable(table, fetchedAt, {});
    if (!cards) {
        return std::unexpected(cards.error());
    }
    EXPECT_EQ(cards->remarks, QStringList());
    return cards->file;
}

TEST(CardTable, MakesACardFileOfEveryColumn) {
    const auto file =
        cardFileFromTable("card_id,name_zh,name_en,cost,rarity,type,card_class,set,deck_win_rate,"
                          "drawn_win_rate,played_win_rate,popularity,avg_copies_in_deck,num_games\r\n"
                          "CS2_029,火球术,Fireball,4,FREE,SPELL,MAGE,LEGACY,56.1,57.2,58.25,3.5,1.21,1234\r\n",
                          noTime);
    ASSERT_TRUE(file) << file.error().join(u'\n').toStdString();
    const auto decoded = WinrateFile::decode(*file);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->playerClass, QStringLiteral("ALL"));
    EXPECT_EQ(decoded->timeRange, QStringLiteral("LAST_7_DAYS"));
    EXPECT_EQ(decoded->fetchedAt, noTime);
    EXPECT_EQ(decoded->cardCount, 1);
    const CardStats fireball{
        .cardId = QStringLiteral("CS2_029"),
        .nameZh = QStringLiteral("火球术"),
        .nameEn = QStringLiteral("Fireball"),
        .cost = 4,
        .rarity = QStringLiteral("FREE"),
        .type = QStringLiteral("SPELL"),
        .cardClass = QStringLiteral("MAGE"),
        .set = QStringLiteral("LEGACY"),
        .deckWinRate = 56.1,
        .drawnWinRate = 57.2,
        .playedWinRate = 58.25,
        .popularity = 3.5,
        .avgCopiesInDeck = 1.21,
        .numGames = 1234,
    };
    ASSERT_EQ(decoded->cards.size(), 1U);
    EXPECT_EQ(decoded->cards.front(), fireball);
}

TEST(CardTable, TakesWhatSpreadsheetsMakeOfATable) {
    struct Case {
        const char* why;
        const char* table;
        std::optional<double> deckWinRate = 56.5;
    };

    const Case cases[] = {
        {"plain", "card_id,deck_win_rate\nA,56.5\n"},
        {"byte-order mark", "\xEF\xBB\xBF"
                            "card_id,deck_win_rate\nA,56.5\n"},
        {"semicolons", "card_id;deck_win_rate\nA;56.5\n"},
        {"tabs", "card_id\tdeck_win_rate\nA\t56.5\n"},
        {"columns in another order", "deck_win_rate,card_id\n56.5,A\n"},
        {"titles for people", "Card ID, Deck win rate \nA,56.5\n"},
        {"a column of the operator's own", "card_id,comment,deck_win_rate\nA,why not,56.5\n"},
        {"a percent sign", "card_id,deck_win_rate\nA,56.5%\n"},
        {"a percent sign after a space", "card_id,deck_win_rate\nA,56.5 %\n"},
        {"spaces around", "card_id,deck_win_rate\n A , 56.5 \n"},
        {"rows that begin with a byte-order mark, of tables put together", "card_id,deck_win_rate\n"
                                                                           "\xEF\xBB\xBF"
                                                                           "A,\xEF\xBB\xBF"
                                                                           "56.5\n\xEF\xBB\xBF\n"},
        {"empty rows at the end", "card_id,deck_win_rate\nA,56.5\n,\n,\n"},
        {"empty cells beyond the last column", "card_id,deck_win_rate\nA,56.5,,\n"},
        {"a short row leaves fields out", "card_id,name_en,deck_win_rate\nA\n", std::nullopt},
        {"an empty cell leaves its field out", "card_id,deck_win_rate,name_en\nA,,x\n", std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto file = cardFileFromTable(c.table, noTime);
        ASSERT_TRUE(file) << file.error().join(u'\n').toStdString();
        const auto decoded = WinrateFile::decode(*file);
        ASSERT_TRUE(decoded);
        ASSERT_EQ(decoded->cards.size(), 1U);
        EXPECT_EQ(decoded->cards.front().cardId, QStringLiteral("A"));
        EXPECT_EQ(decoded->cards.front().deckWinRate, c.deckWinRate);
    }
}

TEST(CardTable, TellsWhatIsWrongAndWhere) {
    struct Case {
        const char* why;
        QByteArray table;
        QStringList problems;
    };

    const Case cases[] = {
        {"nothing", "", {QStringLiteral("no column is called \"card_id\"")}},
        {"another table", "name,price\nA,1\n", {QStringLiteral("no column is called \"card_id\"")}},
        {"a byte-order mark is no card", "card_id,cost\n\xEF\xBB\xBF,3\n", {QStringLiteral("line 2: no card_id")}},
        {"titles alone", "card_id,cost\n", {QStringLiteral("no card in it")}},
        {"another encoding",
         "card_id,name_zh\nA,\xBB\xF0\xC7\xF2\n",
         {QStringLiteral("not UTF-8: export it as \"CSV UTF-8\"")}},
        {"cut off within a character",
         "card_id,name_zh\nA,\xE7\x81\xAB\xE7\x90",
         {QStringLiteral("not UTF-8: export it as \"CSV UTF-8\"")}},
        {"a column twice", "card_id,cost,Cost\nA,1,2\n", {QStringLiteral("there are two columns called \"cost\"")}},
        {"text for a number",
         "card_id,deck_win_rate\nA,high\n",
         {QStringLiteral("line 2, column deck_win_rate: \"high\" is not a number")}},
        {"a decimal comma",
         "card_id;deck_win_rate\nA;56,5\n",
         {QStringLiteral("line 2, column deck_win_rate: \"56,5\" is not a number")}},
        {"a group of digits",
         "card_id;num_games\nA;1,234\n",
         {QStringLiteral("line 2, column num_games: \"1,234\" is not a whole number")}},
        {"half a crystal",
         "card_id,cost\nA,1.5\n",
         {QStringLiteral("line 2, column cost: \"1.5\" is not a whole number")}},
        {"a null character in a number",
         QByteArrayLiteral("card_id,cost\nA,3\0x\n"),
         {QStringLiteral("line 2, column cost: \"3%1x\" is not a whole number").arg(QChar(QChar::Null))}},
        {"not a number at all, by name",
         "card_id,deck_win_rate\nA,nan\n",
         {QStringLiteral("line 2, column deck_win_rate: \"nan\" is not a number")}},
        {"a percent sign where none belongs",
         "card_id,avg_copies_in_deck\nA,5%\n",
         {QStringLiteral("line 2, column avg_copies_in_deck: \"5%\" is not a number")}},
        {"a card without an id", "card_id,cost\n,3\n", {QStringLiteral("line 2: no card_id")}},
        {"a cell too many", "card_id,cost\nA,3,4\n", {QStringLiteral("line 2: more cells than there are columns")}},
        {"another table with all in quotes",
         "\"name\",\"price\"\n\"A\",\"1\"\n",
         {QStringLiteral("no column is called \"card_id\"")}},
        {"an open quote where all are in quotes",
         "card_id,name_en\n\"A\",\"x\"\n\"B\",\"y\n",
         {QStringLiteral("line 3: a quoted cell has no closing quote")}},
        {"an open quote in the titles",
         "\"card_id,name_en\nA,x\n",
         {QStringLiteral("line 1: a quoted cell has no closing quote")}},
        {"an open quote", "card_id,name_en\nA,\"x\n", {QStringLiteral("line 2: a quoted cell has no closing quote")}},
        {"everything at once",
         "card_id,cost\n,x\nA,y\n",
         {QStringLiteral("line 2, column cost: \"x\" is not a whole number"), QStringLiteral("line 2: no card_id"),
          QStringLiteral("line 3, column cost: \"y\" is not a whole number")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto file = cardFileFromTable(c.table, noTime);
        ASSERT_FALSE(file);
        EXPECT_EQ(file.error(), c.problems) << file.error().join(u'\n').toStdString();
    }
}

// Clients would refuse the file.
TEST(CardTable, HoldsToTheLimitsOfACardFile) {
    const QByteArray most(longestDataText, 'x');

    struct Case {
        const char* why;
        QByteArray table;
        QString problem; // empty: taken
    };

    const Case cases[] = {
        {"a name as long as may be", "card_id,name_en\nA," + most + "\n", {}},
        {"a longer one", "card_id,name_en\nA," + most + "x\n",
         QStringLiteral("line 2, column name_en: \"xxxxxxxxxxxxxxxxxxxx…\" is not a text of at most 1000 characters")},
        {"a row too many", "card_id\n" + QByteArray("A\n").repeated(qsizetype{mostCardRows} + 1),
         QStringLiteral("more than 200000 cards")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto file = cardFileFromTable(c.table, QStringLiteral("then"));
        EXPECT_EQ(file ? QString() : file.error().join(u'|'), c.problem);
        EXPECT_TRUE(!file || CardFile::decode(*file, QStringLiteral("table")));
    }
}

} // namespace
} // namespace pelloran
