#include "platform/Browser.h"

#include "tests/fakes/FakeBrowser.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(Browser, OpensLinksToWebServersOnly) {
    struct Case {
        const char* why;
        QString link;
        bool opens;
    };

    const Case cases[] = {
        {"encrypted", u"https://h.example/a.dmg"_s, true},
        {"not encrypted", u"http://h.example/a.dmg"_s, true},
        {"a scheme is the same in any case", u"HTTPS://h.example/a.dmg"_s, true},
        {"with a port and a query", u"https://h.example:8443/a?b=c#d"_s, true},
        {"nothing", u""_s, false},
        {"relative", u"a.dmg"_s, false},
        {"a path of this computer", u"/etc/passwd"_s, false},
        {"without a scheme", u"//h.example/a"_s, false},
        {"a file", u"file:///etc/passwd"_s, false},
        {"a program", u"steam://run/1"_s, false},
        {"a mail", u"mailto:a@h.example"_s, false},
        {"a script", u"javascript:alert(1)"_s, false},
        {"text", u"data:text/html,x"_s, false},
        {"another protocol", u"ftp://h.example/a"_s, false},
        {"a scheme that begins alike", u"httpx://h.example/a"_s, false},
        {"no server", u"https:///a"_s, false},
        {"no server and no path", u"https:"_s, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        testing::FakeBrowser browser;
        EXPECT_EQ(browser.open(QUrl(c.link)), c.opens);
        EXPECT_EQ(browser.opened.size(), c.opens ? 1U : 0U);
        EXPECT_TRUE(!c.opens || browser.opened.front() == QUrl(c.link));
    }
}

TEST(Browser, OpensNoInvalidLink) {
    testing::FakeBrowser browser;
    EXPECT_FALSE(browser.open(QUrl(u"https://h example/"_s)));
    EXPECT_TRUE(browser.opened.empty());
}

TEST(Browser, SaysWhenNothingOpensTheLink) {
    testing::FakeBrowser browser;
    browser.opens = false;
    EXPECT_FALSE(browser.open(QUrl(u"https://h.example/"_s)));
    EXPECT_EQ(browser.opened.size(), 1U);
}

} // namespace

} // namespace pelloran
