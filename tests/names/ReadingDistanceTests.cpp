#include "names/ReadingDistance.h"

#include "tests/names/ReadingDistanceReference.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

std::u16string_view view(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

TEST(ReadingDistance, FoldsToLettersAndDigits) {
    struct Case {
        const char* why;
        QString text;
        QString folded;
    };

    const Case cases[] = {
        {"nothing", u""_s, u""_s},
        {"case, white space and punctuation", u"Spell-Slinger's  Ward!"_s, u"spellslingersward"_s},
        {"digits stay", u"R2-D2 ④"_s, u"r2d2"_s},
        {"accents go", u"Caf\u00E9 Ragnar\u00F6s \u00C5"_s, u"caferagnarosa"_s},
        {"so do marks of their own", u"Cafe\u0301"_s, u"cafe"_s},
        {"a mark that lower case brings", u"\u0130ce"_s, u"ice"_s},
        {"all of ASCII that stays", u" !\"#$%&'()*+,-./0123456789:;<=>?@AMZ[\\]^_`amz{|}~\x7F"_s,
         u"0123456789amzamz"_s},
        {"ideographs and letters", u"Fire火-Ball 球"_s, u"fire火ball球"_s},
        {"the first and the last ideograph", u"\u4E00\u9FFF"_s, u"\u4E00\u9FFF"_s},
        {"ideographs stay", u"火球术！"_s, u"火球术"_s},
        {"letters of two units stay, signs of two units go", u"\U00020000\U0001F600"_s, u"\U00020000"_s},
        {"half a letter is none", u"a\xD840"_s, u"a"_s},
        {"only signs", u"--!?"_s, u""_s},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ReadingDistance::folded(row.text), row.folded);
    }
}

TEST(ReadingDistance, WeighsMistakes) {
    struct Case {
        const char* why;
        QString reading;
        QString name;
        ReadingDistance::Halves distance;
    };

    const Case cases[] = {
        {"the same", u"fireball"_s, u"fireball"_s, 0},
        {"another letter", u"firebaxl"_s, u"fireball"_s, 2},
        {"a confused one", u"fjreball"_s, u"fireball"_s, 1},
        {"confused the other way", u"flip"_s, u"flap"_s, 2},
        {"a letter too many inside", u"firexball"_s, u"fireball"_s, 2},
        {"junk before", u"xqfireball"_s, u"fireball"_s, 2},
        {"junk behind", u"fireballxx"_s, u"fireball"_s, 2},
        {"junk at both ends", u"xfireballx"_s, u"fireball"_s, 2},
        {"one letter not read inside", u"fireall"_s, u"fireball"_s, 2},
        {"nor at the ends", u"ireba"_s, u"fireball"_s, 6},
        {"rn for m", u"flarne"_s, u"flame"_s, 1},
        {"ii for u", u"biirn"_s, u"burn"_s, 1},
        {"cl for d", u"clraw"_s, u"draw"_s, 1},
        {"vv for w", u"dravv"_s, u"draw"_s, 1},
        {"in for m", u"flaine"_s, u"flame"_s, 1},
        {"ni for m", u"flanie"_s, u"flame"_s, 1},
        {"li for h", u"sliip"_s, u"ship"_s, 1},
        {"but not one for two", u"flame"_s, u"flarne"_s, 3},
        {"ideographs are not confused", u"火球"_s, u"大球"_s, 2},
        {"nothing read", u""_s, u"ice"_s, 6},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ReadingDistance::between(view(row.reading), view(row.name), 100), row.distance);
        EXPECT_EQ(ReadingDistance::between(view(row.reading), view(row.name), row.distance), row.distance);
        EXPECT_EQ(ReadingDistance::between(view(row.reading), view(row.name), row.distance - 1), std::nullopt);
        EXPECT_EQ(reference::readingDistance(row.reading, row.name) * 2, row.distance);
    }
}

TEST(ReadingDistance, TellsWhatIsAUsualMistake) {
    struct Case {
        const char* why;
        QString reading;
        QString name;
        bool likely;
    };

    const Case cases[] = {
        {"the same", u"fireball"_s, u"fireball"_s, true},
        {"nothing for nothing", u""_s, u""_s, true},
        {"nothing for a name", u""_s, u"fireball"_s, false},
        {"another letter", u"ancientoflore"_s, u"ancientofyore"_s, false},
        {"a confused one", u"swampdragonegy"_s, u"swampdragonegg"_s, true},
        {"many confused ones", u"fjrebatt"_s, u"fireball"_s, true},
        {"two for one", u"rnogor"_s, u"mogor"_s, true},
        {"junk before and after", u"xxfireballyy"_s, u"fireball"_s, true},
        {"a mark for a letter", u"Blackhow! Gunspire"_s, u"Blackhowl Gunspire"_s, true},
        {"junk within", u"firexball"_s, u"fireball"_s, false},
        {"a letter that was not read", u"firball"_s, u"fireball"_s, false},
        {"the end that was not read", u"fireba"_s, u"fireball"_s, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ReadingDistance::isLikely(row.reading, row.name), row.likely);
    }
}

TEST(ReadingDistance, AgreesWithTheReferenceWithinAnyLimit) {
    std::mt19937 random(23);
    const QString alphabet = u"rnmiucldvwhtfae1é球"_s; // so that every rule has its turn
    const auto anyText = [&](unsigned longest) {
        QString text;
        for (auto left = random() % (longest + 1); left > 0; --left) {
            text += alphabet[static_cast<qsizetype>(random() % static_cast<unsigned>(alphabet.size()))];
        }
        return text;
    };
    int within = 0;
    int beyond = 0;
    for (int i = 0; i < 40000; ++i) {
        const QString name = anyText(14);
        QString reading = random() % 2 == 0 ? anyText(16) : name;
        for (auto changes = random() % 4; changes > 0; --changes) {
            reading.replace(static_cast<qsizetype>(random() % static_cast<unsigned>(reading.size() + 1)), random() % 3,
                            anyText(2));
        }
        const auto expected = static_cast<int>(reference::readingDistance(reading, name) * 2);
        const auto limit = static_cast<int>(random() % 16);
        ASSERT_EQ(ReadingDistance::between(view(reading), view(name), limit),
                  expected <= limit ? std::optional(expected) : std::nullopt)
            << reading.toStdString() << " for " << name.toStdString() << " within " << limit;
        ASSERT_LE(ReadingDistance::leastOfLengths(view(reading).size(), view(name).size()), expected);
        (expected <= limit ? within : beyond)++;
    }
    EXPECT_GT(within, 5000);
    EXPECT_GT(beyond, 5000);
}

} // namespace

} // namespace pelloran
