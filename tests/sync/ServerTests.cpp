// A sync with everything real but the server, which does what servers do on bad days.

#include "base/Digest.h"
#include "data/WinrateStore.h"
#include "sync/ConfigSync.h"
#include "sync/InstallTools.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/Printing.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TarWriter.h"
#include "tests/sync/TextLanguage.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QNetworkProxyFactory>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <map>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using Result = ConfigSyncResult;
using testing::ScriptedServer;

class ServerTest : public ::testing::Test {
protected:
    ServerTest() {
        // Loopback is reached without the proxy that this machine may have.
        QNetworkProxyFactory::setUseSystemConfiguration(false);
        tools.temporaryFolder = folder.filePath(u"temporary"_s);
        makeSync();
    }

    void makeSync() {
        sync = std::make_unique<ConfigSync>(server.base(), ConfigInstaller(LocalConfig(files), tools),
                                            HttpClient::create(), SerialQueue::create(ConfigSync::queueName()));
    }

    static QByteArray bundle(const QByteArray& card) {
        testing::TarWriter writer;
        writer.add({.name = "winrates/all_classes_LAST_7_DAYS.json",
                    .content = R"({"player_class": "ALL", "cards": [{"card_id": ")" + card + R"("}]})"});
        return writer.gzipped();
    }

    void serve(const QByteArray& path, const QByteArray& body) {
        server.on(path, ScriptedServer::answer("200 OK", {}, body));
    }

    static QByteArray manifestOf(const QByteArray& hash, const QByteArray& bytes) {
        return R"({"hash": ")" + hash + R"(", "bundle_sha256": ")" + sha256Hex(bytes).toLatin1() + R"("})";
    }

    void publish(const QByteArray& card) {
        const QByteArray bytes = bundle(card);
        serve(manifestPath, manifestOf("hash-of-" + card, bytes));
        serve(bundlePath, bytes);
    }

    // One sync as the application does it.
    Result syncOnce() {
        std::optional<Result> result;
        sync->syncAsync(&receiver, [&](const Result& delivered) { result = delivered; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return result.has_value(); }, 30'000));
        return result.value_or(Result{Result::Failed{u"nothing was delivered"_s}});
    }

    void installOld() {
        publish("OLD");
        ASSERT_EQ(syncOnce(), (Result{Result::Updated{u"hash-of-OLD"_s}}));
        oldContent = content();
        ASSERT_EQ(oldContent.size(), 3u) << "the data, the hash and the manifest";
    }

    // Every file of the configuration folder with its bytes.
    std::map<QString, QByteArray> content() const {
        std::map<QString, QByteArray> found;
        QDirIterator entry(directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (entry.hasNext()) {
            QFile file(entry.next());
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            found[file.fileName()] = file.readAll();
        }
        return found;
    }

    // Neither the folder of the download nor, beside the configuration folder, one of the next content or the last.
    void expectNothingLeftBehind() const {
        EXPECT_TRUE(QDir(tools.temporaryFolder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).isEmpty());
        EXPECT_EQ(QDir(QFileInfo(directory).path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                  QStringList{u"config"_s});
    }

    void expectOldData() {
        EXPECT_EQ(content(), oldContent);
        EXPECT_TRUE(loads(u"OLD"_s));
    }

    bool loads(const QString& card) {
        WinrateStore store(files);
        const auto loaded = store.loadFromBundle();
        EXPECT_TRUE(loaded);
        return loaded && store.byId().size() == 1 && store.stats(card).has_value();
    }

    const QByteArray manifestPath = "/pelloran/latest/manifest.json";
    const QByteArray bundlePath = "/pelloran/latest/config.tar.gz";
    const testing::TextLanguage english;
    QTemporaryDir folder;
    testing::FakeApplicationFiles files{folder.path()};
    const QString directory = files.applicationSupportFolder() + u"/Pelloran/config"_s;
    std::map<QString, QByteArray> oldContent;
    ScriptedServer server;
    InstallTools tools;
    std::unique_ptr<ConfigSync> sync;
    QObject receiver;
};

TEST_F(ServerTest, BringsWhatIsPublishedAndAsksOnceWhileItStays) {
    publish("FIRST");
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"hash-of-FIRST"_s}}));
    EXPECT_TRUE(loads(u"FIRST"_s));
    EXPECT_EQ(server.requests().size(), 2u);
    EXPECT_EQ(syncOnce(), (Result{Result::UpToDate{u"hash-of-FIRST"_s}}));
    EXPECT_EQ(server.requests().size(), 3u);
    publish("SECOND");
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"hash-of-SECOND"_s}}));
    EXPECT_TRUE(loads(u"SECOND"_s));
}

TEST_F(ServerTest, KeepsTheOldDataOnABadDay) {
    installOld();

    const auto archive = [](const testing::TarWriter::Entry& entry) {
        testing::TarWriter writer;
        writer.add({.name = "winrates/all_classes_LAST_7_DAYS.json", .content = "{}"});
        writer.add(entry);
        return writer.gzipped();
    };
    testing::TarWriter many;
    for (int i = 0; i <= 10'000; ++i) {
        many.add({.name = QByteArray::number(i)});
    }
    const QByteArray bytes = bundle("NEW");
    const QByteArray manifest = manifestOf("new", bytes);
    const QByteArray digest = sha256Hex(bytes).toLatin1();
    QByteArray damaged = bytes;
    damaged[damaged.size() / 2] = static_cast<char>(~damaged[damaged.size() / 2]);
    const auto ok = [](const QByteArray& body) { return ScriptedServer::answer("200 OK", {}, body); };

    struct Case {
        const char* why;
        ScriptedServer::Script manifest;
        ScriptedServer::Script bundle;
        QString reason; // a part of it
    };

    const auto published = [&](const char* why, const QByteArray& other, const QString& reason) {
        return Case{why, ok(manifestOf("new", other)), ok(other), reason};
    };
    const auto never = ScriptedServer::raw("");
    const auto stall = [](QTcpSocket&) {};
    const QString timedOut = u"The request timed out."_s;
    const QString mismatch = u"Config package hash mismatch (expected "_s;
    const QString undone = u"Failed to extract config: "_s;
    const QString outward = u"leads out of its folder"_s;
    const QString odd = u"is neither a file nor a folder"_s;
    const Case cases[] = {
        {"stalls before the head", stall, never, timedOut},
        {"stalls over the bundle", ok(manifest), stall, timedOut},
        {"trickles", ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", " ", 20), never, timedOut},
        {"trickles the bundle", ok(manifest), ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", "x", 20), timedOut},
        {"trickles the head", ScriptedServer::trickle("HTTP/1.1 200 OK\r\n", "X: y\r\n", 20), never, timedOut},
        {"hangs up", never, never, u"closed"_s},
        {"hangs up over the bundle", ok(manifest), never, u"closed"_s},
        {"speaks another language", ScriptedServer::raw("SSH-2.0-OpenSSH\r\n\r\n"), never, u""_s},
        {"cuts the manifest", ScriptedServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + manifest), never,
         u"closed"_s},
        {"cuts the bundle", ok(manifest),
         ScriptedServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + bytes.first(100)), u"closed"_s},
        {"cuts a bundle of unknown length", ok(manifest),
         ScriptedServer::raw("HTTP/1.0 200 OK\r\n\r\n" + bytes.first(100)), mismatch},
        {"says less than it sends", ok(manifest),
         ScriptedServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\nConnection: close\r\n\r\n" + bytes), mismatch},
        {"says less than it sends of the manifest",
         ScriptedServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 10\r\nConnection: close\r\n\r\n" + manifest), never,
         u"unterminated"_s},
        {"sends in circles", ScriptedServer::answer("302 Found", "Location: " + manifestPath + "\r\n", ""), never,
         u"redirects"_s},
        {"sends in circles over the bundle", ok(manifest),
         ScriptedServer::answer("302 Found", "Location: " + bundlePath + "\r\n", ""), u"redirects"_s},
        {"sends to a file", ScriptedServer::answer("302 Found", "Location: file:///etc/passwd\r\n", ""), never,
         u"Config server HTTP 302"_s},
        {"shows a sign-in page", ok("<html>sign in</html>"), never, u"illegal value"_s},
        {"shows a sign-in page for the bundle", ok(manifest), ok("<html>sign in</html>"), mismatch},
        {"has nothing to say", ScriptedServer::answer("204 No Content", {}, ""), never, u"illegal value"_s},
        {"has nothing to say of the bundle", ok(manifest), ScriptedServer::answer("204 No Content", {}, ""), mismatch},
        {"has no manifest", ScriptedServer::answer("404 Not Found", {}, "?"), never, u"Config server HTTP 404"_s},
        {"has no bundle", ok(manifest), ScriptedServer::answer("404 Not Found", {}, "?"), u"Config server HTTP 404"_s},
        {"is broken", ScriptedServer::answer("500 Oops", {}, "?"), never, u"Config server HTTP 500"_s},
        {"is broken over the bundle", ok(manifest), ScriptedServer::answer("500 Oops", {}, "?"),
         u"Config server HTTP 500"_s},
        {"sends a manifest without end",
         ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", QByteArray(100'000, ' '), 0), never,
         u"longer than 1048576 bytes"_s},
        {"sends two gigabytes", ok(manifest),
         ScriptedServer::trickle("HTTP/1.1 200 OK\r\nContent-Length: 2147483648\r\n\r\n", QByteArray(1'000'000, ' '),
                                 0),
         u"longer than 67108864 bytes"_s},
        {"sends an empty manifest", ok(""), never, u"illegal value"_s},
        {"sends an empty object", ok("{}"), never, u"hash is not a text"_s},
        {"sends an empty hash", ok(R"({"hash": ""})"), never, u"Invalid remote manifest"_s},
        {"sends other types", ok(R"({"hash": "new", "files": 1})"), never, u"files is not an object of texts"_s},
        {"names a bundle that is no address", ok(R"({"hash": "new", "bundle": "a b"})"), never,
         u"Invalid config server URL"_s},
        {"sends another bundle", ok(manifest), ok(bundle("OTHER")), mismatch},
        {"writes the digest in upper case", ok(R"({"hash": "new", "bundle_sha256": ")" + digest.toUpper() + R"("})"),
         ok(bytes),
         u"Config package hash mismatch (expected %1… got %2…)"_s.arg(QString::fromLatin1(digest.toUpper().first(12)),
                                                                      QString::fromLatin1(digest.first(12)))},
        published("publishes no archive", "garbage", undone),
        published("publishes nothing", "", undone),
        published("publishes half an archive", bytes.first(bytes.size() / 2), undone),
        published("publishes a damaged archive", damaged, undone),
        published("publishes what leads out of the folder", archive({.name = "../../evil", .content = "x"}), outward),
        published("publishes an absolute name", archive({.name = "/tmp/evil", .content = "x"}), outward),
        published("publishes a link", archive({.name = "l", .kind = '2', .linkTarget = "/tmp"}), odd),
        published("publishes a hard link", archive({.name = "l", .kind = '1', .linkTarget = "/etc/passwd"}), odd),
        published("publishes a device", archive({.name = "d", .kind = '3'}), odd),
        published("publishes a pipe", archive({.name = "p", .kind = '6'}), odd),
        published("publishes what fills the disk", archive({.name = "zeros", .kind = 'S', .hole = 600 * 1024 * 1024}),
                  u"Failed to extract config: the archive unpacks to more than 512 MiB"_s),
        published("publishes too many files", many.gzipped(),
                  u"Failed to extract config: the archive holds more than 10000 entries"_s),
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on(manifestPath, c.manifest);
        server.on(bundlePath, c.bundle);
        // A busy machine must not make a server silent that is not.
        sync->timeout = c.reason == timedOut ? 0.3 : 12;
        QElapsedTimer time;
        time.start();
        const Result result = syncOnce();
        EXPECT_LT(time.elapsed(), 60'000) << "nothing is waited for without end; tar alone takes a busy machine long";
        const auto* skipped = std::get_if<Result::SkippedOffline>(&result.outcome);
        ASSERT_TRUE(skipped) << result.userMessage().toStdString();
        EXPECT_EQ(skipped->localHash, u"hash-of-OLD"_s);
        EXPECT_FALSE(skipped->reason.isEmpty());
        EXPECT_TRUE(skipped->reason.contains(c.reason)) << skipped->reason.toStdString();
        expectOldData();
        expectNothingLeftBehind();
    }
    publish("NEW");
    sync->timeout = 12;
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"hash-of-NEW"_s}}));
    EXPECT_TRUE(loads(u"NEW"_s));
}

TEST_F(ServerTest, NobodyAtHome) {
    installOld();
    QTcpServer gone;
    ASSERT_TRUE(gone.listen(QHostAddress::LocalHost));
    sync->baseURLString = u"http://127.0.0.1:%1"_s.arg(gone.serverPort());
    gone.close();
    EXPECT_EQ(syncOnce(), (Result{Result::SkippedOffline{u"hash-of-OLD"_s, u"Connection refused"_s}}));
    expectOldData();
    expectNothingLeftBehind();
}

// The server is held back, and what it sends is not kept: neither the network nor the memory takes all of it.
TEST_F(ServerTest, StopsABundleWithoutEndAtTheLimit) {
    installOld();
    serve(manifestPath, R"({"hash": "new"})");
    std::atomic<qint64> sent = 0;
    const auto flood = ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", QByteArray(1'000'000, 'x'), 0);
    server.on(bundlePath, [&](QTcpSocket& socket) {
        QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, [&](qint64 count) { sent += count; });
        flood(socket);
    });
    EXPECT_EQ(syncOnce(),
              (Result{Result::SkippedOffline{u"hash-of-OLD"_s, u"the answer is longer than 67108864 bytes"_s}}));
    EXPECT_LT(sent, 100'000'000);
    expectOldData();
    expectNothingLeftBehind();
}

TEST_F(ServerTest, TakesABundleThatIsLabelledAsPacked) {
    const QByteArray bytes = bundle("FIRST");
    serve(manifestPath, manifestOf("new", bytes));
    server.on(bundlePath,
              ScriptedServer::answer("200 OK", "Content-Encoding: gzip\r\nContent-Type: application/x-tar\r\n", bytes));
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"new"_s}}));
    EXPECT_TRUE(loads(u"FIRST"_s));
}

TEST_F(ServerTest, FollowsAServerThatHasMoved) {
    const QByteArray bytes = bundle("FIRST");
    server.on(manifestPath,
              ScriptedServer::answer("301 Moved Permanently", "Location: /new/manifest\r\n", "over there"));
    server.on(bundlePath, ScriptedServer::answer("302 Found", "Location: /new/bundle\r\n", "over there"));
    serve("/new/manifest", manifestOf("new", bytes));
    serve("/new/bundle", bytes);
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"new"_s}}));
    EXPECT_TRUE(loads(u"FIRST"_s));
}

TEST_F(ServerTest, AnEmptyArchiveIsFetchedAgainAndAgain) {
    installOld();
    const QByteArray empty = testing::TarWriter().gzipped();
    serve(manifestPath, manifestOf("none", empty));
    serve(bundlePath, empty);
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"none"_s}}));
    EXPECT_EQ(content().size(), 2u) << "the hash and the manifest";
    const std::size_t before = server.requests().size();
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"none"_s}}));
    EXPECT_EQ(server.requests().size(), before + 2);
    server.on(manifestPath, ScriptedServer::answer("404 Not Found", {}, ""));
    EXPECT_EQ(syncOnce(), (Result{Result::Failed{u"Config server HTTP 404"_s}})) << "no files of its own to go on with";
    expectNothingLeftBehind();
}

TEST_F(ServerTest, TheFolderMayGoWhileItSyncs) {
    installOld();
    const QByteArray bytes = bundle("NEW");
    const auto afterDeleting = [this](const QByteArray& body) {
        return [this, body](QTcpSocket& socket) {
            QDir(directory).removeRecursively();
            ScriptedServer::answer("200 OK", {}, body)(socket);
        };
    };
    serve(manifestPath, manifestOf("new", bytes));
    server.on(bundlePath, afterDeleting("another"));
    const Result result = syncOnce();
    const auto* failed = std::get_if<Result::Failed>(&result.outcome);
    ASSERT_TRUE(failed) << result.userMessage().toStdString();
    EXPECT_TRUE(failed->message.startsWith(u"Config package hash mismatch"_s)) << failed->message.toStdString();
    EXPECT_FALSE(QFileInfo::exists(directory));

    server.on(bundlePath, afterDeleting(bytes));
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"new"_s}}));
    EXPECT_TRUE(loads(u"NEW"_s));
    expectNothingLeftBehind();
}

TEST_F(ServerTest, AFileInTheFoldersPlaceStays) {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(directory).path()));
    QFile file(directory);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    publish("NEW");
    const Result result = syncOnce();
    const auto* failed = std::get_if<Result::Failed>(&result.outcome);
    ASSERT_TRUE(failed) << result.userMessage().toStdString();
    EXPECT_TRUE(failed->message.startsWith(u"cannot make the folder "_s + directory)) << failed->message.toStdString();
    EXPECT_TRUE(QFileInfo(directory).isFile());
    expectNothingLeftBehind();
}

TEST_F(ServerTest, AFullDiskKeepsTheOldData) {
    installOld();
    tools.sync = [](const std::filesystem::path&) { return std::make_error_code(std::errc::no_space_on_device); };
    makeSync();
    publish("NEW");
    const Result result = syncOnce();
    const auto* skipped = std::get_if<Result::SkippedOffline>(&result.outcome);
    ASSERT_TRUE(skipped) << result.userMessage().toStdString();
    EXPECT_EQ(skipped->localHash, u"hash-of-OLD"_s);
    EXPECT_TRUE(skipped->reason.endsWith(u"No space left on device"_s)) << skipped->reason.toStdString();
    expectOldData();
    EXPECT_TRUE(QDir(tools.temporaryFolder).isEmpty());
    EXPECT_EQ(QDir(QFileInfo(directory).path()).entryList({u"config.staging-*"_s}).size(), 1)
        << "what was written stays";
}

TEST_F(ServerTest, AStalledServerDoesNotHoldUpTheEnd) {
    std::promise<void> asked;
    server.on(manifestPath, [&](QTcpSocket&) { asked.set_value(); });
    bool delivered = false;
    sync->syncAsync(&receiver, [&](const Result&) { delivered = true; });
    asked.get_future().wait();
    QElapsedTimer time;
    time.start();
    sync.reset();
    EXPECT_LT(time.elapsed(), 10'000);
    EXPECT_FALSE(delivered);
}

} // namespace

} // namespace pelloran
