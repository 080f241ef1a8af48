#include "json/FastJson.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

struct Offer {
    QString id;
    std::optional<QString> name;
    std::optional<double> share;
    std::optional<qint64> count;

    bool operator==(const Offer&) const = default;
};

struct Offers {
    std::optional<std::vector<QString>> words;
    std::optional<Offer> best;
    std::vector<Offer> rows;

    bool operator==(const Offers&) const = default;
};

struct Choice {
    Offer best;

    bool operator==(const Choice&) const = default;
};

} // namespace

using strict_json::Field;

template <>
constexpr std::tuple strict_json::fields<Offer>{
    Field{"id"_L1, &Offer::id},
    Field{"name"_L1, &Offer::name},
    Field{"share"_L1, &Offer::share},
    Field{"count"_L1, &Offer::count},
};

template <>
constexpr std::tuple strict_json::fields<Offers>{
    Field{"words"_L1, &Offers::words},
    Field{"best"_L1, &Offers::best},
    Field{"rows"_L1, &Offers::rows},
};

template <>
constexpr std::tuple strict_json::fields<Choice>{
    Field{"best"_L1, &Choice::best},
};

namespace {

// The slow way, which has the last word.
template <typename Value>
std::optional<Value> strictlyDecoded(const QByteArray& json) {
    const auto parsed = strict_json::parse(json);
    const auto value = parsed ? strict_json::decode<Value>(*parsed) : std::unexpected(strict_json::Mismatch{});
    return value ? std::optional(*value) : std::nullopt;
}

enum class Expected { taken, leftToTheSlowWay, refused };

TEST(FastJson, DecodesAsTheSlowWayDoesOrNotAtAll) {
    using enum Expected;

    struct Case {
        const char* why;
        QByteArray row;
        Expected expected;
    };

    const Case cases[] = {
        {"every field", R"({"id": "A", "name": "火球术", "share": 55.3, "count": 7})", taken},
        {"only what is required", R"({"id": "A"})", taken},
        {"null for what is not", R"({"id": "A", "name": null, "share": null, "count": null})", taken},
        {"keys it does not know", R"({"more": {"id": [1, {}]}, "id": "A", "Id": 3, "idd": 3, "i": 3})", taken},
        {"a key with an escape", R"({"\u0069d": "A"})", taken},
        {"a text with escapes", R"({"id": "\"\\\/\b\f\n\r\t\u0000\u706b\ud83d\udc69"})", taken},
        {"a text of any planes", "{\"id\": \"é火👩\u200D👧\"}", taken},
        {"a text with a character that is none", "{\"id\": \"\uFFFE\uFFFF\"}", taken},
        {"a text that begins with a byte-order mark", "{\"id\": \"\uFEFFA\"}", leftToTheSlowWay},
        {"the same as an escape", R"({"id": "\ufeffA"})", leftToTheSlowWay},
        {"a byte-order mark within", "{\"id\": \"A\uFEFF\"}", taken},
        {"an empty text", R"({"id": "", "name": ""})", taken},
        {"a whole number for a fraction", R"({"id": "A", "share": 3})", taken},
        {"a large whole number for a fraction", R"({"id": "A", "share": 9007199254740993})", taken},
        {"one beyond the sign", R"({"id": "A", "share": 18446744073709551615})", taken},
        {"one beyond 64 bits", R"({"id": "A", "share": 123456789012345678901})", leftToTheSlowWay},
        {"a zero below zero", R"({"id": "A", "share": -0})", taken},
        {"the same as a fraction", R"({"id": "A", "share": -0.0})", taken},
        {"the smallest number", R"({"id": "A", "share": 5e-324})", taken},
        {"the largest number", R"({"id": "A", "share": 1.7976931348623157e308})", taken},
        {"more digits than count", R"({"id": "A", "share": 0.1000000000000000055511151231257827021181583404541015625})",
         taken},
        {"halfway between two numbers", R"({"id": "A", "share": 9007199254740993.0})", taken},
        {"a whole number as a fraction", R"({"id": "A", "count": 3.0})", taken},
        {"a whole number with an exponent", R"({"id": "A", "count": 1e2})", taken},
        {"a whole number below zero", R"({"id": "A", "count": -0.0})", taken},
        {"the largest whole number", R"({"id": "A", "count": 9223372036854775807})", taken},
        {"one more", R"({"id": "A", "count": 9223372036854775808})", refused},
        {"one more as a fraction", R"({"id": "A", "count": 9223372036854775808.0})", refused},
        {"the smallest whole number", R"({"id": "A", "count": -9223372036854775808})", taken},
        {"the smallest as a fraction", R"({"id": "A", "count": -9223372036854775808.0})", taken},
        {"far less", R"({"id": "A", "count": -1e300})", refused},
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
        {"of two equal keys the last counts", R"({"id": "A", "name": "a", "id": "B", "name": null})", taken},
        {"and only the last has to be right", R"({"id": 3, "id": "B"})", leftToTheSlowWay},
        {"but that", R"({"id": "B", "id": 3})", refused},
        {"null in place of a row", "null", refused},
        {"an array in place of a row", "[]", refused},
        {"half of a pair", R"({"id": "\ud83d"})", leftToTheSlowWay},
        {"its other half", R"({"id": "\udc69"})", leftToTheSlowWay},
        {"half of a pair before a letter", R"({"id": "\ud83dA"})", leftToTheSlowWay},
        {"half of a pair before an escape", R"({"id": "\ud83d\u0041"})", leftToTheSlowWay},
        {"a number too large", R"({"id": "A", "more": 1e999})", refused},
        {"a number with a plus", R"({"id": "A", "share": +1})", refused},
        {"a number with leading zeros", R"({"id": "A", "share": 01})", refused},
        {"a word that is none", R"({"id": "A", "share": nul})", refused},
        {"a comma too many", R"({"id": "A",})", refused},
        {"invalid UTF-8", "{\"id\": \"\xFF\"}", refused},
        {"invalid UTF-8 where nobody looks", "{\"id\": \"A\", \"more\": \"\xED\xA0\x80\"}", refused},
        {"a line within a text", "{\"id\": \"A\nB\"}", leftToTheSlowWay},
        {"deeper than any record, where nobody looks",
         R"({"id": "A", "more": )" + QByteArray(100, '[') + QByteArray(100, ']') + "}", leftToTheSlowWay},
        {"cut off", R"({"id": "A")", refused},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const QByteArray json = R"({"rows": [{"id": "first"}, )" + c.row + "]}";
        const auto strict = strictlyDecoded<Offers>(json);
        const auto fast = fast_json::decode<Offers>(json);
        EXPECT_EQ(strict.has_value(), c.expected != refused);
        EXPECT_EQ(fast.has_value(), c.expected == taken);
        if (fast && strict) {
            EXPECT_EQ(fast, strict);
            const double sign = std::copysign(1, strict->rows.back().share.value_or(0));
            EXPECT_EQ(std::copysign(1, fast->rows.back().share.value_or(0)), sign)
                << "zeros are equal but not the same";
        }
    }
}

TEST(FastJson, DecodesWholeFiles) {
    using enum Expected;

    struct Case {
        const char* why;
        QByteArray json;
        Expected expected;
    };

    const Case cases[] = {
        {"no rows", R"({"rows": []})", taken},
        {"words", R"({"words": ["a", ""], "rows": []})", taken},
        {"null among words", R"({"words": ["a", null], "rows": []})", refused},
        {"rows twice", R"({"rows": [{"id": "A"}, {"id": "B"}], "rows": [{"id": "C"}]})", taken},
        {"a record", R"({"best": {"id": "A"}, "rows": []})", taken},
        {"no list of rows", R"({"rows": {}})", refused},
        {"another whole", "[]", refused},
        {"a number", "3", refused},
        {"nothing", "", refused},
        {"blanks around", " \r\n\t{\"rows\": []} \n", taken},
        {"more after the end", R"({"rows": []} {})", refused},
        {"a zero byte after the end", QByteArray("{\"rows\": []}\0", 13), refused},
        {"a byte-order mark", "\xEF\xBB\xBF{\"rows\": []}", leftToTheSlowWay},
        {"no JSON", "<html>", refused},
        {"nested without an end", QByteArray(100'000, '['), refused},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto strict = strictlyDecoded<Offers>(c.json);
        const auto fast = fast_json::decode<Offers>(c.json);
        EXPECT_EQ(strict.has_value(), c.expected != refused);
        EXPECT_EQ(fast, c.expected == taken ? strict : std::nullopt);
    }
    EXPECT_EQ(fast_json::decode<std::vector<Offer>>(R"([{"id": "A"}])"), (std::vector<Offer>{{u"A"_s, {}, {}, {}}}));
}

TEST(FastJson, LeavesNothingOfTheEarlierOfTwoEqualKeys) {
    const QByteArray json = R"({"best": {"id": "A", "count": 1}, "best": {"id": "B"}})";
    EXPECT_EQ(fast_json::decode<Choice>(json), (Choice{{u"B"_s, {}, {}, {}}}));
    EXPECT_EQ(strictlyDecoded<Choice>(json), (Choice{{u"B"_s, {}, {}, {}}}));
}

TEST(FastJson, TakesANumberTooSmallToTellFromZeroForZero) {
    const QByteArray json = R"([{"id": "A", "share": 1e-999}])";
    const Offer expected{u"A"_s, {}, 0.0, {}};
    EXPECT_EQ(fast_json::decode<std::vector<Offer>>(json), std::vector{expected});
    EXPECT_EQ(strictlyDecoded<std::vector<Offer>>(json), std::nullopt) << "else the two do not differ any more";
}

// Rows of mostly fitting members, and now and then a byte that is missing, doubled or another.
TEST(FastJson, NeverDecodesWhatTheSlowWayWouldNot) {
    const QByteArrayList keys{"id", "name", "share", "count", "more", "\\u0069d", "id "};
    const QByteArrayList values{"null",
                                "3",
                                "-3.0",
                                "-0.0",
                                "55.3",
                                "1e2",
                                R"("A")",
                                R"("\u0000火")",
                                R"("")",
                                "true",
                                "[]",
                                "{}",
                                "18446744073709551615",
                                "9223372036854775807"};
    const QByteArray bytes = "{}[]:,\"0.eE-+ \\nul\xFF\xE7\n";
    std::mt19937 random(11);
    const auto below = [&random](qsizetype count) {
        return static_cast<qsizetype>(random() % static_cast<unsigned>(count));
    };
    const auto anyFile = [&] {
        QByteArrayList rows;
        for (qsizetype left = below(4); left > 0; --left) {
            QByteArray row = R"({"id": "first")";
            for (qsizetype more = below(4); more > 0; --more) {
                row += ", \"" + keys[below(keys.size())] + "\": " + values[below(values.size())];
            }
            rows += row + "}";
        }
        QByteArray json = "{\"rows\": [" + rows.join(", ") + "]}";
        if (const qsizetype at = below(json.size()); below(3) == 0) {
            json.replace(at, below(2), QByteArray(below(3), bytes[below(bytes.size())]));
        }
        return json;
    };
    constexpr int files = 20'000;
    int taken = 0;
    for (int i = 0; i < files; ++i) {
        const QByteArray json = anyFile();
        if (const auto fast = fast_json::decode<Offers>(json)) {
            ASSERT_EQ(fast, strictlyDecoded<Offers>(json)) << json.toStdString();
            ++taken;
        }
    }
    EXPECT_GT(taken, files / 4);
    EXPECT_LT(taken, files * 3 / 4) << "both sorts of files are to be tried";
}

} // namespace

} // namespace pelloran
