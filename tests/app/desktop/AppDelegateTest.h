#pragma once

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

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

// The program with every part of the machine a fake, and files in a folder of its own.
namespace pelloran {

inline const QString bootEnglish = QStringLiteral("Local config · bundled · syncing… · Waiting for Arena draft…");
inline const QString bootChinese = QStringLiteral("本地配置 · 内置 · 后台同步中… · 等待进入竞技场选卡界面…");

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
        configServer->answer(onConfigServer("manifest.json"), 200, R"({"hash": ")" + hash + R"("})");
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
        configServer->answer(onConfigServer("config.tar.gz"), 200, file.readAll());
    }

    // Has a second sync come while the first waits for its server, and looks at what the second has done.
    void syncMeetsAnother(const std::function<void()>& look) {
        EXPECT_TRUE(item.choose(StatusMenuEntry::Action::checkConfigNow));
        EXPECT_TRUE(item.choose(StatusMenuEntry::Action::checkConfigNow));
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

    static QString onConfigServer(const char* file) {
        return QStringLiteral("https://data.test/pelloran/latest/") + QString::fromUtf8(file);
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

} // namespace pelloran
