#include "base/StrictURL.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(StrictURL, TakesUrlsAndMendsNothing) {
    struct Case {
        const char* why;
        QString text;
        bool accepted;
    };

    const Case cases[] = {
        {"a web address", u"https://h.example/a?b#c"_s, true},
        {"relative", u"a/b"_s, true},
        {"a path", u"/a"_s, true},
        {"other letters", u"https://例子.example/路"_s, true},
        {"an address in brackets", u"http://[::1]:8080/a"_s, true},
        {"nothing", u""_s, false},
        {"a space in the path", u"https://h.example/a b"_s, false},
        {"a space in the host", u"https://h example/"_s, false},
        {"space at the ends", u" https://h.example "_s, false},
        {"half an encoding", u"https://h.example/%4"_s, false},
        {"a port that is none", u"https://h.example:x/"_s, false},
        {"an open bracket", u"http://[::1/"_s, false},
        {"a quote", u"https://h.example/\""_s, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(strictURL(c.text).has_value(), c.accepted);
    }
}

} // namespace

} // namespace pelloran
