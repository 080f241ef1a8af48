#include "names/CardNameIndex.h"

#include "tests/names/NameMatchingReference.h"
#include "tests/support/Printing.h"
#include "tests/support/SharedData.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

std::vector<QString> normalized(const QStringList& originals) {
    std::vector<QString> names;
    names.reserve(static_cast<std::size_t>(originals.size()));
    for (const QString& original : originals) {
        names.push_back(NameMatching::normalize(original));
    }
    return names;
}

TEST(CardNameIndex, FindsTheBestNameOfAllLines) {
    struct Case {
        const char* why;
        QStringList names;
        QStringList lines;
        std::optional<CardNameIndex::Hit> expected;
    };

    using Hit = CardNameIndex::Hit;
    const Case cases[] = {
        {"no names", {}, {u"Fireball"_s}, {}},
        {"no lines", {u"Fireball"_s}, {}, {}},
        {"exact", {u"Frostbolt"_s, u"Fireball"_s}, {u"Fireball"_s}, Hit{1, 1.0, 0}},
        {"one letter misread", {u"Frostbolt"_s, u"Fireball"_s}, {u"Fireboll"_s}, Hit{1, 0.93125, 0}},
        {"exact on a later line", {u"Frostbolt"_s, u"Fireball"_s}, {u"Fireboll"_s, u"Frostbolt"_s}, Hit{0, 1.0, 1}},
        {"two exact lines: the earlier",
         {u"Frostbolt"_s, u"Fireball"_s},
         {u"Fireball"_s, u"Frostbolt"_s},
         Hit{1, 1.0, 0}},
        {"two equal names: the earlier",
         {u"Frostbolt"_s, u"Fireball"_s, u"Fireball"_s},
         {u"Fireball"_s},
         Hit{1, 1.0, 0}},
        {"two names equally near: the earlier", {u"Firebull"_s, u"Fireball"_s}, {u"Fireboll"_s}, Hit{0, 0.93125, 0}},
        {"equally near at different lengths: the earlier although longer",
         {u"abcdefgh"_s, u"abcd"_s},
         {u"axbxcxdxefgh"_s},
         Hit{0, 0.8 + 0.15 * 1.0, 0}},
        {"equally near at different lengths: the earlier although shorter",
         {u"abcd"_s, u"abcdefgh"_s},
         {u"axbxcxdxefgh"_s},
         Hit{0, 0.8 + 0.15 * 1.0, 0}},
        {"a nearer name on a later line",
         {u"Frostbolt"_s, u"Fireball"_s},
         {u"Fireboll"_s, u"Frxstbolt"_s, u"Firebull"_s},
         Hit{0, 0.8 + 0.15 * (8.0 / 9), 1}},
        {"equally near on two lines: the earlier line although a later name",
         {u"abcdefgh"_s, u"stuvwxyz"_s},
         {u"stuvwxya"_s, u"abcdefgx"_s},
         Hit{1, 0.93125, 0}},
        {"part of a name below the threshold", {u"Fireball"_s}, {u"Fireba"_s}, {}},
        {"part of a name above it", {u"Fireball"_s}, {u"Firebal"_s}, Hit{0, 0.95 * 7 / 8, 0}},
        {"name within the line, below the threshold though all in order", {u"Fire"_s}, {u"Fireball"_s}, {}},
        {"name within the line, above it", {u"Fireball"_s}, {u"Fireballs"_s}, Hit{0, 0.95 * 8 / 9, 0}},
        {"a short name scattered over a long line",
         {u"法术"_s},
         {u"法力值消耗为一的术"_s},
         Hit{0, 0.8 + 0.15 * 1.0, 0}},
        {"same characters in another order never match", {u"abcdefgh"_s}, {u"hgfedcba"_s}, {}},
        {"an implausible line is passed over", {u"ab"_s}, {u"ab"_s}, {}},
        {"a line of 16 characters", {u"abcdefghijklmnop"_s}, {u"abcdefghijklmnop"_s}, Hit{0, 1.0, 0}},
        {"a line of 17 characters is passed over", {u"abcdefghijklmnopq"_s}, {u"abcdefghijklmnopq"_s}, {}},
        {"the limit goes by what is left after normalising",
         {u"abcdefgh"_s},
         {u"(12345) abcdefgh (67890)"_s},
         Hit{0, 1.0, 0}},
        {"the limit goes by characters",
         {u"x\u0327x\u0327x\u0327x\u0327x\u0327x\u0327x\u0327x\u0327x\u0327abc"_s},
         {u"x\u0327x\u0327x\u0327x\u0327x\u0327x\u0327x\u0327x\u0327x\u0327abc"_s},
         Hit{0, 1.0, 0}},
        {"a name of 21 characters with 16 of them read",
         {u"abcdefghijklmnopqrstu"_s},
         {u"abcdefghijklmnqs"_s},
         Hit{0, 0.8 + 0.15 * (16.0 / 21), 0}},
        {"a name of 22 is out of reach", {u"abcdefghijklmnopqrstuv"_s}, {u"abcdefghijklmnqs"_s}, {}},
        {"a name without characters never matches",
         {u"(12)"_s, u"Fireball"_s},
         {u"Fireball"_s, u"(12)"_s},
         Hit{1, 1.0, 0}},
        {"characters that no name has", {u"Fireball"_s}, {u"Fireb\u4E2Dll"_s}, Hit{0, 0.93125, 0}},
        {"decomposed letters", {u"\u00C9lise"_s}, {u"E\u0301lise"_s}, Hit{0, 1.0, 0}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto names = normalized(row.names);
        EXPECT_EQ(CardNameIndex(names).bestMatch(row.lines), row.expected);
        EXPECT_EQ(reference::matchName(names, row.lines), row.expected);
    }
}

TEST(CardNameIndex, TakesLongLinesThatAreExactWhereAsked) {
    struct Case {
        const char* why;
        QStringList names;
        QStringList lines;
        std::optional<CardNameIndex::Hit> expected;
    };

    using Hit = CardNameIndex::Hit;
    const QString seventeen = u"abcdefghijklmnopq"_s;
    const QString forty = u"abcdefghijklmnopqrstabcdefghijklmnopqrst"_s;
    const Case cases[] = {
        {"seventeen characters", {u"Fireball"_s, seventeen}, {seventeen}, Hit{1, 1.0, 0}},
        {"forty", {forty}, {forty}, Hit{0, 1.0, 0}},
        {"exact but for what normalising drops",
         {u"Arcanologist's Apprentice"_s},
         {u"ARCANOLOGISTS  APPRENTICE!"_s},
         Hit{0, 1.0, 0}},
        {"one letter misread", {seventeen}, {u"abcdefghijklmnopx"_s}, {}},
        {"a long line with a name in it", {u"abcdefghijklmnop"_s}, {seventeen}, {}},
        {"a long line that is part of a name", {forty}, {forty.chopped(1)}, {}},
        {"of equal names the first", {u"Fireball"_s, seventeen, seventeen.toUpper()}, {seventeen}, Hit{1, 1.0, 0}},
        {"of two exact lines the earlier, long or not",
         {u"Fireball"_s, seventeen},
         {seventeen, u"Fireball"_s},
         Hit{1, 1.0, 0}},
        {"the earlier is short", {u"Fireball"_s, seventeen}, {u"Fireball"_s, seventeen}, Hit{0, 1.0, 0}},
        {"exact beats nearly, before and after it",
         {u"Fireball"_s, seventeen},
         {u"Fireboll"_s, seventeen, u"Fireboll"_s},
         Hit{1, 1.0, 1}},
        {"shorter lines are as always", {u"Fireball"_s}, {u"Fireboll"_s}, Hit{0, 0.93125, 0}},
        {"shorter lines that are implausible too", {u"ab"_s}, {u"ab"_s}, {}},
        {"no name is of signs", {QString(20, u'-')}, {QString(20, u'-')}, {}},
        {"characters of several code points",
         {u"x\u0327abcdefghijklmnopqrs"_s},
         {u"X\u0327abcdefghijklmnopqrs"_s},
         Hit{0, 1.0, 0}},
        {"one that no name has", {u"x\u0327abcdefghijklmnopqrs"_s}, {u"q\u0327abcdefghijklmnopqrs"_s}, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto names = normalized(row.names);
        EXPECT_EQ(CardNameIndex(names).bestMatch(row.lines, NameLengths::limitedUnlessExact), row.expected);
        EXPECT_EQ(reference::matchName(names, row.lines, NameLengths::limitedUnlessExact), row.expected);
        QStringList shortLines = row.lines;
        shortLines.removeIf([](const QString& line) { return characterCount(NameMatching::normalize(line)) >= 17; });
        const auto limited = CardNameIndex(names).bestMatch(row.lines);
        EXPECT_EQ(limited.has_value(), CardNameIndex(names).bestMatch(shortLines).has_value())
            << "long lines are as if they were not there unless asked for";
    }
}

std::size_t below(std::mt19937& random, std::size_t bound) {
    return random() % bound;
}

const QString& anyOf(std::mt19937& random, const QStringList& texts) {
    return texts[static_cast<qsizetype>(below(random, static_cast<std::size_t>(texts.size())))];
}

QString randomText(std::mt19937& random, const QStringList& alphabet, std::size_t longest) {
    QString text;
    for (std::size_t left = 1 + below(random, longest); left > 0; --left) {
        text += anyOf(random, alphabet);
    }
    return text;
}

// What a reader makes of a name: characters lost, added, mistaken, swapped, cut off, and noise around.
QString misread(std::mt19937& random, QString name, const QStringList& alphabet) {
    const auto place = [&](qsizetype past) {
        return static_cast<qsizetype>(below(random, static_cast<std::size_t>(std::max<qsizetype>(past, 1))));
    };
    for (std::size_t slips = below(random, 6); slips > 0 && !name.isEmpty(); --slips) {
        switch (below(random, 7)) {
        case 0:
            name.remove(place(name.size()), 1);
            break;
        case 1:
            name.insert(place(name.size() + 1), anyOf(random, alphabet));
            break;
        case 2:
            name.replace(place(name.size()), 1, anyOf(random, alphabet));
            break;
        case 3: {
            const qsizetype at = place(name.size() - 1);
            name = name.left(at) + name.mid(at + 1, 1) + name.mid(at, 1) + name.mid(at + 2);
            break;
        }
        case 4:
            name = name.left(1 + place(name.size()));
            break;
        case 5:
            name = name.mid(place(name.size()));
            break;
        default:
            name = anyOf(random, {u"4 "_s, u"("_s, u"。"_s, u"- "_s, u""_s}) + name.toUpper() +
                   anyOf(random, {u"!"_s, u" 12"_s, u"，"_s});
        }
    }
    // Halves of surrogate pairs would stop the reference's regular expression.
    return QString::fromUtf8(name.toUtf8());
}

QStringList randomLines(std::mt19937& random, const QStringList& names, const QStringList& alphabet) {
    QStringList lines;
    for (std::size_t left = 1 + below(random, 3); left > 0; --left) {
        switch (below(random, 5)) {
        case 0:
            lines += randomText(random, alphabet, 18);
            break;
        case 1:
            lines += anyOf(random, names) + anyOf(random, names).left(static_cast<qsizetype>(below(random, 4)));
            break;
        default:
            lines += misread(random, anyOf(random, names), alphabet);
        }
    }
    return lines;
}

void expectEqualMatches(const CardNameIndex& index, reference::PreparedNames& plain, const QStringList& lines,
                        NameLengths lengths) {
    const auto expected = plain.matchName(lines, lengths);
    const auto actual = index.bestMatch(lines, lengths);
    SCOPED_TRACE(lines.join(u" | ").toStdString());
    ASSERT_EQ(actual.has_value(), expected.has_value());
    if (actual) {
        ASSERT_EQ(actual->entry, expected->entry);
        ASSERT_EQ(actual->line, expected->line);
        ASSERT_EQ(std::bit_cast<quint64>(actual->score), std::bit_cast<quint64>(expected->score));
    }
}

// Few letters make for many near misses, containments and ties; the odd ones for characters of several code points.
class CardNameIndexOn : public ::testing::TestWithParam<const char16_t*> {};

TEST_P(CardNameIndexOn, RandomNamesFindsWhatThePlainSearchFinds) {
    const QStringList alphabet = QString::fromUtf16(GetParam()).split(u' ');
    std::mt19937 random(7);
    int matches = 0;
    for (int round = 0; round < 50; ++round) {
        QStringList originals;
        for (int i = 0; i < 150; ++i) {
            originals += randomText(random, alphabet, round % 2 == 0 ? 8 : 23);
        }
        const auto names = normalized(originals);
        const CardNameIndex index(names);
        reference::PreparedNames plain(names);
        for (int i = 0; i < 150; ++i) {
            const QStringList lines = randomLines(random, originals, alphabet);
            expectEqualMatches(index, plain, lines,
                               i % 2 == 0 ? NameLengths::limited : NameLengths::limitedUnlessExact);
            if (HasFatalFailure()) {
                return;
            }
            matches += index.bestMatch(lines).has_value();
        }
    }
    // Both outcomes were compared many times.
    EXPECT_GT(matches, 1000);
    EXPECT_LT(matches, 7400);
}

INSTANTIATE_TEST_SUITE_P(Alphabets, CardNameIndexOn,
                         ::testing::Values(u"a b c d", u"a b c d e f g h i j k l m n o p q r s t u v w x y z",
                                           u"火 球 术 冰 霜 之 王 者 法 师 大 小",
                                           u"a e \u0301 \u00E9 火 球 \u0327 \u200D 👩 \u1100 \u1161 \uAC00 İ ß"));

TEST(CardNameIndex, FindsWhatThePlainSearchFindsAmongRealNames) {
    SKIP_WITHOUT_SHARED_DATA("cards.json");
    QFile file(testing::sharedData(u"cards.json"_s));
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    QStringList originals;
    for (const QJsonValue row : QJsonDocument::fromJson(file.readAll()).array()) {
        for (const QString& key : {u"name_zh"_s, u"name_en"_s}) {
            if (const QString name = row.toObject().value(key).toString(); !name.isEmpty()) {
                originals += name;
            }
        }
    }
    ASSERT_GT(originals.size(), 14'000);
    const auto names = normalized(originals);
    const CardNameIndex index(names);
    reference::PreparedNames plain(names);

    // The literal search is far too slow for more than a few of these.
    for (const QString& line : {u"Firebolt (4)"_s, u"火球木"_s}) {
        EXPECT_EQ(index.bestMatch({line}), reference::matchName(names, {line}));
    }
    std::mt19937 random(11);
    const QStringList letters = u"a b c d e f g h i l m n o r s t u 火 术 之 者 法 师 德 大 - '"_s.split(u' ');
    for (int i = 0; i < 1500; ++i) {
        expectEqualMatches(index, plain, randomLines(random, originals, letters),
                           i % 2 == 0 ? NameLengths::limited : NameLengths::limitedUnlessExact);
        if (HasFatalFailure()) {
            return;
        }
    }
}

} // namespace

} // namespace pelloran
