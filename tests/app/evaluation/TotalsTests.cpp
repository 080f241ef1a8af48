#include "app/evaluation/Totals.h"

#include "tests/app/evaluation/EvaluationSamples.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gmock/gmock.h>

namespace pelloran::evaluation {
namespace {

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
