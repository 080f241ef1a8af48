#include "update/UpdatePrompts.h"

#include "base/Log.h"
#include "localisation/AppLanguage.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeBrowser.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/fakes/ManualQueue.h"
#include "tests/support/Printing.h"
#include "tests/update/SkippedKey.h"
#include "update/AppUpdateChecker.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

const QStringList withSkip{u"Update Now"_s, u"Skip This Version"_s, u"Ignore"_s};
const QStringList withoutSkip{u"Update Now"_s, u"Ignore"_s};
const QStringList okOnly{u"OK"_s};
const QString offer = u"You have 1.2; latest is 1.3.\nDownload the update now?"_s;

class UpdatePromptsTest : public ::testing::Test {
protected:
    void SetUp() override {
        AppLanguage::overridePreference(AppLanguage::en);
        setLogSink([this](const QString& line) { steps << line; });
        alerts.whenShown = [this] {
            steps << u"alert"_s;
            EXPECT_EQ(alerts.shown.back().style, Alerts::Style::informational);
        };
    }

    void TearDown() override {
        setLogSink({});
        AppLanguage::configure(nullptr, nullptr);
    }

    void serve(const QByteArray& body, int status = 200) { http.answer(latest, status, body); }

    void launch() {
        prompts->presentLaunchPromptIfNeeded();
        queue.finishNext();
    }

    void checkByHand() {
        prompts->presentManualCheck();
        queue.finishNext();
    }

    static AppReleaseInfo release(const QString& version) {
        AppReleaseInfo made;
        made.version = version;
        return made;
    }

    void expectOneAlert(const QString& title, const QString& body, const QStringList& buttons) {
        ASSERT_EQ(alerts.shown.size(), 1U);
        EXPECT_EQ(alerts.shown.front().messageText, title);
        EXPECT_EQ(alerts.shown.front().informativeText, body);
        EXPECT_EQ(alerts.shown.front().buttons, buttons);
    }

    const QString latest = u"https://u.example/download/latest.json"_s;
    testing::FakeHttpClient http;
    testing::FakeUserDefaults defaults;
    testing::ManualQueue queue;
    testing::FakeAlerts alerts;
    testing::FakeBrowser browser;
    QStringList steps;
    AppUpdateChecker checker{{http, defaults, queue}, {u"1.2"_s, std::nullopt}, u"https://u.example/download"_s};
    std::unique_ptr<UpdatePrompts> prompts = std::make_unique<UpdatePrompts>(checker, alerts, browser);
};

TEST_F(UpdatePromptsTest, ALaunchSpeaksUpOnlyWithSomethingToOffer) {
    struct Case {
        const char* why;
        int status;
        QByteArray body;
        std::optional<QString> skipped;
        std::optional<QStringList> buttons;
    };

    const Case cases[] = {
        {"newer", 200, R"({"version": "1.3"})", std::nullopt, withSkip},
        {"newer, and said not to be forced", 200, R"({"version": "1.3", "force": false})", std::nullopt, withSkip},
        {"forced", 200, R"({"version": "1.3", "force": true})", std::nullopt, withoutSkip},
        {"another version is skipped", 200, R"({"version": "1.3"})", u"1.2.5"_s, withSkip},
        {"this one is skipped", 200, R"({"version": "1.3"})", u"1.3.0"_s, std::nullopt},
        {"skipped but forced", 200, R"({"version": "1.3", "force": true})", u"1.3"_s, withoutSkip},
        {"up to date", 200, R"({"version": "1.2"})", std::nullopt, std::nullopt},
        {"the server is broken", 500, "", std::nullopt, std::nullopt},
        {"no version", 200, R"({"version": ""})", std::nullopt, std::nullopt},
    };
    alerts.pressed = 2;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        defaults.remove(skippedKey);
        if (c.skipped) {
            defaults.setString(skippedKey, *c.skipped);
        }
        alerts.shown.clear();
        serve(c.body, c.status);
        launch();
        if (c.buttons) {
            expectOneAlert(u"Update Available"_s, offer, *c.buttons);
        } else {
            EXPECT_TRUE(alerts.shown.empty());
        }
    }
}

TEST_F(UpdatePromptsTest, ACheckByHandAlwaysAnswers) {
    struct Case {
        const char* why;
        int status;
        QByteArray body;
        std::optional<QString> skipped;
        QString title;
        QString text;
        QStringList buttons;
    };

    const auto none = std::nullopt;
    const Case cases[] = {
        {"up to date", 200, R"({"version": " 1.1 "})", none, u"You’re up to date"_s,
         u"You’re already on the latest version.\nLocal 1.2 · Remote 1.1"_s, okOnly},
        {"newer", 200, R"({"version": "1.3"})", none, u"Update Available"_s, offer, withSkip},
        {"forced", 200, R"({"version": "1.3", "force": true})", none, u"Update Available"_s, offer, withoutSkip},
        {"a skipped version is offered again", 200, R"({"version": "1.3"})", u"1.3"_s, u"Update Available"_s, offer,
         withSkip},
        {"skipped but forced", 200, R"({"version": "1.3", "force": true})", u"1.3"_s, u"Update Available"_s, offer,
         withoutSkip},
        {"the version is shown as it came", 200, R"({"version": " 1.3\t"})", none, u"Update Available"_s,
         u"You have 1.2; latest is  1.3\t.\nDownload the update now?"_s, withSkip},
        {"not there", 404, "", none, u"Can’t check for updates"_s,
         u"Could not reach the update server: Update server HTTP 404"_s, okOnly},
        {"no version", 200, R"({"version": "  "})", none, u"Can’t check for updates"_s,
         u"Could not reach the update server: Invalid remote latest.json"_s, okOnly},
        {"no such file", 200, "<html>", none, u"Can’t check for updates"_s,
         u"Could not reach the update server: "_s + AppReleaseInfo::decode("<html>").error().description, okOnly},
    };
    alerts.pressed = 2;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        defaults.remove(skippedKey);
        if (c.skipped) {
            defaults.setString(skippedKey, *c.skipped);
        }
        alerts.shown.clear();
        serve(c.body, c.status);
        checkByHand();
        expectOneAlert(c.title, c.text, c.buttons);
    }
}

TEST_F(UpdatePromptsTest, AServerThatIsDownIsToldInTheSystemsWords) {
    http.fail(latest, u"Connection refused"_s);
    launch();
    EXPECT_TRUE(alerts.shown.empty());
    checkByHand();
    expectOneAlert(u"Can’t check for updates"_s, u"Could not reach the update server: Connection refused"_s, okOnly);
    EXPECT_EQ(steps, QStringList{u"alert"_s});
}

TEST_F(UpdatePromptsTest, SpeaksChinese) {
    AppLanguage::overridePreference(AppLanguage::zh);
    serve(R"({"version": "1.3", "notes_zh": "说明"})");
    checkByHand();
    ASSERT_EQ(alerts.shown.size(), 2U) << "there is nothing to download";
    EXPECT_EQ(alerts.shown.back().messageText, u"检查更新失败"_s);
    EXPECT_EQ(alerts.shown.back().informativeText, u"远端未提供下载地址"_s);
    EXPECT_EQ(alerts.shown.back().buttons, QStringList{u"好"_s});
    alerts.shown.pop_back();
    expectOneAlert(u"发现新版本"_s, u"当前版本 1.2，最新版本 1.3。\n是否立即下载更新？\n\n说明"_s,
                   {u"立即更新"_s, u"跳过这个版本"_s, u"忽略"_s});
}

TEST_F(UpdatePromptsTest, ShowsTheNotesOfTheUsersLanguage) {
    struct Case {
        const char* why;
        QByteArray notes; // the keys beside the version
        QString english;
        QString chinese;
    };

    const Case cases[] = {
        {"none", "", u""_s, u""_s},
        {"each language has its own", R"(, "notes": "n", "notes_zh": "z", "notes_en": "e")", u"e"_s, u"z"_s},
        {"common ones before the other language", R"(, "notes": "n", "notes_zh": "z")", u"n"_s, u"z"_s},
        {"likewise", R"(, "notes": "n", "notes_en": "e")", u"e"_s, u"n"_s},
        {"the other language before none", R"(, "notes_zh": "z")", u"z"_s, u"z"_s},
        {"likewise", R"(, "notes_en": "e")", u"e"_s, u"e"_s},
        {"common ones alone", R"(, "notes": "n")", u"n"_s, u"n"_s},
        {"empty ones are there and win", R"(, "notes": "x", "notes_zh": "", "notes_en": "")", u""_s, u""_s},
        {"in Chinese", R"(, "notes": "x", "notes_zh": "")", u"x"_s, u""_s},
        {"blank ones win and vanish", R"(, "notes": "x", "notes_zh": " \n", "notes_en": "\t")", u""_s, u""_s},
        {"null is absent", R"(, "notes": "x", "notes_zh": null, "notes_en": null)", u"x"_s, u"x"_s},
        {"empty common ones hide the other language", R"(, "notes": "", "notes_zh": "z")", u""_s, u"z"_s},
        {"trimmed at the ends only", R"(, "notes": "\n a\n\n b \u3000\n")", u"a\n\n b"_s, u"a\n\n b"_s},
        {"placeholders are text", R"(, "notes": "%@ %d")", u"%@ %d"_s, u"%@ %d"_s},
    };
    alerts.pressed = 2;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        serve(R"({"version": "1.3")" + c.notes + "}");
        for (const auto& [language, notes] :
             {std::pair{AppLanguage::en, c.english}, std::pair{AppLanguage::zh, c.chinese}}) {
            AppLanguage::overridePreference(language);
            checkByHand();
            const QString question =
                language == AppLanguage::en ? offer : u"当前版本 1.2，最新版本 1.3。\n是否立即下载更新？"_s;
            EXPECT_EQ(alerts.shown.back().informativeText, notes.isEmpty() ? question : question + u"\n\n"_s + notes);
        }
    }
}

TEST_F(UpdatePromptsTest, UpdatingOpensTheDownload) {
    serve(R"({"version": "1.3", "dmg": "pkg/炉石.dmg", "zip": "a.zip"})");
    launch();
    EXPECT_EQ(browser.opened, std::vector{QUrl(u"https://u.example/download/pkg/炉石.dmg"_s)});
    EXPECT_EQ(steps, (QStringList{u"alert"_s, u"app update: opening "
                                              "https://u.example/download/pkg/%E7%82%89%E7%9F%B3.dmg"_s}));
    EXPECT_EQ(alerts.shown.size(), 1U);
}

TEST_F(UpdatePromptsTest, UpdatingForgetsThatTheVersionWasSkipped) {
    struct Case {
        const char* why;
        QString skipped;
        std::optional<QString> skippedAfterwards;
    };

    const Case cases[] = {
        {"this very version", u"1.3"_s, std::nullopt},
        {"the same written otherwise is another text", u"1.3.0"_s, u"1.3.0"_s},
        {"another version", u"1.2.9"_s, u"1.2.9"_s},
    };
    serve(R"({"version": "1.3", "zip": "a.zip"})");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        defaults.setString(skippedKey, c.skipped);
        checkByHand();
        EXPECT_EQ(defaults.string(skippedKey), c.skippedAfterwards);
    }
    EXPECT_EQ(browser.opened.size(), 3U);
}

TEST_F(UpdatePromptsTest, SkippingIsRememberedAndSilencesTheNextLaunch) {
    serve(R"({"version": "1.3", "zip": "a.zip"})");
    alerts.pressed = 1;
    launch();
    EXPECT_EQ(defaults.string(skippedKey), u"1.3"_s);
    EXPECT_EQ(steps, (QStringList{u"alert"_s, u"app update: skipped version 1.3"_s}));
    EXPECT_TRUE(browser.opened.empty());

    launch();
    EXPECT_EQ(alerts.shown.size(), 1U);
    checkByHand();
    ASSERT_EQ(alerts.shown.size(), 2U);
    EXPECT_EQ(alerts.shown.back().buttons, withSkip);
}

TEST_F(UpdatePromptsTest, IgnoringAsksAgainAtTheNextLaunch) {
    serve(R"({"version": "1.3", "zip": "a.zip"})");
    alerts.pressed = 2;
    launch();
    launch();
    const QString ignored = u"app update: ignored for this launch (remote=1.3)"_s;
    EXPECT_EQ(steps, (QStringList{u"alert"_s, ignored, u"alert"_s, ignored}));
    EXPECT_EQ(defaults.string(skippedKey), std::nullopt);
    EXPECT_TRUE(browser.opened.empty());
}

TEST_F(UpdatePromptsTest, TheSecondButtonOfAForcedReleaseIgnores) {
    serve(R"({"version": "1.3", "zip": "a.zip", "force": true})");
    alerts.pressed = 1;
    launch();
    EXPECT_EQ(steps, (QStringList{u"alert"_s, u"app update: ignored for this launch (remote=1.3)"_s}));
    EXPECT_EQ(defaults.string(skippedKey), std::nullopt);
}

TEST_F(UpdatePromptsTest, OpensWebLinksOnlyAndSaysWhatCannotBeOpened) {
    struct Case {
        const char* why;
        QByteArray links; // the keys beside the version
        bool opens;
        std::optional<QString> logged;
        bool handedOver;
        bool alert;
    };

    const Case cases[] = {
        {"a link", R"(, "dmg": "https://cdn.example/a.dmg")", true, u"https://cdn.example/a.dmg"_s, true, false},
        {"nothing to open it with", R"(, "dmg": "a.dmg")", false, u"https://u.example/download/a.dmg"_s, true, true},
        {"no link", "", true, std::nullopt, false, true},
        {"empty links", R"(, "dmg": "", "zip": "")", true, std::nullopt, false, true},
        {"impossible links", R"(, "dmg": "a b", "zip": "c d")", true, std::nullopt, false, true},
        {"a base of this computer", R"(, "dmg": "passwd", "base_url": "file:///etc")", true, u"file:///etc/passwd"_s,
         false, true},
        {"an empty base makes it relative", R"(, "dmg": "a.dmg", "base_url": "")", true, u"/a.dmg"_s, false, true},
        {"a base of another program", R"(, "dmg": "1", "base_url": "steam://run")", true, u"steam://run/1"_s, false,
         true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        steps.clear();
        alerts.shown.clear();
        browser.opened.clear();
        browser.opens = c.opens;
        serve(R"({"version": "1.3")" + c.links + "}");
        checkByHand();
        QStringList expected{u"alert"_s};
        if (c.logged) {
            expected += u"app update: opening "_s + *c.logged;
            if (!c.opens) {
                expected += u"app update: not opened, the desktop has nothing to open it with"_s;
            } else if (!c.handedOver) {
                expected += u"app update: not opened, it is no link to a web server"_s;
            }
        }
        if (c.alert) {
            expected += u"alert"_s;
            EXPECT_EQ(alerts.shown.back().messageText, u"Update check failed"_s);
            EXPECT_EQ(alerts.shown.back().informativeText, u"No download URL in latest.json"_s);
            EXPECT_EQ(alerts.shown.back().buttons, okOnly);
        }
        EXPECT_EQ(steps, expected);
        EXPECT_EQ(browser.opened.size(), c.handedOver ? 1U : 0U);
    }
}

TEST_F(UpdatePromptsTest, NothingHappensWhenTheyAreGoneBeforeTheResult) {
    serve(R"({"version": "1.3"})");
    prompts->presentLaunchPromptIfNeeded();
    prompts->presentManualCheck();
    prompts.reset();
    queue.finishNext();
    queue.finishNext();
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(UpdatePromptsTest, OverlappingChecksEachAnswer) {
    serve(R"({"version": "1.3"})");
    alerts.pressed = 2;
    prompts->presentLaunchPromptIfNeeded();
    prompts->presentManualCheck();
    bool first = true;
    alerts.whenShown = [this, &first] {
        if (std::exchange(first, false)) {
            queue.finishNext(); // the second result comes while the first alert waits for its answer
        }
    };
    queue.finishNext();
    EXPECT_EQ(alerts.shown.size(), 2U);
    EXPECT_EQ(queue.waiting(), 0U);
}

TEST_F(UpdatePromptsTest, ShowsNewsWithOneButton) {
    prompts->presentInfoAlert(u"Update check failed"_s, u"Invalid remote latest.json"_s);
    expectOneAlert(u"Update check failed"_s, u"Invalid remote latest.json"_s, okOnly);
}

} // namespace

} // namespace pelloran
