#include "tests/app/desktop/AppDelegateTest.h"

#include <QTimer>

#include <gmock/gmock.h>

namespace pelloran {
namespace {

using Action = StatusMenuEntry::Action;
using ::testing::ElementsAre;

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
            configServer->fail(onConfigServer("manifest.json"), QStringLiteral("Connection refused"));
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

// As `pelloran sync` may, while the panel is shown.
TEST_F(AppDelegateTest, LoadsWhatAnotherProcessHasInstalled) {
    struct Case {
        const char* why;
        const char* before; // null: none
        const char* now;
        bool loads;
    };

    const Case cases[] = {
        {"other files", "1a2b3c4d", "feedbeef", true},
        {"the first ones", nullptr, "feedbeef", true},
        {"none: those that are loaded", "feedbeef", "feedbeef", false},
    };
    const QString line = QStringLiteral("Config up to date · feedbeef… · Waiting for Arena draft…");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        QDir(folder.filePath(QStringLiteral("support"))).removeRecursively();
        if (c.before) {
            installConfiguration(c.before);
        }
        launch();
        installConfiguration(c.now);
        write("support/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json", R"({"cards": [{"card_id": "NEW"}]})");
        serveManifest(c.now);
        syncQueue->betweenWorkAndResult = [this] {
            EXPECT_TRUE(store.stats(QStringLiteral("OWN"))) << "the main thread's data is its own";
        };
        steps.clear();
        syncQueue->finishNext();
        syncQueue->betweenWorkAndResult = {};
        EXPECT_EQ(store.stats(QStringLiteral("NEW")).has_value(), c.loads);
        QStringList told{QStringLiteral("log config sync: Config is up to date (feedbeef…)"),
                         QStringLiteral("snapshot ") + line};
        if (c.loads) {
            told.insert(1, QStringLiteral("log reloaded store cards=") + store.metaDescription() +
                               QStringLiteral("; source=") + store.cardsSourceDescription());
        }
        EXPECT_EQ(steps, told);
        while (syncQueue->waiting() > 0) {
            syncQueue->finishNext();
        }
        EXPECT_TRUE(item.choose(Action::checkConfigNow));
        steps.clear();
        syncQueue->finishNext();
        EXPECT_TRUE(steps.filter(QStringLiteral("reloaded")).isEmpty()) << "once";
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

} // namespace
} // namespace pelloran
