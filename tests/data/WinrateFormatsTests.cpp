#include "data/WinrateFormats.h"

#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/Printing.h"

#include <QJsonObject>

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(WinrateFile, DecodesEveryField) {
    const auto file = WinrateFile::decode(R"({
        "player_class": "MAGE", "time_range": "LAST_7_DAYS", "fetched_at": "yesterday", "card_count": 7,
        "cards": [{
            "card_id": "X_1", "name_zh": "火球术", "name_en": "Fireball", "cost": 4, "rarity": "COMMON",
            "type": "SPELL", "card_class": "MAGE", "set": "CORE", "deck_win_rate": 55.3, "drawn_win_rate": 56,
            "played_win_rate": -1.5e1, "popularity": 123.25, "avg_copies_in_deck": 1.25, "num_games": 9007199254740993
        }]
    })");
    ASSERT_TRUE(file);
    const CardStats card{u"X_1"_s,  u"火球术"_s, u"Fireball"_s, 4,     u"COMMON"_s, u"SPELL"_s, u"MAGE"_s,
                         u"CORE"_s, 55.3,        56.0,          -15.0, 123.25,      1.25,       9007199254740993};
    EXPECT_EQ(*file, (WinrateFile{u"MAGE"_s, u"LAST_7_DAYS"_s, u"yesterday"_s, 7, {card}}));
}

TEST(ClassWinrateFile, DecodesEveryField) {
    const auto file = ClassWinrateFile::decode(R"({
        "fetched_at": "yesterday", "selected_params": ["a", "b"],
        "classes": [{
            "deck_class_id": 4, "player_class": "MAGE", "name_zh": "法师", "name_en": "Mage", "win_rate": 50.5,
            "pick_rate": 9.25, "pct_7_plus": 12, "num_drafts": 1000, "rank": 1,
            "hero_names": ["吉安娜", ""]
        }]
    })");
    ASSERT_TRUE(file);
    const ClassWinrateRow row{4,    u"MAGE"_s, u"法师"_s, u"Mage"_s, 50.5,
                              9.25, 12.0,      1000,      1,         std::vector{u"吉安娜"_s, QString()}};
    EXPECT_EQ(*file, (ClassWinrateFile{u"yesterday"_s, std::vector{u"a"_s, u"b"_s}, {row}}));
}

TEST(CardStats, NeedsOnlyItsIdentifier) {
    const auto cards = decodeCards(R"([{"card_id": "X_1"}])");
    ASSERT_TRUE(cards);
    CardStats expected;
    expected.cardId = u"X_1"_s;
    ASSERT_EQ(*cards, std::vector{expected});
    EXPECT_EQ(cards->front().displayName(AppLanguage::en), u"X_1"_s);
    EXPECT_EQ(cards->front().displayName(AppLanguage::zh), u"X_1"_s);
}

TEST(WinrateFile, MayHaveNoRows) {
    EXPECT_EQ(WinrateFile::decode(R"({"cards": []})"), WinrateFile{});
}

TEST(Decoding, IsStrictPerFieldAndLenientPerObject) {
    struct Case {
        const char* why;
        QByteArray card; // one row of an array of cards
        bool accepted;
    };

    const Case cases[] = {
        {"unknown keys of any type", R"({"card_id": "X", "more": {"a": [1]}, "cards": 3})", true},
        {"null for every optional field",
         R"({"card_id": "X", "name_zh": null, "name_en": null, "cost": null, "rarity": null, "type": null,
             "card_class": null, "set": null, "deck_win_rate": null, "num_games": null})",
         true},
        {"no identifier", R"({"name_en": "Fireball"})", false},
        {"null for the identifier", R"({"card_id": null})", false},
        {"number for the identifier", R"({"card_id": 3})", false},
        {"empty identifier", R"({"card_id": ""})", true},
        {"not an object", "3", false},
        {"null row", "null", false},
        {"array for a row", "[]", false},
        {"whole number", R"({"card_id": "X", "cost": 3})", true},
        {"whole number written as a fraction", R"({"card_id": "X", "cost": 3.0})", true},
        {"whole number written with an exponent", R"({"card_id": "X", "cost": 1e2})", true},
        {"negative whole number", R"({"card_id": "X", "cost": -1})", true},
        {"fraction for a whole number", R"({"card_id": "X", "cost": 3.5})", false},
        {"text for a whole number", R"({"card_id": "X", "cost": "3"})", false},
        {"truth for a whole number", R"({"card_id": "X", "cost": true})", false},
        {"largest whole number", R"({"card_id": "X", "num_games": 9223372036854775807})", true},
        {"one more", R"({"card_id": "X", "num_games": 9223372036854775808})", false},
        {"smallest whole number", R"({"card_id": "X", "num_games": -9223372036854775808})", true},
        {"one less, which is read as the smallest", R"({"card_id": "X", "num_games": -9223372036854775809})", true},
        {"a thousand less", R"({"card_id": "X", "num_games": -9223372036854776833})", false},
        {"far less", R"({"card_id": "X", "num_games": -1e19})", false},
        {"far more", R"({"card_id": "X", "num_games": 1e300})", false},
        {"whole number for a fraction", R"({"card_id": "X", "popularity": 3})", true},
        {"text for a fraction", R"({"card_id": "X", "popularity": "3.5"})", false},
        {"truth for a fraction", R"({"card_id": "X", "popularity": false})", false},
        {"object for a fraction", R"({"card_id": "X", "popularity": {}})", false},
        {"number for a text", R"({"card_id": "X", "set": 3})", false},
        {"array for a text", R"({"card_id": "X", "set": ["CORE"]})", false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(decodeCards("[" + row.card + "]").has_value(), row.accepted);
        EXPECT_EQ(WinrateFile::decode("{\"cards\": [{\"card_id\": \"A\"}, " + row.card + "]}").has_value(),
                  row.accepted);
    }
    EXPECT_EQ(decodeCards(R"([{"card_id": "X", "cost": 3.0}])").value().front().cost, 3);
    EXPECT_EQ(decodeCards(R"([{"card_id": "X", "cost": 1e2}])").value().front().cost, 100);
}

TEST(Decoding, OfWholeFiles) {
    struct Case {
        const char* why;
        QByteArray json;
        bool cards;
        bool classes;
    };

    const Case cases[] = {
        {"both arrays, empty", R"({"cards": [], "classes": []})", true, true},
        {"neither", "{}", false, false},
        {"null for the arrays", R"({"cards": null, "classes": null})", false, false},
        {"objects for the arrays", R"({"cards": {}, "classes": {}})", false, false},
        {"a null among the rows", R"({"cards": [null], "classes": [null]})", false, false},
        {"a class without a Chinese name", R"({"cards": [], "classes": [{"player_class": "MAGE"}]})", true, false},
        {"a class with only its required fields",
         R"({"cards": [], "classes": [{"player_class": "MAGE", "name_zh": ""}]})", true, true},
        {"a class without a key", R"({"cards": [], "classes": [{"name_zh": "法师"}]})", true, false},
        {"text for a count", R"({"cards": [], "classes": [], "card_count": "7"})", false, true},
        {"a count that is not true", R"({"cards": [], "classes": [], "card_count": 7})", true, true},
        {"parameters as an object", R"({"cards": [], "classes": [], "selected_params": {"a": "b"}})", true, false},
        {"parameters as texts", R"({"cards": [], "classes": [], "selected_params": ["a"]})", true, true},
        {"no parameters", R"({"cards": [], "classes": [], "selected_params": []})", true, true},
        {"null for the parameters", R"({"cards": [], "classes": [], "selected_params": null})", true, true},
        {"parameters with a number", R"({"cards": [], "classes": [], "selected_params": ["a", 1]})", true, false},
        {"an array at the top", "[]", false, false},
        {"a number at the top", "3", false, false},
        {"nothing at all", "", false, false},
        {"cut off", R"({"cards": [], "classes": [)", false, false},
        {"something after the end", R"({"cards": [], "classes": []} {})", false, false},
        {"byte-order mark", "\xEF\xBB\xBF{\"cards\": [], \"classes\": []}", true, true},
        {"invalid UTF-8 in a text that is ignored", "{\"cards\": [], \"classes\": [], \"x\": \"\xFF\"}", false, false},
        {"overlong UTF-8", "{\"cards\": [], \"classes\": [], \"x\": \"\xC0\xAF\"}", false, false},
        {"half of a pair in UTF-8", "{\"cards\": [], \"classes\": [], \"x\": \"\xED\xA0\x80\"}", false, false},
        {"invalid UTF-8 in a key", "{\"cards\": [], \"classes\": [], \"\xFF\": 1}", false, false},
        {"binary", QByteArray("\0\1\2\3", 4), false, false},
        {"of two equal keys the last counts: right", R"({"cards": 3, "classes": 3, "cards": [], "classes": []})", true,
         true},
        {"of two equal keys the last counts: wrong", R"({"cards": [], "classes": [], "cards": 3, "classes": 3})", false,
         false},
        {"nested too deeply", QByteArray(100'000, '['), false, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto cards = WinrateFile::decode(row.json);
        EXPECT_EQ(cards.has_value(), row.cards);
        EXPECT_EQ(ClassWinrateFile::decode(row.json).has_value(), row.classes);
    }
}

TEST(Decoding, NamesThePlaceOfAnError) {
    struct Case {
        const char* why;
        QByteArray json;
        QString description;
    };

    const Case cases[] = {
        {"a field of a row", R"({"cards": [{"card_id": "A"}, {"card_id": "B", "cost": "3"}]})",
         u"cards[1].cost is not a whole number"_s},
        {"a field of the file", R"({"cards": [], "time_range": 7})", u"time_range is not a text"_s},
        {"a row", R"({"cards": [3]})", u"cards[0] is not an object"_s},
        {"the file", "[]", u"the file is not an object"_s},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(WinrateFile::decode(row.json).error().localizedDescription, row.description);
    }
    const DataError syntax = WinrateFile::decode("{\"cards\": [}").error();
    EXPECT_EQ(syntax.domain, u"QJsonDocument"_s);
    EXPECT_TRUE(syntax.localizedDescription.contains(u" at byte "_s)) << syntax.localizedDescription.toStdString();
}

// What a server could make us reckon with.
TEST(Decoding, RefusesWhatIsBeyondAnyRealFile) {
    const auto letters = [](qsizetype count) { return QByteArray(count, 'x'); };
    const auto rows = [](const QByteArray& row, std::size_t count) {
        return (row + ',').repeated(static_cast<qsizetype>(count) - 1) + row;
    };
    const auto cards = [](const QByteArray& inside) { return "{\"cards\": [" + inside + "]}"; };
    const auto card = [&](const char* key, qsizetype count) {
        return cards(R"({"card_id": "A"}, {"card_id": "B", ")" + QByteArray(key) + "\": \"" + letters(count) + "\"}");
    };
    const auto classes = [](const QByteArray& inside) { return "{\"classes\": [" + inside + "]}"; };
    const auto hero = [&](const QByteArray& names) {
        return classes(R"({"player_class": "MAGE", "name_zh": "M", "hero_names": [)" + names + "]}");
    };

    struct Case {
        const char* why;
        QByteArray json;
        QString expected; // empty: taken
    };

    const QString tooLong = u" is not a text of at most 1000 characters"_s;
    const Case cardCases[] = {
        {"a name as long as may be", card("name_en", longestDataText), {}},
        {"a name that no screen shows", card("name_en", longestDataText + 1), u"cards[1].name_en"_s + tooLong},
        {"megabytes of it, in the other language", card("name_zh", 5'000'000), u"cards[1].name_zh"_s + tooLong},
        {"another text of the row", card("set", longestDataText + 1), u"cards[1].set"_s + tooLong},
        {"an identifier", cards("{\"card_id\": \"" + letters(longestDataText + 1) + "\"}"),
         u"cards[0].card_id"_s + tooLong},
        {"what the file says of itself",
         "{\"time_range\": \"" + letters(longestDataText + 1) + R"(", "cards": [{"card_id": "A"}]})",
         u"time_range"_s + tooLong},
        {"a key that is not known may be as long as it likes", card("rules", longestDataText + 1), {}},
        {"as many rows as may be", cards(rows(R"({"card_id":""})", mostCardRows)), {}},
        {"as many values as may be, which are none of ours", '[' + rows("0", mostJsonValues) + ']',
         u"the file is not an object"_s},
        {"a value more, in arrays that take much room", '[' + rows("[0]", mostJsonValues / 2) + ",0]",
         u"the file has more than 5000000 values"_s},
        {"a row more", cards(rows(R"({"card_id":""})", mostCardRows + 1)),
         u"cards is not an array of at most 200000"_s},
    };
    for (const Case& c : cardCases) {
        SCOPED_TRACE(c.why);
        const auto file = WinrateFile::decode(c.json);
        EXPECT_EQ(file ? QString() : file.error().localizedDescription, c.expected);
    }
    const Case classCases[] = {
        {"a name that no screen shows",
         classes(R"({"player_class": "MAGE", "name_zh": ")" + letters(longestDataText + 1) + "\"}"),
         u"classes[0].name_zh"_s + tooLong},
        {"a hero's", hero("\"" + letters(longestDataText + 1) + "\""), u"classes[0].hero_names[0]"_s + tooLong},
        {"as many heroes as may be", hero(rows("\"\"", mostTextsOfARow)), {}},
        {"a hero more", hero(rows("\"\"", mostTextsOfARow + 1)),
         u"classes[0].hero_names is not an array of at most 10000"_s},
        {"a class for every letter", classes(rows(R"({"player_class":"","name_zh":""})", mostClassRows + 1)),
         u"classes is not an array of at most 100"_s},
    };
    for (const Case& c : classCases) {
        SCOPED_TRACE(c.why);
        const auto file = ClassWinrateFile::decode(c.json);
        EXPECT_EQ(file ? QString() : file.error().localizedDescription, c.expected);
    }
}

TEST(ParseJson, TakesAnyValueAtTheTop) {
    struct Case {
        const char* why;
        QByteArray json;
        std::optional<QJsonValue> expected;
    };

    const Case cases[] = {
        {"object", "{}", QJsonObject()},
        {"array", "[1]", QJsonArray{1}},
        {"number", " 3 ", 3},
        {"text", "\"a\"", u"a"_s},
        {"null", "null", QJsonValue()},
        {"text after a byte-order mark", "\xEF\xBB\xBF\"a\"", u"a"_s},
        {"two values", "1,2", {}},
        {"nothing", " ", {}},
        {"brackets that would close those of another", "1],[2", {}},
        {"no value", "nothing", {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto parsed = parseJson(row.json);
        EXPECT_EQ(parsed ? std::optional(*parsed) : std::nullopt, row.expected);
    }
}

template <typename Value>
void set(std::mt19937& random, std::optional<Value>& field, const Value& value) {
    if (random() % 3 != 0) {
        field = value;
    }
}

QString anyText(std::mt19937& random) {
    const QStringList texts{u""_s, u"Fireball"_s, u"火球术"_s, u"\"\\\n\u0001"_s, u"👩\u200D👧"_s, u"null"_s};
    return texts[static_cast<qsizetype>(random() % 6)];
}

double anyNumber(std::mt19937& random) {
    const double numbers[] = {0.0, -0.0, 55.3, 55.25, 1.0 / 3, 1e300, 5e-324, -7, 9007199254740993.0};
    return numbers[random() % std::size(numbers)];
}

qint64 anyWhole(std::mt19937& random) {
    const qint64 numbers[] = {
        0, -1, 7, std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(), 9007199254740993};
    return numbers[random() % std::size(numbers)];
}

CardStats anyCard(std::mt19937& random) {
    CardStats card;
    card.cardId = anyText(random);
    for (auto field : {&CardStats::nameZh, &CardStats::nameEn, &CardStats::rarity, &CardStats::type,
                       &CardStats::cardClass, &CardStats::set}) {
        set(random, card.*field, anyText(random));
    }
    for (auto field : {&CardStats::deckWinRate, &CardStats::drawnWinRate, &CardStats::playedWinRate,
                       &CardStats::popularity, &CardStats::avgCopiesInDeck}) {
        set(random, card.*field, anyNumber(random));
    }
    set(random, card.cost, anyWhole(random));
    set(random, card.numGames, anyWhole(random));
    return card;
}

ClassWinrateRow anyClass(std::mt19937& random) {
    ClassWinrateRow row;
    row.playerClass = anyText(random);
    row.nameZh = anyText(random);
    set(random, row.nameEn, anyText(random));
    for (auto field : {&ClassWinrateRow::winRate, &ClassWinrateRow::pickRate, &ClassWinrateRow::pct7Plus}) {
        set(random, row.*field, anyNumber(random));
    }
    for (auto field : {&ClassWinrateRow::deckClassId, &ClassWinrateRow::numDrafts, &ClassWinrateRow::rank}) {
        set(random, row.*field, anyWhole(random));
    }
    return row;
}

TEST(Encoding, IsUndoneByDecoding) {
    std::mt19937 random(3);
    for (int i = 0; i < 300; ++i) {
        WinrateFile cards;
        set(random, cards.playerClass, anyText(random));
        set(random, cards.timeRange, anyText(random));
        set(random, cards.fetchedAt, anyText(random));
        set(random, cards.cardCount, anyWhole(random));
        ClassWinrateFile classes;
        set(random, classes.fetchedAt, anyText(random));
        set(random, classes.selectedParams, {anyText(random), anyText(random)});
        for (auto left = random() % 4; left > 0; --left) {
            cards.cards.push_back(anyCard(random));
            classes.classes.push_back(anyClass(random));
        }
        ASSERT_EQ(WinrateFile::decode(cards.encode()), cards);
        ASSERT_EQ(ClassWinrateFile::decode(classes.encode()), classes);
        ASSERT_EQ(decodeCards(encodeCards(cards.cards)), cards.cards);
    }
}

TEST(Encoding, LeavesAbsentFieldsOut) {
    EXPECT_EQ(WinrateFile{}.encode(), R"({"cards":[]})"_ba);
    EXPECT_EQ(ClassWinrateFile{}.encode(), R"({"classes":[]})"_ba);
}

TEST(Records, HashByTheirFields) {
    std::mt19937 random(5);
    std::size_t collisions = 0;
    for (int i = 0; i < 1000; ++i) {
        const CardStats card = anyCard(random);
        CardStats other = card;
        EXPECT_EQ(qHash(card, 1), qHash(other, 1));
        other.numGames = card.numGames.value_or(0) ^ 1;
        collisions += qHash(card, 1) == qHash(other, 1);

        const ClassWinrateRow row = anyClass(random);
        ClassWinrateRow otherRow = row;
        EXPECT_EQ(qHash(ClassWinrateFile{{}, {}, {row}}), qHash(ClassWinrateFile{{}, {}, {otherRow}}));
        otherRow.nameZh += u'x';
        collisions += qHash(row) == qHash(otherRow);
    }
    EXPECT_EQ(collisions, 0U);
    EXPECT_EQ(qHash(WinrateFile{{}, {}, {}, {}, {}}), qHash(WinrateFile{}));
}

class DisplayNames : public ::testing::Test {
public:
    DisplayNames() { AppLanguage::configure(&defaults, &settings); }

    ~DisplayNames() override { AppLanguage::configure(nullptr, nullptr); }

protected:
    testing::FakeUserDefaults defaults;
    testing::FakeSystemSettings settings;
};

TEST_F(DisplayNames, OfCardsPreferTheLanguageAndFallBack) {
    struct Case {
        const char* why;
        std::optional<QString> zh;
        std::optional<QString> en;
        QString inChinese;
        QString inEnglish;
    };

    const Case cases[] = {
        {"both", u"火球术"_s, u"Fireball"_s, u"火球术"_s, u"Fireball"_s},
        {"no Chinese name", {}, u"Fireball"_s, u"Fireball"_s, u"Fireball"_s},
        {"empty Chinese name", u""_s, u"Fireball"_s, u"Fireball"_s, u"Fireball"_s},
        {"no English name", u"火球术"_s, {}, u"火球术"_s, u"火球术"_s},
        {"empty English name", u"火球术"_s, u""_s, u"火球术"_s, u"火球术"_s},
        {"neither", {}, {}, u"X_1"_s, u"X_1"_s},
        {"both empty", u""_s, u""_s, u"X_1"_s, u"X_1"_s},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        CardStats card;
        card.cardId = u"X_1"_s;
        card.nameZh = row.zh;
        card.nameEn = row.en;
        EXPECT_EQ(card.displayName(AppLanguage::zh), row.inChinese);
        EXPECT_EQ(card.displayName(AppLanguage::en), row.inEnglish);
    }
}

TEST_F(DisplayNames, OfClassesPreferTheLanguageAndFallBackToEnglish) {
    struct Case {
        const char* why;
        QString playerClass;
        QString zh;
        std::optional<QString> en;
        QString inChinese;
        QString inEnglish;
    };

    const Case cases[] = {
        {"both", u"MAGE"_s, u"法师"_s, u"Wizard"_s, u"法师"_s, u"Wizard"_s},
        {"no English name: the known one, never the Chinese", u"MAGE"_s, u"法师"_s, {}, u"法师"_s, u"Mage"_s},
        {"empty English name, key in lower case", u"mage"_s, u"法师"_s, u""_s, u"法师"_s, u"Mage"_s},
        {"no Chinese name", u"MAGE"_s, u""_s, u"Wizard"_s, u"Wizard"_s, u"Wizard"_s},
        {"neither", u"MAGE"_s, u""_s, {}, u"Mage"_s, u"Mage"_s},
        {"both empty: Chinese stays empty", u"MAGE"_s, u""_s, u""_s, u""_s, u"Mage"_s},
        {"unknown class", u"tinker"_s, u""_s, {}, u"tinker"_s, u"tinker"_s},
        {"known name of two words", u"DemonHunter"_s, u""_s, {}, u"Demon Hunter"_s, u"Demon Hunter"_s},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        ClassWinrateRow stats;
        stats.playerClass = row.playerClass;
        stats.nameZh = row.zh;
        stats.nameEn = row.en;
        EXPECT_EQ(stats.displayName(AppLanguage::zh), row.inChinese);
        EXPECT_EQ(stats.displayName(AppLanguage::en), row.inEnglish);
    }
}

TEST_F(DisplayNames, AllClassesOfTheGameHaveAnEnglishName) {
    const std::pair<QString, QString> names[] = {
        {u"DEATHKNIGHT"_s, u"Death Knight"_s},
        {u"DEMONHUNTER"_s, u"Demon Hunter"_s},
        {u"DRUID"_s, u"Druid"_s},
        {u"HUNTER"_s, u"Hunter"_s},
        {u"MAGE"_s, u"Mage"_s},
        {u"PALADIN"_s, u"Paladin"_s},
        {u"PRIEST"_s, u"Priest"_s},
        {u"ROGUE"_s, u"Rogue"_s},
        {u"SHAMAN"_s, u"Shaman"_s},
        {u"WARLOCK"_s, u"Warlock"_s},
        {u"WARRIOR"_s, u"Warrior"_s},
    };
    for (const auto& [key, name] : names) {
        ClassWinrateRow row;
        row.playerClass = key;
        EXPECT_EQ(row.displayName(AppLanguage::en), name);
    }
}

TEST_F(DisplayNames, FollowTheLanguageInForce) {
    CardStats card;
    card.nameZh = u"火球术"_s;
    card.nameEn = u"Fireball"_s;
    ClassWinrateRow row;
    row.nameZh = u"法师"_s;
    row.nameEn = u"Mage"_s;
    settings.languages = QStringList{u"zh-Hans-CN"_s};
    EXPECT_EQ(card.displayName(), u"火球术"_s);
    EXPECT_EQ(card.displayName(AppLanguage::system), u"火球术"_s);
    EXPECT_EQ(row.displayName(), u"法师"_s);
    AppLanguage::overridePreference(AppLanguage::en);
    EXPECT_EQ(card.displayName(), u"Fireball"_s);
    EXPECT_EQ(row.displayName(), u"Mage"_s);
}

} // namespace

} // namespace pelloran
