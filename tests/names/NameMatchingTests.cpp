#include "names/NameMatching.h"

#include "tests/names/NameMatchingReference.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(Normalize, KeepsWhatTellsNamesApart) {
    struct Case {
        const char* why;
        QString text;
        QString expected;
    };

    const Case cases[] = {
        {"cost in brackets", u"Fireball (4)"_s, u"fireball"_s},
        {"crystal of four read as a circled digit, full stop", u"④火球术。"_s, u"火球术"_s},
        {"other circled digits are not ignored", u"③火球术⑤"_s, u"③火球术⑤"_s},
        {"every ignored character", u"a ·・'\"“”‘’!?？，。、：:（）()[]{}！．.0123456789④b"_s, u"ab"_s},
        {"white space beyond ASCII", u"a\u00A0\u0085\u1680\u2003\u2028\u2029\u202F\u205F\u3000\t\r\nb"_s, u"ab"_s},
        {"zero-width characters are no white space", u"a\u200Bb\uFEFFc"_s, u"a\u200Bb\uFEFFc"_s},
        {"ASCII comma, hyphen and semicolon stay", u"a,b-c;d"_s, u"a,b-c;d"_s},
        {"full-width digits stay", u"火球１２"_s, u"火球１２"_s},
        {"full-width capitals have a lower case", u"ＡＺ"_s, u"ａｚ"_s},
        {"Latin-1 capitals", u"ÀÉÞ×÷ß"_s, u"àéþ×÷ß"_s},
        {"capitals beyond Latin-1", u"ŁŸΔЖ"_s, u"łÿδж"_s},
        {"decomposed letters are composed", u"E\u0301lan"_s, u"élan"_s},
        {"a capital whose lower case is longer", u"İ"_s, u"i\u0307"_s},
        {"no composing after deletion", u"e.\u0301"_s, u"e\u0301"_s},
        {"compatibility ideographs are composed to unified ones", u"\uF900"_s, u"\u8C48"_s},
        {"capitals beyond the BMP", u"\U00010400"_s, u"\U00010428"_s},
        {"nothing", u""_s, u""_s},
        {"nothing that counts", u"12 / (30)!"_s, u"/"_s},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(NameMatching::normalize(row.text), row.expected);
    }
}

TEST(Normalize, AgreesWithTheReferenceOnEveryCodePoint) {
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (QChar::isSurrogate(codePoint) || codePoint == 0x180E) { // taken for white space by PCRE
            continue;
        }
        const QString text = u"A"_s + QString::fromUcs4(&codePoint, 1);
        // Without reporting each of a million expectations.
        if (NameMatching::normalize(text) != reference::normalize(text)) {
            ADD_FAILURE() << "U+" << std::hex << static_cast<unsigned>(codePoint);
        }
        if (codePoint == 0x323AF) {
            codePoint = 0xE0000; // nothing is assigned between
        }
    }
}

TEST(IsPlausibleName, WantsAChineseCharacterOrThreeLowercaseLetters) {
    struct Case {
        const char* why;
        QString text;
        bool expected;
    };

    const Case cases[] = {
        {"numbers and symbols only", u"12 / 30"_s, false},
        {"two letters", u"ab1"_s, false},
        {"three letters", u"abc"_s, true},
        {"capitals count once lowered", u"ABC"_s, true},
        {"one Chinese character", u"法"_s, true},
        {"first and last of the range", u"\u4E00\u9FFF"_s, true},
        {"Chinese characters of other blocks do not count", u"\u3400\U00020000"_s, false},
        {"a compatibility ideograph composes to a unified one", u"\uF900"_s, true},
        {"kana are letters, but no lowercase ones", u"カード"_s, false},
        {"Greek and Cyrillic letters count", u"ΔЖω"_s, true},
        {"lowercase letters beyond the BMP count as one each", u"\U00010428\U00010429"_s, false},
        {"and three of them do", u"\U00010428\U00010429\U0001042A"_s, true},
        {"circled letters are words, but no lowercase letters", u"ⓐⓑⓒⓓ"_s, false},
        {"digits between letters", u"a1b2c3"_s, true},
        {"white space around", u" \u3000法\n"_s, true},
        {"nothing", u""_s, false},
        {"white space only", u" \t\u3000\n"_s, false},
        {"digits of other scripts", u"٣٤٥"_s, false},
        {"symbols", u"★☆※"_s, false},
        {"a lone half of a surrogate pair", QString(QChar(0xD800)), false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(NameMatching::isPlausibleName(row.text), row.expected);
        EXPECT_EQ(reference::isPlausibleName(row.text), row.expected);
    }
}

TEST(LcsLength, CountsCharactersInCommonOrder) {
    struct Case {
        const char* why;
        QString a;
        QString b;
        std::size_t expected;
    };

    const Case cases[] = {
        {"nothing and something", u""_s, u"abc"_s, 0},
        {"something and nothing", u"abc"_s, u""_s, 0},
        {"equal", u"abc"_s, u"abc"_s, 3},
        {"a subsequence, not a substring", u"axbxc"_s, u"abc"_s, 3},
        {"order counts", u"abc"_s, u"cba"_s, 1},
        {"repetitions count as often as they occur in both", u"aaab"_s, u"aab"_s, 3},
        {"Chinese", u"火焰球术"_s, u"火球术"_s, 3},
        {"composed and decomposed are one character", u"caf\u00E9"_s, u"cafe\u0301"_s, 4},
        {"a letter is not its accented form", u"e\u0301"_s, u"e"_s, 0},
        {"a family of emoji is one character", u"👨\u200D👩\u200D👧x"_s, u"👨\u200D👩\u200D👧"_s, 1},
        {"and not its members", u"👨\u200D👩\u200D👧"_s, u"👨👩👧"_s, 0},
        {"characters beyond the BMP are one each", u"\U00020000\U00020001"_s, u"\U00020001"_s, 1},
        {"different characters with one half in common", u"\U00020000"_s, u"\U00020001"_s, 0},
        {"a line break of two code points is one character", u"\r\n"_s, u"\n"_s, 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(NameMatching::lcsLength(row.a, row.b), row.expected);
        EXPECT_EQ(NameMatching::lcsLength(row.b, row.a), row.expected);
    }
}

TEST(ScoreName, FollowsTheFirstRuleThatApplies) {
    struct Case {
        const char* why;
        QString query;
        QString target;
        double expected;
    };

    const Case cases[] = {
        {"nothing read", u""_s, u"fireball"_s, 0},
        {"nothing left after normalising", u"(12)"_s, u"fireball"_s, 0},
        {"no name", u"fireball"_s, u""_s, 0},
        {"equal but for case", u"Fireball"_s, u"fireball"_s, 1},
        {"equal but for decomposition", u"Cafe\u0301"_s, u"caf\u00E9"_s, 1},
        {"part of the name", u"fire"_s, u"fireball"_s, 0.475},
        {"digit dropped, then part of the name", u"firebal1"_s, u"fireball"_s, 0.95 * 7 / 8},
        {"name within the line, although all of it is in common", u"xfireballx"_s, u"fireball"_s, 0.95 * 8 / 10},
        {"one letter misread", u"fireboll"_s, u"fireball"_s, 0.93125},
        {"whole name in order, with others between", u"fxireball"_s, u"fireball"_s, 0.8 + 0.15 * 1.0},
        {"exactly three quarters", u"abcx"_s, u"abcd"_s, 0.8 + 0.15 * 0.75},
        {"less than three quarters: share of characters", u"abxy"_s, u"abcd"_s, 0.65 * 2 / 4},
        {"order lost: share of characters", u"dcba"_s, u"abcd"_s, 0.65},
        {"share counts distinct characters of the name", u"xaxbx"_s, u"aabbcc"_s, 0.65 * 2 / 3},
        {"nothing in common", u"xyz"_s, u"abc"_s, 0},
        {"containment goes by whole characters", u"cafe"_s, u"cafe\u0301x"_s, 0.65 * 3 / 5},
        {"two characters in order are enough", u"火x球"_s, u"火球"_s, 0.8 + 0.15 * 1.0},
        {"the name is not normalised", u"FIREBALL"_s, u"FIREBALL"_s, 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(NameMatching::scoreName(row.query, row.target), row.expected);
    }
}

// Texts of few different characters, so that repetitions, near misses and containment abound.
QString randomText(std::mt19937& random, qsizetype longest) {
    static const QStringList pieces{u"a"_s,      u"b"_s,      u"C"_s, u"d"_s,      u"火"_s,         u"球"_s,
                                    u"术"_s,     u" "_s,      u"4"_s, u"e"_s,      u"\u0301"_s,     u"\u00E9"_s,
                                    u"\u200D"_s, u"👩"_s,     u"-"_s, u"\u1100"_s, u"\u1161"_s,     u"\u11A8"_s,
                                    u"\uAC01"_s, u"\u0130"_s, u"④"_s, u"\r\n"_s,   u"\U00010400"_s, u"\u0327"_s};
    // Plain letters only, half of the time.
    const qsizetype kinds = random() % 2 == 0 ? 7 : pieces.size();
    QString text;
    for (auto left = static_cast<qsizetype>(random() % static_cast<unsigned>(longest + 1)); left > 0; --left) {
        text += pieces[static_cast<qsizetype>(random() % static_cast<unsigned>(kinds))];
    }
    return text;
}

TEST(NameMatching, AgreesWithTheReferenceOnRandomTexts) {
    std::mt19937 random(20260411);
    for (int i = 0; i < 40'000; ++i) {
        const QString a = randomText(random, 9);
        const QString b = randomText(random, 9);
        SCOPED_TRACE((a + u" / "_s + b).toStdString());
        ASSERT_EQ(NameMatching::normalize(a), reference::normalize(a));
        ASSERT_EQ(NameMatching::isPlausibleName(a), reference::isPlausibleName(a));
        ASSERT_EQ(NameMatching::lcsLength(a, b), reference::lcsLength(a, b));
        const QString target = reference::normalize(b);
        ASSERT_EQ(std::bit_cast<quint64>(NameMatching::scoreName(a, target)),
                  std::bit_cast<quint64>(reference::scoreName(a, target)));
    }
}

TEST(CharacterTable, GivesCanonicallyEquivalentCharactersOneNumber) {
    CharacterTable table;
    const std::u32string composed = table.add(u"\u00E9x\u0327q\u0327");
    EXPECT_EQ(composed.size(), 3U);
    EXPECT_EQ(table.find(u"e\u0301x\u0327q\u0327"), composed);
    EXPECT_NE(composed[1], composed[2]);
    EXPECT_EQ(table.find(u"z\u0327"), std::u32string(1, CharacterTable::unknown));
}

} // namespace

} // namespace pelloran
