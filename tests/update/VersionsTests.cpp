#include "update/Versions.h"

#include "tests/support/Printing.h"

#include <QStringList>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

constexpr qint64 greatest = std::numeric_limits<qint64>::max();

TEST(Versions, AreTheNumbersBetweenTheDots) {
    struct Case {
        const char* why;
        QString version;
        std::vector<qint64> parts;
    };

    const Case cases[] = {
        {"the usual", u"1.4.2"_s, {1, 4, 2}},
        {"one number", u"7"_s, {7}},
        {"nothing", u""_s, {}},
        {"dots only", u"..."_s, {}},
        {"empty pieces are dropped", u"1..2"_s, {1, 2}},
        {"at the ends as well", u".1.2."_s, {1, 2}},
        {"an appendix of a piece is cut", u"1.2.3-beta"_s, {1, 2, 3}},
        {"directly after the number", u"1.2rc1"_s, {1, 2}},
        {"with a dot of its own", u"1.2.3-beta.4"_s, {1, 2, 3, 4}},
        {"a letter first leaves no number", u"v2.0"_s, {0, 0}},
        {"words", u"one.two"_s, {0, 0}},
        {"leading zeros", u"007.08"_s, {7, 8}},
        {"more zeros than a number has digits", u"000000000000000000000000000000000001"_s, {1}},
        {"space before the number", u" 1. 2"_s, {0, 0}},
        {"space after it", u"1 .2 "_s, {1, 2}},
        {"signs are no numerals", u"-1.+2"_s, {0, 0}},
        {"a comma ends the number", u"1,5.2"_s, {1, 2}},
        {"hexadecimal is 0 and letters", u"0x10"_s, {0}},
        {"an exponent is an appendix", u"1e3"_s, {1}},
        {"the greatest number", u"9223372036854775807"_s, {greatest}},
        {"one more", u"9223372036854775808.1"_s, {0, 1}},
        {"far more", u"99999999999999999999999999"_s, {0}},
        {"other digits", u"١.٢"_s, {0, 0}},
        {"wide digits", u"１.2"_s, {0, 2}},
        {"another digit within the run spoils it", u"1٢.3"_s, {0, 3}},
        {"a power is a numeral", u"2².1"_s, {0, 1}},
        {"so is a fraction", u"½"_s, {0}},
        {"and a Roman number", u"1Ⅳ"_s, {0}},
        {"a numeral of two code units", u"1𝟏.5"_s, {0, 5}},
        {"a Chinese number is a letter", u"1二.3"_s, {1, 3}},
        {"half a character ends the run", u"1"_s + QChar(0xd835) + u".2"_s, {1, 2}},
        {"a picture ends the run", u"3😀.1"_s, {3, 1}},
        {"a zero character ends the run", u"4"_s + QChar(0) + u"5"_s, {4}},
        {"the full-width stop is no dot", u"1．2"_s, {1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(parseVersionParts(c.version), c.parts);
    }
}

TEST(Versions, AreComparedPartByPart) {
    using Order = std::weak_ordering;

    struct Case {
        const char* why;
        QString a;
        QString b;
        Order order;
    };

    const Case cases[] = {
        {"themselves", u"1.4.2"_s, u"1.4.2"_s, Order::equivalent},
        {"a missing part is 0", u"1.2"_s, u"1.2.0"_s, Order::equivalent},
        {"several are", u"1"_s, u"1.0.0.0"_s, Order::equivalent},
        {"as numbers, not as text", u"1.9"_s, u"1.10"_s, Order::less},
        {"the first difference decides", u"2.0.0"_s, u"1.9.9"_s, Order::greater},
        {"a longer one is newer", u"1.2"_s, u"1.2.0.1"_s, Order::less},
        {"two without parts", u""_s, u"."_s, Order::equivalent},
        {"without parts is 0", u""_s, u"0"_s, Order::equivalent},
        {"without parts is old", u""_s, u"0.0.1"_s, Order::less},
        {"an appendix is not looked at", u"1.2.3-beta"_s, u"1.2.3"_s, Order::equivalent},
        {"what is no number is 0", u"v2.0"_s, u"0.1"_s, Order::less},
        {"beyond 64 bits is 0", u"9223372036854775808"_s, u"1"_s, Order::less},
        {"64 bits are a number", u"9223372036854775807"_s, u"1"_s, Order::greater},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_TRUE(compareVersions(c.a, c.b) == c.order);
        EXPECT_TRUE(compareVersions(c.b, c.a) == (0 <=> c.order));
    }
}

// The same once more, written down as plainly as it can be said: by hand, over code points, with text for numbers.
std::vector<QString> plainParts(const QString& version) {
    std::vector<QString> parts;
    std::u32string piece;
    const auto finishPiece = [&] {
        if (piece.empty()) {
            return;
        }
        QString digits;
        for (const char32_t c : piece) {
            const QChar::Category category = QChar::category(c);
            if (category != QChar::Number_DecimalDigit && category != QChar::Number_Letter &&
                category != QChar::Number_Other) {
                break;
            }
            digits += c >= U'0' && c <= U'9' ? QChar(static_cast<char16_t>(c)) : QChar(u'?');
        }
        while (digits.startsWith(u'0')) {
            digits.remove(0, 1);
        }
        const QString limit = u"9223372036854775807"_s;
        const bool tooLarge = digits.size() > limit.size() || (digits.size() == limit.size() && digits > limit);
        parts.push_back(digits.contains(u'?') || tooLarge ? QString() : digits);
        piece.clear();
    };
    for (const char32_t c : version.toStdU32String()) {
        if (c == U'.') {
            finishPiece();
        } else {
            piece += c;
        }
    }
    finishPiece();
    return parts;
}

// -1, 0 or 1. Numbers are texts without leading zeros: the longer is the greater.
int plainComparison(const QString& a, const QString& b) {
    const std::vector<QString> left = plainParts(a);
    const std::vector<QString> right = plainParts(b);
    for (std::size_t i = 0; i < left.size() || i < right.size(); ++i) {
        const QString l = i < left.size() ? left[i] : QString();
        const QString r = i < right.size() ? right[i] : QString();
        if (l.size() != r.size()) {
            return l.size() < r.size() ? -1 : 1;
        }
        if (l != r) {
            return l < r ? -1 : 1;
        }
    }
    return 0;
}

int sign(std::weak_ordering order) {
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

class RandomVersions {
public:
    QString next() {
        static const QStringList pieces{u"."_s, u"."_s,  u"."_s, u"0"_s, u"1"_s, u"9"_s, u"10"_s,
                                        u"-"_s, u"rc"_s, u" "_s, u"²"_s, u"٣"_s, u"𝟏"_s, u"9223372036854775807"_s,
                                        u"8"_s, u"😀"_s, u"1"_s, u"2"_s, u"0"_s};
        QString version;
        for (int length = below(9); length > 0; --length) {
            version += pieces[below(static_cast<int>(pieces.size()))];
        }
        return version;
    }

private:
    int below(int limit) { return static_cast<int>(engine() % static_cast<unsigned>(limit)); }

    std::mt19937 engine{20240611};
};

TEST(Versions, AgreeWithAPlainWritingOfTheSameRule) {
    RandomVersions random;
    int seen[3] = {};
    for (int round = 0; round < 20'000; ++round) {
        const QString a = random.next();
        const QString b = random.next();
        SCOPED_TRACE((a + u" and "_s + b).toStdString());
        QStringList parts;
        for (const qint64 part : parseVersionParts(a)) {
            parts += part == 0 ? QString() : QString::number(part);
        }
        const std::vector<QString> plain = plainParts(a);
        ASSERT_EQ(parts, QStringList(plain.begin(), plain.end()));
        const int order = sign(compareVersions(a, b));
        ASSERT_EQ(order, plainComparison(a, b));
        ++seen[order + 1];
    }
    EXPECT_THAT(seen, ::testing::Each(::testing::Gt(1000))) << "the versions drawn must try all answers";
}

TEST(Versions, AreInOneOrder) {
    RandomVersions random;
    for (int round = 0; round < 5'000; ++round) {
        QString versions[] = {random.next(), random.next(), random.next()};
        std::ranges::sort(versions, [](const QString& a, const QString& b) { return compareVersions(a, b) < 0; });
        const auto& [a, b, c] = versions;
        SCOPED_TRACE((a + u" and "_s + b + u" and "_s + c).toStdString());
        ASSERT_TRUE(compareVersions(a, c) <= 0);
        ASSERT_TRUE(compareVersions(a, b) == (0 <=> compareVersions(b, a)));
        ASSERT_TRUE(compareVersions(a, a) == 0);
        ASSERT_TRUE(compareVersions(a, a + u".0"_s) == 0);
        ASSERT_TRUE(compareVersions(a, a + u".1"_s) < 0);
    }
}

} // namespace

} // namespace pelloran
