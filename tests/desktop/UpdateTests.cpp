#include "tests/desktop/ServerTest.h"
#include "tests/support/Printing.h"

#include <QFile>

// New releases on a web server, offered to a user who clicks.
namespace pelloran {
namespace {

using testing::Letters;
using testing::ServerTest;
using testing::StaticServer;
using testing::until;

// From the left.
enum Button { updateNow, skip, ignore };

constexpr int ignoreForced = 1; // where there is no skipping

// What an alert says, by its parts.
struct Wording {
    Letters letters;
    QString text;
    QStringList buttons;
};

const Wording offer{
    Letters::english,
    QStringLiteral("Update Available You have " PELLORAN_VERSION "; latest is 99.1. Download the update now? "
                   "Figures are shown larger. The panel remembers its place."),
    {QStringLiteral("Update Now"), QStringLiteral("Skip This Version"), QStringLiteral("Ignore")},
};
const Wording forcedOffer{offer.letters, offer.text, {offer.buttons.first(), offer.buttons.last()}};
const Wording chineseOffer{
    Letters::chinese,
    QStringLiteral("发现新版本当前版本" PELLORAN_VERSION "，最新版本99.1。是否立即下载更新？数字更大了。"),
    {QStringLiteral("立即更新"), QStringLiteral("跳过这个版本"), QStringLiteral("忽略")},
};

// Wide marks are not told from narrow ones.
QString withoutMarks(QString text) {
    text.removeIf([](QChar character) { return character.isPunct(); });
    return text;
}

class Updates : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) {
            installBrowser();
        }
    }

    // Stands in for the desktop's own way to open links, and notes them.
    void installBrowser() {
        const QString programs = home.path() + QStringLiteral("/bin");
        ASSERT_TRUE(QDir().mkpath(programs));
        QFile script(programs + QStringLiteral("/xdg-open"));
        ASSERT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf '%s\\n' \"$@\" >>'" + openedFile().toUtf8() + "'\n");
        script.setPermissions(script.permissions() | QFile::ExeOwner);
        environment.insert(QStringLiteral("PATH"), programs + u':' + environment.value(QStringLiteral("PATH")));
    }

    QString openedFile() const { return home.path() + QStringLiteral("/opened"); }

    QByteArray opened() const {
        QFile file(openedFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void release(const QJsonObject& latest) const {
        server.write(QStringLiteral("download/latest.json"), QJsonDocument(latest).toJson());
    }

    // With its download beside its description.
    static QJsonObject newRelease() {
        return {
            {QStringLiteral("version"), QStringLiteral("99.1")},
            {QStringLiteral("dmg"), QStringLiteral("Pelloran-99.1.dmg")},
            {QStringLiteral("notes_en"), QStringLiteral("Figures are shown larger.\nThe panel remembers its place.")},
            {QStringLiteral("notes_zh"), QStringLiteral("数字更大了。")},
        };
    }

    void startPelloranWith(const QStringList& arguments = {}) { startPanelWithTray(served() + arguments); }

    // The alert that says this, once it stands there.
    xcb_window_t alert(const Wording& wording) {
        const auto stands = [&] {
            const auto open = popups();
            return open.size() == 1 &&
                   std::ssize(testing::alertButtons(picture(open.front()))) == wording.buttons.size() &&
                   !testing::alertLines(picture(open.front())).empty();
        };
        EXPECT_TRUE(until(stands)) << popups().size() << " windows";
        if (!stands()) {
            return XCB_WINDOW_NONE;
        }
        const xcb_window_t window = popups().front();
        EXPECT_TRUE(until([&] { return client->focus() == window; })) << "an alert takes the keyboard";
        const QImage shown = picture(window);
        QStringList lines;
        for (const QRect& line : testing::alertLines(shown)) {
            lines.append(testing::lettersIn(shown, line, wording.letters));
        }
        const QString text = lines.join(wording.letters == Letters::english ? u" " : u"");
        EXPECT_GE(testing::likeness(withoutMarks(text), withoutMarks(wording.text)), 0.9)
            << "read: " << text.toStdString();
        EXPECT_LE(text.size(), wording.text.size() * 1.2) << "read: " << text.toStdString();
        const auto buttons = testing::alertButtons(shown);
        for (std::size_t i = 0; i < buttons.size(); ++i) {
            const QString title = testing::lettersIn(shown, buttons[i].adjusted(4, 4, -4, -4), wording.letters);
            EXPECT_GE(testing::likeness(title, wording.buttons[static_cast<qsizetype>(i)]), 0.5)
                << "read: " << title.toStdString();
        }
        return window;
    }

    void clickButton(xcb_window_t window, std::size_t button) {
        const auto buttons = testing::alertButtons(picture(window));
        ASSERT_LT(button, buttons.size());
        hand.click(client->bounds(window).topLeft() + buttons[button].center());
        EXPECT_TRUE(until([this] { return popups().empty(); })) << "the alert stays";
    }

    void checkByMenu() {
        const xcb_window_t menu = openTrayMenu();
        click(menu, checkAppUpdate);
        EXPECT_TRUE(until([&] { return !client->isViewable(menu); })) << "the menu stays";
    }

    std::size_t checks() {
        return static_cast<std::size_t>(std::ranges::count(server.requests(), QStringLiteral("/download/latest.json"),
                                                           &StaticServer::Request::path));
    }
};

TEST_F(Updates, AreOfferedAtTheStartAndOpenedByTheDesktop) {
    release(newRelease());
    expectedLog = {"[Pelloran] app update: opening "};
    startPelloranWith();
    clickButton(alert(offer), updateNow);
    EXPECT_TRUE(until([this] { return !opened().isEmpty(); })) << "nothing is opened";
    EXPECT_EQ(opened(), server.url().toUtf8() + "/download/Pelloran-99.1.dmg\n");
    EXPECT_TRUE(pelloran.printsAnother()) << "it does not go on";
    EXPECT_EQ(checks(), 1U);
}

TEST_F(Updates, SaySoWhenThereIsNothingToDownload) {
    QJsonObject latest = newRelease();
    latest.remove(QStringLiteral("dmg"));
    release(latest);
    startPelloranWith();
    const xcb_window_t first = alert(offer);
    const auto buttons = testing::alertButtons(picture(first));
    ASSERT_FALSE(buttons.empty());
    hand.click(client->bounds(first).topLeft() + buttons.front().center());
    clickButton(alert({Letters::english,
                       QStringLiteral("Update check failed No download URL in latest.json"),
                       {QStringLiteral("OK")}}),
                0);
    EXPECT_TRUE(opened().isEmpty());
}

TEST_F(Updates, AreNotOfferedAgainOnceSkippedExceptWhenAskedFor) {
    release(newRelease());
    expectedLog = {"[Pelloran] app update: skipped version 99.1", "[Pelloran] app update: ignored for this launch"};
    startPelloranWith();
    clickButton(alert(offer), skip);
    EXPECT_TRUE(until([this] { return isStored("pelloran.skippedAppVersion=99.1"); }));
    endPelloran();

    startPelloranWith();
    ASSERT_TRUE(until([this] { return checks() == 2; })) << "it does not ask";
    // What comes of the answer comes at once; these take two seconds.
    EXPECT_TRUE(pelloran.printsAnother() && pelloran.printsAnother());
    EXPECT_TRUE(popups().empty()) << "it offers what was skipped";

    checkByMenu();
    clickButton(alert(offer), ignore);
    EXPECT_TRUE(isStored("pelloran.skippedAppVersion=99.1"));
    EXPECT_TRUE(opened().isEmpty());
}

TEST_F(Updates, AreOfferedAtEveryStartWhileIgnored) {
    release(newRelease());
    expectedLog = {"[Pelloran] app update: ignored for this launch (remote=99.1)",
                   "[Pelloran] config sync: 配置同步失败"};
    for (int start = 0; start < 2; ++start) {
        startPelloranWith({QStringLiteral("--language"), QStringLiteral("zh")});
        clickButton(alert(chineseOffer), ignore);
        EXPECT_TRUE(pelloran.printsAnother()) << "it does not go on";
        EXPECT_EQ(pelloran.standardError.count(expectedLog.first()), start + 1);
        endPelloran();
    }
    EXPECT_TRUE(opened().isEmpty());
}

TEST_F(Updates, CannotBeSkippedWhenForced) {
    release(newRelease());
    expectedLog = {"[Pelloran] app update: skipped version 99.1", "[Pelloran] app update: ignored for this launch"};
    startPelloranWith();
    clickButton(alert(offer), skip);
    endPelloran();

    QJsonObject latest = newRelease();
    latest.insert(QStringLiteral("force"), true);
    release(latest);
    startPelloranWith();
    clickButton(alert(forcedOffer), ignoreForced);
    checkByMenu();
    clickButton(alert(forcedOffer), ignoreForced);
}

TEST_F(Updates, AreAskedForInTheMenuWhichAlwaysAnswers) {
    struct Case {
        const char* language;
        Letters letters;
        QString upToDate;
        QString offline;
        QString ok;
    };

    const Case cases[] = {
        {"en", Letters::english,
         QStringLiteral("You’re up to date You’re already on the latest version. Local " PELLORAN_VERSION
                        " · Remote " PELLORAN_VERSION),
         QStringLiteral("Can’t check for updates Could not reach the update server: Connection refused"),
         QStringLiteral("OK")},
        {"zh", Letters::chinese,
         QStringLiteral("已是最新版本当前已是最新版本。本地" PELLORAN_VERSION "·远端" PELLORAN_VERSION),
         QStringLiteral("无法检查更新暂时无法连接更新服务器：Connection refused"), QStringLiteral("好")},
    };
    release({{QStringLiteral("version"), QStringLiteral(PELLORAN_VERSION)}});
    expectedLog = {"[Pelloran] config sync: 配置同步失败"};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.language);
        startPelloranWith({QStringLiteral("--language"), QString::fromLatin1(c.language)});
        checkByMenu();
        clickButton(alert({c.letters, c.upToDate, {c.ok}}), 0);
        server.stop();
        checkByMenu();
        clickButton(alert({c.letters, c.offline, {c.ok}}), 0);
        EXPECT_TRUE(pelloran.printsAnother()) << "it does not go on";
        endPelloran();
        ASSERT_TRUE(server.start()) << server.errors().toStdString();
    }
}

} // namespace
} // namespace pelloran
