#include "app/Evaluation.h"

#include "tests/support/Printing.h"
#include "tests/support/SampleStore.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace pelloran::evaluation {
namespace {

using testing::SampleStore;

const QByteArray cardFile = R"({"cards": [
    {"card_id": "FIREBALL", "name_zh": "火球术", "name_en": "Fireball"},
    {"card_id": "CORE_FIREBALL", "name_zh": "火球术", "name_en": "Fireball"},
    {"card_id": "FROSTBOLT", "name_zh": "寒冰箭", "name_en": "Frostbolt"},
    {"card_id": "TRAVELLER", "name_zh": "旅行者"},
    {"card_id": "DIGITS", "name_zh": "七", "name_en": "777"}
]})";

const QByteArray classFile = R"({"classes": [
    {"player_class": "MAGE", "name_zh": "法师"},
    {"player_class": "DEATHKNIGHT", "name_zh": "死亡骑士", "name_en": "Death Knight"}
]})";

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

std::optional<QString> optionalText(const char* utf8) {
    return utf8 ? std::optional(text(utf8)) : std::nullopt;
}

Truth truthOf(const char* json) {
    const auto truth = parseTruth(json);
    EXPECT_TRUE(truth) << json << ": " << truth.error().toStdString();
    return truth.value_or(Truth());
}

SlotMatch match(DraftSlot slot, const char* id, const char* read = "") {
    return {slot, optionalText(id), id ? 1.0 : 0.0, QStringLiteral("method"), text(read)};
}

// Ids by slot; null for a slot without a match.
Look look(DraftPhase rules, std::array<const char*, 3> ids, double milliseconds = 0) {
    Look made{rules, {}, milliseconds, 2 * milliseconds};
    for (const DraftSlot slot : DraftSlot::allCases()) {
        made.matches.push_back(match(slot, ids[slot], ids[slot] ? "as read" : ""));
    }
    return made;
}

TEST(ParseTruth, TakesBothFormsOfTruth) {
    struct Case {
        const char* why;
        const char* json;
        Truth expected;
    };

    const Offer fireball{QString(), text("Fireball")};
    const Case cases[] = {
        {"slots with identifiers and boxes",
         R"({"phase": "cardPick", "lang": "zh", "font": "kai", "size": [1280, 720], "slots": {
             "left": {"id": "F", "name": "火球术", "box": [0.1, 0.2, 0.3, 0.4]}, "middle": {"name": "寒冰箭"},
             "right": {"id": "R"}}})",
         {DraftPhase::cardPick,
          AppLanguage::zh,
          {Offer{text("F"), text("火球术")}, Offer{QString(), text("寒冰箭")}, Offer{text("R"), QString()}},
          {}}},
        {"slots that are not there, null or empty are not legible",
         R"({"phase": "heroPick", "lang": "en", "slots": {"middle": null, "right": {"id": "", "name": " "}}})",
         {DraftPhase::heroPick, AppLanguage::en, {}, {}}},
        {"names as printed",
         R"({"phase": "heroPick", "language": "en", "names": ["MAGE", "DEATH KNIGHT", "Fireball"], "width": 1})",
         {DraftPhase::heroPick,
          AppLanguage::en,
          {Offer{QString(), text("MAGE")}, Offer{QString(), text("DEATH KNIGHT")}, fireball},
          {}}},
        {"a name that is null, empty or blank is not legible",
         R"({"phase": "cardPick", "language": "en", "names": [null, "", " Fireball "]})",
         {DraftPhase::cardPick, AppLanguage::en, {std::nullopt, std::nullopt, fireball}, {}}},
        {"fewer names than slots",
         R"({"phase": "cardPick", "language": "en", "names": ["Fireball"]})",
         {DraftPhase::cardPick, AppLanguage::en, {fireball, std::nullopt, std::nullopt}, {}}},
        {"no pick: names on the picture are not offered",
         R"({"phase": "none", "language": "zh", "names": ["火球术"]})",
         {DraftPhase::idle, AppLanguage::zh, {}, {}}},
        {"no pick needs no names", R"({"phase": "none", "language": "en"})", {}},
        {"a lettering",
         R"({"phase": "none", "language": "zh", "lettering": "clerical"})",
         {DraftPhase::idle, AppLanguage::zh, {}, {}, text("clerical")}},
        {"texts in boxes, of which right and lower edges are outside",
         R"({"phase": "none", "language": "zh", "texts": [
             {"box": [10, 20, 40, 35], "text": "火球术 ", "ink": "light"}, {"box": [0, 0, 1, 1.0], "text": "七"}]})",
         {DraftPhase::idle,
          AppLanguage::zh,
          {},
          {},
          {},
          {{QRect(10, 20, 30, 15), text("火球术"), text("light")}, {QRect(0, 0, 1, 1), text("七"), {}}}}},
        {"a picture of another name",
         R"({"phase": "none", "language": "en", "file": "shot.jpg"})",
         {DraftPhase::idle, AppLanguage::en, {}, text("shot.jpg")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(truthOf(c.json), c.expected);
    }
}

TEST(ParseTruth, SaysWhatIsWrong) {
    struct Case {
        const char* why;
        const char* json;
        const char* mentions;
    };

    const Case cases[] = {
        {"no JSON", "phase", "byte"},
        {"a list", "[]", "the truth file"},
        {"no phase, as in a list of faces", R"({"a.png": {"name": "A"}})", "phase"},
        {"another phase", R"({"phase": "idle", "lang": "en", "names": []})", "phase"},
        {"no language", R"({"phase": "cardPick", "names": []})", "language"},
        {"a language that names nothing", R"({"phase": "cardPick", "lang": "system", "names": []})", "language"},
        {"a pick without names", R"({"phase": "cardPick", "lang": "en"})", "names"},
        {"four names", R"({"phase": "cardPick", "lang": "en", "names": ["a", "b", "c", "d"]})", "three"},
        {"a name that is none", R"({"phase": "cardPick", "lang": "en", "names": ["a", 2]})", "names[1]"},
        {"a box without a lower edge", R"({"phase": "none", "lang": "en", "texts": [{"box": [1, 2, 3], "text": "a"}]})",
         "texts[0].box"},
        {"a box turned inside out",
         R"({"phase": "none", "lang": "en", "texts": [{"box": [1, 2, 3, 4], "text": "a"},
             {"box": [5, 2, 3, 4], "text": "a"}]})",
         "texts[1].box"},
        {"an empty box", R"({"phase": "none", "lang": "en", "texts": [{"box": [1, 4, 3, 4], "text": "a"}]})",
         "texts[0].box"},
        {"a box beyond all windows",
         R"({"phase": "none", "lang": "en", "texts": [{"box": [0, 0, 4294967297, 4], "text": "a"}]})", "texts[0].box"},
        {"a box left of the picture",
         R"({"phase": "none", "lang": "en", "texts": [{"box": [-1, 2, 3, 4], "text": "a"}]})", "texts[0].box"},
        {"half a pixel", R"({"phase": "none", "lang": "en", "texts": [{"box": [0.5, 2, 3, 4], "text": "a"}]})",
         "texts[0].box[0]"},
        {"a box without its text", R"({"phase": "none", "lang": "en", "texts": [{"box": [1, 2, 3, 4]}]})",
         "texts[0].text"},
        {"a slot that is none", R"({"phase": "cardPick", "lang": "en", "slots": {"left": "a"}})", "slots.left"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto truth = parseTruth(c.json);
        ASSERT_FALSE(truth);
        EXPECT_TRUE(truth.error().contains(text(c.mentions))) << truth.error().toStdString();
    }
}

TEST(RulesFor, APictureWithoutAPickIsLookedAtByBoth) {
    const auto rules = [](DraftPhase phase) {
        Truth truth;
        truth.phase = phase;
        return rulesFor(truth);
    };
    EXPECT_EQ(rules(DraftPhase::cardPick), std::vector{DraftPhase::cardPick});
    EXPECT_EQ(rules(DraftPhase::heroPick), std::vector{DraftPhase::heroPick});
    EXPECT_EQ(rules(DraftPhase::idle), (std::vector{DraftPhase::cardPick, DraftPhase::heroPick}));
}

class JudgeTest : public ::testing::Test {
protected:
    SampleStore sample{cardFile, classFile};
    Judge judge{sample.store};
};

TEST_F(JudgeTest, ComparesNamesInTheLanguageOfThePicture) {
    struct Case {
        const char* why;
        DraftPhase phase;
        AppLanguage language;
        std::optional<Offer> offered;
        const char* matched;
        std::optional<Verdict> verdict;
        const char* shown;
    };

    const auto name = [](const char* printed) { return Offer{QString(), text(printed)}; };
    const auto both = [](const char* id, const char* printed) { return Offer{text(id), text(printed)}; };
    constexpr auto card = DraftPhase::cardPick;
    constexpr auto hero = DraftPhase::heroPick;
    constexpr auto none = DraftPhase::idle;
    constexpr auto en = AppLanguage::en;
    constexpr auto zh = AppLanguage::zh;
    const Case cases[] = {
        {"the card", card, en, name("Fireball"), "FIREBALL", Verdict::right, "Fireball"},
        {"a reprint of the same name", card, en, both("FIREBALL", "Fireball"), "CORE_FIREBALL", Verdict::right,
         "Fireball"},
        {"compared as names are matched", card, en, name("FIRE BALL 4"), "FIREBALL", Verdict::right, "Fireball"},
        {"in the other language", card, zh, name("火球术"), "FIREBALL", Verdict::right, "火球术"},
        {"another card", card, en, name("Fireball"), "FROSTBOLT", Verdict::wrong, "Frostbolt"},
        {"nothing", card, en, name("Fireball"), nullptr, Verdict::unread, nullptr},
        {"the identifier is enough", card, en, both("TRAVELLER", ""), "TRAVELLER", Verdict::right, "旅行者"},
        {"no name in this language: shown in the other, right by identifier", card, en, both("TRAVELLER", "Traveller"),
         "TRAVELLER", Verdict::right, "旅行者"},
        {"no name in this language: unknown by name", card, en, name("Traveller"), "TRAVELLER", Verdict::wrongMissing,
         "旅行者"},
        {"not in the data, nothing shown", card, en, name("Newcomer"), nullptr, Verdict::missing, nullptr},
        {"not in the data, another shown", card, en, both("NEW", "Newcomer"), "FIREBALL", Verdict::wrongMissing,
         "Fireball"},
        {"known in the other language only", card, en, name("火球术"), nullptr, Verdict::missing, nullptr},
        {"names of which nothing is left do not equal each other", card, en, name("123"), "DIGITS",
         Verdict::wrongMissing, "777"},
        {"not legible, nothing shown", card, en, std::nullopt, nullptr, std::nullopt, nullptr},
        {"not legible, something shown", card, en, std::nullopt, "FIREBALL", std::nullopt, "Fireball"},
        {"a class in capitals", hero, en, name("MAGE"), "MAGE", Verdict::right, "Mage"},
        {"a class of two words", hero, en, name("DEATH KNIGHT"), "DEATHKNIGHT", Verdict::right, "Death Knight"},
        {"a class by its key", hero, zh, both("DEATHKNIGHT", ""), "DEATHKNIGHT", Verdict::right, "死亡骑士"},
        {"any of its names", hero, en, name("法师"), "MAGE", Verdict::right, "Mage"},
        {"another class", hero, en, name("MAGE"), "DEATHKNIGHT", Verdict::wrong, "Death Knight"},
        {"a class without figures", hero, en, name("ROGUE"), nullptr, Verdict::missing, nullptr},
        {"a card is no class", hero, en, name("Fireball"), nullptr, Verdict::missing, nullptr},
        {"no pick, nothing shown", none, en, std::nullopt, nullptr, std::nullopt, nullptr},
        {"no pick, a card shown", none, en, std::nullopt, "FIREBALL", Verdict::falseOffer, "Fireball"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const Truth truth{c.phase, c.language, {std::nullopt, c.offered, std::nullopt}, {}};
        const auto answers = judge.judge(truth, look(rulesFor(truth).front(), {nullptr, c.matched, nullptr}));
        ASSERT_EQ(answers.size(), 3U);
        EXPECT_EQ(answers[1].verdict, c.verdict);
        EXPECT_EQ(answers[1].shown, optionalText(c.shown));
        EXPECT_EQ(answers[1].offered, c.offered);
        EXPECT_EQ(answers[0].verdict, std::nullopt);
    }
}

TEST_F(JudgeTest, LooksForClassesByTheRulesOfAHeroPick) {
    const Truth truth = truthOf(R"({"phase": "none", "language": "zh"})");
    const auto answers = judge.judge(truth, look(DraftPhase::heroPick, {nullptr, nullptr, "MAGE"}));
    EXPECT_EQ(answers[2].verdict, Verdict::falseOffer);
    EXPECT_EQ(answers[2].shown, text("法师"));
}

TEST_F(JudgeTest, GoesBySlots) {
    const Truth truth = truthOf(R"({"phase": "cardPick", "language": "en", "names": ["Fireball", "Frostbolt", ""]})");
    const auto answers = judge.judge(truth, look(DraftPhase::cardPick, {"FROSTBOLT", "FIREBALL", nullptr}));
    EXPECT_EQ(answers[0].verdict, Verdict::wrong) << "both are there, but in each other's place";
    EXPECT_EQ(answers[1].verdict, Verdict::wrong);
    EXPECT_EQ(answers[2].verdict, std::nullopt);
}

TEST_F(JudgeTest, HasEachTextReadInItsBox) {
    struct Case {
        const char* why;
        AppLanguage language;
        const char* printed;
        const char* read;
        Verdict verdict;
    };

    const Case cases[] = {
        {"the name", AppLanguage::zh, "火球术", "火球术", Verdict::right},
        {"compared as names are matched", AppLanguage::en, "Fire ball!", "FIREBALL", Verdict::right},
        {"another name", AppLanguage::zh, "火球术", "寒冰箭", Verdict::wrong},
        {"nothing", AppLanguage::zh, "火球术", nullptr, Verdict::unread},
        {"no name, nothing read", AppLanguage::zh, "隐藏", nullptr, Verdict::missing},
        {"no name, and a name read", AppLanguage::zh, "隐藏", "火球术", Verdict::wrongMissing},
        {"no name in this language", AppLanguage::en, "火球术", "火球术", Verdict::wrongMissing},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const BoxedText boxed{QRect(3, 4, 5, 6), text(c.printed), text("dark")};
        const Truth truth{DraftPhase::idle, c.language, {}, {}, {}, {boxed}};
        const QImage window(20, 10, QImage::Format_RGB32);
        const auto answers = judge.judgeTexts(truth, window, [&](const QImage& seen, const QRect& box) {
            EXPECT_EQ(seen.cacheKey(), window.cacheKey());
            EXPECT_EQ(box, boxed.box);
            return optionalText(c.read);
        });
        EXPECT_EQ(answers, (std::vector{TextAnswer{boxed, optionalText(c.read), c.verdict}}));
    }
}

TEST_F(JudgeTest, ReadsNothingWhereThereAreNoTexts) {
    const auto reader = [](const QImage&, const QRect&) -> std::optional<QString> {
        ADD_FAILURE() << "nothing to read";
        return std::nullopt;
    };
    EXPECT_TRUE(judge.judgeTexts(Truth(), QImage(), reader).empty());
}

TEST(Quantile, LiesBetweenTheValuesNextToIt) {
    struct Case {
        const char* why;
        std::vector<double> values;
        double quantile;
        std::optional<double> expected;
    };

    const Case cases[] = {
        {"no values", {}, 0.5, std::nullopt},
        {"one value is all of them", {7}, 0.9, 7},
        {"the middle one, in any order", {9, 1, 5}, 0.5, 5},
        {"halfway between the middle two", {1, 2, 4, 9}, 0.5, 3},
        {"the tenth step of ten", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 0.9, 9},
        {"between the last two", {0, 10}, 0.9, 9},
        {"the last", {1, 2, 3}, 1, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto found = quantile(c.values, c.quantile);
        ASSERT_EQ(found.has_value(), c.expected.has_value());
        EXPECT_DOUBLE_EQ(found.value_or(0), c.expected.value_or(0));
    }
}

class EvaluationTest : public JudgeTest {
protected:
    Picture picture(const char* path, const char* json, const std::vector<Look>& looks,
                    const std::vector<Look>& repeated = {}) const {
        Picture made{text(path), truthOf(json), looks, repeated, {}};
        for (const Look& each : looks) {
            const auto answers = judge.judge(made.truth, each);
            made.answers.insert(made.answers.end(), answers.begin(), answers.end());
        }
        return made;
    }

    const Picture pick = picture(
        "pick.png", R"({"phase": "cardPick", "language": "en", "names": ["Fireball", "Frostbolt", "Newcomer"]})",
        {look(DraftPhase::cardPick, {"FIREBALL", nullptr, "FROSTBOLT"}, 100)},
        {look(DraftPhase::cardPick, {"CORE_FIREBALL", nullptr, "FROSTBOLT"}, 10),
         look(DraftPhase::cardPick, {"FIREBALL", nullptr, "FROSTBOLT"}, 20)});
    const Picture wrong =
        picture("wrong.png", R"({"phase": "cardPick", "language": "en", "names": ["Fireball", "Newcomer", null]})",
                {look(DraftPhase::cardPick, {"FROSTBOLT", nullptr, "FIREBALL"}, 300)});
    const Picture none = picture("none.png", R"({"phase": "none", "language": "zh"})",
                                 {look(DraftPhase::cardPick, {"FIREBALL", "FROSTBOLT", nullptr}, 1),
                                  look(DraftPhase::heroPick, {nullptr, nullptr, "MAGE"}, 2)});
};

TEST_F(EvaluationTest, RemarksOnEverySlotThatIsNotAsItShouldBe) {
    EXPECT_EQ(remarks(pick),
              (QStringList{
                  text("unread: pick.png middle: Frostbolt"),
                  text(R"(wrong: pick.png right: Newcomer (not in the data), shown as Frostbolt, read "as read")")}));
    EXPECT_EQ(remarks(wrong),
              QStringList{text(R"(wrong: wrong.png left: Fireball, shown as Frostbolt, read "as read")")})
        << "what cannot be read and what the data does not know may stay unread";
    EXPECT_EQ(
        remarks(none),
        (QStringList{
            text(R"(false offer: none.png left: no pick, by the rules of cardPick shown as 火球术, read "as read")"),
            text(R"(false offer: none.png middle: no pick, by the rules of cardPick shown as 寒冰箭, read "as read")"),
            text(R"(false offer: none.png right: no pick, by the rules of heroPick shown as 法师, read "as read")"),
        }));
}

TEST_F(EvaluationTest, CountsEverySlotOnce) {
    Tally tally;
    for (const Picture* each : {&pick, &wrong, &none}) {
        tally.add(*each);
    }
    EXPECT_EQ(tally.pictures, 3);
    EXPECT_EQ(tally.slots, 5) << "one of six is not legible, and a picture without a pick offers nothing";
    EXPECT_EQ(tally.right, 1);
    EXPECT_EQ(tally.wrong, 1);
    EXPECT_EQ(tally.unread, 1);
    EXPECT_EQ(tally.notInData, 2);
    EXPECT_EQ(tally.wrongMissing, 1);
    EXPECT_EQ(tally.falseOffers, 3);
    EXPECT_EQ(tally.changed, 1) << "one of two repeated looks shows another identifier";
    EXPECT_EQ(tally.milliseconds, (std::vector<double>{100, 300, 1, 2}));
    EXPECT_EQ(tally.cpuMilliseconds, (std::vector<double>{200, 600, 2, 4}));
    EXPECT_EQ(tally.repeatedCpuMilliseconds, (std::vector<double>{20, 40}));
}

TEST_F(EvaluationTest, TabulatesByLanguageAndPhase) {
    Totals totals;
    totals.add(wrong);
    totals.add(none);
    EXPECT_EQ(
        totals.table().join(u'\n'),
        text(
            R"(language  phase     pictures  slots  right  wrong  unread  not in the data  of these wrong  false offers  CPU ms    p90  wall ms    p90
en        cardPick         1      2      0      1       0                1               0             0   600.0  600.0    300.0  300.0
zh        none             1      0      0      0       0                0               0             3     3.0    3.8      1.5    1.9
all                        2      2      0      1       0                1               0             3     4.0  480.8      2.0  240.4)"));
    totals.add(pick);
    const QStringList table = totals.table();
    ASSERT_EQ(table.size(), 4);
    EXPECT_TRUE(table[0].endsWith(text("again CPU ms   p90  changed"))) << table[0].toStdString();
    EXPECT_TRUE(table[1].endsWith(text("        30.0  38.0        1"))) << table[1].toStdString();
    EXPECT_TRUE(table[2].endsWith(text("           -     -        0"))) << table[2].toStdString();
}

TEST_F(EvaluationTest, TabulatesLetteringsApart) {
    const Look nothing = look(DraftPhase::cardPick, {nullptr, nullptr, nullptr});
    const Look fireball = look(DraftPhase::cardPick, {"FIREBALL", nullptr, nullptr});
    const char* const printed =
        R"({"phase": "cardPick", "language": "zh", "lettering": "printed", "names": ["火球术"]})";
    const char* const clerical =
        R"({"phase": "cardPick", "language": "zh", "lettering": "clerical", "names": ["火球术"]})";
    Totals totals;
    totals.add(picture("a.png", printed, {fireball}));
    totals.add(picture("b.png", clerical, {nothing}));
    totals.add(picture("c.png", clerical, {fireball}));
    totals.add(wrong);
    EXPECT_EQ(
        totals.table().join(u'\n'),
        text(
            R"(language  lettering  phase     pictures  slots  right  wrong  unread  not in the data  of these wrong  false offers  CPU ms    p90  wall ms    p90
en                   cardPick         1      2      0      1       0                1               0             0   600.0  600.0    300.0  300.0
zh        clerical   cardPick         2      2      1      0       1                0               0             0     0.0    0.0      0.0    0.0
zh        printed    cardPick         1      1      1      0       0                0               0             0     0.0    0.0      0.0    0.0
all                                   4      5      2      1       1                1               0             0     0.0  420.0      0.0  210.0)"));
    const QJsonArray groups = totals.toJson()[QStringLiteral("groups")].toArray();
    ASSERT_EQ(groups.size(), 3);
    EXPECT_EQ(groups[0][QStringLiteral("lettering")].toString(), QString());
    EXPECT_EQ(groups[1][QStringLiteral("lettering")].toString(), QStringLiteral("clerical"));
    EXPECT_EQ(groups[1][QStringLiteral("unread")].toInt(), 1);
    EXPECT_EQ(groups[2][QStringLiteral("lettering")].toString(), QStringLiteral("printed"));
    EXPECT_EQ(toJson(picture("b.png", clerical, {nothing}))[QStringLiteral("lettering")].toString(),
              QStringLiteral("clerical"));
}

TEST_F(EvaluationTest, ReportsTextsBoxByBoxAndByThemselves) {
    Picture shop = picture("shop.png", R"({"phase": "none", "language": "zh", "texts": [
        {"box": [1, 2, 30, 12], "text": "火球术", "ink": "light"},
        {"box": [1, 22, 30, 32], "text": "寒冰箭", "ink": "light"},
        {"box": [1, 42, 30, 52], "text": "旅行者", "ink": "orange"},
        {"box": [1, 62, 30, 72], "text": "隐藏", "ink": "light"},
        {"box": [1, 82, 30, 92], "text": "确认"}]})",
                           {});
    shop.texts = judge.judgeTexts(shop.truth, QImage(), [](const QImage&, const QRect& box) -> std::optional<QString> {
        return box.top() == 42 || box.top() == 62 ? std::nullopt : std::optional(text("火球术"));
    });
    EXPECT_EQ(remarks(shop), (QStringList{
                                 text("text right: shop.png 1,2,30,12: 火球术, read as 火球术"),
                                 text("text wrong: shop.png 1,22,30,32: 寒冰箭, read as 火球术"),
                                 text("text unread: shop.png 1,42,30,52: 旅行者"),
                                 text("text missing: shop.png 1,62,30,72: 隐藏"),
                                 text("text wrongMissing: shop.png 1,82,30,92: 确认, read as 火球术"),
                             }));
    Totals totals;
    totals.add(shop);
    const QStringList table = totals.table();
    ASSERT_EQ(table.size(), 8) << "three lines of offers, then the texts";
    EXPECT_EQ(table.sliced(3).join(u'\n'),
              text(R"(texts in  ink     boxes  right  wrong  unread  not in the data  of these wrong
zh                    1      0      0       0                1               1
zh        light       3      1      1       0                1               0
zh        orange      1      0      0       1                0               0
all                   5      1      1       1                2               1)"));
    const QJsonObject summary = totals.toJson();
    EXPECT_EQ(summary[QStringLiteral("texts")].toObject(),
              QJsonDocument::fromJson(
                  R"({"boxes": 5, "right": 1, "wrong": 1, "unread": 1, "notInData": 2, "wrongMissing": 1})")
                  .object());
    EXPECT_EQ(summary[QStringLiteral("totals")][QStringLiteral("slots")].toInt(), 0) << "texts are no offers";
    const QJsonArray groups = summary[QStringLiteral("textGroups")].toArray();
    ASSERT_EQ(groups.size(), 3);
    EXPECT_EQ(groups[1].toObject(),
              QJsonDocument::fromJson(R"({"language": "zh", "ink": "light", "boxes": 3, "right": 1,
        "wrong": 1, "unread": 0, "notInData": 1, "wrongMissing": 0})")
                  .object());
    const QJsonArray written = toJson(shop)[QStringLiteral("texts")].toArray();
    ASSERT_EQ(written.size(), 5);
    EXPECT_EQ(written[1].toObject(),
              QJsonDocument::fromJson(R"({"box": [1, 22, 30, 32], "ink": "light", "text": "寒冰箭", "read": "火球术",
                  "verdict": "wrong"})")
                  .object());
    EXPECT_TRUE(written[2][QStringLiteral("read")].isNull());
}

TEST_F(EvaluationTest, TabulatesNothing) {
    EXPECT_EQ(Totals().table().size(), 2) << "the headings and a line of zeros";
}

TEST_F(EvaluationTest, WritesAPictureAndTheTotalsAsJson) {
    const QJsonObject written = toJson(pick);
    EXPECT_EQ(written, QJsonDocument::fromJson(R"({"picture": "pick.png", "phase": "cardPick", "language": "en",
        "names": ["Fireball", "Frostbolt", "Newcomer"], "milliseconds": [100], "cpuMilliseconds": [200],
        "repeatedCpuMilliseconds": [20, 40], "lettering": "", "texts": [], "slots": [
        {"slot": "left", "rules": "cardPick", "offered": "Fireball", "cardId": "FIREBALL", "name": "Fireball",
         "ocrText": "as read", "method": "method", "verdict": "right"},
        {"slot": "middle", "rules": "cardPick", "offered": "Frostbolt", "cardId": null, "name": null,
         "ocrText": "", "method": "method", "verdict": "unread"},
        {"slot": "right", "rules": "cardPick", "offered": "Newcomer", "cardId": "FROSTBOLT", "name": "Frostbolt",
         "ocrText": "as read", "method": "method", "verdict": "wrongMissing"}]})")
                           .object());
    EXPECT_EQ(toJson(none)[QStringLiteral("slots")].toArray().size(), 6) << "three by either rules";

    Totals totals;
    totals.add(pick);
    const QJsonObject summary = totals.toJson();
    EXPECT_EQ(summary[QStringLiteral("totals")].toObject(), QJsonDocument::fromJson(R"({"pictures": 1, "slots": 3,
        "right": 1, "wrong": 0, "unread": 1, "notInData": 1, "wrongMissing": 1, "falseOffers": 0, "changed": 1,
        "milliseconds": {"median": 100, "p90": 100}, "cpuMilliseconds": {"median": 200, "p90": 200},
        "repeatedCpuMilliseconds": {"median": 30, "p90": 38}})")
                                                                .object());
    const QJsonArray groups = summary[QStringLiteral("groups")].toArray();
    ASSERT_EQ(groups.size(), 1);
    EXPECT_EQ(groups[0][QStringLiteral("language")].toString(), QStringLiteral("en"));
    EXPECT_EQ(groups[0][QStringLiteral("phase")].toString(), QStringLiteral("cardPick"));
    EXPECT_EQ(groups[0][QStringLiteral("slots")].toInt(), 3);
}

} // namespace
} // namespace pelloran::evaluation
