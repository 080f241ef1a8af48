#include "sync/ShortHash.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(ShortHash, TakesTheFirstCharacters) {
    struct Case {
        const char* why;
        QString hash;
        int count;
        QString expected;
    };

    const Case cases[] = {
        {"a digest", u"1a2b3c4d5e6f"_s, 8, u"1a2b3c4d"_s},
        {"for an error", u"1a2b3c4d5e6f7"_s, 12, u"1a2b3c4d5e6f"_s},
        {"just as long", u"12345678"_s, 8, u"12345678"_s},
        {"shorter", u"v1"_s, 8, u"v1"_s},
        {"empty", u""_s, 8, u""_s},
        {"an emoji of two code units is one character", u"😀😀😀"_s, 2, u"😀😀"_s},
        {"a million accents are cut off", u"a"_s + QString(1'000'000, u'\u0301'), 2, u"a"_s + QString(15, u'\u0301')},
        {"not within a character", u"a"_s + u"\U0001D167"_s.repeated(20), 1, u"a"_s + u"\U0001D167"_s.repeated(3)},
        {"so is a letter with its accent", u"e\u0301e\u0301e"_s, 2, u"e\u0301e\u0301"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(shortHash(c.hash, c.count), c.expected);
    }
}

} // namespace

} // namespace pelloran
