// The contracts of what needs neither widgets nor a display.
#include "tests/contracts/ApplicationFilesContract.h"
#include "tests/contracts/BrowserContract.h"
#include "tests/contracts/HttpClientContract.h"
#include "tests/contracts/SerialQueueContract.h"
#include "tests/contracts/UserDefaultsContract.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/fakes/FakeBrowser.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/fakes/ManualQueue.h"
#include "tests/platform/UrlHandler.h"
#include "tests/support/ScriptedServer.h"
#ifdef PELLORAN_WITH_MACOS
#include "platform/macos/CocoaUserDefaults.h"
#endif

#include <QNetworkProxyFactory>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

namespace pelloran::testing {

namespace {

using ::testing::Values;

// UserDefaults

#ifdef PELLORAN_WITH_MACOS

// A suite of the tests' own, not the user's choices.
std::unique_ptr<UserDefaults> suiteDefaults() {
    const QString suite = QStringLiteral("com.local.pelloran.tests");
    macos::forgetSuite(suite);
    return std::make_unique<macos::DefaultsStore>(macos::cocoaDefaults(suite));
}

INSTANTIATE_TEST_SUITE_P(Suite, UserDefaultsContract,
                         Values(BackEnd<std::unique_ptr<UserDefaults>>{"Suite", suiteDefaults}), nameOfBackEnd);

#else

// Qt asks for the user's folder once in a run, so all cases share one and clear it.
std::unique_ptr<UserDefaults> storedDefaults() {
    static const QTemporaryDir folder;
    QStandardPaths::setTestModeEnabled(false);
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.path()));
    QDir(folder.filePath(QStringLiteral("Pelloran"))).removeRecursively();
    return UserDefaults::create();
}

INSTANTIATE_TEST_SUITE_P(Settings, UserDefaultsContract,
                         Values(BackEnd<std::unique_ptr<UserDefaults>>{"Settings", storedDefaults}), nameOfBackEnd);

#endif
INSTANTIATE_TEST_SUITE_P(Fake, UserDefaultsContract,
                         Values(BackEnd<std::unique_ptr<UserDefaults>>{
                             "Fake", [] { return std::make_unique<FakeUserDefaults>(); }}),
                         nameOfBackEnd);

// ApplicationFiles

InstalledFiles besideTheProgram() {
    auto files = ApplicationFiles::create();
    const QString resources = files->executableFolder() + QStringLiteral("/resources");
    EXPECT_TRUE(QDir().mkpath(resources));
    auto folder = std::make_shared<QTemporaryDir>(resources + QStringLiteral("/test-XXXXXX"));
    const QString path = folder->path();
    return {std::move(folder), std::move(files), path, QFileInfo(path).fileName()};
}

InstalledFiles inAFolderOfTheTest() {
    auto folder = std::make_shared<QTemporaryDir>();
    auto files = std::make_unique<FakeApplicationFiles>(folder->path());
    const QString path = files->resourceFolder() + QStringLiteral("/winrates");
    return {std::move(folder), std::move(files), path, QStringLiteral("winrates")};
}

INSTANTIATE_TEST_SUITE_P(BackEnds, ApplicationFilesContract,
                         Values(BackEnd<InstalledFiles>{"Installed", besideTheProgram},
                                BackEnd<InstalledFiles>{"Fake", inAFolderOfTheTest}),
                         nameOfBackEnd);

// Browser

WatchedBrowser desktopBrowser() {
    auto desktop = std::make_shared<UrlHandler>();
    return {desktop, Browser::create(), [desktop] { return desktop->opened; }};
}

WatchedBrowser fakeBrowser() {
    auto fake = std::make_unique<FakeBrowser>();
    const auto* told = fake.get();
    return {{}, std::move(fake), [told] { return told->opened; }};
}

INSTANTIATE_TEST_SUITE_P(BackEnds, BrowserContract,
                         Values(BackEnd<WatchedBrowser>{"Desktop", desktopBrowser},
                                BackEnd<WatchedBrowser>{"Fake", fakeBrowser}),
                         nameOfBackEnd);

// HttpClient

// Taken, so that nobody else listens there, and without an ear itself.
QUrl portOfNobody() {
    static QTcpSocket taken;
    if (taken.localPort() == 0) {
        EXPECT_TRUE(taken.bind(QHostAddress::LocalHost));
    }
    return QUrl(QStringLiteral("http://127.0.0.1:%1/x").arg(taken.localPort()));
}

ServedClient clientOfAServer() {
    QNetworkProxyFactory::setUseSystemConfiguration(false); // loopback is reached without
    auto server = std::make_shared<ScriptedServer>();
    return {
        server,
        HttpClient::create(),
        [server](const QString& path) { return server->url(path); },
        [server](const QString& path, int status, const QByteArray& body) {
            server->on(path.toUtf8(), ScriptedServer::answer(QByteArray::number(status) + " Some Reason", {}, body));
        },
        portOfNobody(),
    };
}

ServedClient fakeClient() {
    auto fake = std::make_unique<FakeHttpClient>();
    auto* told = fake.get();
    const QString host = QStringLiteral("http://h.example");
    return {
        {},
        std::move(fake),
        [host](const QString& path) { return QUrl(host + path); },
        [host, told](const QString& path, int status, const QByteArray& body) {
            told->answer(host + path, status, body);
        },
        QUrl(QStringLiteral("http://nowhere.example/x")),
    };
}

INSTANTIATE_TEST_SUITE_P(BackEnds, HttpClientContract,
                         Values(BackEnd<ServedClient>{"QtNetwork", clientOfAServer},
                                BackEnd<ServedClient>{"Fake", fakeClient}),
                         nameOfBackEnd);

// SerialQueue

DrivenQueue threadQueue() {
    return {SerialQueue::create(QStringLiteral("test")), [](SerialQueue& queue) {
                QObject receiver;
                bool last = false;
                queue.submit([] {}, &receiver, [&] { last = true; });
                EXPECT_TRUE(QTest::qWaitFor([&] { return last; }, 20'000));
            }};
}

DrivenQueue manualQueue() {
    return {std::make_unique<ManualQueue>(), [](SerialQueue& queue) {
                auto& manual = static_cast<ManualQueue&>(queue);
                while (manual.waiting() > 0) {
                    manual.finishNext();
                }
            }};
}

INSTANTIATE_TEST_SUITE_P(BackEnds, SerialQueueContract,
                         Values(BackEnd<DrivenQueue>{"Thread", threadQueue},
                                BackEnd<DrivenQueue>{"Manual", manualQueue}),
                         nameOfBackEnd);

} // namespace

} // namespace pelloran::testing
