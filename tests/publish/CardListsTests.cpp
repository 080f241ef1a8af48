#include "publish/CardLists.h"

#include "publish/CardTable.h"
#include "publish/FilledFiles.h"
#include "tests/publish/DataFolder.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran {
namespace {

using namespace testing;

// Cards that no game has.
const QByteArray englishCards = R"([
  {"id": "OWN_1", "dbfId": 11, "name": "Lantern of the Marsh", "rarity": "RARE", "cost": 3, "type": "SPELL",
   "cardClass": "MAGE", "set": "OWN", "flavor": "unknown keys are passed over"},
  {"id": "OWN_2", "dbfId": 12, "name": "Tin Heron", "rarity": "COMMON", "cost": 0, "type": "MINION",
   "cardClass": "NEUTRAL", "set": "OWN"},
  {"id": "OWN_3"}
])";
const QByteArray chineseCards = R"([
  {"id": "OWN_1", "dbfId": 11, "name": "泽地术灯", "rarity": "EPIC"},
  {"id": "OWN_2", "dbfId": 12, "name": "锡鹭猎手"},
  {"id": "OWN_4", "dbfId": 14, "name": "纸龙"}
])";

const CardStats lantern{
    .cardId = QStringLiteral("OWN_1"),
    .nameZh = QStringLiteral("泽地术灯"),
    .nameEn = QStringLiteral("Lantern of the Marsh"),
    .cost = 3,
    .rarity = QStringLiteral("RARE"),
    .type = QStringLiteral("SPELL"),
    .cardClass = QStringLiteral("MAGE"),
    .set = QStringLiteral("OWN"),
    .deckWinRate = {},
    .drawnWinRate = {},
    .playedWinRate = {},
    .popularity = {},
    .avgCopiesInDeck = {},
    .numGames = {},
};

class CardListsTest : public ::testing::Test {
protected:
    QString file(const QString& name, const QByteArray& bytes) const {
        folder.write(name, bytes);
        return folder.path(name);
    }

    // What is wrong with a list of that name, without the folder.
    QStringList troubleWith(const QString& name, const QByteArray& bytes) const {
        const auto lists = CardLists::read({file(name, bytes)});
        return lists ? QStringList() : QStringList(lists.error()).replaceInStrings(folder.path() + u'/', QString());
    }

    CardLists both() const {
        const auto lists = CardLists::read(
            {file(QStringLiteral("enUS.json"), englishCards), file(QStringLiteral("cards.zhCN.json"), chineseCards)});
        EXPECT_TRUE(lists) << (lists ? "" : lists.error().join(u'\n').toStdString());
        return lists.value_or(CardLists());
    }

    DataFolder folder;
};

TEST_F(CardListsTest, JoinsTheLanguagesOfACard) {
    const CardLists lists = both();
    const ListedRow found = lists.find(QStringLiteral("OWN_1"), {});
    ASSERT_TRUE(found.card);
    EXPECT_EQ(found.card->card, lantern) << "of the rarity the first list counts";
    EXPECT_EQ(found.card->dbfId, 11);
    EXPECT_TRUE(lists.find(QStringLiteral("OWN_3"), {}).card) << "a card without a name is known too";
    EXPECT_EQ(lists.find(QStringLiteral("OWN_4"), {}).card->card.nameEn, std::nullopt);
}

TEST_F(CardListsTest, FindsByIdentifierElseByNumber) {
    struct Case {
        const char* why;
        const char* cardId;
        std::optional<qint64> dbfId;
        const char* found;
        bool isContradictory = false;
    };

    const Case cases[] = {
        {"by the identifier", "OWN_1", {}, "OWN_1"},
        {"by the number", "", 12, "OWN_2"},
        {"both of one card", "OWN_1", 11, "OWN_1"},
        {"the number of another card", "OWN_1", 12, "OWN_1", true},
        {"an identifier that only the source has", "MINE_1", 12, "OWN_2", true},
        {"a number that only the source has", "OWN_1", 99, "OWN_1"},
        {"in another case", "own_1", {}, nullptr},
        {"unknown", "MINE_1", 99, nullptr},
        {"nothing to look for", "", {}, nullptr},
    };
    const CardLists lists = both();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const ListedRow found = lists.find(QString::fromUtf8(c.cardId), c.dbfId);
        EXPECT_EQ(found.card ? found.card->card.cardId : QString(), QString::fromUtf8(c.found));
        EXPECT_EQ(found.isContradictory, c.isContradictory);
    }
    EXPECT_FALSE(CardLists().find(QStringLiteral("OWN_1"), 11).card);
}

TEST_F(CardListsTest, TellsTheLanguageOfAList) {
    struct Case {
        const char* why;
        const char* file;
        QByteArray names;
        const char* chinese; // name found
        const char* english;
    };

    const QByteArray plain = R"([{"id": "A", "name": "Xyz"}])";
    const Case cases[] = {
        {"by its name", "enUS.json", plain, nullptr, "Xyz"},
        {"by a part of its name", "cards.zhCN.json", plain, "Xyz", nullptr},
        {"in another case, with a sign between", "cards_zh-cn.json", plain, "Xyz", nullptr},
        {"behind a word of two letters", "hs_zh_CN.json", plain, "Xyz", nullptr},
        {"by its folder, as the lists lie on their server", "zhCN/cards.json", plain, "Xyz", nullptr},
        {"its own name before its folder's", "zhCN/enUS.json", plain, nullptr, "Xyz"},
        {"its name before what its cards look like", "enUS-1.json", R"([{"id": "A", "name": "猎龙"}])", nullptr,
         "猎龙"},
        {"by its cards", "a.json", chineseCards, nullptr, nullptr},
        {"by its cards too", "b.json", englishCards, nullptr, nullptr},
        {"names by locale need none", "c.json", R"([{"id": "A", "name": {"zhCN": "猎龙", "enUS": "B", "deDE": 1}}])",
         "猎龙", "B"},
        {"of the names by locale one is missing", "d.json", R"([{"id": "A", "name": {"zhCN": null, "enUS": "B"}}])",
         nullptr, "B"},
        {"a byte-order mark", "f.json",
         "\xEF\xBB\xBF"
         R"([{"id": "A", "name": {"zhCN": "猎龙"}}])",
         "猎龙", nullptr},
        {"no names at all", "e.json", R"([{"id": "A", "cost": 1}])", nullptr, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto lists = CardLists::read({file(QString::fromUtf8(c.file), c.names)});
        ASSERT_TRUE(lists) << lists.error().join(u'\n').toStdString();
        if (const ListedRow found = lists->find(QStringLiteral("A"), {}); found.card) {
            EXPECT_EQ(found.card->card.nameZh.value_or(QString()), QString::fromUtf8(c.chinese));
            EXPECT_EQ(found.card->card.nameEn.value_or(QString()), QString::fromUtf8(c.english));
        } else {
            const CardStats& card = lists->find(QStringLiteral("OWN_2"), {}).card->card;
            EXPECT_EQ(card.nameZh.has_value(), c.names == chineseCards);
            EXPECT_EQ(card.nameEn.has_value(), c.names == englishCards);
        }
    }
    const auto said = CardLists::read({QStringLiteral("zhCN=") + file(QStringLiteral("x/enUS.json"), plain)});
    ASSERT_TRUE(said);
    EXPECT_EQ(said->find(QStringLiteral("A"), {}).card->card.nameZh, QStringLiteral("Xyz"));
}

TEST_F(CardListsTest, RefusesAListInALanguageThatItCannotUseOrTell) {
    struct Case {
        const char* why;
        const char* file;
        const char* name;
        const char* trouble;
    };

    const char* const unclear = ": neither its name nor its cards tell the language: "
                                "say --names zhCN=FILE or enUS=FILE";
    const Case cases[] = {
        {"named so", "cards.deDE.json", "X", ": is in deDE, and data files have names in zhCN and enUS"},
        {"traditional characters by name", "zhTW.json", "X",
         ": is in zhTW, and data files have names in zhCN and enUS"},
        {"traditional characters", "cards.json", "龍術", unclear},
        {"characters that both have", "cards.json", "火球", unclear},
        {"kana", "cards.json", "龙のかげ", unclear},
        {"hangul", "cards.json", "용의 그림자", unclear},
        {"German", "cards.json", "Die Laterne des Moores", unclear},
        {"nothing to go by", "cards.json", "Xyz", unclear},
        {"two at once", "zhCN-enUS.json", "Xyz", unclear},
        {"a word of four letters is no language", "data.json", "Xyz", unclear},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const QByteArray list = QByteArray(R"([{"id": "A", "name": ")") + c.name + R"("}])";
        EXPECT_EQ(troubleWith(QString::fromUtf8(c.file), list),
                  QStringList{QString::fromUtf8(c.file) + QString::fromUtf8(c.trouble)});
    }
}

TEST_F(CardListsTest, RefusesABrokenListWithThePlace) {
    struct Case {
        const char* why;
        QByteArray list;
        QString trouble;
    };

    const QByteArray longText(201, 'x');
    const Case cases[] = {
        {"no JSON", "[{", QStringLiteral("enUS.json: unterminated object")},
        {"16-bit characters", QByteArray("\xFF\xFE[\0]\0", 6), QStringLiteral("enUS.json: ")},
        {"no array", R"({"cards": []})", QStringLiteral("enUS.json: the list is not an array")},
        {"nothing in it", "[]", QStringLiteral("enUS.json: no card in it")},
        {"no card", R"([{"id": "A"}, 3])", QStringLiteral("enUS.json: [1] is not an object")},
        {"no identifier", R"([{"name": "x"}])", QStringLiteral("enUS.json: [0].id is not a text")},
        {"an empty identifier", R"([{"id": ""}])", QStringLiteral("enUS.json: [0].id is empty")},
        {"a number for a name", R"([{"id": "A", "name": 3}])",
         QStringLiteral("enUS.json: [0].name is not a text or an object of texts")},
        {"a number for one of the names", R"([{"id": "A", "name": {"zhCN": 3}}])",
         QStringLiteral("enUS.json: [0].name.zhCN is not a text")},
        {"a text for a number", R"([{"id": "A", "dbfId": "3"}])",
         QStringLiteral("enUS.json: [0].dbfId is not a whole number")},
        {"half a crystal", R"([{"id": "A", "cost": 1.5}])",
         QStringLiteral("enUS.json: [0].cost is not a whole number")},
        {"a name without end", R"([{"id": "A", "name": ")" + longText + R"("}])",
         QStringLiteral("enUS.json: [0].name is not a text of at most 200 characters")},
        {"a card twice", R"([{"id": "A"}, {"id": "B"}, {"id": "A"}])",
         QStringLiteral("enUS.json: [2].id is A, which is [0]'s")},
        {"a card twice whose name looks like a place for a number", R"([{"id": "%1"}, {"id": "%1"}])",
         QStringLiteral("enUS.json: [1].id is %1, which is [0]'s")},
        {"a number twice", R"([{"id": "A", "dbfId": 1}, {"id": "B", "dbfId": 1}])",
         QStringLiteral("enUS.json: [1].dbfId is 1, which is A's")},
        {"more cards than any game has", '[' + QByteArray("{},").repeated(200'000) + "{}]",
         QStringLiteral("enUS.json: more than 200000 cards")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const QStringList trouble = troubleWith(QStringLiteral("enUS.json"), c.list);
        ASSERT_EQ(trouble.size(), 1);
        EXPECT_TRUE(trouble.first().startsWith(c.trouble)) << trouble.first().toStdString();
    }
    const auto several = CardLists::read({folder.path(QStringLiteral("none.json")), folder.path()});
    ASSERT_FALSE(several);
    EXPECT_EQ(several.error().size(), 2) << "what is wrong with each is told";
    EXPECT_EQ(several.error().first().count(QStringLiteral("none.json")), 1) << several.error().first().toStdString();
    EXPECT_FALSE(CardLists::read(QStringList(33, file(QStringLiteral("enUS.json"), englishCards))));
}

TEST_F(CardListsTest, FillsATableThatHasOnlyFigures) {
    const auto cards = cardsFromTable("dbf_id,card_id,name_en,cost,deck_win_rate\n"
                                      "11,,,,51\n"
                                      ",OWN_1,Lamp,7,52\n"
                                      ",MINE_1,Own Card,,53\n"
                                      "99,,,,54\n"
                                      "12,OWN_1,,,55\n"
                                      "11,MINE_2,,,56\n",
                                      QStringLiteral("then"), both());
    ASSERT_TRUE(cards) << cards.error().join(u'\n').toStdString();
    const QStringList remarks{
        QStringLiteral("in none of the lists of cards: line 4 (MINE_1), line 5 (dbf_id 99, left out)"),
        QStringLiteral("card_id counts where the lists have dbf_id for another card: line 6 (OWN_1)"),
        QStringLiteral("in the lists of cards by dbf_id, but not by card_id: line 7 (MINE_2, filled in as OWN_1)"),
    };
    EXPECT_EQ(cards->remarks, remarks);
    const auto file = WinrateFile::decode(cards->file);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->cardCount, 5);
    std::vector<CardStats> expected(5, lantern);
    expected[0].deckWinRate = 51;
    expected[1].deckWinRate = 52;
    expected[1].nameEn = QStringLiteral("Lamp");
    expected[1].cost = 7;
    expected[2] = CardStats();
    expected[2].cardId = QStringLiteral("MINE_1");
    expected[2].nameEn = QStringLiteral("Own Card");
    expected[2].deckWinRate = 53;
    expected[3].deckWinRate = 55;
    expected[4].cardId = QStringLiteral("MINE_2");
    expected[4].deckWinRate = 56;
    EXPECT_EQ(file->cards, expected);
}

TEST_F(CardListsTest, ATableWithoutAnyKnownCardIsAnotherGames) {
    struct Case {
        const char* why;
        const char* table;
        const char* problem;
    };

    const Case cases[] = {
        {"other cards", "card_id,cost\nMINE_1,3\n", "none of its cards is in the lists of cards"},
        {"numbers of other cards", "dbf_id,cost\n99,3\n", "none of its cards is in the lists of cards"},
        {"neither column", "name,cost\nx,3\n", "no column is called \"card_id\" or \"dbf_id\""},
        {"neither in a row", "dbf_id,cost\n,3\n11,4\n", "line 2: no card_id"},
        {"no number", "dbf_id,cost\nOWN_1,3\n11,4\n", "line 2, column dbf_id: \"OWN_1\" is not a whole number"},
        {"the number twice", "dbf_id,DBF id\n11,11\n", "there are two columns called \"dbf_id\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto cards = cardsFromTable(c.table, QStringLiteral("then"), both());
        ASSERT_FALSE(cards);
        EXPECT_TRUE(cards.error().contains(QString::fromUtf8(c.problem))) << cards.error().join(u'\n').toStdString();
    }
    EXPECT_FALSE(cardsFromTable("dbf_id,cost\n11,3\n", QStringLiteral("then"), {})) << "nobody says whose it is";
}

TEST_F(CardListsTest, FillsCardFilesOfEveryShape) {
    struct Case {
        const char* why;
        QByteArray before;
        QByteArray after;
        QStringList remarks = {};
    };

    const QByteArray whole =
        R"({"card_class":"MAGE","card_id":"OWN_1","cost":3,"deck_win_rate":51.5,"name_en":)"
        R"("Lantern of the Marsh","name_zh":"泽地术灯","rarity":"RARE","set":"OWN","type":"SPELL"})";
    const Case cases[] = {
        {"standard", R"({"cards": [{"card_id": "OWN_1", "deck_win_rate": 51.5}], "time_range": "x"})",
         R"({"cards":[)" + whole + R"(],"time_range":"x"})"},
        {"an empty name says nothing", R"({"cards": [{"card_id": "OWN_1", "name_en": "", "deck_win_rate": 51.5}]})",
         R"({"cards":[)" + whole + "]}"},
        {"by classes", R"({"classes": {"MAGE": [{"card_id": "OWN_1", "deck_win_rate": 51.5}]}})",
         R"({"classes":{"MAGE":[)" + whole + "]}}"},
        {"by classes, with more about them",
         R"({"classes": {"MAGE": {"cards": [{"card_id": "OWN_1", "deck_win_rate": 51.5}], "games": 1}}})",
         R"({"classes":{"MAGE":{"cards":[)" + whole + R"(],"games":1}}})"},
        {"keys of the operator's own stay", R"({"cards": [{"card_id": "OWN_4", "why": 1, "name_en": ""}]})",
         R"({"cards":[{"card_id":"OWN_4","name_en":"","name_zh":"纸龙","why":1}]})"},
        {"nothing to fill in", R"({"cards": [{"card_id": "OWN_3", "why": 1, "name_zh": ""}]})",
         R"({"cards": [{"card_id": "OWN_3", "why": 1, "name_zh": ""}]})"},
        {"rows with the number alone",
         R"({"cards": [{"dbf_id": 99}, {"dbf_id": 14, "cost": 2}, {"card_id": "MINE_1", "dbf_id": 98}]})",
         R"({"cards":[{"card_id":"OWN_4","cost":2,"dbf_id":14,"name_zh":"纸龙"},{"card_id":"MINE_1","dbf_id":98}]})",
         {QStringLiteral("in none of the lists of cards: cards[0] (dbf_id 99, left out), cards[2] (MINE_1)")}},
        {"of a class whose name looks like a place for a number",
         R"({"classes":{"%1":[{"card_id":"MINE_1"},{"card_id":"OWN_3"}]}})",
         R"({"classes":{"%1":[{"card_id":"MINE_1"},{"card_id":"OWN_3"}]}})",
         {QStringLiteral("in none of the lists of cards: classes.%1[0] (MINE_1)")}},
        {"an identifier that is a number is left to it too", R"({"cards": [{"card_id": 5, "dbf_id": 14}]})",
         R"({"cards": [{"card_id": 5, "dbf_id": 14}]})"},
        {"rows that the decoder refuses are left to it", R"({"cards": [{"card_id": "OWN_1", "cost": "x"}, {}, 3]})",
         R"({"cards": [{"card_id": "OWN_1", "cost": "x"}, {}, 3]})"},
        {"no JSON is left to the decoder", "{", "{"},
    };
    const CardLists lists = both();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto filled = filledCardFile(c.before, lists);
        ASSERT_TRUE(filled);
        EXPECT_EQ(filled->bytes, c.after) << filled->bytes.toStdString();
        EXPECT_EQ(filled->remarks, c.remarks);
        const auto without = filledCardFile(c.before, {});
        ASSERT_TRUE(without);
        EXPECT_EQ(without->bytes, c.before);
    }
    EXPECT_FALSE(filledCardFile(R"({"cards": [{"card_id": "MINE_1"}]})", lists)) << "another game's list";
}

// Several heroes a class, guests without one, and two that classes share.
const QByteArray heroCards = R"([
  {"id": "HERO_1", "type": "HERO", "cardClass": "MAGE", "name": {"enUS": "Ada Quill", "zhCN": "羽笔艾达"}},
  {"id": "HERO_1a", "type": "HERO", "cardClass": "MAGE", "name": {"enUS": "Quill-Mother", "zhCN": "羽笔艾达"}},
  {"id": "HERO_1b", "type": "HERO", "cardClass": "MAGE", "set": "OTHER", "name": {"enUS": "ADA QUILL!"}},
  {"id": "HERO_2", "type": "HERO", "cardClass": "ROGUE", "name": {"enUS": "Bo Sly"}},
  {"id": "BOSS_1", "type": "HERO", "cardClass": "NEUTRAL", "name": {"enUS": "Bo Sly", "zhCN": "宾客"}},
  {"id": "BOSS_2", "type": "HERO", "name": {"enUS": "Ada Quill", "zhCN": "无名"}},
  {"id": "HERO_3", "type": "HERO", "cardClass": "MAGE", "name": {"enUS": "the guest!", "zhCN": ""}},
  {"id": "HERO_4", "type": "HERO", "cardClass": "ROGUE", "name": {"enUS": "The Guest"}},
  {"id": "HERO_5", "type": "HERO", "cardClass": "DREAM", "name": {"zhCN": "梦中人"}},
  {"id": "HERO_6", "type": "HERO", "cardClass": "MAGE", "name": {"zhCN": "梦中人", "enUS": "?!"}},
  {"id": "OWN_5", "type": "SPELL", "cardClass": "MAGE", "name": {"enUS": "Not a Hero"}},
  {"id": "OWN_6", "cardClass": "MAGE", "name": {"enUS": "Of no type"}},
  {"id": "HERO_7", "type": "HERO", "cardClass": "MAGE"}
])";

TEST_F(CardListsTest, KnowsTheHeroesOfAClass) {
    const auto lists = CardLists::read({file(QStringLiteral("all.json"), heroCards)});
    ASSERT_TRUE(lists) << lists.error().join(u'\n').toStdString();
    QStringList told;
    for (const ListedHero& hero : lists->heroes()) {
        told.append(hero.heroClass + u' ' + hero.name);
    }
    const QStringList expected{
        QStringLiteral("MAGE 羽笔艾达"), QStringLiteral("MAGE Ada Quill"),  QStringLiteral("MAGE Quill-Mother"),
        QStringLiteral("ROGUE Bo Sly"),  QStringLiteral("MAGE the guest!"), QStringLiteral("ROGUE The Guest"),
        QStringLiteral("DREAM 梦中人"),  QStringLiteral("MAGE 梦中人"),
    };
    EXPECT_EQ(told, expected);
}

TEST_F(CardListsTest, KnowsTheHeroesOfBothLanguages) {
    const QByteArray inEnglish = R"([{"id": "H", "type": "HERO", "cardClass": "MAGE", "name": "Ada of the Quill"}])";
    const QByteArray inChinese = R"([{"id": "H", "type": "HERO", "cardClass": "MAGE", "name": "羽笔艾达"}])";
    const QString english = file(QStringLiteral("enUS/cards.json"), inEnglish);
    const QString chinese = file(QStringLiteral("zhCN/cards.json"), inChinese);
    const std::vector<ListedHero> both{{QStringLiteral("羽笔艾达"), QStringLiteral("MAGE")},
                                       {QStringLiteral("Ada of the Quill"), QStringLiteral("MAGE")}};
    for (const QStringList& order : {QStringList{english, chinese}, QStringList{chinese, english}}) {
        const auto lists = CardLists::read(order);
        ASSERT_TRUE(lists);
        EXPECT_EQ(lists->heroes(), both) << "in whatever order they come";
    }
}

TEST_F(CardListsTest, FillsClassFilesWithTheNamesThatTellAClass) {
    struct Case {
        const char* why;
        QByteArray before;
        QByteArray after;
        QStringList remarks = {};
    };

    const QString guest = QStringLiteral("names of heroes of several classes, left out: ");
    const Case cases[] = {
        {"filled in",
         R"({"classes": [{"player_class": "Rogue", "name_zh": "x", "own": 1}], "fetched_at": "y"})",
         R"({"classes":[{"hero_names":["Bo Sly"],"name_zh":"x","own":1,"player_class":"Rogue"}],"fetched_at":"y"})",
         {guest + QStringLiteral("The Guest (MAGE, ROGUE)")}},
        {"every hero's names, each once",
         R"({"classes": [{"player_class": "MAGE", "hero_names": null}]})",
         R"({"classes":[{"hero_names":["羽笔艾达","Ada Quill","Quill-Mother"],"player_class":"MAGE"}]})",
         {guest + QStringLiteral("the guest! (MAGE, ROGUE), 梦中人 (DREAM, MAGE)")}},
        {"its own names stay", R"({"classes": [{"player_class": "ROGUE", "hero_names": []}]})",
         R"({"classes": [{"player_class": "ROGUE", "hero_names": []}]})"},
        {"what a row says of itself goes before the lists",
         R"({"classes": [{"player_class": "MAGE", "hero_names": ["BO SLY"]}, {"player_class": "ROGUE"}]})",
         R"({"classes": [{"player_class": "MAGE", "hero_names": ["BO SLY"]}, {"player_class": "ROGUE"}]})",
         {guest + QStringLiteral("Bo Sly (ROGUE, MAGE), The Guest (MAGE, ROGUE)"),
          QStringLiteral("the lists of cards have no hero for classes[1] (ROGUE)")}},
        {"no hero of that class",
         R"({"classes": [{"player_class": "PRIEST"}, {"player_class": "druid"}]})",
         R"({"classes": [{"player_class": "PRIEST"}, {"player_class": "druid"}]})",
         {QStringLiteral("the lists of cards have no hero for classes[0] (PRIEST), classes[1] (DRUID)")}},
        {"left to the decoder", R"({"classes": [3, {"name_zh": "x"}]})", R"({"classes": [3, {"name_zh": "x"}]})"},
        {"no rows", R"({"classes": {}})", R"({"classes": {}})"},
        {"no JSON", "[", "["},
    };
    const auto lists = CardLists::read({file(QStringLiteral("all.json"), heroCards)});
    ASSERT_TRUE(lists);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const FilledFile filled = filledClassFile(c.before, *lists);
        EXPECT_EQ(filled.bytes, c.after) << filled.bytes.toStdString();
        EXPECT_EQ(filled.remarks, c.remarks) << filled.remarks.join(u'\n').toStdString();
        EXPECT_EQ(filledClassFile(c.before, {}).bytes, c.before);
        EXPECT_EQ(filledClassFile(c.before, {}).remarks, QStringList());
    }
}

} // namespace
} // namespace pelloran
