#include "names/Lexicon.h"

#include "names/NameMatching.h"
#include "tests/names/LexiconReference.h"
#include "tests/support/Printing.h"
#include "tests/support/SharedData.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <thread>

using namespace Qt::StringLiterals;

namespace pelloran {

void PrintTo(const Lexicon::Settled& settled, std::ostream* out) {
    *out << '"' << settled.text.toStdString() << "\" at " << settled.distance;
}

namespace {

using Settled = Lexicon::Settled;

std::vector<KnownName> known(const QStringList& texts, NameKinds kinds = {}) {
    std::vector<KnownName> names;
    for (const QString& text : texts) {
        names.push_back({text, kinds});
    }
    return names;
}

Lexicon cardLexicon(const QStringList& texts) {
    return {known(texts), Lexicon::forCards};
}

TEST(Lexicon, SettlesWhatCanBeOnlyOneName) {
    struct Case {
        const char* why;
        QStringList names;
        QString line;
        std::optional<Settled> expected;
    };

    const Case cases[] = {
        {"no names", {}, u"Fireball"_s, {}},
        {"nothing read", {u"Fireball"_s}, u""_s, {}},
        {"nothing but white space", {u"Fireball"_s}, u" \t"_s, {}},
        {"exact", {u"Frostbolt"_s, u"Fireball"_s}, u"Fireball"_s, Settled{u"Fireball"_s, 0}},
        {"but for case, space and punctuation", {u"C'Thun"_s}, u" CTHUN (10)"_s, Settled{u"C'Thun"_s, 0}},
        {"but for accents", {u"Caf\u00E9 Noir"_s}, u"Cafe Noir"_s, Settled{u"Caf\u00E9 Noir"_s, 0}},
        {"accents that the name has not", {u"Ragnaros"_s}, u"Ragnar\u00F3s"_s, Settled{u"Ragnaros"_s, 0}},
        {"strokes read as marks within a line",
         {u"Blackhowl Gunspire"_s},
         u"Blackhow! Gunspire |"_s,
         Settled{u"Blackhowl Gunspire"_s, 0.5}},
        {"a mark that ends the name", {u"WANTED!"_s, u"Wantedl"_s}, u"WANTED!"_s, Settled{u"WANTED!"_s, 0}},
        {"but for a hyphen, which normalising leaves",
         {u"Anti-Magic Shell"_s},
         u"Antimagic Shell"_s,
         Settled{u"Anti-Magic Shell"_s, 0}},
        {"an exact name of one letter", {u"X"_s}, u"x"_s, Settled{u"X"_s, 0}},
        {"near another name, but exact", {u"Fireball"_s, u"Fireballs"_s}, u"Fireballs"_s, Settled{u"Fireballs"_s, 0}},
        {"exact by normalising goes before exact by folding",
         {u"Re-Arm"_s, u"Rearm"_s},
         u"rearm"_s,
         Settled{u"Rearm"_s, 0}},
        {"two names but for signs, neither read", {u"Re-Arm"_s, u"Re/Arm"_s}, u"rearm"_s, {}},
        {"the same two, one read", {u"Re-Arm"_s, u"Re/Arm"_s}, u"re/arm"_s, Settled{u"Re/Arm"_s, 0}},
        {"and each so near that it is the other", {u"Re-Arm"_s, u"Re/Arm"_s}, u"re-arnn"_s, {}},
        {"of names that are the same the first",
         {u"Fire Ball"_s, u"Fireball"_s},
         u"fireball"_s,
         Settled{u"Fire Ball"_s, 0}},
        {"and they are no rivals of each other",
         {u"Fire Ball"_s, u"Fireball"_s},
         u"Fjreball"_s,
         Settled{u"Fire Ball"_s, 0.5}},
        {"one confused letter", {u"Frostbolt"_s, u"Fireball"_s}, u"Fireboll"_s, Settled{u"Fireball"_s, 0.5}},
        {"round letters for each other", {u"Corrupted Seer"_s}, u"Oorrupted Seer"_s, Settled{u"Corrupted Seer"_s, 0.5}},
        {"letters that run together", {u"Burning Claw"_s}, u"Buming Claw"_s, Settled{u"Burning Claw"_s, 1.5}},
        {"one letter that falls apart",
         {u"Summoning Stone"_s},
         u"Surnrnoning Stone"_s,
         Settled{u"Summoning Stone"_s, 1}},
        {"a stroke that was lost", {u"Frostbolt"_s}, u"Frostbot"_s, Settled{u"Frostbolt"_s, 1}},
        {"an end that was cut off", {u"Frostbolt Volley"_s}, u"Frostbolt Vo"_s, {}},
        {"and what is left is near a shorter name", {u"Frostbolt"_s, u"Frostbolt Volley"_s}, u"Frostbolt V"_s, {}},
        {"so near that only one letter more was read", {u"Whirlwind"_s, u"Whirlwinds of Sand"_s}, u"Whirlwindso"_s, {}},
        {"junk that begins no other name",
         {u"Frostbolt"_s, u"Frostbolt Volley"_s},
         u"Frostbolt x"_s,
         Settled{u"Frostbolt"_s, 0.5}},
        {"both names begin so: the nearer one",
         {u"Frostbolt"_s, u"Frostbolt Volley"_s},
         u"Frostbol"_s,
         Settled{u"Frostbolt"_s, 1}},
        {"a dash read as white space", {u"Auto-Vacuum"_s}, u"Auto Vacuum"_s, Settled{u"Auto-Vacuum"_s, 0}},
        {"a longer dash", {u"Auto-Vacuum"_s}, u"Auto\u2014Vacuum"_s, Settled{u"Auto-Vacuum"_s, 0}},
        {"a letter that is not confused", {u"Fireball"_s}, u"Firebaxl"_s, Settled{u"Fireball"_s, 1}},
        {"two of them are too much for eight", {u"Fireball"_s}, u"Fixebaxl"_s, {}},
        {"not for thirteen", {u"Spellslinging"_s}, u"Spexxslinging"_s, Settled{u"Spellslinging"_s, 2}},
        {"four mistakes in a name of thirty-six letters",
         {u"abcdefghijklmnopqrstuvwxyzabcdefghij"_s},
         u"qbcdefghiqklmnopqrstuqwxyzabqdefghij"_s,
         Settled{u"abcdefghijklmnopqrstuvwxyzabcdefghij"_s, 4}},
        {"never more than four",
         {u"abcdefghijklmnopqrstuvwxyzabcdefghij"_s},
         u"qbcdefghiqklmnopqrstuqwxyzabqqefghij"_s,
         {}},
        {"short names only exactly", {u"Hex"_s}, u"Hey"_s, {}},
        {"junk at the end", {u"Flame Lance"_s}, u"Flame Lance ae"_s, Settled{u"Flame Lance"_s, 1}},
        {"too much of it", {u"Flame Lance"_s}, u"Flame Lance, the mage's spell"_s, {}},
        {"as near to another name", {u"Mana Bind"_s, u"Mana Bond"_s}, u"Mana Bxnd"_s, {}},
        {"nearer by less than the margin", {u"Mana Bind"_s, u"Mana Blnk"_s}, u"Mana Blnd"_s, {}},
        {"nearer by the margin", {u"Mana Bind"_s, u"Mana Buxd"_s}, u"Mana Bjnd"_s, Settled{u"Mana Bind"_s, 0.5}},
        {"the rival is longer", {u"Whirlwind"_s, u"Whirlwinds"_s}, u"Whjrlwind"_s, Settled{u"Whirlwind"_s, 0.5}},
        {"the rival is shorter", {u"Whirlwind"_s, u"Whirlwin"_s}, u"Whjrlwind"_s, {}},
        {"a name missing from the list is not another", {u"Frostbolt"_s, u"Ice Barrier"_s}, u"Fireball"_s, {}},
        {"Chinese, exact", {u"火球术"_s, u"炎枪术"_s}, u"火球术 "_s, Settled{u"火球术"_s, 0}},
        {"Chinese, one of six misread", {u"考达拉的幼龙"_s}, u"考达拉的纺龙"_s, Settled{u"考达拉的幼龙"_s, 1}},
        {"Chinese, one of three", {u"护魂者"_s}, u"护玩者"_s, Settled{u"护魂者"_s, 1}},
        {"Chinese, one of two is too many", {u"嗜血"_s}, u"嗜皿"_s, {}},
        {"Chinese, two of five are", {u"卑劣窃蛋者"_s}, u"四劣镭蛋者"_s, {}},
        {"Chinese, two names as near", {u"护魂者"_s, u"护卫者"_s}, u"护玩者"_s, {}},
        {"Latin names are not asked for a Chinese line", {u"Fireball"_s}, u"火ireball"_s, {}},
        {"one ideograph among letters is Chinese", {u"Fireball"_s}, u"Fireb火ll"_s, {}},
        {"Latin letters for a Chinese name", {u"火球术abcdefghijklmnopqr"_s}, u"abcdefghijklmnopqr"_s, {}},
        {"a number is no name", {u"4"_s, u"1 2"_s}, u"4"_s, {}},
        {"nor is an unnamed entry", {u""_s, u"!"_s}, u"?"_s, {}},
        {"a name of signs that normalising leaves", {u"--"_s}, u"--"_s, Settled{u"--"_s, 0}},
        {"other signs are not it", {u"--"_s}, u"~~"_s, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(cardLexicon(row.names).settle(row.line), row.expected);
    }
}

TEST(Lexicon, ClassesMayBeFartherAway) {
    const Lexicon classes(known({u"Mage"_s, u"Warrior"_s, u"Warlock"_s, u"Demon Hunter"_s, u"Hunter"_s}),
                          Lexicon::forClasses);
    EXPECT_EQ(classes.settle(u"Maqe"_s), (Settled{u"Mage"_s, 0.5}));
    EXPECT_EQ(classes.settle(u"Waxrxor"_s), (Settled{u"Warrior"_s, 2}));
    EXPECT_EQ(classes.settle(u"DEMON HUNXER"_s), (Settled{u"Demon Hunter"_s, 1}));
    EXPECT_EQ(classes.settle(u"War"_s), std::nullopt);
    EXPECT_EQ(cardLexicon({u"Warrior"_s}).settle(u"Waxrxor"_s), std::nullopt);
}

TEST(Lexicon, KindsThatFitGoFirst) {
    using enum NameKind;

    struct Case {
        const char* why;
        std::vector<KnownName> names;
        QString line;
        NameKinds fitting;
        std::optional<Settled> expected;
    };

    const Case cases[] = {
        {"without a kind asked for, a tie",
         {{u"Mana Bind"_s, spell}, {u"Mana Bond"_s, minion}},
         u"Mana Bxnd"_s,
         {},
         {}},
        {"the one that fits",
         {{u"Mana Bind"_s, spell}, {u"Mana Bond"_s, minion}},
         u"Mana Bxnd"_s,
         minion,
         Settled{u"Mana Bond"_s, 1}},
        {"either fits", {{u"Mana Bind"_s, spell}, {u"Mana Bond"_s, minion}}, u"Mana Bxnd"_s, minion | spell, {}},
        {"a misfit on its own, one character farther away",
         {{u"Spellslinging"_s, spell}},
         u"Spexlslinging"_s,
         minion,
         Settled{u"Spellslinging"_s, 2}},
        {"and so too far", {{u"Fireball"_s, spell}}, u"Fjreball"_s, weapon | hero, {}},
        {"read exactly, it is not farther",
         {{u"Fireball"_s, spell}},
         u"FIREBALL"_s,
         location,
         Settled{u"Fireball"_s, 0}},
        {"nor read exactly but for accents",
         {{u"Caf\u00E9"_s, spell}},
         u"cafe"_s,
         location,
         Settled{u"Caf\u00E9"_s, 0}},
        {"unknown kinds fit all", {{u"Mana Bind"_s, {}}, {u"Mana Bond"_s, minion}}, u"Mana Bxnd"_s, minion, {}},
        {"one of several kinds is enough",
         {{u"Mana Bind"_s, spell | weapon}, {u"Mana Bond"_s, minion}},
         u"Mana Bxnd"_s,
         weapon,
         Settled{u"Mana Bind"_s, 1}},
        {"kinds of the same name are joined",
         {{u"Mana Bind"_s, spell}, {u"Mana Bind"_s, weapon}, {u"Mana Bond"_s, minion}},
         u"Mana Bxnd"_s,
         weapon,
         Settled{u"Mana Bind"_s, 1}},
        {"one of an unknown kind may be any",
         {{u"Fireball"_s, spell}, {u"Fireball"_s, {}}},
         u"Fjreball"_s,
         minion,
         Settled{u"Fireball"_s, 0.5}},
        {"the nearest may be a misfit",
         {{u"Mana Bind"_s, spell}, {u"Mana Bxxx"_s, minion}},
         u"Mana Bihd"_s,
         minion,
         {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Lexicon(row.names, Lexicon::forCards).settle(row.line, row.fitting), row.expected);
    }
}

TEST(Lexicon, ContainsNamesButForCaseSpaceAndPunctuation) {
    const Lexicon lexicon = cardLexicon({u"C'Thun"_s, u"火球术"_s, u"Caf\u00E9"_s, u"4"_s, u""_s});

    struct Case {
        const char* why;
        QString line;
        bool contained;
    };

    const Case cases[] = {
        {"as it is", u"C'Thun"_s, true},
        {"decorated", u" (CTHUN) 10"_s, true},
        {"Chinese", u"火球术！"_s, true},
        {"decomposed", u"Cafe\u0301"_s, true},
        {"accents count", u"Cafe"_s, false},
        {"part of a name", u"Thun"_s, false},
        {"near", u"C'Thum"_s, false},
        {"a number, though there is an entry of this number", u"4"_s, false},
        {"nothing, though there is an unnamed entry", u""_s, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(lexicon.contains(row.line), row.contained);
    }
}

TEST(Lexicon, WithoutNamesAnswersNothing) {
    for (const Lexicon& lexicon : {Lexicon(), cardLexicon({}), cardLexicon({u""_s, u"12"_s, u"?!"_s})}) {
        EXPECT_TRUE(lexicon.isEmpty());
        for (const QString& line : {u""_s, u"12"_s, u"Fireball"_s, u"火球术"_s}) {
            EXPECT_FALSE(lexicon.contains(line));
            EXPECT_EQ(lexicon.settle(line), std::nullopt);
            EXPECT_EQ(lexicon.resemblance(line), 0);
        }
    }
    EXPECT_FALSE(cardLexicon({u""_s, u"X"_s}).isEmpty());
}

TEST(Lexicon, ResemblanceIsThatOfTheNearestName) {
    const QStringList names{u"Fireball"_s, u"火球术"_s, u"Flame Lance"_s, u""_s};
    const Lexicon lexicon = cardLexicon(names);
    EXPECT_EQ(lexicon.resemblance(u"FIRE BALL"_s), 1);
    EXPECT_EQ(lexicon.resemblance(u"火球"_s), 0.8);
    EXPECT_EQ(lexicon.resemblance(u"qqq"_s), 0);
    EXPECT_EQ(lexicon.resemblance(u"12"_s), 0);
    EXPECT_EQ(lexicon.resemblance(u"Fxrxbaxl"_s), 2 * 5 / 16.0);
}

TEST(Lexicon, ResemblanceAgreesWithTheUsualTable) {
    std::mt19937 random(31);
    const auto anyText = [&random](unsigned longest) {
        const QString alphabet = u"abcde火球术"_s;
        QString text;
        for (auto left = random() % (longest + 1); left > 0; --left) {
            text += alphabet[static_cast<qsizetype>(random() % static_cast<unsigned>(alphabet.size()))];
        }
        return text;
    };
    for (int i = 0; i < 600; ++i) {
        QStringList names;
        for (int count = 0; count < 6; ++count) {
            names += anyText(i % 10 == 0 ? 200 : 12);
        }
        // Around and beyond the bits of one word too.
        const QString line = anyText(i % 5 == 0 ? 200 : i % 5 == 1 ? 66 : 12);
        ASSERT_EQ(cardLexicon(names).resemblance(line), reference::resemblance(line, names)) << line.toStdString();
    }
}

// Readings as the recogniser might give them: mostly near the text.
QString perturbed(const QString& text, std::mt19937& random) {
    const QString letters = u"aeiounrmtlcdvwhs1- é"_s;
    const auto anyLetter = [&] {
        return letters[static_cast<qsizetype>(random() % static_cast<unsigned>(letters.size()))];
    };
    const QStringList confused{u"il"_s, u"tf"_s, u"ec"_s, u"oe"_s, u"hb"_s, u"nu"_s, u"rt"_s, u"as"_s, u"l1"_s};
    QString result = random() % 8 == 0 ? text.left(text.size() - 1 - static_cast<qsizetype>(random() % 6)) : text;
    for (auto changes = random() % 5; changes > 0; --changes) {
        const auto at = static_cast<qsizetype>(random() % static_cast<unsigned>(result.size() + 1));
        switch (random() % 6) {
        case 0:
            result.insert(at, anyLetter());
            break;
        case 1:
            result.remove(at, 1);
            break;
        case 2:
            if (at < result.size()) {
                result[at] = anyLetter();
            }
            break;
        case 3:
            result.replace(u"m"_s, u"rn"_s);
            break;
        case 4:
            result = random() % 2 == 0 ? result + anyLetter() : anyLetter() + result;
            break;
        default:
            const QString& pair = confused[static_cast<qsizetype>(random() % static_cast<unsigned>(confused.size()))];
            const auto anyOfBoth = [&] { return random() % 2 == 0 ? pair[0] : pair[1]; };
            result.replace(anyOfBoth(), anyOfBoth());
        }
    }
    return result;
}

void expectAgreementOnPerturbedNames(const std::vector<KnownName>& names, const Lexicon::Tolerance& tolerance,
                                     int readings, std::mt19937& random, std::map<bool, int>& seen) {
    const Lexicon lexicon(names, tolerance);
    const reference::PlainLexicon plain(names, tolerance);
    for (int i = 0; i < readings; ++i) {
        const QString line = perturbed(names[random() % names.size()].text, random);
        const auto fitting = random() % 2 == 0 ? NameKinds{} : NameKinds(static_cast<NameKind>(1U << random() % 5));
        const auto settled = lexicon.settle(line, fitting);
        ASSERT_EQ(settled, plain.settle(line, fitting)) << line.toStdString();
        ++seen[settled.has_value() && settled->distance > 0];
    }
}

TEST(Lexicon, AgreesWithLookingAtEveryName) {
    std::mt19937 random(41);
    std::map<bool, int> seen;
    const QString letters = u"rnmiucldvwhtfae1-é"_s;
    const auto anyName = [&](unsigned longest) {
        QString text;
        for (auto left = random() % (longest + 1); left > 0; --left) {
            text += letters[static_cast<qsizetype>(random() % static_cast<unsigned>(letters.size()))];
        }
        return text;
    };
    const Lexicon::Tolerance tolerances[] = {Lexicon::forCards, Lexicon::forClasses, {0.5, 0.5},
                                             {1, 2.5},          {0.25, 0.3},         {2, 100}};
    for (int i = 0; i < 300; ++i) {
        std::vector<KnownName> names;
        const QString stem = anyName(10);
        for (auto count = random() % 12 + 1; count > 0; --count) {
            const NameKinds kinds = random() % 3 == 0 ? NameKinds{} : NameKinds::fromInt(random() % 32);
            names.push_back({random() % 2 == 0 ? anyName(20) : perturbed(stem, random), kinds});
        }
        ASSERT_NO_FATAL_FAILURE(expectAgreementOnPerturbedNames(names, tolerances[i % 6], 20, random, seen));
    }
    EXPECT_GT(seen[true], 500);
    EXPECT_GT(seen[false], 500);
}

NameKinds kindsOf(const QString& type) {
    return type == u"MINION"_s ? NameKind::minion : type == u"SPELL"_s ? NameKind::spell : NameKinds{};
}

// The names of a file of cards, as the shared data or the sample data have them; none where it is missing.
std::vector<KnownName> namesIn(const QString& path) {
    QFile file(path);
    std::vector<KnownName> names;
    if (!file.open(QFile::ReadOnly)) {
        return names;
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    QJsonArray rows = document.array();
    for (const QString& list : {u"cards"_s, u"classes"_s}) {
        for (const QJsonValue row : document.object()[list].toArray()) {
            rows.append(row);
        }
    }
    for (const QJsonValue row : std::as_const(rows)) {
        for (const QString& name : {row[u"name_zh"_s].toString(), row[u"name_en"_s].toString()}) {
            if (!name.isEmpty()) {
                names.push_back({name, kindsOf(row[u"type"_s].toString())});
            }
        }
    }
    return names;
}

// Whatever else is in the list: who reads exactly gets what was read.
void expectExactReadingsToSettle(const std::vector<KnownName>& names) {
    const Lexicon lexicon(names, Lexicon::forCards);
    std::mt19937 random(43);
    for (const KnownName& name : names) {
        const QString normalized = NameMatching::normalize(name.text);
        if (normalized.isEmpty()) {
            continue;
        }
        for (const QString& line : {name.text, name.text.toUpper(), normalized, u" "_s + name.text + u"!"_s}) {
            for (const NameKinds fitting : {NameKinds{}, NameKinds(NameKind::location)}) {
                const auto settled = lexicon.settle(line, fitting);
                ASSERT_TRUE(settled.has_value()) << line.toStdString();
                ASSERT_EQ(NameMatching::normalize(settled->text), normalized) << line.toStdString();
                ASSERT_EQ(settled->distance, 0) << line.toStdString();
            }
        }
        ASSERT_TRUE(lexicon.contains(name.text)) << name.text.toStdString();
        ASSERT_EQ(lexicon.resemblance(name.text), 1) << name.text.toStdString();
    }
}

TEST(Lexicon, SettlesEverySampleNameReadExactly) {
    for (const QString& file : {u"all_classes_LAST_7_DAYS"_s, u"class_winrates"_s}) {
        const auto names = namesIn(QStringLiteral(PELLORAN_RESOURCES "/winrates/%1.json").arg(file));
        ASSERT_GT(names.size(), 10U) << file.toStdString();
        ASSERT_NO_FATAL_FAILURE(expectExactReadingsToSettle(names));
    }
}

TEST(Lexicon, SettlesEveryNameOfTheGameReadExactly) {
    SKIP_WITHOUT_SHARED_DATA("cards.json");
    const auto names = namesIn(testing::sharedData(u"cards.json"_s));
    ASSERT_GT(names.size(), 10000U);
    ASSERT_NO_FATAL_FAILURE(expectExactReadingsToSettle(names));
}

TEST(Lexicon, AgreesWithLookingAtEveryNameOfTheGame) {
    SKIP_WITHOUT_SHARED_DATA("cards.json");
    auto names = namesIn(testing::sharedData(u"cards.json"_s));
    std::erase_if(names, [](const KnownName& name) {
        return name.text.front() >= QChar(0x4E00); // their readings are settled without looking at others
    });
    std::mt19937 random(47);
    std::map<bool, int> seen;
    ASSERT_NO_FATAL_FAILURE(expectAgreementOnPerturbedNames(names, Lexicon::forCards, 120, random, seen));
    EXPECT_GT(seen[true], 20);
    EXPECT_GT(seen[false], 20);
}

TEST(Lexicon, LongLinesAndManyNamesAreNoTrouble) {
    std::mt19937 random(53);
    std::vector<KnownName> names;
    for (int i = 0; i < 100'000; ++i) {
        QString text;
        for (auto left = 5 + random() % 15; left > 0; --left) {
            text += QChar(u'a' + static_cast<char16_t>(random() % 26));
        }
        names.push_back({text, {}});
    }
    const Lexicon lexicon(names, Lexicon::forCards);
    EXPECT_EQ(lexicon.settle(names[777].text), (Settled{names[777].text, 0}));
    EXPECT_EQ(lexicon.settle(QString(10'000, u'e')), std::nullopt);
    EXPECT_EQ(lexicon.settle(names[777].text + QString(10'000, u'-') + u"e"_s + names[778].text), std::nullopt);
    EXPECT_LT(lexicon.resemblance(QString(10'000, u'e')), 0.01);

    const QString longName = QString(5'000, u'r') + u"n"_s + QString(5'000, u'a');
    const Lexicon few({{longName, {}}, {u"X"_s, {}}}, Lexicon::forCards);
    EXPECT_EQ(few.settle(QString(longName).replace(u"rn"_s, u"rnx"_s)), (Settled{longName, 1}));

    // Looking back from each of its characters at all before it would take a minute.
    QString endless;
    for (int i = 0; i < 400'000; ++i) {
        endless += QChar(0x4E00 + i % 20'000 * 7919 % 20'000);
    }
    const Lexicon hostile({{endless, {}}, {u"X"_s, {}}}, Lexicon::forCards);
    EXPECT_EQ(hostile.settle(u"王"_s), std::nullopt);
    EXPECT_EQ(hostile.settle(endless.chopped(1)), (Settled{endless, 1}));
}

TEST(Lexicon, IsAskedFromSeveralThreads) {
    const Lexicon lexicon = cardLexicon({u"Fireball"_s, u"Frostbolt"_s});
    const Lexicon copy = lexicon; // NOLINT(performance-unnecessary-copy-initialization): asked beside it
    std::vector<std::optional<Settled>> answers(8);
    std::vector<std::jthread> threads;
    threads.reserve(answers.size());
    for (std::size_t i = 0; i < answers.size(); ++i) {
        threads.emplace_back([&, i] { answers[i] = (i % 2 == 0 ? lexicon : copy).settle(u"Fjreball"_s); });
    }
    threads.clear();
    EXPECT_EQ(std::ranges::count(answers, std::optional(Settled{u"Fireball"_s, 0.5})), 8);
}

} // namespace

} // namespace pelloran
