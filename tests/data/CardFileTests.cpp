#include "data/CardFile.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

QStringList idsOf(const CardFile& file) {
    QStringList ids;
    for (const CardStats& row : file.rows) {
        ids += row.cardId;
    }
    return ids;
}

TEST(CardFile, TakesRowsInSeveralShapes) {
    struct Case {
        const char* why;
        QByteArray json;
        QStringList ids;
        QString description;
    };

    const QString loose = u"all_classes / some.json"_s;
    const Case cases[] = {
        {"standard",
         R"({"player_class": "MAGE", "time_range": "LAST_7_DAYS", "cards": [{"card_id": "A"}, {"card_id": "B"}]})",
         {u"A"_s, u"B"_s},
         u"MAGE / LAST_7_DAYS"_s},
        {"standard without a word on what it is", R"({"cards": [{"card_id": "A"}]})", {u"A"_s}, u"? / ?"_s},
        {"standard with empty words on what it is",
         R"({"player_class": "", "cards": [{"card_id": "A"}]})",
         {u"A"_s},
         u" / ?"_s},
        {"standard with an unfit value first",
         R"({"player_class": "MAGE", "cards": 3, "cards": [{"card_id": "A"}]})",
         {u"A"_s},
         u"MAGE / ?"_s},
        {"standard with a line break in a text",
         "{\"time_range\": \"TO\nDAY\", \"cards\": [{\"card_id\": \"A\"}]}",
         {u"A"_s},
         u"? / TO\nDAY"_s},
        {"standard goes before loose",
         R"({"cards": [{"card_id": "A"}], "classes": {"MAGE": [{"card_id": "B"}]}})",
         {u"A"_s},
         u"? / ?"_s},
        {"standard but for a wrong type elsewhere",
         R"({"card_count": "1", "cards": [{"card_id": "A"}]})",
         {u"A"_s},
         loose},
        {"no standard rows, arrays per class",
         R"({"cards": [], "classes": {"MAGE": [{"card_id": "A"}]}})",
         {u"A"_s},
         loose},
        {"no cards at all, arrays per class", R"({"classes": {"MAGE": [{"card_id": "A"}]}})", {u"A"_s}, loose},
        {"objects with cards per class",
         R"({"classes": {"MAGE": {"cards": [{"card_id": "A"}], "x": 1}}})",
         {u"A"_s},
         loose},
        {"keys in ascending order, not the file's",
         R"({"classes": {"b": [{"card_id": "B"}], "a": [{"card_id": "A"}], "é": [{"card_id": "E"}], "C": [{"card_id": "C"}]}})",
         {u"C"_s, u"A"_s, u"B"_s, u"E"_s},
         loose},
        {"cards before classes",
         R"({"card_count": "1", "classes": {"A": [{"card_id": "A"}]}, "cards": [{"card_id": "Z"}]})",
         {u"Z"_s, u"A"_s},
         loose},
        {"other values per class are passed over",
         R"({"classes": {"a": 1, "b": null, "c": "x", "d": {}, "e": {"cards": 3}, "f": [{"card_id": "A"}]}})",
         {u"A"_s},
         loose},
        {"an array with anything but objects is passed over",
         R"({"classes": {"a": [{"card_id": "A"}, null], "b": [{"card_id": "B"}], "c": {"cards": [{"card_id": "C"}, 1]}}})",
         {u"B"_s},
         loose},
        {"cards with a null are passed over",
         R"({"cards": [{"card_id": "A"}, null], "classes": {"b": [{"card_id": "B"}]}})",
         {u"B"_s},
         loose},
        {"empty arrays add nothing",
         R"({"classes": {"a": [], "b": {"cards": []}, "c": [{"card_id": "C"}]}})",
         {u"C"_s},
         loose},
        {"classes as an array are passed over",
         R"({"card_count": "1", "cards": [{"card_id": "A"}], "classes": [[{"card_id": "B"}]]})",
         {u"A"_s},
         loose},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto file = CardFile::decode(row.json, u"some.json"_s);
        ASSERT_TRUE(file);
        EXPECT_EQ(idsOf(*file), row.ids);
        EXPECT_EQ(file->description, row.description);
    }
}

TEST(CardFile, SaysWhatIsWrong) {
    struct Case {
        const char* why;
        QByteArray json;
        DataError expected;
    };

    const DataError noRows{u"Pelloran"_s, 2, u"无法解析胜率文件: some.json"_s};
    const auto notDecoded = [](const QString& text) { return DataError{u"WinrateFormats"_s, 0, text}; };
    const Case cases[] = {
        {"no keys", "{}", noRows},
        {"no rows", R"({"cards": [], "classes": {}})", noRows},
        {"an array at the top", R"([{"card_id": "A"}])", noRows},
        {"a number at the top", "3", noRows},
        {"null at the top", "null", noRows},
        {"only mixed arrays", R"({"cards": [{"card_id": "A"}, 1]})", noRows},
        {"a bad row", R"({"cards": [{"card_id": "A"}, {"cost": 1}]})", notDecoded(u"[1].card_id is not a text"_s)},
        {"a bad row of one class fails all", R"({"classes": {"a": [{"card_id": "A"}], "b": [{"card_id": 1}]}})",
         notDecoded(u"[0].card_id is not a text"_s)},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto file = CardFile::decode(row.json, u"some.json"_s);
        ASSERT_FALSE(file);
        EXPECT_EQ(file.error(), row.expected);
    }
    for (const QByteArray& json :
         {QByteArray(), QByteArray("{\"cards\": ["), QByteArray("\x89PNG"), QByteArray("{\"\xFF\": 1}")}) {
        EXPECT_EQ(CardFile::decode(json, u"some.json"_s).error().domain, u"QJsonDocument"_s);
    }
}

TEST(CardFile, HoldsToItsLimitsInLooseShapesToo) {
    const QByteArray row = R"({"card_id":""})";
    const QByteArray rows = (row + ',').repeated(qsizetype{mostCardRows} / 2) + row;

    struct Case {
        const char* why;
        QByteArray json;
        QString expected;
    };

    const Case cases[] = {
        {"a name that no screen shows",
         R"({"classes": {"a": [{"card_id": "A", "name_en": ")" + QByteArray(longestDataText + 1, 'x') + "\"}]}}",
         u"[0].name_en is not a text of at most 1000 characters"_s},
        {"too many rows, no array of them too long", R"({"classes": {"a": [)" + rows + R"(], "b": [)" + rows + "]}}",
         u"the file has more than 200000 rows in all"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto file = CardFile::decode(c.json, u"some.json"_s);
        ASSERT_FALSE(file);
        EXPECT_EQ(file.error().localizedDescription, c.expected);
    }
}

TEST(CardFile, TellsWhenItsFiguresWereTaken) {
    struct Case {
        const char* why;
        QByteArray json;
        QString expected;
    };

    const Case cases[] = {
        {"standard", R"({"fetched_at": "2026-04-12", "cards": [{"card_id": "A"}]})", u"2026-04-12"_s},
        {"loose", R"({"fetched_at": "2026-04-12", "classes": {"a": [{"card_id": "A"}]}})", u"2026-04-12"_s},
        {"no word on it", R"({"cards": [{"card_id": "A"}]})", {}},
        {"no text", R"({"fetched_at": 7, "cards": [{"card_id": "A"}]})", {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(CardFile::decode(row.json, {}).value().fetchedAt, row.expected);
    }
}

TEST(CardFile, KnowsASample) {
    struct Case {
        const char* why;
        QByteArray json;
        bool sample;
    };

    const Case cases[] = {
        {"sample", R"({"time_range": "SAMPLE", "cards": [{"card_id": "A"}]})", true},
        {"sample with an unfit value first", R"({"time_range": "SAMPLE", "cards": 3, "cards": [{"card_id": "A"}]})",
         true},
        {"sample in a loose shape", R"({"time_range": "SAMPLE", "classes": {"a": [{"card_id": "A"}]}})", true},
        {"real figures", R"({"time_range": "LAST_7_DAYS", "cards": [{"card_id": "A"}]})", false},
        {"no word on it", R"({"cards": [{"card_id": "A"}]})", false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(CardFile::decode(row.json, {}).value().isSample, row.sample);
    }
}

} // namespace

} // namespace pelloran
