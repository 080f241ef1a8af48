#include "names/ClassNameIndex.h"

#include "tests/names/NameMatchingReference.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

const std::vector<NamedClass>& allClasses() {
    static const std::vector<NamedClass> classes{
        {u"DEATHKNIGHT"_s, {u"死亡骑士"_s, u"Death Knight"_s}},
        {u"DEMONHUNTER"_s, {u"恶魔猎手"_s, u"Demon Hunter"_s}},
        {u"DRUID"_s, {u"德鲁伊"_s, u"Druid"_s}},
        {u"HUNTER"_s, {u"猎人"_s, u"Hunter"_s}},
        {u"MAGE"_s, {u"法师"_s, u"Mage"_s}},
        {u"PALADIN"_s, {u"圣骑士"_s, u"Paladin"_s}},
        {u"PRIEST"_s, {u"牧师"_s, u"Priest"_s}},
        {u"ROGUE"_s, {u"潜行者"_s, u"Rogue"_s}},
        {u"SHAMAN"_s, {u"萨满祭司"_s, u"Shaman"_s}},
        {u"WARLOCK"_s, {u"术士"_s, u"Warlock"_s}},
        {u"WARRIOR"_s, {u"战士"_s, u"Warrior"_s}},
    };
    return classes;
}

TEST(ClassNameIndex, FindsTheClassThatLinesName) {
    struct Case {
        const char* why;
        std::vector<NamedClass> classes;
        QStringList lines;
        std::optional<ClassMatch> expected;
    };

    const Case cases[] = {
        {"no classes", {}, {u"Mage"_s}, {}},
        {"no lines", allClasses(), {}, {}},
        {"Chinese name", allClasses(), {u"法师"_s}, ClassMatch{u"MAGE"_s, 1, u"法师"_s}},
        {"English name, decorated", allClasses(), {u" MAGE (3)"_s}, ClassMatch{u"MAGE"_s, 1, u" MAGE (3)"_s}},
        {"a name that is not like the key",
         {{u"MAGE"_s, {u"法师"_s, u"Wizard"_s}}},
         {u"wizard"_s},
         ClassMatch{u"MAGE"_s, 1, u"wizard"_s}},
        {"the key itself",
         {{u"TINKER"_s, {u""_s, u"Engineer"_s}}},
         {u"Tinker"_s},
         ClassMatch{u"TINKER"_s, 1, u"Tinker"_s}},
        {"one name of two classes: the first",
         {{u"B"_s, {u"同名"_s}}, {u"A"_s, {u"同名"_s}}},
         {u"同名"_s},
         ClassMatch{u"B"_s, 1, u"同名"_s}},
        {"names go before keys of other classes",
         {{u"CD"_s, {u"甲"_s, u"zz"_s}}, {u"EF"_s, {u"乙"_s, u"cd"_s}}},
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
        {"a single letter can be exact", {{u"X"_s, {u"甲"_s}}}, {u"甲"_s}, ClassMatch{u"X"_s, 1, u"甲"_s}},
        {"one character of a name is nothing", allClasses(), {u"法"_s}, {}},
        {"nickname that is half of a name", allClasses(), {u"萨满"_s}, ClassMatch{u"SHAMAN"_s, 0.95, u"萨满"_s}},
        {"nickname that is in no name", allClasses(), {u"死骑"_s}, ClassMatch{u"DEATHKNIGHT"_s, 0.95, u"死骑"_s}},
        {"nickname of one character", allClasses(), {u"（瞎）"_s}, ClassMatch{u"DEMONHUNTER"_s, 0.95, u"（瞎）"_s}},
        {"first nickname stays", allClasses(), {u"瞎"_s, u"死骑"_s}, ClassMatch{u"DEMONHUNTER"_s, 0.95, u"瞎"_s}},
        {"nickname of a class that is not there", {{u"MAGE"_s, {u"法师"_s}}}, {u"萨满"_s}, {}},
        {"other nicknames are not looked at", allClasses(), {u"DK"_s, u"贼"_s}, {}},
        {"near is not enough", allClasses(), {u"Warriors"_s}, {}},
        {"ten of eleven characters would not do either", {{u"X"_s, {u"abcdefghijk"_s}}}, {u"abcdefghij"_s}, {}},
        {"a name of eleven characters is out of reach", allClasses(), {u"Demon Hunter"_s}, {}},
        {"as is one of twelve with a name in it", allClasses(), {u"xxxxDruidxxx"_s}, {}},
        {"nothing that counts", allClasses(), {u"12!"_s, u""_s}, {}},
        {"a class without names does not match nothing", {{u"123"_s, {u""_s, u""_s}}}, {u""_s, u"!"_s}, {}},
        {"decomposed name", {{u"X"_s, {u"caf\u00E9"_s}}}, {u"Cafe\u0301"_s}, ClassMatch{u"X"_s, 1, u"Cafe\u0301"_s}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ClassNameIndex(row.classes).bestMatch(row.lines), row.expected);
        EXPECT_EQ(reference::matchClass(row.classes, row.lines), row.expected);
    }
}

TEST(ClassNameIndex, TakesLongLinesThatAreExactWhereAsked) {
    struct Case {
        const char* why;
        QStringList lines;
        std::optional<ClassMatch> expected;
    };

    const Case cases[] = {
        {"a name of eleven characters", {u"DEMON HUNTER"_s}, ClassMatch{u"DEMONHUNTER"_s, 1, u"DEMON HUNTER"_s}},
        {"one misread letter", {u"Demon Humter"_s}, {}},
        {"one character more", {u"Demon Hunters"_s}, {}},
        {"with a name in it", {u"xxxxDruidxxx"_s}, {}},
        {"the first exact line, long or not",
         {u"Fireball"_s, u"Death Knight"_s, u"Mage"_s},
         ClassMatch{u"DEATHKNIGHT"_s, 1, u"Death Knight"_s}},
        {"a short one before it", {u"Mage"_s, u"Death Knight"_s}, ClassMatch{u"MAGE"_s, 1, u"Mage"_s}},
        {"it beats a nickname", {u"瞎"_s, u"Death Knight"_s}, ClassMatch{u"DEATHKNIGHT"_s, 1, u"Death Knight"_s}},
        {"nicknames are as always", {u"（瞎）"_s}, ClassMatch{u"DEMONHUNTER"_s, 0.95, u"（瞎）"_s}},
        {"nothing", {u""_s}, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const ClassNameIndex index(allClasses());
        EXPECT_EQ(index.bestMatch(row.lines, NameLengths::limitedUnlessExact), row.expected);
        EXPECT_EQ(reference::matchClass(allClasses(), row.lines, NameLengths::limitedUnlessExact), row.expected);
    }
}

TEST(ClassNameIndex, GivesEverythingThatNamesAClassAsItWasGiven) {
    const ClassNameIndex index({{u"SHAMAN"_s, {u"萨满 祭司"_s, u""_s}}, {u"DEMONHUNTER"_s, {u"Demon Hunter"_s}}});
    EXPECT_EQ(index.texts(),
              (QStringList{u"萨满 祭司"_s, u"Demon Hunter"_s, u"SHAMAN"_s, u"DEMONHUNTER"_s, u"瞎"_s, u"萨满"_s}));
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
    const QStringList keys{u"SHAMAN"_s, u"DEATHKNIGHT"_s, u"DEMONHUNTER"_s, u"A"_s, u"AB"_s};
    int exact = 0;
    int other = 0;
    for (int i = 0; i < 5000; ++i) {
        std::vector<NamedClass> classes;
        for (auto left = random() % 4; left > 0; --left) {
            classes.push_back({keys[static_cast<qsizetype>(random() % 5)], {anyText(4)}});
            if (random() % 2 == 0) {
                classes.back().names += anyText(12);
            }
        }
        const QStringList lines{anyText(3), anyText(12)};
        const auto lengths = i % 2 == 0 ? NameLengths::limited : NameLengths::limitedUnlessExact;
        const auto match = ClassNameIndex(classes).bestMatch(lines, lengths);
        ASSERT_EQ(match, reference::matchClass(classes, lines, lengths)) << lines.join(u'|').toStdString();
        exact += match && match->score == 1;
        other += match && match->score < 1;
    }
    EXPECT_GT(exact, 50);
    EXPECT_GT(other, 50);
}

} // namespace

} // namespace pelloran
