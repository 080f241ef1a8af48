#include "platform/Browser.h"
#include "support/Printing.h"

#include <QDesktopServices>
#include <QObject>
#include <QUrl>

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Stands in for the desktop, which is not to open anything during a test.
class Desktop final : public QObject {
    Q_OBJECT

public:
    Desktop() {
        for (const QString& scheme : schemes) {
            QDesktopServices::setUrlHandler(scheme, this, "take");
        }
    }

    ~Desktop() override {
        for (const QString& scheme : schemes) {
            QDesktopServices::unsetUrlHandler(scheme);
        }
    }

    std::vector<QUrl> opened;

public Q_SLOTS:

    void take(const QUrl& link) { opened.push_back(link); }

private:
    const QStringList schemes{u"http"_s, u"https"_s, u"file"_s};
};

TEST(DesktopBrowser, HandsLinksToTheDesktopAsTheyAre) {
    Desktop desktop;
    const QUrl links[] = {QUrl(u"https://h.example/%E7%82%89.dmg?a=b%20c"_s), QUrl(u"http://h.example/炉石.zip"_s)};
    const auto browser = Browser::create();
    for (const QUrl& link : links) {
        EXPECT_TRUE(browser->open(link));
    }
    EXPECT_EQ(desktop.opened, std::vector(std::begin(links), std::end(links)));
}

TEST(DesktopBrowser, OpensNoFiles) {
    Desktop desktop;
    EXPECT_FALSE(Browser::create()->open(QUrl::fromLocalFile(u"/etc/passwd"_s)));
    EXPECT_TRUE(desktop.opened.empty());
}

} // namespace

} // namespace pelloran

#include "DesktopBrowserTests.moc"
