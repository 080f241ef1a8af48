#include "json/StrictJson.h"

#include "tests/support/Printing.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

struct Row {
    QString id;
    std::optional<qint64> count;

    bool operator==(const Row&) const = default;
};

struct Offer {
    QString id;
    std::optional<QString> name;
    std::optional<double> share;
    std::optional<qint64> count;

    bool operator==(const Offer&) const = default;
};

struct Choice {
    Offer best;

    bool operator==(const Choice&) const = default;
};

struct File {
    QString name;
    std::optional<double> share;
    std::optional<bool> sure;
    std::optional<QStringList> words;
    std::optional<QMap<QString, QString>> pairs;
    std::optional<std::vector<QString>> texts;
    std::optional<Row> first;
    std::vector<Row> rows;

    bool operator==(const File&) const = default;
};

} // namespace

using strict_json::Field;

template <>
constexpr std::tuple strict_json::fields<Row>{
    Field{"id"_L1, &Row::id},
    Field{"count"_L1, &Row::count},
};

template <>
constexpr std::tuple strict_json::fields<Offer>{
    Field{"id"_L1, &Offer::id},
    Field{"name"_L1, &Offer::name},
    Field{"share"_L1, &Offer::share},
    Field{"count"_L1, &Offer::count},
};

template <>
constexpr std::tuple strict_json::fields<Choice>{
    Field{"best"_L1, &Choice::best},
};

template <>
constexpr std::tuple strict_json::fields<File>{
    Field{"name"_L1, &File::name},   Field{"share"_L1, &File::share}, Field{"sure"_L1, &File::sure},
    Field{"words"_L1, &File::words}, Field{"pairs"_L1, &File::pairs}, Field{"texts"_L1, &File::texts},
    Field{"first"_L1, &File::first}, Field{"rows"_L1, &File::rows},
};

namespace {

template <typename Value>
std::expected<Value, strict_json::Mismatch> decoded(const QByteArray& json) {
    const auto parsed = strict_json::parse(json);
    EXPECT_TRUE(parsed) << json.toStdString();
    return strict_json::decode<Value>(parsed.value_or(QJsonValue()));
}

TEST(StrictJson, DecodesEveryKindOfField) {
    const auto file = decoded<File>(R"({
        "name": "火球", "share": -1.5e1, "sure": false, "words": ["a", ""], "pairs": {"k": "v", "": ""},
        "texts": ["b"], "first": {"id": "1", "count": 9007199254740993}, "rows": [{"id": ""}, {"id": "2"}]
    })");
    ASSERT_TRUE(file);
    EXPECT_EQ(*file, (File{
                         .name = u"火球"_s,
                         .share = -15.0,
                         .sure = false,
                         .words = QStringList{u"a"_s, u""_s},
                         .pairs = QMap<QString, QString>{{u"k"_s, u"v"_s}, {u""_s, u""_s}},
                         .texts = std::vector{u"b"_s},
                         .first = Row{u"1"_s, 9007199254740993},
                         .rows = {{u""_s, {}}, {u"2"_s, {}}},
                     }));
}

TEST(StrictJson, LeavesAbsentWhatIsMissingOrNull) {
    const File expected{
        .name = u"n"_s, .share = {}, .sure = {}, .words = {}, .pairs = {}, .texts = {}, .first = {}, .rows = {}};
    EXPECT_EQ(decoded<File>(R"({"name": "n", "rows": [], "more": [{"name": 1}], "Name": 2})"), expected);
    EXPECT_EQ(decoded<File>(R"({"name": "n", "share": null, "sure": null, "words": null, "pairs": null, "texts": null,
                                "first": null, "rows": []})"),
              expected);
}

TEST(StrictJson, TakesWhatJsonAllowsAndAFieldHolds) {
    struct Case {
        const char* why;
        QByteArray json;
        std::optional<Offer> expected; // absent: refused
    };

    const auto named = [](const QString& name) { return Offer{name, {}, {}, {}}; };
    const auto sharing = [](double share) { return Offer{u"A"_s, {}, share, {}}; };
    const auto counting = [](qint64 count) { return Offer{u"A"_s, {}, {}, count}; };
    const Offer plain = named(u"A"_s);
    const std::optional<Offer> refused;
    const Case cases[] = {
        {"every field", R"({"id": "A", "name": "火球术", "share": 55.3, "count": 7})",
         Offer{u"A"_s, u"火球术"_s, 55.3, 7}},
        {"only what is required", R"({"id": "A"})", plain},
        {"null for what is not", R"({"id": "A", "name": null, "share": null, "count": null})", plain},
        {"keys it does not know", R"({"more": {"id": [1, {}]}, "id": "A", "Id": 3, "idd": 3, "i": 3})", plain},
        {"a key with an escape", R"({"\u0069d": "A"})", plain},
        {"a text with escapes", R"({"id": "\"\\\/\b\f\n\r\t\u706b\ud83d\udc69"})", named(u"\"\\/\b\f\n\r\t火👩"_s)},
        {"a text with a zero", R"({"id": "\u0000"})", named(QString(QChar(0)))},
        {"a text of any planes", "{\"id\": \"é火👩\u200D👧\"}", named(u"é火👩\u200D👧"_s)},
        {"a text with a character that is none", "{\"id\": \"\uFFFE\uFFFF\"}", named(u"\uFFFE\uFFFF"_s)},
        {"a byte-order mark that begins a text is none", "{\"id\": \"\uFEFFA\"}", plain},
        {"but a character as an escape", R"({"id": "\ufeffA"})", named(u"\uFEFFA"_s)},
        {"and within", "{\"id\": \"A\uFEFF\"}", named(u"A\uFEFF"_s)},
        {"an empty text", R"({"id": "", "name": ""})", Offer{u""_s, u""_s, {}, {}}},
        {"a whole number for a fraction", R"({"id": "A", "share": 3})", sharing(3)},
        {"a large whole number for a fraction", R"({"id": "A", "share": 9007199254740993})", sharing(9007199254740992)},
        {"one beyond the sign", R"({"id": "A", "share": 18446744073709551615})", sharing(18446744073709551616.0)},
        {"one beyond 64 bits", R"({"id": "A", "share": 123456789012345678901})", sharing(123456789012345678901.0)},
        {"a zero below zero is the plain one", R"({"id": "A", "share": -0})", sharing(0)},
        {"the same as a fraction", R"({"id": "A", "share": -0.0})", sharing(0)},
        {"the smallest number", R"({"id": "A", "share": 5e-324})", sharing(5e-324)},
        {"a number too small to tell from zero", R"({"id": "A", "share": 1e-999})", refused},
        {"the largest number", R"({"id": "A", "share": 1.7976931348623157e308})", sharing(1.7976931348623157e308)},
        {"more digits than count", R"({"id": "A", "share": 0.1000000000000000055511151231257827021181583404541015625})",
         sharing(0.1)},
        {"halfway between two numbers", R"({"id": "A", "share": 9007199254740993.0})", sharing(9007199254740992)},
        {"a whole number as a fraction", R"({"id": "A", "count": 3.0})", counting(3)},
        {"a whole number with an exponent", R"({"id": "A", "count": 1e2})", counting(100)},
        {"a whole number below zero", R"({"id": "A", "count": -0.0})", counting(0)},
        {"far less than any whole number", R"({"id": "A", "count": -1e300})", refused},
        {"a fraction for a whole number", R"({"id": "A", "count": 3.5})", refused},
        {"text for a whole number", R"({"id": "A", "count": "3"})", refused},
        {"truth for a whole number", R"({"id": "A", "count": true})", refused},
        {"text for a fraction", R"({"id": "A", "share": "3.5"})", refused},
        {"truth for a fraction", R"({"id": "A", "share": false})", refused},
        {"an object for a fraction", R"({"id": "A", "share": {}})", refused},
        {"a number for a text", R"({"id": "A", "name": 3})", refused},
        {"an array for a text", R"({"id": ["A"]})", refused},
        {"nothing required", R"({"name": "A"})", refused},
        {"null for what is required", R"({"id": null})", refused},
        {"of two equal keys the last counts", R"({"id": "A", "name": "a", "id": "B", "name": null})", named(u"B"_s)},
        {"and only the last has to be right", R"({"id": 3, "id": "B"})", named(u"B"_s)},
        {"but that", R"({"id": "B", "id": 3})", refused},
        {"null in place of a record", "null", refused},
        {"an array in place of a record", "[]", refused},
        {"half of a pair", R"({"id": "\ud83d"})", named(QString(QChar(0xd83d)))},
        {"its other half", R"({"id": "\udc69"})", named(QString(QChar(0xdc69)))},
        {"half of a pair before a letter", R"({"id": "\ud83dA"})", named(QChar(0xd83d) + u"A"_s)},
        {"half of a pair before an escape", R"({"id": "\ud83d\u0041"})", named(QChar(0xd83d) + u"A"_s)},
        {"a number too large", R"({"id": "A", "more": 1e999})", refused},
        {"a number with a plus", R"({"id": "A", "share": +1})", refused},
        {"a number with leading zeros", R"({"id": "A", "share": 01})", refused},
        {"a word that is none", R"({"id": "A", "share": nul})", refused},
        {"a comma too many", R"({"id": "A",})", refused},
        {"invalid UTF-8", "{\"id\": \"\xFF\"}", refused},
        {"invalid UTF-8 where nobody looks", "{\"id\": \"A\", \"more\": \"\xED\xA0\x80\"}", refused},
        {"a line within a text", "{\"id\": \"A\nB\"}", named(u"A\nB"_s)},
        {"deeper than any record, where nobody looks",
         R"({"id": "A", "more": )" + QByteArray(100, '[') + QByteArray(100, ']') + "}", plain},
        {"cut off", R"({"id": "A")", refused},
        {"nothing", "", refused},
        {"a bare number", "3", refused},
        {"no JSON", "<html>", refused},
        {"blanks around", " \r\n\t{\"id\": \"A\"} \n", plain},
        {"more after the end", R"({"id": "A"} {})", refused},
        {"a zero byte after the end", QByteArray("{\"id\": \"A\"}\0", 12), refused},
        {"a byte-order mark", "\xEF\xBB\xBF{\"id\": \"A\"}", plain},
        {"nested without an end", QByteArray(100'000, '['), refused},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto parsed = strict_json::parse(c.json);
        const auto offer = parsed ? strict_json::decode<Offer>(*parsed) : std::unexpected(strict_json::Mismatch{});
        ASSERT_EQ(offer.has_value(), c.expected.has_value());
        if (offer) {
            EXPECT_EQ(*offer, *c.expected);
            EXPECT_FALSE(std::signbit(offer->share.value_or(0))) << "zeros are equal but not the same";
        }
    }
}

TEST(StrictJson, LeavesNothingOfTheEarlierOfTwoEqualKeys) {
    EXPECT_EQ(decoded<Choice>(R"({"best": {"id": "A", "count": 1}, "best": {"id": "B"}})"),
              (Choice{{u"B"_s, {}, {}, {}}}));
    const auto file = decoded<File>(R"({"name": "n", "rows": [{"id": "A"}, {"id": "B"}], "rows": [{"id": "C"}]})");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->rows, (std::vector<Row>{{u"C"_s, {}}}));
}

TEST(StrictJson, NamesTheFirstPlaceThatIsWrong) {
    struct Case {
        const char* why;
        QByteArray json;
        strict_json::Mismatch expected;
        QString description;
    };

    const Case cases[] = {
        {"another whole", "[]", {u""_s, u"an object"_s}, u"the list is not an object"_s},
        {"a required field missing", R"({"rows": []})", {u"name"_s, u"a text"_s, true}, u"name is not a text"_s},
        {"null is as good as missing",
         R"({"name": null, "rows": []})",
         {u"name"_s, u"a text"_s, true},
         u"name is not a text"_s},
        {"a list missing", R"({"name": "n"})", {u"rows"_s, u"an array"_s, true}, u"rows is not an array"_s},
        {"another type", R"({"name": 1, "rows": []})", {u"name"_s, u"a text"_s}, u"name is not a text"_s},
        {"the order of the fields, not of the file",
         R"({"rows": 1, "sure": 1, "share": "1", "name": "n"})",
         {u"share"_s, u"a number"_s},
         u"share is not a number"_s},
        {"a number for truth",
         R"({"name": "n", "sure": 1, "rows": []})",
         {u"sure"_s, u"true or false"_s},
         u"sure is not true or false"_s},
        {"one word for several",
         R"({"name": "n", "words": "a", "rows": []})",
         {u"words"_s, u"an array of texts"_s},
         u"words is not an array of texts"_s},
        {"null among words",
         R"({"name": "n", "words": ["a", null], "rows": []})",
         {u"words"_s, u"an array of texts"_s},
         u"words is not an array of texts"_s},
        {"an array for pairs",
         R"({"name": "n", "pairs": ["a"], "rows": []})",
         {u"pairs"_s, u"an object of texts"_s},
         u"pairs is not an object of texts"_s},
        {"a number among pairs",
         R"({"name": "n", "pairs": {"a": "b", "c": 1}, "rows": []})",
         {u"pairs"_s, u"an object of texts"_s},
         u"pairs is not an object of texts"_s},
        {"within a list",
         R"({"name": "n", "texts": ["a", 1], "rows": []})",
         {u"texts[1]"_s, u"a text"_s},
         u"texts[1] is not a text"_s},
        {"within a record",
         R"({"name": "n", "first": {"id": 1}, "rows": []})",
         {u"first.id"_s, u"a text"_s},
         u"first.id is not a text"_s},
        {"missing within a record",
         R"({"name": "n", "first": {}, "rows": []})",
         {u"first.id"_s, u"a text"_s, true},
         u"first.id is not a text"_s},
        {"within a record of a list",
         R"({"name": "n", "rows": [{"id": "0"}, {"id": "1", "count": "1"}]})",
         {u"rows[1].count"_s, u"a whole number"_s},
         u"rows[1].count is not a whole number"_s},
        {"no record at all in a list",
         R"({"name": "n", "rows": [null]})",
         {u"rows[0]"_s, u"an object"_s},
         u"rows[0] is not an object"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto file = decoded<File>(c.json);
        ASSERT_FALSE(file);
        EXPECT_EQ(file.error().place, c.expected.place);
        EXPECT_EQ(file.error().wanted, c.expected.wanted);
        EXPECT_EQ(file.error().missing, c.expected.missing);
        EXPECT_EQ(strict_json::describe(file.error(), u"the list"_s), c.description);
    }
}

TEST(StrictJson, DecodesListsThatAreTheWhole) {
    EXPECT_EQ(decoded<std::vector<Row>>(R"([{"id": "a"}])"), (std::vector<Row>{{u"a"_s, {}}}));
    const auto rows = decoded<std::vector<Row>>(R"([{"id": "a"}, {"id": 1}])");
    ASSERT_FALSE(rows);
    EXPECT_EQ(rows.error().place, u"[1].id"_s);
}

TEST(StrictJson, TakesWholeNumbersInAnySpelling) {
    struct Case {
        const char* why;
        QByteArray number;
        std::optional<qint64> expected;
    };

    const Case cases[] = {
        {"plain", "3", 3},
        {"with a fraction of nothing", "3.0", 3},
        {"with an exponent", "1e2", 100},
        {"below zero", "-7", -7},
        {"a zero below zero", "-0", 0},
        {"more than a double tells apart", "9007199254740993", 9007199254740993},
        {"the greatest", "9223372036854775807", std::numeric_limits<qint64>::max()},
        {"the least", "-9223372036854775808", std::numeric_limits<qint64>::min()},
        {"beyond the greatest", "9223372036854775808", std::nullopt},
        {"the same as a fraction", "9223372036854775808.0", std::nullopt},
        {"beyond the least, which the parser rounds", "-9223372036854775809", std::numeric_limits<qint64>::min()},
        {"the last that it rounds there", "-9223372036854776832", std::numeric_limits<qint64>::min()},
        {"the first that it does not", "-9223372036854776833", std::nullopt},
        {"far beyond the least", "-1e30", std::nullopt},
        {"far beyond", "1e30", std::nullopt},
        {"a fraction", "3.5", std::nullopt},
        {"text", R"("3")", std::nullopt},
        {"truth", "true", std::nullopt},
        {"a list", "[3]", std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto rows = decoded<std::vector<qint64>>("[" + c.number + "]");
        EXPECT_EQ(rows.has_value(), c.expected.has_value());
        if (rows && c.expected) {
            EXPECT_EQ(rows->front(), *c.expected);
        }
    }
}

TEST(StrictJson, TakesNoOtherTypeForANumberOrAText) {
    for (const QByteArray other : {"\"1\"", "true", "null", "[1]", "{}"}) {
        EXPECT_FALSE(decoded<std::vector<double>>("[" + other + "]")) << other.toStdString();
    }
    for (const QByteArray other : {"1", "false", "null", "[\"a\"]", "{}"}) {
        EXPECT_FALSE(decoded<std::vector<QString>>("[" + other + "]")) << other.toStdString();
    }
}

TEST(StrictJson, EncodesWhatDecodesAsTheSame) {
    const File everything{
        .name = u"火球"_s,
        .share = -15.0,
        .sure = false,
        .words = QStringList{u"a"_s, u""_s},
        .pairs = QMap<QString, QString>{{u"k"_s, u"v"_s}, {u""_s, u""_s}},
        .texts = std::vector{u"b"_s},
        .first = Row{u"1"_s, std::numeric_limits<qint64>::max()},
        .rows = {{u""_s, std::numeric_limits<qint64>::min()}, {u"2"_s, {}}},
    };
    EXPECT_EQ(strict_json::decode<File>(strict_json::encode(everything)), everything);
    const QByteArray json = QJsonDocument(strict_json::encode(everything)).toJson();
    EXPECT_EQ(decoded<File>(json), everything) << json.toStdString();
}

TEST(StrictJson, EncodesNothingForWhatIsAbsent) {
    EXPECT_EQ(strict_json::encode(Row{u"1"_s, {}}), (QJsonObject{{u"id"_s, u"1"_s}}));
    EXPECT_EQ(strict_json::encode(std::vector<Row>{}), QJsonArray());
    EXPECT_EQ(strict_json::encode(std::optional<qint64>()), QJsonValue(QJsonValue::Null)) << "by itself";
    EXPECT_EQ(strict_json::encode(std::optional<qint64>(3)), QJsonValue(3));
}

TEST(StrictJson, LetsTheLastOfTwoEqualKeysCount) {
    EXPECT_EQ(decoded<Row>(R"({"id": 1, "id": "a"})"), (Row{u"a"_s, {}}));
    EXPECT_FALSE(decoded<Row>(R"({"id": "a", "id": 1})"));
}

TEST(StrictJson, SaysWhereAFileIsNoJson) {
    struct Case {
        const char* why;
        QByteArray json;
        QJsonParseError::ParseError code;
        QString description;
    };

    const Case cases[] = {
        {"nothing", "", QJsonParseError::IllegalValue, u"illegal value at byte 0"_s},
        {"a web page", "<html>", QJsonParseError::IllegalValue, u"illegal value at byte 1"_s},
        {"a bare number", "7", QJsonParseError::IllegalValue, u"illegal value at byte 1"_s},
        {"not UTF-8", "[\"\xff\"]", QJsonParseError::IllegalUTF8String, u"invalid UTF8 string at byte 2"_s},
        {"more after the end", "{} {}", QJsonParseError::GarbageAtEnd,
         u"garbage at the end of the document at byte 3"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto parsed = strict_json::parse(c.json);
        ASSERT_FALSE(parsed);
        EXPECT_EQ(parsed.error().code, c.code);
        EXPECT_EQ(parsed.error().description, c.description);
    }
    EXPECT_EQ(strict_json::parse("\xEF\xBB\xBF[1]"), QJsonValue(QJsonArray{1})) << "a byte-order mark is no text";
}

TEST(StrictJson, RefusesWhatIsNestedWithoutEnd) {
    struct Case {
        const char* why;
        int depth;
        bool taken;
    };

    const Case cases[] = {
        {"deeper than any of our files", 20, true},
        {"a megabyte that begins again and again, which would use up the stack", 500'000, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const QByteArray begin = QByteArray("{\"a\":[").repeated(c.depth);
        const QByteArray end = QByteArray("]}").repeated(c.depth);
        const auto parsed = strict_json::parse(begin + end);
        EXPECT_EQ(parsed.has_value(), c.taken);
        if (!parsed) {
            EXPECT_EQ(parsed.error().code, QJsonParseError::DeepNesting);
        }
    }
}

} // namespace

} // namespace pelloran
