// A check with everything real but the server, which does what servers do on bad days.

#include "base/SerialQueue.h"
#include "localisation/AppLanguage.h"
#include "platform/HttpClient.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/Printing.h"
#include "tests/support/ScriptedServer.h"
#include "tests/update/ResultPrinting.h"
#include "tests/update/SkippedKey.h"
#include "update/AppUpdateChecker.h"

#include <QElapsedTimer>
#include <QNetworkProxyFactory>
#include <QTest>

#include <gtest/gtest.h>

#include <chrono>
#include <expected>
#include <future>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using namespace std::chrono_literals;
using Result = AppUpdateCheckResult;
using testing::ScriptedServer;

// Asks as it is told, with a fiftieth of one kind of patience.
class HurriedHttpClient final : public HttpClient {
public:
    static constexpr int times = 50;

    std::expected<Response, TransportError> get(const Request& request) override {
        asked = request;
        Request hurried = request;
        hurried.*limit /= times;
        return http->get(hurried);
    }

    std::chrono::milliseconds Request::* limit = &Request::deadline;
    std::optional<Request> asked;

private:
    const std::unique_ptr<HttpClient> http = HttpClient::create();
};

class UpdateServerTest : public ::testing::Test {
protected:
    UpdateServerTest() {
        // Loopback is reached without the proxy that this machine may have.
        QNetworkProxyFactory::setUseSystemConfiguration(false);
        AppLanguage::overridePreference(AppLanguage::en);
    }

    void TearDown() override { AppLanguage::configure(nullptr, nullptr); }

    // One check as the application does it.
    Result checkOnce() {
        std::optional<Result> result;
        checker.checkAsync(&receiver, [&](const Result& delivered) { result = delivered; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return result.has_value(); }, 30'000));
        return result.value_or(Result{Result::Failed{u"nothing was delivered"_s}});
    }

    static ScriptedServer::Script ok(const QByteArray& body) {
        return ScriptedServer::answer("200 OK", "Content-Type: application/json\r\n", body);
    }

    static AppReleaseInfo release(const QString& version) {
        AppReleaseInfo made;
        made.version = version;
        return made;
    }

    static Result available(const QString& version) { return {Result::Available{u"1.2"_s, release(version)}}; }

    const QByteArray latest = "/download/latest.json";
    ScriptedServer server;
    testing::FakeUserDefaults defaults;
    std::unique_ptr<HttpClient> http = HttpClient::create();
    std::unique_ptr<SerialQueue> queue = SerialQueue::create(AppUpdateChecker::workQueueLabel.toString());
    QObject receiver;
    AppUpdateChecker checker{
        {*http, defaults, *queue}, {.version = u"1.2"_s, .build = std::nullopt}, server.base() + u"/download"_s};
};

TEST_F(UpdateServerTest, AsksForOneFileOnceAndKeepsNothing) {
    server.on(latest, ScriptedServer::answer("200 OK", "Cache-Control: max-age=3600\r\nSet-Cookie: a=b\r\n",
                                             R"({"version": "1.3"})"));
    EXPECT_EQ(checkOnce(), available(u"1.3"_s));
    ASSERT_EQ(server.requests().size(), 1U);
    server.on(latest, ok(R"({"version": "1.4"})"));
    EXPECT_EQ(checkOnce(), available(u"1.4"_s)) << "though the first answer was to hold for an hour";
    ASSERT_EQ(server.requests().size(), 2U);
    for (const QByteArray& head : server.requests()) {
        EXPECT_TRUE(head.startsWith("GET /download/latest.json HTTP/1.1\r\n")) << head.toStdString();
        EXPECT_TRUE(head.contains("\r\nAccept: application/json\r\n")) << head.toStdString();
        EXPECT_FALSE(head.toLower().contains("\r\ncookie:")) << head.toStdString();
    }
}

TEST_F(UpdateServerTest, MakesOfEveryAnswerWhatItIs) {
    struct Case {
        const char* why;
        ScriptedServer::Script script;
        Result expected;
    };

    const auto offline = [](const QString& reason) { return Result{Result::Offline{reason}}; };
    const auto status = [](const QByteArray& line) { return ScriptedServer::answer(line, {}, R"({"version": "9"})"); };
    const Case cases[] = {
        {"newer", ok(R"({"version": "1.3"})"), available(u"1.3"_s)},
        {"the same", ok(R"({"version": "1.2.0"})"), {Result::UpToDate{u"1.2"_s, u"1.2.0"_s}}},
        {"skipped", ok(R"({"version": "1.5"})"), {Result::SkippedVersion{u"1.2"_s, release(u"1.5"_s)}}},
        {"another good status", status("203 Non-Authoritative Information"), available(u"9"_s)},
        {"labelled as anything",
         ScriptedServer::answer("200 OK", "Content-Type: image/png\r\n", R"({"version": "1.3"})"), available(u"1.3"_s)},
        {"without a length", ScriptedServer::raw("HTTP/1.0 200 OK\r\n\r\n{\"version\": \"1.3\"}"), available(u"1.3"_s)},
        {"moved", ScriptedServer::answer("302 Found", "Location: /elsewhere.json\r\n", "<html>"), available(u"1.4"_s)},
        {"moved to nowhere", ScriptedServer::answer("301 Moved Permanently", "Location: /nowhere\r\n", ""),
         offline(u"Update server HTTP 404"_s)},
        {"not there", status("404 Not Found"), offline(u"Update server HTTP 404"_s)},
        {"broken", status("500 Oops"), offline(u"Update server HTTP 500"_s)},
        {"too busy", status("503 Service Unavailable"), offline(u"Update server HTTP 503"_s)},
        {"wants a password", ScriptedServer::answer("401 Unauthorized", "WWW-Authenticate: Basic realm=\"x\"\r\n", ""),
         offline(u"Update server HTTP 401"_s)},
        {"nothing to say", ScriptedServer::answer("204 No Content", {}, ""), offline(u"illegal value at byte 0"_s)},
        {"an empty body", ok(""), offline(u"illegal value at byte 0"_s)},
        {"a sign-in page", ok("<html>sign in</html>"), offline(u"illegal value at byte 1"_s)},
        {"no version", ok("{}"), offline(u"version is missing"_s)},
        {"a version of spaces", ok(R"({"version": "  "})"), offline(u"Invalid remote latest.json"_s)},
        {"another type", ok(R"({"version": "9", "build": "12"})"), offline(u"build is not a whole number"_s)},
        {"as long as may be", ok(R"({"version": "1.3"})" + QByteArray(1024 * 1024 - 18, ' ')), available(u"1.3"_s)},
        {"longer", ok(R"({"version": "1.3"})" + QByteArray(1024 * 1024 - 17, ' ')),
         offline(u"the answer is longer than 1048576 bytes"_s)},
        {"without end", ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", QByteArray(100'000, ' '), 0),
         offline(u"the answer is longer than 1048576 bytes"_s)},
    };
    defaults.setString(skippedKey, u"1.5"_s);
    server.on("/elsewhere.json", ok(R"({"version": "1.4"})"));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        // What an up-to-date program forgets is not what this is about.
        defaults.setString(skippedKey, u"1.5"_s);
        server.on(latest, c.script);
        EXPECT_EQ(checkOnce(), c.expected);
    }
}

TEST_F(UpdateServerTest, TellsInTheSystemsWordsThatTheAnswerDidNotCome) {
    struct Case {
        const char* why;
        ScriptedServer::Script script;
        QString reason; // a part of it
    };

    const Case cases[] = {
        {"hangs up", ScriptedServer::raw(""), u"closed"_s},
        {"cuts the body", ScriptedServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n{\"version\": \"1.3\"}"),
         u"closed"_s},
        {"sends in circles", ScriptedServer::answer("302 Found", "Location: " + latest + "\r\n", ""), u"redirects"_s},
        {"leads out of the web", ScriptedServer::answer("302 Found", "Location: file:///etc/passwd\r\n", ""), u""_s},
        {"speaks no HTTP", ScriptedServer::raw("SSH-2.0-OpenSSH_9.2\r\n\r\n"), u""_s},
    };
    defaults.setString(skippedKey, u"1.1"_s);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on(latest, c.script);
        const Result result = checkOnce();
        const auto* offline = std::get_if<Result::Offline>(&result.outcome);
        ASSERT_TRUE(offline);
        EXPECT_FALSE(offline->reason.isEmpty());
        EXPECT_TRUE(offline->reason.contains(c.reason)) << offline->reason.toStdString();
        EXPECT_EQ(defaults.string(skippedKey), u"1.1"_s) << "what was not learned changes nothing";
    }
}

TEST_F(UpdateServerTest, TellsThatNobodyListens) {
    const AppUpdateChecker alone({*http, defaults, *queue}, {u"1.2"_s, {}}, u"http://127.0.0.1:1/download"_s);
    const Result result = alone.checkNow();
    const auto* offline = std::get_if<Result::Offline>(&result.outcome);
    ASSERT_TRUE(offline);
    EXPECT_TRUE(offline->reason.contains(u"refused"_s)) << offline->reason.toStdString();
}

TEST_F(UpdateServerTest, AsksNoServerThatIsNoneOfTheWeb) {
    for (const QString& base : {u"download"_s, u""_s, u"file:///tmp"_s, u"ftp://127.0.0.1"_s, u"//127.0.0.1"_s}) {
        SCOPED_TRACE(base.toStdString());
        const AppUpdateChecker lost({*http, defaults, *queue}, {u"1.2"_s, {}}, base);
        EXPECT_EQ(lost.checkNow(), Result{Result::Offline{u"unsupported URL"_s}});
    }
}

TEST_F(UpdateServerTest, IsGivenUpAfterTenSecondsOfSilenceAndTwelveOfTrickle) {
    HurriedHttpClient hurried;
    const AppUpdateChecker hurriedChecker({hurried, defaults, *queue}, {u"1.2"_s, {}}, server.base() + u"/download"_s);
    const Result timedOut{Result::Offline{u"The request timed out."_s}};

    struct Case {
        const char* why;
        ScriptedServer::Script script;
        std::chrono::milliseconds HttpClient::Request::* limit;
        std::chrono::milliseconds expected;
    };

    const Case cases[] = {
        {"it says nothing", [](QTcpSocket&) {}, &HttpClient::Request::transferTimeout, 10s},
        {"it never comes to an end", ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", " ", 10),
         &HttpClient::Request::deadline, 12s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on(latest, c.script);
        hurried.limit = c.limit;
        QElapsedTimer time;
        time.start();
        EXPECT_EQ(hurriedChecker.checkNow(), timedOut);
        ASSERT_TRUE(hurried.asked);
        EXPECT_EQ((*hurried.asked).*c.limit, c.expected);
        EXPECT_GE(time.elapsed(), (c.expected / HurriedHttpClient::times).count());
    }
}

TEST_F(UpdateServerTest, AStalledServerDoesNotHoldUpTheEnd) {
    std::promise<void> asked;
    server.on(latest, [&](QTcpSocket&) { asked.set_value(); });
    checker.checkAsync(&receiver, [](const Result&) { ADD_FAILURE() << "delivered"; });
    checker.checkAsync(&receiver, [](const Result&) { ADD_FAILURE() << "delivered"; });
    asked.get_future().wait();
    QElapsedTimer time;
    time.start();
    queue.reset();
    EXPECT_LT(time.elapsed(), 8'000);
    EXPECT_EQ(server.requests().size(), 1U) << "the second was never begun";
}

} // namespace

} // namespace pelloran
