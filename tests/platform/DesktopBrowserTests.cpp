#include "platform/Browser.h"
#include "tests/platform/UrlHandler.h"
#include "tests/support/Printing.h"

#include <QUrl>

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(DesktopBrowser, HandsLinksToTheDesktopAsTheyAre) {
    testing::UrlHandler desktop;
    const QUrl links[] = {QUrl(u"https://h.example/%E7%82%89.dmg?a=b%20c"_s), QUrl(u"http://h.example/炉石.zip"_s)};
    const auto browser = Browser::create();
    for (const QUrl& link : links) {
        EXPECT_TRUE(browser->open(link));
    }
    EXPECT_EQ(desktop.opened, std::vector(std::begin(links), std::end(links)));
}

TEST(DesktopBrowser, OpensNoFiles) {
    testing::UrlHandler desktop;
    EXPECT_FALSE(Browser::create()->open(QUrl::fromLocalFile(u"/etc/passwd"_s)));
    EXPECT_TRUE(desktop.opened.empty());
}

} // namespace

} // namespace pelloran
