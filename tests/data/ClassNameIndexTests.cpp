#include "data/ClassNameIndex.h"

#include "NameMatchingReference.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

ClassWinrateRow classRow(const QString& playerClass, const QString& nameZh, const std::optional<QString>& nameEn = {}) {
    ClassWinrateRow row;
    row.playerClass = playerClass;
    row.nameZh = nameZh;
    row.nameEn = nameEn;
    return row;
}

ClassNameIndex::ClassesByKey byKey(const std::vector<ClassWinrateRow>& rows) {
    ClassNameIndex::ClassesByKey classes;
    for (const ClassWinrateRow& row : rows) {
        classes.insert_or_assign(row.playerClass.toUpper(), row);
    }
    return classes;
}

const std::vector<ClassWinrateRow>& allClasses() {
    static const std::vector<ClassWinrateRow> rows{
        classRow(u"DEATHKNIGHT"_s, u"死亡骑士"_s), classRow(u"DEMONHUNTER"_s, u"恶魔猎手"_s),
        classRow(u"DRUID"_s, u"德鲁伊"_s),         classRow(u"HUNTER"_s, u"猎人"_s),
        classRow(u"MAGE"_s, u"法师"_s, u"Mage"_s), classRow(u"PALADIN"_s, u"圣骑士"_s),
        classRow(u"PRIEST"_s, u"牧师"_s),          classRow(u"ROGUE"_s, u"潜行者"_s),
        classRow(u"SHAMAN"_s, u"萨满祭司"_s),      classRow(u"WARLOCK"_s, u"术士"_s),
        classRow(u"WARRIOR"_s, u"战士"_s, u""_s),
    };
    return rows;
}

TEST(ClassNameIndex, FindsTheClassThatLinesName) {
    struct Case {
        const char* why;
        std::vector<ClassWinrateRow> rows;
        QStringList lines;
        std::optional<ClassMatch> expected;
    };

    const Case cases[] = {
        {"no classes", {}, {u"Mage"_s}, {}},
        {"no lines", allClasses(), {}, {}},
        {"Chinese name", allClasses(), {u"法师"_s}, ClassMatch{u"MAGE"_s, 1, u"法师"_s}},
        {"English name, decorated", allClasses(), {u" MAGE (3)"_s}, ClassMatch{u"MAGE"_s, 1, u" MAGE (3)"_s}},
        {"known English name where the file has none",
         allClasses(),
         {u"Warrior"_s},
         ClassMatch{u"WARRIOR"_s, 1, u"Warrior"_s}},
        {"the file's own English name",
         {classRow(u"mage"_s, u"法师"_s, u"Wizard"_s)},
         {u"wizard"_s},
         ClassMatch{u"MAGE"_s, 1, u"wizard"_s}},
        {"the key itself",
         {classRow(u"tinker"_s, u""_s, u"Engineer"_s)},
         {u"Tinker"_s},
         ClassMatch{u"TINKER"_s, 1, u"Tinker"_s}},
        {"one name of two classes: the first in order of keys",
         {classRow(u"B"_s, u"同名"_s), classRow(u"A"_s, u"同名"_s)},
         {u"同名"_s},
         ClassMatch{u"A"_s, 1, u"同名"_s}},
        {"names go before keys of other classes",
         {classRow(u"CD"_s, u"甲"_s, u"zz"_s), classRow(u"EF"_s, u"乙"_s, u"cd"_s)},
         {u"cd"_s},
         ClassMatch{u"EF"_s, 1, u"cd"_s}},
        {"first exact line ends the search",
         allClasses(),
         {u"Fireball"_s, u"Rogue"_s, u"Mage"_s},
         ClassMatch{u"ROGUE"_s, 1, u"Rogue"_s}},
        {"an exact line beats a nickname before it",
         allClasses(),
         {u"瞎"_s, u"Mage"_s},
         ClassMatch{u"MAGE"_s, 1, u"Mage"_s}},
        {"a single letter can be exact", {classRow(u"X"_s, u"甲"_s)}, {u"甲"_s}, ClassMatch{u"X"_s, 1, u"甲"_s}},
        {"one character of a name is nothing", allClasses(), {u"法"_s}, {}},
        {"nickname that is half of a name", allClasses(), {u"萨满"_s}, ClassMatch{u"SHAMAN"_s, 0.95, u"萨满"_s}},
        {"nickname that is in no name", allClasses(), {u"死骑"_s}, ClassMatch{u"DEATHKNIGHT"_s, 0.95, u"死骑"_s}},
        {"nickname of one character", allClasses(), {u"（瞎）"_s}, ClassMatch{u"DEMONHUNTER"_s, 0.95, u"（瞎）"_s}},
        {"first nickname stays", allClasses(), {u"瞎"_s, u"死骑"_s}, ClassMatch{u"DEMONHUNTER"_s, 0.95, u"瞎"_s}},
        {"nickname of a class that is not there", {classRow(u"MAGE"_s, u"法师"_s)}, {u"萨满"_s}, {}},
        {"other nicknames are not looked at", allClasses(), {u"DK"_s, u"贼"_s}, {}},
        {"near is not enough", allClasses(), {u"Warriors"_s}, {}},
        {"ten of eleven characters would not do either", {classRow(u"X"_s, u"abcdefghijk"_s)}, {u"abcdefghij"_s}, {}},
        {"a name of eleven characters is out of reach", allClasses(), {u"Demon Hunter"_s}, {}},
        {"as is one of twelve with a name in it", allClasses(), {u"xxxxDruidxxx"_s}, {}},
        {"nothing that counts", allClasses(), {u"12!"_s, u""_s}, {}},
        {"a class without names does not match nothing", {classRow(u"123"_s, u""_s, u""_s)}, {u""_s, u"!"_s}, {}},
        {"decomposed name",
         {classRow(u"X"_s, u"caf\u00E9"_s)},
         {u"Cafe\u0301"_s},
         ClassMatch{u"X"_s, 1, u"Cafe\u0301"_s}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto classes = byKey(row.rows);
        EXPECT_EQ(ClassNameIndex(classes).bestMatch(row.lines), row.expected);
        EXPECT_EQ(reference::matchClass(classes, row.lines), row.expected);
    }
}

TEST(ClassNameIndex, AgreesWithTheReferenceOnRandomLines) {
    std::mt19937 random(17);
    const auto anyText = [&random](std::size_t longest) {
        const QStringList pieces{u"a"_s, u"b"_s, u"萨"_s, u"满"_s, u"死"_s, u"骑"_s, u"瞎"_s, u" "_s, u"e\u0301"_s};
        QString text;
        for (auto left = random() % (longest + 1); left > 0; --left) {
            text += pieces[static_cast<qsizetype>(random() % static_cast<unsigned>(pieces.size()))];
        }
        return text;
    };
    const QStringList keys{u"shaman"_s, u"DEATHKNIGHT"_s, u"DemonHunter"_s, u"a"_s, u"Ab"_s};
    int exact = 0;
    int other = 0;
    for (int i = 0; i < 5000; ++i) {
        std::vector<ClassWinrateRow> rows;
        for (auto left = random() % 4; left > 0; --left) {
            rows.push_back(classRow(keys[static_cast<qsizetype>(random() % 5)], anyText(4),
                                    random() % 2 == 0 ? std::optional(anyText(12)) : std::nullopt));
        }
        const QStringList lines{anyText(3), anyText(12)};
        const auto classes = byKey(rows);
        const auto match = ClassNameIndex(classes).bestMatch(lines);
        ASSERT_EQ(match, reference::matchClass(classes, lines)) << lines.join(u'|').toStdString();
        exact += match && match->score == 1;
        other += match && match->score < 1;
    }
    EXPECT_GT(exact, 50);
    EXPECT_GT(other, 50);
}

TEST(ClassNameIndex, TellsWhichLinesAreExact) {
    const auto lines =
        ClassNameIndex(byKey({classRow(u"SHAMAN"_s, u"萨满 祭司"_s), classRow(u"DEMONHUNTER"_s, u"恶魔猎手"_s, u""_s)}))
            .exactLines();
    EXPECT_EQ(lines, (QSet{u"萨满祭司"_s, u"shaman"_s, u"萨满"_s, u"恶魔猎手"_s, u"瞎"_s}));
    for (const QString& line : lines) {
        SCOPED_TRACE(line.toStdString());
        EXPECT_GE(ClassNameIndex(byKey(allClasses())).bestMatch({line}).value().score, 0.95);
    }
}

} // namespace

} // namespace pelloran
