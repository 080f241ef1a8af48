#include "draft/logs/TextPatterns.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

TEST(TextPatterns, GiveTheGroupsOfEveryMatch) {
    const struct {
        const char* why;
        QString text;
        QString pattern;
        QStringList firstGroups;
        QList<QStringList> everyGroup;
    } rows[] = {
        {"no match", u"abc"_s, u"x(y)"_s, {}, {}},
        {"every match, in order", u"a1 a2 a1"_s, u"a(\\d)"_s, {u"1"_s, u"2"_s, u"1"_s}, {{u"1"_s}, {u"2"_s}, {u"1"_s}}},
        {"several groups", u"a=1 b=2"_s, u"(\\w)=(\\d)"_s, {u"a"_s, u"b"_s}, {{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}}},
        {"no groups at all", u"aa"_s, u"a"_s, {}, {{}, {}}},
        {"a first group that took no part", u"xy"_s, u"(x)|(y)"_s, {u"x"_s}, {{u"x"_s, u""_s}, {u""_s, u"y"_s}}},
        {"an empty group did take part", u"a"_s, u"a(b*)"_s, {u""_s}, {{u""_s}}},
        {"matches do not overlap", u"aaa"_s, u"(aa)"_s, {u"aa"_s}, {{u"aa"_s}}},
        {"case counts", u"A a"_s, u"(a)"_s, {u"a"_s}, {{u"a"_s}}},
        {"a pattern that does not compile", u"a("_s, u"a("_s, {}, {}},
        {"an empty text", u""_s, u"(a)"_s, {}, {}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(matches(row.text, row.pattern), row.firstGroups);
        EXPECT_EQ(allGroups(row.text, row.pattern), row.everyGroup);
        EXPECT_EQ(firstMatch(row.text, row.pattern),
                  row.everyGroup.isEmpty() ? std::nullopt : std::optional(row.everyGroup.first()));
    }
}

TEST(TextPatterns, KnowUnicodesDigitsBlanksAndLineEnds) {
    const struct {
        const char* why;
        QString text;
        QString pattern;
        QStringList expected;
    } rows[] = {
        {"Arabic digits", u"٣٤"_s, u"(\\d+)"_s, {u"٣٤"_s}},
        {"full-width digits", u"１２"_s, u"(\\d+)"_s, {u"１２"_s}},
        {"superscripts are no digits", u"²"_s, u"(\\d)"_s, {}},
        {"an ideographic space is a blank", u"选\u3000牌"_s, u"(\\S+)"_s, {u"选"_s, u"牌"_s}},
        {"so is a no-break space", u"a\u00a0b"_s, u"(\\S+)"_s, {u"a"_s, u"b"_s}},
        {"a character beyond the first plane is one", u"\U0001f600"_s, u"^(.)$"_s, {u"\U0001f600"_s}},
        {"a dot stops at LF", u"a\nb"_s, u"(.+)"_s, {u"a"_s, u"b"_s}},
        {"a dot stops at VT", u"a\vb"_s, u"(.+)"_s, {u"a"_s, u"b"_s}},
        {"a dot stops at FF", u"a\fb"_s, u"(.+)"_s, {u"a"_s, u"b"_s}},
        {"a dot stops at CR", u"a\rb"_s, u"(.+)"_s, {u"a"_s, u"b"_s}},
        {"a dot stops at NEL", u"a\u0085b"_s, u"(.+)"_s, {u"a"_s, u"b"_s}},
        {"a dot stops at LS", u"a\u2028b"_s, u"(.+)"_s, {u"a"_s, u"b"_s}},
        {"a dot stops at PS", u"a\u2029b"_s, u"(.+)"_s, {u"a"_s, u"b"_s}},
        {"a dot takes a tab", u"a\tb"_s, u"(.+)"_s, {u"a\tb"_s}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(matches(row.text, row.pattern), row.expected);
    }
}

} // namespace pelloran
