#pragma once

#include "platform/Browser.h"
#include "tests/contracts/BackEnd.h"
#include "tests/support/Printing.h"

#include <memory>
#include <vector>

namespace pelloran::testing {

// A browser, and what the desktop has been given to open so far.
struct WatchedBrowser {
    std::shared_ptr<void> owned; // what has to live as long
    std::unique_ptr<Browser> browser;
    std::function<std::vector<QUrl>()> opened;
};

class BrowserContract : public ::testing::TestWithParam<BackEnd<WatchedBrowser>> {
protected:
    const WatchedBrowser watched = GetParam().make();
};

TEST_P(BrowserContract, HandsOnEachLinkOnceInOrderAndAsItIs) {
    const std::vector<QUrl> links{
        QUrl(QStringLiteral("https://h.example/%E7%82%89.dmg?a=b%20c")),
        QUrl(QStringLiteral("http://h.example:8080/炉石.zip#x")),
        QUrl(QStringLiteral("https://h.example/%E7%82%89.dmg?a=b%20c")),
    };
    for (const QUrl& link : links) {
        EXPECT_TRUE(watched.browser->open(link));
    }
    EXPECT_EQ(watched.opened(), links);
}

TEST_P(BrowserContract, OpensNothingButLinksToWebServers) {
    for (const char* link : {"", "a.dmg", "/etc/passwd", "//h.example/a", "file:///etc/passwd", "steam://run/1",
                             "mailto:a@h.example", "javascript:alert(1)", "https:///a", "https://h example/"}) {
        SCOPED_TRACE(link);
        EXPECT_FALSE(watched.browser->open(QUrl(QString::fromLatin1(link))));
    }
    EXPECT_TRUE(watched.opened().empty());
}

} // namespace pelloran::testing
