#include "app/desktop/AppDelegate.h"

#include "base/Log.h"
#include "data/WinrateStore.h"
#include "localisation/AppLanguage.h"
#include "recognition/ScreenReader.h"
#include "sync/ConfigSync.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/fakes/FakeApplicationPresence.h"
#include "tests/fakes/FakeBrowser.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeOverlay.h"
#include "tests/fakes/FakeStatusItem.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeTextReader.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/fakes/FakeWindowServer.h"
#include "tests/fakes/ManualQueue.h"
#include "tests/support/Printing.h"
#include "update/AppUpdateChecker.h"
#include "update/UpdatePrompts.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPalette>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace pelloran {
namespace {

using Action = StatusMenuEntry::Action;
using ::testing::ElementsAre;

const QString bootEnglish = QStringLiteral("Local config · bundled · syncing… · Waiting for Arena draft…");
const QString latest = QStringLiteral("https://data.test/pelloran/latest/");
const QString bootChinese = QStringLiteral("本地配置 · 内置 · 后台同步中… · 等待进入竞技场选卡界面…");

class Receiver final : public DraftServiceDelegate {
public:
    void draftServiceDidUpdate(const OverlaySnapshot& snapshot) override { snapshots.push_back(snapshot); }

    std::vector<OverlaySnapshot> snapshots;
};

class AppDelegateTest : public ::testing::Test {
protected:
    void SetUp() override {
        AppLanguage::configure(&defaults, &settings);
        setLogSink([this](const QString& line) { steps << QStringLiteral("log ") + line; });
        write("resources/winrates/all_classes_LAST_7_DAYS.json",
              R"({"cards": [{"card_id": "OWN", "name_en": "Own Card"}]})");
        write("resources/winrates/class_winrates.json", R"({"classes": []})");
        config.logsDir = folder.filePath(QStringLiteral("logs"));
    }

    void TearDown() override {
        delegate.reset();
        configSync.reset();
        setLogSink({});
        AppLanguage::configure(nullptr, nullptr);
    }

    void write(const char* name, const QByteArray& bytes) const {
        const QString path = folder.filePath(QString::fromUtf8(name));
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    void launch() {
        delegate = std::make_shared<AppDelegate>(AppDelegate::Parts{
            .store = store,
            .screenReader = reader,
            .queue = queue,
            .presence = presence,
            .statusItem = item,
            .alerts = alerts,
            .configSync = *configSync,
            .updatePrompts = updatePrompts,
            .settings = settings,
            .files = files,
            .config = config,
            .makeOverlay = [this] { return std::make_unique<testing::FakeOverlay>(panel, steps); },
            .terminate = [this](int exitCode) { exitCodes.push_back(exitCode); },
            .alsoReceives = alsoReceives,
        });
        delegate->applicationDidFinishLaunching();
    }

    void withMenuIcon() const {
        QDir().mkpath(files.resourceFolder());
        QImage picture(18, 18, QImage::Format_ARGB32);
        picture.fill(Qt::yellow);
        ASSERT_TRUE(picture.save(files.resourceFolder() + QStringLiteral("/MenuIcon.png")));
    }

    void beginDraft() const { write("logs/Hearthstone_1/Arena.log", "D 1 SetDraftMode - DRAFTING\n"); }

    void endDraft() const { QDir(config.logsDir).removeRecursively(); }

    // The files of a sync as if one had been installed.
    void installConfiguration(const QByteArray& hash) const {
        write("support/Pelloran/config/.content_hash", hash);
        write("support/Pelloran/config/winrates/class_winrates.json", R"({"classes": []})");
    }

    void serveManifest(const QByteArray& hash) const {
        configServer->answer(latest + QStringLiteral("manifest.json"), 200, R"({"hash": ")" + hash + R"("})");
    }

    // A bundle of one card file.
    void serveBundle(const QByteArray& cardFile) const {
        write("bundle/winrates/all_classes_LAST_7_DAYS.json", cardFile);
        QProcess tar;
        tar.start(QStringLiteral("tar"),
                  {QStringLiteral("-czf"), folder.filePath(QStringLiteral("b.tar.gz")), QStringLiteral("-C"),
                   folder.filePath(QStringLiteral("bundle")), QStringLiteral("winrates")});
        ASSERT_TRUE(tar.waitForFinished());
        QFile file(folder.filePath(QStringLiteral("b.tar.gz")));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        configServer->answer(latest + QStringLiteral("config.tar.gz"), 200, file.readAll());
    }

    // Has a second sync come while the first waits for its server, and looks at what the second has done.
    void syncMeetsAnother(const std::function<void()>& look) {
        EXPECT_TRUE(item.choose(Action::checkConfigNow));
        EXPECT_TRUE(item.choose(Action::checkConfigNow));
        bool met = false;
        configServer->onRequest = [this, &look, &met](const HttpClient::Request&) {
            if (std::exchange(met, true)) {
                return;
            }
            const QStringList stepsBefore = steps;
            const auto snapshotsBefore = panel.snapshots.size();
            syncQueue->finishNext();
            EXPECT_EQ(steps, stepsBefore);
            EXPECT_EQ(panel.snapshots.size(), snapshotsBefore);
            look();
        };
        syncQueue->finishNext();
        configServer->onRequest = {};
        EXPECT_TRUE(met);
    }

    QString lastMessage() const { return panel.snapshots.back().message.value_or(QString()); }

    QTemporaryDir folder;
    testing::FakeApplicationFiles files{folder.path()};
    testing::FakeUserDefaults defaults;
    testing::FakeSystemSettings settings;
    WinrateStore store{files};
    ScreenReader reader{[] { return std::make_unique<testing::FakeWindowServer>(); },
                        [] { return std::make_unique<testing::FakeTextReader>(); }};
    testing::ManualQueue queue;
    QStringList steps;
    testing::FakeApplicationPresence presence{steps};
    testing::FakeStatusItem item{steps};
    testing::FakeAlerts alerts;
    testing::OverlayRecord panel;
    testing::FakeHttpClient* configServer = new testing::FakeHttpClient; // owned by the sync, as is its queue
    testing::ManualQueue* syncQueue = new testing::ManualQueue;
    std::unique_ptr<ConfigSync> configSync = std::make_unique<ConfigSync>(
        QStringLiteral("https://data.test"), LocalConfig(files), std::unique_ptr<HttpClient>(configServer),
        std::unique_ptr<SerialQueue>(syncQueue));
    testing::FakeHttpClient updateServer;
    testing::ManualQueue updateQueue;
    AppUpdateChecker checker{{updateServer, defaults, updateQueue},
                             {QStringLiteral("1.0"), std::nullopt},
                             QStringLiteral("https://news.test/download")};
    testing::FakeBrowser browser;
    UpdatePrompts updatePrompts{checker, alerts, browser};
    AppConfig config;
    std::vector<int> exitCodes;
    std::shared_ptr<DraftServiceDelegate> alsoReceives;
    std::shared_ptr<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, StartsInItsOrder) {
    withMenuIcon();
    launch();
    EXPECT_EQ(steps, (QStringList{
                         QStringLiteral("presence begun"),
                         QStringLiteral("panel made"),
                         QStringLiteral("image"),
                         QStringLiteral("tooltip"),
                         QStringLiteral("menu"),
                         QStringLiteral("panel opened"),
                         QStringLiteral("program activated"),
                         QStringLiteral("snapshot Waiting for Arena draft…"), // of the first tick
                         QStringLiteral("snapshot ") + bootEnglish,
                         QStringLiteral("log boot cards=") + store.metaDescription() + QStringLiteral("; source=") +
                             store.cardsSourceDescription() + QStringLiteral("; lang=en"),
                     }));
    EXPECT_EQ(item.toolTip, QStringLiteral("Pelloran · Hearthstone helper"));
    EXPECT_EQ(item.menu, statusMenu(AppLanguage::system));
    EXPECT_TRUE(panel.visible);
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_TRUE(exitCodes.empty());
}

TEST_F(AppDelegateTest, ComesForwardWhenTheDesktopOpensItAgain) {
    launch();
    delegate->toggleOverlay();
    ASSERT_FALSE(panel.visible);
    steps.clear();
    presence.reopened();
    EXPECT_EQ(steps, (QStringList{QStringLiteral("panel shown"), QStringLiteral("program activated")}));
    delegate->applicationWillTerminate();
    EXPECT_FALSE(presence.reopened) << "nobody is left to be called";
}

TEST_F(AppDelegateTest, SaysInWhichLanguageItStarts) {
    settings.languages = {QStringLiteral("zh-Hant-TW")};
    launch();
    EXPECT_TRUE(steps.last().endsWith(QStringLiteral("; lang=zh")));
    EXPECT_EQ(lastMessage(), bootChinese);
}

TEST_F(AppDelegateTest, ShowsTheBootLineEvenInADraftUntilTheNextTick) {
    beginDraft();
    launch();
    EXPECT_EQ(lastMessage(), bootEnglish);
    queue.finishNext();
    EXPECT_EQ(lastMessage(), QStringLiteral("In Arena, but Hearthstone window not found"));
}

TEST_F(AppDelegateTest, SaysWhyTheDataCannotBeLoadedAndEnds) {
    write("resources/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    alerts.whenShown = [this] {
        EXPECT_TRUE(panel.visible) << "the panel stands already";
        EXPECT_TRUE(exitCodes.empty()) << "the end waits for the user";
    };
    launch();
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].style, Alerts::Style::critical);
    EXPECT_EQ(alerts.shown[0].messageText, QStringLiteral("Failed to load win-rate data"));
    EXPECT_FALSE(alerts.shown[0].informativeText.isEmpty());
    EXPECT_THAT(exitCodes, ElementsAre(1));
    EXPECT_TRUE(panel.snapshots.empty()) << "nothing runs";
    ASSERT_TRUE(steps.last().startsWith(QStringLiteral("log Failed to load win-rate data: ")));
    EXPECT_TRUE(steps.last().contains(alerts.shown[0].informativeText));

    EXPECT_TRUE(item.choose(Action::refreshNow));
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_TRUE(panel.snapshots.empty()) << "what is left of the program does not stumble over what was never made";
}

TEST_F(AppDelegateTest, ServesTheUserWhileTheAlertIsUp) {
    write("resources/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    alerts.whenShown = [this] {
        EXPECT_TRUE(item.choose(Action::refreshNow));
        EXPECT_TRUE(item.choose(Action::selectLanguage, QStringLiteral("zh")));
        EXPECT_EQ(item.menu, statusMenu(AppLanguage::zh)) << "though nothing follows the language yet";
        settings.setReducesMotion(true);
        EXPECT_EQ(panel.settingsChanges, 1);
        EXPECT_TRUE(item.choose(Action::toggleOverlay));
        EXPECT_FALSE(panel.visible);
        delegate->applicationShouldHandleReopen();
        EXPECT_TRUE(panel.visible) << "a second start meanwhile";
        EXPECT_TRUE(item.choose(Action::quit));
    };
    launch();
    EXPECT_EQ(alerts.shown.size(), 1U);
    EXPECT_THAT(exitCodes, ElementsAre(0, 1)) << "the failure has the last word";
    EXPECT_TRUE(panel.snapshots.empty());
}

TEST_F(AppDelegateTest, MayBeTerminatedWhileTheAlertIsUp) {
    write("resources/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    alerts.whenShown = [this] { delegate->applicationWillTerminate(); };
    launch();
    EXPECT_THAT(exitCodes, ElementsAre(1));
    EXPECT_TRUE(item.choose(Action::toggleOverlay));
    EXPECT_TRUE(panel.visible);
    EXPECT_TRUE(panel.snapshots.empty());
}

TEST_F(AppDelegateTest, TogglesThePanel) {
    launch();
    EXPECT_TRUE(item.choose(Action::toggleOverlay));
    EXPECT_FALSE(panel.visible);
    EXPECT_TRUE(item.choose(Action::toggleOverlay));
    EXPECT_TRUE(panel.visible);
}

TEST_F(AppDelegateTest, RefreshesWithOneTick) {
    launch();
    const auto before = panel.snapshots.size();
    EXPECT_TRUE(item.choose(Action::refreshNow));
    EXPECT_EQ(panel.snapshots.size(), before + 1);
    EXPECT_EQ(lastMessage(), bootEnglish) << "which is the idle line from now on";
}

TEST_F(AppDelegateTest, QuitsFromTheMenu) {
    launch();
    EXPECT_TRUE(item.choose(Action::quit));
    EXPECT_THAT(exitCodes, ElementsAre(0));
}

TEST_F(AppDelegateTest, SpeaksTheLanguageChosen) {
    launch();
    EXPECT_TRUE(item.choose(Action::selectLanguage, QStringLiteral("zh")));
    EXPECT_EQ(defaults.string(QStringLiteral("pelloran.language")), QStringLiteral("zh"));
    EXPECT_EQ(item.menu, statusMenu(AppLanguage::zh));
    EXPECT_EQ(item.menu[0].title, QStringLiteral("显示/隐藏悬浮窗"));
    EXPECT_EQ(item.toolTip, QStringLiteral("Pelloran · 炉石传说助手"));
    ASSERT_GE(panel.snapshots.size(), 2U);
    EXPECT_EQ((panel.snapshots.end() - 2)->message, bootChinese) << "the idle line";
    EXPECT_EQ(panel.snapshots.back(), OverlaySnapshot::idle(bootChinese)) << "and the tick that follows";
}

TEST_F(AppDelegateTest, RebuildsTheMenuOnlyWhenTheLanguageStaysTheSame) {
    launch();
    const auto before = panel.snapshots.size();
    const int menus = item.menus;
    int posted = 0;
    const auto counting =
        QObject::connect(&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted, [&posted] { ++posted; });
    EXPECT_TRUE(item.choose(Action::selectLanguage, QStringLiteral("system")));
    EXPECT_EQ(posted, 0);
    EXPECT_EQ(item.menus, menus + 1);
    EXPECT_EQ(panel.snapshots.size(), before);

    delegate->selectLanguage(QStringLiteral("fr"));
    EXPECT_EQ(item.menus, menus + 1) << "no language of ours";
    QObject::disconnect(counting);
}

TEST_F(AppDelegateTest, FollowsALanguageThatOthersChoose) {
    launch();
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_EQ(item.menu, statusMenu(AppLanguage::zh));
    EXPECT_EQ(lastMessage(), bootChinese);
}

TEST_F(AppDelegateTest, MarksADraftInTheTitleWhereThereIsNoIcon) {
    launch();
    EXPECT_EQ(item.title, QStringLiteral("PL"));
    beginDraft();
    delegate->refreshNow();
    queue.finishNext();
    EXPECT_EQ(item.title, QStringLiteral("PL●"));
    endDraft();
    delegate->refreshNow();
    EXPECT_EQ(item.title, QStringLiteral("PL"));
}

TEST_F(AppDelegateTest, TakesAnIconThatDoesNotLoadForNone) {
    write("resources/MenuIcon.png", "no picture");
    launch();
    EXPECT_EQ(item.title, QStringLiteral("PL"));
}

TEST_F(AppDelegateTest, LeavesAnIconAlone) {
    withMenuIcon();
    beginDraft();
    launch();
    queue.finishNext();
    EXPECT_TRUE(panel.snapshots.back().inDraft);
    EXPECT_TRUE(item.title.isEmpty());
}

TEST_F(AppDelegateTest, HandsEverySnapshotOfTheServiceOn) {
    const auto receiver = std::make_shared<Receiver>();
    alsoReceives = receiver;
    launch();
    delegate->refreshNow();
    ASSERT_EQ(receiver->snapshots.size(), 2U) << "the boot line is for the panel alone";
    EXPECT_EQ(receiver->snapshots[0].message, QStringLiteral("Waiting for Arena draft…"));
    EXPECT_EQ(receiver->snapshots[1].message, bootEnglish);
}

TEST_F(AppDelegateTest, ShowsThePanelWhenStartedAgain) {
    launch();
    delegate->toggleOverlay();
    ASSERT_FALSE(panel.visible);
    delegate->applicationShouldHandleReopen();
    EXPECT_TRUE(panel.visible);
    delegate->applicationShouldHandleReopen();
    EXPECT_TRUE(panel.visible) << "never hidden by it";
}

TEST_F(AppDelegateTest, OpensTheMenuOnARightClickOfThePanel) {
    launch();
    ASSERT_NE(panel.contextMenu, nullptr);
    (*panel.contextMenu)(QPoint(70, 80));
    EXPECT_THAT(item.openedAt, ElementsAre(QPoint(70, 80)));
}

TEST_F(AppDelegateTest, StopsEverythingOnTermination) {
    beginDraft();
    launch();
    ASSERT_EQ(queue.waiting(), 1U);
    const auto before = panel.snapshots.size();
    const int menus = item.menus;
    delegate->applicationWillTerminate();
    queue.finishNext();
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_TRUE(item.choose(Action::toggleOverlay));
    settings.setReducesMotion(true);
    delegate->applicationWillTerminate();
    EXPECT_EQ(panel.snapshots.size(), before);
    EXPECT_EQ(item.menus, menus);
    EXPECT_EQ(panel.settingsChanges, 0);
    EXPECT_TRUE(panel.visible);
}

TEST_F(AppDelegateTest, FollowsTheLookOfTheDesktop) {
    launch();
    const QPalette before = QApplication::palette();
    settings.setAppearance(Appearance::dark);
    EXPECT_EQ(panel.settingsChanges, 1);
    EXPECT_LT(QApplication::palette().color(QPalette::Window).lightness(), 100);
    settings.setReducesMotion(true);
    EXPECT_EQ(panel.settingsChanges, 2);
    settings.setAppearance(std::nullopt);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), before.color(QPalette::Window));
}

TEST_F(AppDelegateTest, AsksItsServersOnceItRuns) {
    launch();
    EXPECT_EQ(syncQueue->waiting(), 1U) << "a sync at once";
    EXPECT_EQ(updateQueue.waiting(), 1U) << "and a look for a newer version";
    updateServer.answer(QStringLiteral("https://news.test/download/latest.json"), 200, R"({"version": "1.1"})");
    alerts.pressed = 2; // ignore
    updateQueue.finishNext();
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].messageText, QStringLiteral("Update Available"));
}

TEST_F(AppDelegateTest, AsksNobodyWithoutData) {
    write("resources/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    launch();
    EXPECT_EQ(syncQueue->waiting(), 0U);
    EXPECT_EQ(updateQueue.waiting(), 0U);
}

TEST_F(AppDelegateTest, TellsHowASyncWentInTheIdleLine) {
    struct Case {
        const char* why;
        const char* installed; // null: none
        const char* served;    // null: the server cannot be reached
        const char* boot;
        const char* line;
        const char* logged;
    };

    const Case cases[] = {
        {"the same", "1a2b3c4d5e6f", "1a2b3c4d5e6f", "Local config · 1a2b3c4d… · syncing… · Waiting for Arena draft…",
         "Config up to date · 1a2b3c4d… · Waiting for Arena draft…",
         "log config sync: Config is up to date (1a2b3c4d…)"},
        {"no server, files of an earlier sync", "1a2b3c4d5e6f", nullptr,
         "Local config · 1a2b3c4d… · syncing… · Waiting for Arena draft…",
         "Offline local config · 1a2b3c4d… · Waiting for Arena draft…",
         "log config sync: Offline, using local config: Connection refused"},
        {"no server, no files", nullptr, nullptr, "Local config · bundled · syncing… · Waiting for Arena draft…",
         "Bundled/local config · bundled · Waiting for Arena draft…",
         "log config sync: Config sync failed; using local/bundled data: Connection refused"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        QDir(folder.filePath(QStringLiteral("support"))).removeRecursively();
        if (c.installed) {
            installConfiguration(c.installed);
        }
        if (c.served) {
            serveManifest(c.served);
        } else {
            configServer->fail(latest + QStringLiteral("manifest.json"), QStringLiteral("Connection refused"));
        }
        launch();
        EXPECT_EQ(lastMessage(), QString::fromUtf8(c.boot));
        syncQueue->finishNext();
        EXPECT_EQ(lastMessage(), QString::fromUtf8(c.line));
        EXPECT_EQ(steps.filter(QStringLiteral("config sync")).last(), QString::fromUtf8(c.logged));
        EXPECT_TRUE(steps.filter(QStringLiteral("reload")).isEmpty()) << "nothing new to load";
        delegate->refreshNow();
        EXPECT_EQ(lastMessage(), QString::fromUtf8(c.line)) << "from now on";
        delegate.reset();
    }
}

TEST_F(AppDelegateTest, LoadsWhatASyncBrought) {
    launch();
    ASSERT_TRUE(store.stats(QStringLiteral("OWN")));
    serveManifest("feedbeef");
    serveBundle(R"({"cards": [{"card_id": "NEW", "name_en": "New Card"}]})");
    syncQueue->finishNext();
    EXPECT_TRUE(store.stats(QStringLiteral("NEW")));
    EXPECT_FALSE(store.stats(QStringLiteral("OWN")));
    EXPECT_TRUE(steps.contains(QStringLiteral("log reloaded store cards=") + store.metaDescription() +
                               QStringLiteral("; source=") + store.cardsSourceDescription()));
    EXPECT_EQ(lastMessage(), QStringLiteral("Config updated · feedbeef… · Waiting for Arena draft…"));
}

TEST_F(AppDelegateTest, ReadsWhatASyncBroughtOnItsQueueAndTellsOfItInOrder) {
    struct Case {
        const char* why;
        const char* cardFile;
        const char* classFile;
        QStringList told; // beginnings
    };

    const QString updated = QStringLiteral("log config sync: Config updated (feedbeef…)");
    const QString line = QStringLiteral("snapshot Config updated · feedbeef… · Waiting for Arena draft…");
    const QString reloaded = QStringLiteral("log reloaded store cards=? / ? / 1 cards; source=");
    const Case cases[] = {
        {"all well", R"({"cards": [{"card_id": "NEW"}]})", R"({"classes": []})", {updated, reloaded, line}},
        {"no class file to speak of",
         R"({"cards": [{"card_id": "NEW"}]})",
         "no figures",
         {updated, QStringLiteral("log class file ") + folder.path(), reloaded, line}},
        {"no card file to speak of",
         "no figures",
         R"({"classes": []})",
         {updated, QStringLiteral("log reload after sync failed: illegal value at byte "),
          QStringLiteral("log the next start will fail with that, unless the server brings better files"), line}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        QDir(folder.filePath(QStringLiteral("support"))).removeRecursively();
        launch();
        serveManifest("feedbeef");
        write("bundle/winrates/class_winrates.json", c.classFile);
        serveBundle(c.cardFile);
        steps.clear();
        syncQueue->betweenWorkAndResult = [this] {
            // From here on nothing is left to be read.
            QDir(folder.filePath(QStringLiteral("support/Pelloran/config/winrates"))).removeRecursively();
            EXPECT_TRUE(store.stats(QStringLiteral("OWN"))) << "the main thread's data is its own";
            EXPECT_TRUE(steps.isEmpty());
        };
        syncQueue->finishNext();
        syncQueue->betweenWorkAndResult = {};
        ASSERT_EQ(steps.size(), c.told.size()) << steps.join(u'\n').toStdString();
        for (qsizetype i = 0; i < steps.size(); ++i) {
            EXPECT_TRUE(steps[i].startsWith(c.told[i])) << steps[i].toStdString();
        }
        ASSERT_EQ(syncQueue->waiting(), 1U) << "the earlier data is let go of there, too";
        syncQueue->finishNext();
        EXPECT_EQ(steps.size(), c.told.size());
        delegate.reset();
    }
}

TEST_F(AppDelegateTest, LoadsWhatASyncBringsWhileTheFirstAlertIsUp) {
    write("resources/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    serveManifest("feedbeef");
    serveBundle(R"({"cards": [{"card_id": "NEW"}]})");
    alerts.whenShown = [this] {
        EXPECT_TRUE(item.choose(Action::checkConfigNow));
        syncQueue->finishNext();
        EXPECT_TRUE(store.stats(QStringLiteral("NEW")));
    };
    launch();
    EXPECT_EQ(alerts.shown.size(), 1U);
}

TEST_F(AppDelegateTest, KeepsItsDataWhenWhatASyncBroughtCannotBeLoaded) {
    launch();
    serveManifest("feedbeef");
    serveBundle("no figures");
    syncQueue->finishNext();
    EXPECT_TRUE(store.stats(QStringLiteral("OWN")));
    EXPECT_EQ(steps.filter(QStringLiteral("log reload after sync failed: ")).size(), 1);
    EXPECT_EQ(steps.filter(QStringLiteral("log the next start will fail with that"))
                  .filter(QStringLiteral("/winrates/all_classes_LAST_7_DAYS.json is removed"))
                  .size(),
              1)
        << "which file it is, and what to do";
    EXPECT_EQ(lastMessage(), QStringLiteral("Config updated · feedbeef… · Waiting for Arena draft…"));
}

TEST_F(AppDelegateTest, DoesNotBlankADraftWhenASyncEnds) {
    beginDraft();
    launch();
    queue.finishNext();
    const auto before = panel.snapshots.size();
    syncQueue->finishNext();
    EXPECT_EQ(panel.snapshots.size(), before);
    endDraft();
    delegate->refreshNow();
    EXPECT_EQ(lastMessage(), QStringLiteral("Bundled/local config · bundled · Waiting for Arena draft…"));
}

TEST_F(AppDelegateTest, TellsTheLastSyncInTheNewLanguage) {
    launch();
    syncQueue->finishNext();
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_EQ(lastMessage(), QStringLiteral("内置/本地配置 · 内置 · 等待进入竞技场选卡界面…"));
}

TEST_F(AppDelegateTest, HearsNothingOfASyncThatWasTooMuch) {
    launch();
    syncQueue->finishNext();
    const QString line = QStringLiteral("Bundled/local config · bundled · Waiting for Arena draft…");
    ASSERT_EQ(lastMessage(), line);
    // What it would say if it took the second for the last.
    installConfiguration("1a2b3c4d5e6f");
    syncMeetsAnother([this, &line] {
        EXPECT_EQ(lastMessage(), line);
        delegate->refreshNow();
        EXPECT_EQ(lastMessage(), line) << "the service's idle line";
        AppLanguage::setPreference(AppLanguage::zh);
        EXPECT_EQ(lastMessage(), QStringLiteral("内置/本地配置 · 1a2b3c4d… · 等待进入竞技场选卡界面…"))
            << "of the result before";
        AppLanguage::setPreference(AppLanguage::en);
    });
    EXPECT_EQ(steps.filter(QStringLiteral("config sync")).size(), 2) << "two of three syncs were heard of";
}

TEST_F(AppDelegateTest, StillBootsAfterASyncThatWasTooMuch) {
    launch();
    syncMeetsAnother([this] {
        EXPECT_EQ(lastMessage(), bootEnglish);
        AppLanguage::setPreference(AppLanguage::zh);
        EXPECT_EQ(lastMessage(), bootChinese) << "there is no result yet";
    });
}

TEST_F(AppDelegateTest, NamesTheConfigurationInstalledNotTheOneOffered) {
    launch();
    serveManifest(" feedbeefcafe");
    serveBundle(R"({"cards": [{"card_id": "NEW"}]})");
    syncQueue->finishNext();
    EXPECT_EQ(steps.filter(QStringLiteral("log config sync")),
              QStringList{QStringLiteral("log config sync: Config updated ( feedbee…)")});
    EXPECT_EQ(lastMessage(), QStringLiteral("Config updated · feedbeef… · Waiting for Arena draft…"));
}

TEST_F(AppDelegateTest, GoesOnAtItsWorkWhileAnAlertIsUp) {
    launch();
    updateServer.answer(QStringLiteral("https://news.test/download/latest.json"), 200, R"({"version": "1.1"})");
    serveManifest("feedbeef");
    serveBundle(R"({"cards": [{"card_id": "NEW"}]})");
    alerts.pressed = 2; // ignore
    bool first = true;
    alerts.whenShown = [this, &first] {
        if (!std::exchange(first, false)) {
            return;
        }
        syncQueue->finishNext();
        EXPECT_TRUE(store.stats(QStringLiteral("NEW"))) << "a sync brings its data";
        beginDraft();
        delegate->refreshNow();
        queue.finishNext();
        EXPECT_TRUE(panel.snapshots.back().inDraft) << "a draft is followed";
        EXPECT_TRUE(item.choose(Action::selectLanguage, QStringLiteral("zh")));
        EXPECT_EQ(item.menu, statusMenu(AppLanguage::zh)) << "a language is taken";
        EXPECT_TRUE(item.choose(Action::checkAppUpdateNow));
        updateQueue.finishNext();
        EXPECT_EQ(alerts.shown.size(), 2U) << "another alert comes on top";
        delegate->applicationShouldHandleReopen();
        EXPECT_TRUE(item.choose(Action::quit));
        delegate->applicationWillTerminate();
    };
    updateQueue.finishNext();
    ASSERT_EQ(alerts.shown.size(), 2U);
    EXPECT_EQ(alerts.shown[0].messageText, QStringLiteral("Update Available"));
    EXPECT_EQ(alerts.shown[1].messageText, QStringLiteral("发现新版本"));
    EXPECT_THAT(exitCodes, ElementsAre(0));
}

TEST_F(AppDelegateTest, AsksItsServersWhenTold) {
    launch();
    syncQueue->finishNext();
    updateQueue.finishNext();
    ASSERT_TRUE(alerts.shown.empty()) << "nobody asked";
    EXPECT_TRUE(item.choose(Action::checkConfigNow));
    EXPECT_EQ(syncQueue->waiting(), 1U);
    EXPECT_TRUE(item.choose(Action::checkAppUpdateNow));
    ASSERT_EQ(updateQueue.waiting(), 1U);
    updateQueue.finishNext();
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].messageText, QStringLiteral("Can’t check for updates"));
}

TEST_F(AppDelegateTest, HearsOfNoSyncAfterItsEnd) {
    launch();
    const auto before = panel.snapshots.size();
    const auto* poll = configSync->findChild<QTimer*>();
    ASSERT_TRUE(poll && poll->isActive());
    delegate->applicationWillTerminate();
    EXPECT_FALSE(poll->isActive());
    syncQueue->finishNext();
    EXPECT_EQ(panel.snapshots.size(), before);
    EXPECT_TRUE(steps.filter(QStringLiteral("config sync")).isEmpty());
}

TEST_F(AppDelegateTest, TakesNoDataOverAfterItsEnd) {
    launch();
    serveManifest("feedbeef");
    serveBundle(R"({"cards": [{"card_id": "NEW"}]})");
    delegate->applicationWillTerminate();
    syncQueue->finishNext();
    EXPECT_FALSE(store.stats(QStringLiteral("NEW")));
    EXPECT_TRUE(steps.filter(QStringLiteral("config sync")).isEmpty());

    // The sync outlives it, and may go on for somebody else.
    delegate.reset();
    QObject somebody;
    bool told = false;
    serveManifest("newer");
    configSync->syncAsync(&somebody, [&told](const ConfigSyncResult& result) { told = result.didUpdateFiles(); });
    while (syncQueue->waiting() > 0) {
        syncQueue->finishNext();
    }
    EXPECT_TRUE(told);
}

TEST_F(AppDelegateTest, IsHeldWeaklyByItsService) {
    launch();
    const std::weak_ptr<AppDelegate> watched = delegate;
    delegate.reset();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(panel.contextMenu, nullptr) << "the panel goes with it";
}

} // namespace
} // namespace pelloran
