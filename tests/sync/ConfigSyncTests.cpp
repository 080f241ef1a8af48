#include "sync/ConfigSync.h"

#include "base/Digest.h"
#include "base/Log.h"
#include "sync/InstallTools.h"
#include "sync/TarArchive.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/ManualQueue.h"
#include "tests/support/Printing.h"
#include "tests/support/TarWriter.h"
#include "tests/sync/TextLanguage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <ostream>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

static void PrintTo(const ConfigSyncResult& result, std::ostream* out) {
    *out << result.userMessage().toStdString();
}

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Result = ConfigSyncResult;

class ConfigSyncTest : public ::testing::Test {
protected:
    ConfigSyncTest() { makeSync(u"https://server"_s); }

    void makeSync(const QString& server) {
        auto client = std::make_unique<testing::FakeHttpClient>();
        auto manualQueue = std::make_unique<testing::ManualQueue>();
        http = client.get();
        queue = manualQueue.get();
        InstallTools tools;
        tools.temporaryFolder = folder.filePath(u"temporary"_s);
        tools.lockPatience = std::chrono::milliseconds(50);
        sync = std::make_unique<ConfigSync>(server, ConfigInstaller(LocalConfig(files), tools), std::move(client),
                                            std::move(manualQueue));
    }

    static QByteArray bundle(const QByteArray& content) {
        testing::TarWriter writer;
        writer.add({.name = "winrates/class_winrates.json", .content = content});
        return writer.gzipped();
    }

    void offer(const QByteArray& manifest, const QByteArray& bytes) const {
        http->answer(manifestURL, 200, manifest);
        http->answer(bundleURL, 200, bytes);
    }

    void installOld() {
        offer(R"({"hash": "oldhash123"})", bundle("old"));
        ASSERT_EQ(sync->syncAtLaunch(), (Result{Result::Updated{u"oldhash123"_s}}));
        http->requests.clear();
    }

    QByteArray installed() const {
        QFile file(directory + u"/winrates/class_winrates.json"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("nothing");
    }

    QStringList requested() const {
        QStringList urls;
        for (const HttpClient::Request& request : http->requests) {
            urls.append(request.url.toString(QUrl::FullyEncoded));
        }
        return urls;
    }

    const QString manifestURL = u"https://server/pelloran/latest/manifest.json"_s;
    const QString bundleURL = u"https://server/pelloran/latest/config.tar.gz"_s;
    const testing::TextLanguage english;
    QTemporaryDir folder;
    testing::FakeApplicationFiles files{folder.path()};
    QString directory = files.applicationSupportFolder() + u"/Pelloran/config"_s;
    testing::FakeHttpClient* http = nullptr; // owned by the sync
    testing::ManualQueue* queue = nullptr;   // owned by the sync
    std::unique_ptr<ConfigSync> sync;
    QObject receiver;
};

TEST_F(ConfigSyncTest, BeginsWithItsServersFolder) {
    EXPECT_EQ(sync->baseURLString, u"https://server/pelloran/latest"_s);
    EXPECT_EQ(sync->timeout, 12);
    EXPECT_EQ(ConfigSync::pollInterval, std::chrono::seconds(600));
    EXPECT_EQ(ConfigSync::queueName(), u"com.local.pelloran.configsync"_s);
}

TEST_F(ConfigSyncTest, InstallsWhatIsNew) {
    const QByteArray bytes = bundle("new");
    const QByteArray manifest = R"({"hash": "newhash", "bundle_sha256": ")" + sha256Hex(bytes).toLatin1() + R"("})";
    offer(manifest, bytes);
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Updated{u"newhash"_s}}));
    EXPECT_EQ(installed(), "new");
    EXPECT_EQ(sync->localHash(), u"newhash"_s);
    QFile stored(directory + u"/manifest.json"_s);
    ASSERT_TRUE(stored.open(QIODevice::ReadOnly));
    EXPECT_EQ(stored.readAll(), manifest) << "byte for byte";
    EXPECT_EQ(requested(), (QStringList{manifestURL, bundleURL}));
}

TEST_F(ConfigSyncTest, AsksOnceWhenNothingChanged) {
    installOld();
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::UpToDate{u"oldhash123"_s}}));
    EXPECT_EQ(requested(), QStringList{manifestURL});
}

TEST_F(ConfigSyncTest, DownloadsAgainWhatIsMissing) {
    installOld();
    ASSERT_TRUE(QFile::remove(directory + u"/winrates/class_winrates.json"_s));
    EXPECT_EQ(sync->localHash(), u"oldhash123"_s);
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Updated{u"oldhash123"_s}}));
    ASSERT_TRUE(QDir(directory).removeRecursively());
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Updated{u"oldhash123"_s}}));
    EXPECT_EQ(installed(), "old");
}

TEST_F(ConfigSyncTest, ComparesTheManifestsHashAsItStands) {
    offer(R"({"hash": "h\n"})", bundle("x"));
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Updated{u"h\n"_s}}));
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Updated{u"h\n"_s}})) << "the stored one is read trimmed";
}

TEST_F(ConfigSyncTest, AsksWithinLimits) {
    offer(R"({"hash": "new"})", bundle("x"));
    sync->syncAtLaunch();
    sync->timeout = 2.5;
    sync->syncAtLaunch();
    ASSERT_EQ(http->requests.size(), 3u);
    EXPECT_EQ(http->requests[0].transferTimeout, std::chrono::seconds(12));
    EXPECT_EQ(http->requests[0].deadline, std::chrono::seconds(14));
    EXPECT_EQ(http->requests[0].maximumBytes, 1024 * 1024);
    EXPECT_EQ(http->requests[1].deadline, std::chrono::seconds(14));
    EXPECT_EQ(http->requests[1].maximumBytes, 64 * 1024 * 1024);
    EXPECT_EQ(http->requests[2].transferTimeout, std::chrono::milliseconds(2500));
    EXPECT_EQ(http->requests[2].deadline, std::chrono::milliseconds(4500));
}

TEST_F(ConfigSyncTest, LooksForTheBundleWhereTheManifestSays) {
    struct Case {
        const char* why;
        const char* manifest;
        QString url;
    };

    const Case cases[] = {
        {"absent", R"({"hash": "h"})", u"https://server/pelloran/latest/config.tar.gz"_s},
        {"named", R"({"hash": "h", "bundle": "config-12ab.tar.gz"})",
         u"https://server/pelloran/latest/config-12ab.tar.gz"_s},
        {"empty", R"({"hash": "h", "bundle": ""})", u"https://server/pelloran/latest/"_s},
        {"Chinese is sent encoded", R"({"hash": "h", "bundle": "包"})", u"https://server/pelloran/latest/%E5%8C%85"_s},
        {"another server's address is a name on this one", R"({"hash": "h", "bundle": "https://other/x"})",
         u"https://server/pelloran/latest/https://other/x"_s},
        {"also without its scheme", R"({"hash": "h", "bundle": "//other/x"})",
         u"https://server/pelloran/latest///other/x"_s},
        {"also behind what would be a user", R"({"hash": "h", "bundle": "@other/x"})",
         u"https://server/pelloran/latest/@other/x"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        http->requests.clear();
        http->answer(manifestURL, 200, c.manifest);
        sync->syncAtLaunch();
        EXPECT_EQ(requested(), (QStringList{manifestURL, c.url}));
    }
}

TEST_F(ConfigSyncTest, PutsNothingIntoTheRequestButAnAddress) {
    http->answer(manifestURL, 200, R"({"hash": "h", "bundle": "x HTTP/1.1\r\nX-Header: y\r\n\r\n"})");
    EXPECT_EQ(sync->syncAtLaunch().userMessage(),
              u"Config sync failed; using local/bundled data: Invalid config server URL"_s);
    EXPECT_EQ(requested(), QStringList{manifestURL});
}

// Which content is the newer one only the server knows.
TEST_F(ConfigSyncTest, GoesBackToOlderContentWhenToldTo) {
    offer(R"({"hash": "new", "version": 2, "updated_at": "2026-11-22T00:00:00Z"})", bundle("new"));
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Updated{u"new"_s}}));
    offer(R"({"hash": "old", "version": 1, "updated_at": "2024-01-01T00:00:00Z"})", bundle("old"));
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Updated{u"old"_s}}));
}

// What goes wrong before there is a bundle to unpack, and after.
struct Failure {
    const char* why;
    std::function<void(testing::FakeHttpClient&)> arrange;
    QString description;
};

const QString manifestOf = u"https://server/pelloran/latest/manifest.json"_s;
const QString bundleOf = u"https://server/pelloran/latest/config.tar.gz"_s;

QString whatTarSaysOf(const QByteArray& bytes) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"config.tar.gz"_s));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    const auto unpacked = TarArchive::extract(file.fileName(), folder.path());
    return unpacked ? u"nothing"_s : std::get<ConfigSyncError::ExtractFailed>(unpacked.error().reason).message;
}

const std::vector<Failure>& failures() {
    static const auto answer = [](const QString& url, int status, const QByteArray& body) {
        return [=](testing::FakeHttpClient& http) { http.answer(url, status, body); };
    };
    static const auto bundle = [](const QByteArray& manifest, const QByteArray& bytes) {
        return [=](testing::FakeHttpClient& http) {
            http.answer(manifestOf, 200, manifest);
            http.answer(bundleOf, 200, bytes);
        };
    };
    static const std::vector<Failure> all{
        {"no server", [](auto& http) { http.fail(manifestOf, u"Connection refused"_s); }, u"Connection refused"_s},
        {"too slow", [](auto& http) { http.fail(manifestOf, u"The request timed out."_s); },
         u"The request timed out."_s},
        {"no manifest", answer(manifestOf, 404, R"({"hash": "new"})"), u"Config server HTTP 404"_s},
        {"the server is broken", answer(manifestOf, 500, ""), u"Config server HTTP 500"_s},
        {"not changed is no answer to what we ask", answer(manifestOf, 304, ""), u"Config server HTTP 304"_s},
        {"below the range", answer(manifestOf, 199, R"({"hash": "new"})"), u"Config server HTTP 199"_s},
        {"above the range", answer(manifestOf, 300, R"({"hash": "new"})"), u"Config server HTTP 300"_s},
        {"an empty answer is an answer", answer(manifestOf, 204, ""), u"illegal value at byte 0"_s},
        {"a sign-in page", answer(manifestOf, 200, "<html>"), u"illegal value at byte 1"_s},
        {"an empty hash", answer(manifestOf, 200, R"({"hash": ""})"), u"Invalid remote manifest"_s},
        {"a hash of another type", answer(manifestOf, 200, R"({"hash": 5})"), u"hash is not a text"_s},
        {"no bundle",
         [](auto& http) {
             http.answer(manifestOf, 200, R"({"hash": "new"})");
             http.answer(bundleOf, 404, "");
         },
         u"Config server HTTP 404"_s},
        {"a bundle's name that makes no address", answer(manifestOf, 200, R"({"hash": "new", "bundle": "a b"})"),
         u"Invalid config server URL"_s},
        {"another bundle", bundle(R"({"hash": "new", "bundle_sha256": "0123456789abcdef"})", "bytes"),
         u"Config package hash mismatch (expected 0123456789ab… got 277089d91c0b…)"_s},
        {"the digest in upper case",
         bundle(
             R"({"hash": "new", "bundle_sha256": "277089D91C0BDF4F2E6862BA7E4A07605119431F5D13F726DD352B06F1B206A9"})",
             "bytes"),
         u"Config package hash mismatch (expected 277089D91C0B… got 277089d91c0b…)"_s},
        {"no archive", bundle(R"({"hash": "new", "bundle_sha256": ""})", "bytes"),
         u"Failed to extract config: "_s + whatTarSaysOf("bytes")},
    };
    return all;
}

TEST_F(ConfigSyncTest, FailsWithoutFilesOfItsOwn) {
    for (const Failure& failure : failures()) {
        SCOPED_TRACE(failure.why);
        makeSync(u"https://server"_s);
        failure.arrange(*http);
        EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Failed{failure.description}}));
    }
}

TEST_F(ConfigSyncTest, GoesOnWithTheFilesItHas) {
    installOld();
    for (const Failure& failure : failures()) {
        SCOPED_TRACE(failure.why);
        makeSync(u"https://server"_s);
        failure.arrange(*http);
        EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::SkippedOffline{u"oldhash123"_s, failure.description}}));
        EXPECT_EQ(installed(), "old");
        EXPECT_EQ(sync->localHash(), u"oldhash123"_s);
        EXPECT_TRUE(QDir(folder.filePath(u"temporary"_s)).isEmpty());
    }
}

TEST_F(ConfigSyncTest, FilesWithoutAHashAreFilesToo) {
    installOld();
    ASSERT_TRUE(QFile::remove(directory + u"/.content_hash"_s));
    http->answer(manifestURL, 404, "");
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::SkippedOffline{std::nullopt, u"Config server HTTP 404"_s}}));
}

TEST_F(ConfigSyncTest, KnowsAnAddressThatIsNone) {
    struct Case {
        const char* why;
        QString base;
        QString message;
    };

    const Case cases[] = {
        {"a space", u"https://ser ver/pelloran/latest"_s, u"Invalid config server URL"_s},
        {"a space in the path", u"https://server/a b"_s, u"Invalid config server URL"_s},
        {"a broken escape", u"https://server/%zz"_s, u"Invalid config server URL"_s},
        {"a port that is none", u"https://server:port"_s, u"Invalid config server URL"_s},
        {"only a path is an address, which nothing answers", u""_s, u"Connection refused"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        sync->baseURLString = c.base;
        EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::Failed{c.message}}));
    }
}

TEST_F(ConfigSyncTest, LeavesTheFilesToAnotherProcess) {
    installOld();
    offer(R"({"hash": "new"})", bundle("new"));
    QLockFile other(directory + u".lock"_s);
    ASSERT_TRUE(other.lock());
    EXPECT_EQ(sync->syncAtLaunch(), (Result{Result::SkippedBusy{}}));
    EXPECT_EQ(installed(), "old");
}

TEST_F(ConfigSyncTest, MendsAnInterruptedSwapBeforeAnythingElse) {
    installOld();
    sync.reset();
    ASSERT_TRUE(QDir().rename(directory, directory + u".bak"_s));
    setLogSink([](const QString&) {});
    makeSync(u"https://server"_s);
    setLogSink({});
    EXPECT_EQ(sync->localHash(), u"oldhash123"_s);
}

TEST_F(ConfigSyncTest, WorksOnItsQueueAndDelivers) {
    offer(R"({"hash": "new"})", bundle("new"));
    std::vector<Result> results;
    sync->syncAsync(&receiver, [&](const Result& result) { results.push_back(result); });
    EXPECT_THAT(http->requests, IsEmpty());
    ASSERT_EQ(queue->waiting(), 1u);
    queue->finishNext();
    EXPECT_THAT(results, ElementsAre(Result{Result::Updated{u"new"_s}}));
}

TEST_F(ConfigSyncTest, DeliversNothingToWhomIsGone) {
    auto other = std::make_unique<QObject>();
    bool delivered = false;
    sync->syncAsync(other.get(), [&](const Result&) { delivered = true; });
    other.reset();
    queue->finishNext();
    EXPECT_FALSE(delivered);
}

TEST_F(ConfigSyncTest, HasAnUpdatePreparedOnTheQueue) {
    QStringList steps;
    std::weak_ptr<int> held;
    sync->prepareUpdate = [&] {
        steps.append(u"prepared with "_s + QString::fromUtf8(installed()));
        const auto data = std::make_shared<int>();
        held = data;
        return [&steps, data] { steps.append(u"taken over"_s); };
    };
    queue->betweenWorkAndResult = [&] { steps.append(u"delivered"_s); };
    const auto complete = [&](const Result& result) { steps.append(result.userMessage()); };

    offer(R"({"hash": "new"})", bundle("new"));
    sync->syncAsync(&receiver, complete);
    queue->finishNext();
    EXPECT_EQ(steps,
              (QStringList{u"prepared with new"_s, u"delivered"_s, u"taken over"_s, u"Config updated (new…)"_s}));
    EXPECT_FALSE(held.expired()) << "that is the queue's, too";
    queue->finishNext();
    EXPECT_TRUE(held.expired());

    steps.clear();
    sync->syncAsync(&receiver, complete);
    queue->finishNext();
    EXPECT_EQ(steps, (QStringList{u"delivered"_s, u"Config is up to date (new…)"_s})) << "nothing new to prepare";

    steps.clear();
    sync->loadedHash = u"older"_s;
    sync->syncAsync(&receiver, complete);
    queue->finishNext();
    EXPECT_EQ(steps,
              (QStringList{u"prepared with new"_s, u"delivered"_s, u"taken over"_s, u"Config is up to date (new…)"_s}))
        << "another process has installed it";
    EXPECT_EQ(sync->loadedHash, u"new"_s);
    steps.clear();
    queue->finishNext();
    EXPECT_TRUE(held.expired());
    EXPECT_EQ(steps, QStringList{u"delivered"_s});

    steps.clear();
    sync->syncAsync(&receiver, complete);
    queue->finishNext();
    EXPECT_EQ(steps, (QStringList{u"delivered"_s, u"Config is up to date (new…)"_s})) << "once";

    steps.clear();
    http->fail(manifestURL, u"no server"_s);
    sync->syncAsync(&receiver, complete);
    queue->finishNext();
    EXPECT_EQ(steps, (QStringList{u"delivered"_s, u"Offline, using local config: no server"_s}));

    steps.clear();
    offer(R"({"hash": "newer"})", bundle("newer"));
    auto other = std::make_unique<QObject>();
    sync->syncAsync(other.get(), complete);
    other.reset();
    queue->finishNext();
    EXPECT_EQ(steps, (QStringList{u"prepared with newer"_s, u"delivered"_s})) << "nobody is there to take it over";
    EXPECT_TRUE(held.expired());
}

TEST_F(ConfigSyncTest, MayBeEndedByWhoIsToldOfAnUpdate) {
    bool destroyed = false;
    sync->prepareUpdate = [&destroyed] {
        const std::shared_ptr<int> data(new int, [&destroyed](const int* held) {
            destroyed = true;
            delete held;
        });
        return [data] {};
    };
    offer(R"({"hash": "new"})", bundle("new"));
    sync->syncAsync(&receiver, [this](const Result&) { sync.reset(); });
    queue->finishNext();
    EXPECT_TRUE(destroyed) << "there is no queue any more to do it on";
}

TEST_F(ConfigSyncTest, PreparesTheFilesOfItsOwnSync) {
    QList<QByteArray> prepared;
    sync->prepareUpdate = [&] {
        prepared.append(installed());
        return [] {};
    };
    offer(R"({"hash": "first"})", bundle("first"));
    sync->syncAsync(&receiver, [](const Result&) {});
    sync->syncAsync(&receiver, [](const Result&) {});
    queue->betweenWorkAndResult = [this] { offer(R"({"hash": "second"})", bundle("second")); };
    queue->finishNext();
    queue->finishNext();
    EXPECT_EQ(prepared, (QList<QByteArray>{"first", "second"}));
}

TEST_F(ConfigSyncTest, IsBusyOnlyWhileItSyncs) {
    std::vector<Result> results;
    const auto keep = [&](const Result& result) { results.push_back(result); };
    sync->syncAsync(&receiver, keep);
    sync->syncAsync(&receiver, keep);
    http->onRequest = [this](const HttpClient::Request&) {
        http->onRequest = nullptr;
        queue->finishNext(); // as if the queue did not wait
    };
    queue->finishNext();
    EXPECT_THAT(results, ElementsAre(Result{Result::SkippedBusy{}}, Result{Result::Failed{u"Connection refused"_s}}));
    sync->syncAsync(&receiver, keep);
    queue->finishNext();
    EXPECT_EQ(results.back(), (Result{Result::Failed{u"Connection refused"_s}}));
}

TEST_F(ConfigSyncTest, ASettingHoldsFromTheNextSyncOn) {
    sync->syncAsync(&receiver, [](const Result&) {});
    sync->baseURLString = u"https://other"_s;
    sync->syncAsync(&receiver, [](const Result&) {});
    queue->finishNext();
    queue->finishNext();
    EXPECT_EQ(requested(), (QStringList{manifestURL, u"https://other/manifest.json"_s}));
}

class PeriodicSyncTest : public ConfigSyncTest {
protected:
    QTimer& timer() const { return *sync->findChild<QTimer*>(); }

    void start(bool immediate) {
        sync->startPeriodicSync(&receiver, [this](const Result&) { ++delivered; }, immediate);
    }

    int delivered = 0;
};

TEST_F(PeriodicSyncTest, BeginsWhenTold) {
    EXPECT_FALSE(timer().isActive());
    start(true);
    EXPECT_TRUE(timer().isActive());
    EXPECT_FALSE(timer().isSingleShot());
    EXPECT_EQ(timer().intervalAsDuration(), std::chrono::minutes(10));
    EXPECT_EQ(timer().timerType(), Qt::VeryCoarseTimer);
    EXPECT_EQ(queue->waiting(), 1u) << "one now";
    queue->finishNext();
    EXPECT_EQ(delivered, 1);
}

TEST_F(PeriodicSyncTest, CanBeginLater) {
    start(false);
    EXPECT_TRUE(timer().isActive());
    EXPECT_EQ(queue->waiting(), 0u);
}

TEST_F(PeriodicSyncTest, SyncsAtEachFiring) {
    timer().setInterval(0);
    start(false);
    while (queue->waiting() < 2) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    sync->stopPeriodicSync();
    queue->finishNext();
    EXPECT_EQ(delivered, 1);
}

TEST_F(PeriodicSyncTest, AnotherStartReplacesTheFirst) {
    timer().setInterval(0);
    int first = 0;
    sync->startPeriodicSync(&receiver, [&](const Result&) { ++first; }, false);
    start(false);
    while (queue->waiting() == 0) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_EQ(queue->waiting(), 1u) << "one firing, one sync";
    queue->finishNext();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(delivered, 1);
}

TEST_F(PeriodicSyncTest, Stops) {
    start(false);
    sync->stopPeriodicSync();
    EXPECT_FALSE(timer().isActive());
    sync->stopPeriodicSync();
    start(false);
    EXPECT_TRUE(timer().isActive());
}

} // namespace

} // namespace pelloran
