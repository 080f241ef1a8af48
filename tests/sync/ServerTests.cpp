// A sync with everything real but the server, which does what servers do on bad days.

#include "data/WinrateStore.h"
#include "fakes/FakeApplicationFiles.h"
#include "support/Printing.h"
#include "support/ScriptedServer.h"
#include "support/TarWriter.h"
#include "sync/ConfigSync.h"
#include "sync/TextLanguage.h"

#include <QDir>
#include <QElapsedTimer>
#include <QNetworkProxyFactory>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <future>
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
        InstallTools tools;
        tools.temporaryFolder = folder.filePath(u"temporary"_s);
        sync = std::make_unique<ConfigSync>(server.base(), LocalConfig(files, tools), HttpClient::create(),
                                            SerialQueue::create(ConfigSync::queueName()));
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
        return R"({"hash": ")" + hash + R"(", "bundle_sha256": ")" + ConfigSync::sha256Hex(bytes).toLatin1() + R"("})";
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
    ScriptedServer server;
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
    publish("OLD");
    ASSERT_EQ(syncOnce(), (Result{Result::Updated{u"hash-of-OLD"_s}}));
    sync->timeout = 0.3;

    testing::TarWriter outward;
    outward.add({.name = "../../evil", .content = "x"});
    testing::TarWriter link;
    link.add({.name = "winrates", .kind = '2', .linkTarget = "/tmp"});
    const QByteArray bytes = bundle("NEW");
    const QByteArray manifest = manifestOf("new", bytes);
    const auto ok = [](const QByteArray& body) { return ScriptedServer::answer("200 OK", {}, body); };
    const auto manifestFor = [&](const QByteArray& other) { return ok(manifestOf("new", other)); };

    struct Case {
        const char* why;
        ScriptedServer::Script manifest;
        ScriptedServer::Script bundle;
        QString reason; // a part of it
    };

    const auto never = ScriptedServer::raw("");
    const auto stall = [](QTcpSocket&) {};
    const Case cases[] = {
        {"stalls before the head", stall, never, u"The request timed out."_s},
        {"stalls over the bundle", ok(manifest), stall, u"The request timed out."_s},
        {"trickles", ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", " ", 20), never, u"The request timed out."_s},
        {"hangs up", never, never, u"closed"_s},
        {"cuts the bundle", ok(manifest),
         ScriptedServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + bytes.first(100)), u"closed"_s},
        {"says less than it sends", ok(manifest),
         ScriptedServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\nConnection: close\r\n\r\n" + bytes),
         u"Config package hash mismatch (expected "_s},
        {"sends in circles", ScriptedServer::answer("302 Found", "Location: " + manifestPath + "\r\n", ""), never,
         u"redirects"_s},
        {"shows a sign-in page", ok("<html>sign in</html>"), never, u"illegal value"_s},
        {"has nothing to say", ScriptedServer::answer("204 No Content", {}, ""), never, u"illegal value"_s},
        {"has no manifest", ScriptedServer::answer("404 Not Found", {}, "?"), never, u"Config server HTTP 404"_s},
        {"has no bundle", ok(manifest), ScriptedServer::answer("404 Not Found", {}, "?"), u"Config server HTTP 404"_s},
        {"is broken", ScriptedServer::answer("500 Oops", {}, "?"), never, u"Config server HTTP 500"_s},
        {"sends a manifest without end",
         ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", QByteArray(100'000, ' '), 0), never,
         u"longer than 1048576 bytes"_s},
        {"sends two gigabytes", ok(manifest),
         ScriptedServer::trickle("HTTP/1.1 200 OK\r\nContent-Length: 2147483648\r\n\r\n", QByteArray(1'000'000, ' '),
                                 0),
         u""_s}, // too long or too slow, as the machine is
        {"sends an empty manifest", ok(""), never, u"illegal value"_s},
        {"sends an empty object", ok("{}"), never, u"hash is not a text"_s},
        {"sends other types", ok(R"({"hash": "new", "files": 1})"), never, u"files is not an object of texts"_s},
        {"sends another bundle", ok(manifest), ok(bundle("OTHER")), u"Config package hash mismatch (expected "_s},
        {"publishes no archive", manifestFor("garbage"), ok("garbage"), u"Failed to extract config: "_s},
        {"publishes nothing", manifestFor(""), ok(""), u"Failed to extract config: "_s},
        {"publishes half an archive", manifestFor(bytes.first(bytes.size() / 2)), ok(bytes.first(bytes.size() / 2)),
         u"Failed to extract config: "_s},
        {"publishes what leads out of the folder", manifestFor(outward.gzipped()), ok(outward.gzipped()),
         u"leads out of its folder"_s},
        {"publishes a link", manifestFor(link.gzipped()), ok(link.gzipped()), u"neither a file nor a folder"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on(manifestPath, c.manifest);
        server.on(bundlePath, c.bundle);
        QElapsedTimer time;
        time.start();
        const Result result = syncOnce();
        EXPECT_LT(time.elapsed(), 15'000);
        const auto* skipped = std::get_if<Result::SkippedOffline>(&result.outcome);
        ASSERT_TRUE(skipped) << result.userMessage().toStdString();
        EXPECT_EQ(skipped->localHash, u"hash-of-OLD"_s);
        EXPECT_TRUE(skipped->reason.contains(c.reason)) << skipped->reason.toStdString();
        EXPECT_TRUE(loads(u"OLD"_s));
        EXPECT_TRUE(QDir(folder.filePath(u"temporary"_s)).isEmpty());
        EXPECT_EQ(
            QDir(files.applicationSupportFolder() + u"/Pelloran"_s).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
            QStringList{u"config"_s});
    }
    publish("NEW");
    sync->timeout = 12;
    EXPECT_EQ(syncOnce(), (Result{Result::Updated{u"hash-of-NEW"_s}}));
    EXPECT_TRUE(loads(u"NEW"_s));
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
