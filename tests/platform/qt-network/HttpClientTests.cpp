#include "base/SerialQueue.h"
#include "tests/platform/qt-network/HttpClientTest.h"
#include "tests/support/NoDescriptors.h"
#include "tests/support/Printing.h"
#include "tests/support/Sanitizers.h"

#include <QElapsedTimer>
#include <QScopeGuard>

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <semaphore>
#include <set>
#include <string>

namespace pelloran {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// Qt ends the program where a thread of its own cannot have what it waits by.
TEST_F(HttpClientTest, FailsWhileTooFewFilesCanBeOpened) {
    // It looks at an object's type through a pipe when it first meets it.
    if (testing::hasUndefinedBehaviourSanitizer) {
        GTEST_SKIP() << "the sanitizer takes what it has no descriptors to look at for broken";
    }
    server.on("/file", ScriptedServer::answer("200 OK", {}, "body"));
    const auto handler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const auto heardAgain = qScopeGuard([handler] { qInstallMessageHandler(handler); });
    for (const rlim_t spare : {0, 1, 2, 3, 4, 6, 8, 12}) {
        SCOPED_TRACE(spare);
        const testing::NoDescriptors few(spare);
        EXPECT_EQ(failure(http->get(request(u"/file"_s))), u"Too many open files"_s);
    }
    EXPECT_EQ(failure(http->get(request(u"/file"_s))), u"200"_s) << "and asks again when they can";
}

TEST_F(HttpClientTest, BringsStatusAndBody) {
    struct Case {
        const char* why;
        QByteArray status;
        int expected;
        QByteArray body;
    };

    const Case cases[] = {
        {"as it should be", "200 OK", 200, "body"},
        {"no body at all", "200 OK", 200, ""},
        {"nothing to say", "204 No Content", 204, ""},
        {"an error is an answer", "404 Not Found", 404, "where?"},
        {"one without a name in the library", "418 I'm a teapot", 418, "short"},
        {"a bad request", "400 Bad Request", 400, "no"},
        {"a wish for a password is not fulfilled", "401 Unauthorized", 401, "who?"},
        {"the server is broken", "500 Internal Server Error", 500, "oops"},
        {"or away", "503 Service Unavailable", 503, "later"},
        {"a redirect to nowhere", "302 Found", 302, ""},
        {"not changed", "304 Not Modified", 304, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on("/x", ScriptedServer::answer(c.status, {}, c.body));
        const auto answer = http->get(request(u"/x"_s));
        ASSERT_TRUE(answer) << answer.error().description.toStdString();
        EXPECT_EQ(answer->status, c.expected);
        EXPECT_EQ(answer->body, c.body);
    }
}

TEST_F(HttpClientTest, AsksForPlainBytesAndNothingKept) {
    server.on("/x", ScriptedServer::answer("200 OK",
                                           "Set-Cookie: a=b\r\nCache-Control: max-age=1000\r\nETag: \"e\"\r\n", "1"));
    headOf(u"/x"_s);
    const QByteArray head = headOf(u"/x"_s);
    EXPECT_EQ(server.requests().size(), 2u) << "asked anew";
    EXPECT_THAT(head.toStdString(), HasSubstr("get /x http/1.1"));
    EXPECT_THAT(head.toStdString(), HasSubstr("accept-encoding: identity\r\n"));
    EXPECT_THAT(head.toStdString(), Not(HasSubstr("cookie")));
    EXPECT_THAT(head.toStdString(), Not(HasSubstr("if-none-match")));
    EXPECT_THAT(head.toStdString(), Not(HasSubstr("\naccept:")));
    auto withAccept = request(u"/x"_s);
    withAccept.accept = "application/json";
    ASSERT_TRUE(http->get(withAccept));
    EXPECT_THAT(server.requests().back().toLower().toStdString(), HasSubstr("\naccept: application/json\r\n"));
}

TEST_F(HttpClientTest, SendsNothingElse) {
    server.on("/x", ScriptedServer::answer("200 OK", {}, ""));
    const QByteArray head = headOf(u"/x"_s);
    QStringList names;
    for (const QByteArray& line : head.trimmed().split('\n').sliced(1)) {
        names.append(QString::fromLatin1(line.first(line.indexOf(':'))));
    }
    names.sort();
    EXPECT_EQ(names, (QStringList{u"accept-encoding"_s, u"accept-language"_s, u"cache-control"_s, u"connection"_s,
                                  u"host"_s, u"pragma"_s, u"user-agent"_s}));
    EXPECT_THAT(head.toStdString(), HasSubstr("\nuser-agent: pelloran\r\n")) << "no version and no system";
}

TEST_F(HttpClientTest, ACookieDoesNotTravelAlongARedirect) {
    server.on("/x", ScriptedServer::answer("302 Found", "Set-Cookie: a=b\r\nLocation: /y\r\n", ""));
    server.on("/y", ScriptedServer::answer("200 OK", {}, ""));
    EXPECT_THAT(headOf(u"/x"_s).toStdString(), Not(HasSubstr("cookie")));
}

TEST_F(HttpClientTest, LeavesAlreadyPackedBytesPacked) {
    const QByteArray packed = QByteArray::fromHex("1f8b08000000000000034b04000000ffff43beb7e801000000");
    server.on("/x", ScriptedServer::answer("200 OK", "Content-Encoding: gzip\r\nContent-Type: application/x-gzip\r\n",
                                           packed));
    const auto answer = http->get(request(u"/x"_s));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->body, packed);
}

TEST_F(HttpClientTest, TakesTheBodyHoweverItIsSent) {
    struct Case {
        const char* why;
        QByteArray bytes;
        QByteArray body;
    };

    const Case cases[] = {
        {"in pieces", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n", "abcde"},
        {"until the connection ends", "HTTP/1.0 200 OK\r\n\r\nabcde", "abcde"},
        {"longer than announced", "HTTP/1.1 200 OK\r\nContent-Length: 3\r\nConnection: close\r\n\r\nabcde", "abc"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on("/x", ScriptedServer::raw(c.bytes));
        const auto answer = http->get(request(u"/x"_s));
        ASSERT_TRUE(answer) << answer.error().description.toStdString();
        EXPECT_EQ(answer->body, c.body);
    }
}

TEST_F(HttpClientTest, SaysWhatTheConnectionDid) {
    struct Case {
        const char* why;
        ScriptedServer::Script script;
        QString expected; // a part of it
    };

    const Case cases[] = {
        {"closed without a word", ScriptedServer::raw(""), u"closed"_s},
        {"closed within the head", ScriptedServer::raw("HTTP/1.1 200 O"), u"closed"_s},
        {"a body that is cut", ScriptedServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabc"), u"closed"_s},
        {"the body of an error, cut: the status tells more",
         ScriptedServer::raw("HTTP/1.1 500 Oops\r\nContent-Length: 100\r\n\r\nabc"), u"500"_s},
        {"round and round", ScriptedServer::answer("302 Found", "Location: /x\r\n", ""), u"redirects"_s},
        {"to a file of this machine", ScriptedServer::answer("302 Found", "Location: file:///etc/passwd\r\n", ""),
         u"302"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on("/x", c.script);
        const QString said = failure(http->get(request(u"/x"_s)));
        EXPECT_TRUE(said.contains(c.expected)) << said.toStdString();
    }
}

TEST_F(HttpClientTest, SaysThatNobodyAnswers) {
    QTcpServer gone;
    ASSERT_TRUE(gone.listen(QHostAddress::LocalHost));
    auto asked = request(u"/"_s);
    asked.url.setPort(gone.serverPort());
    gone.close();
    EXPECT_EQ(failure(http->get(asked)), u"Connection refused"_s);
    server.on("/x", ScriptedServer::answer("302 Found", "Location: " + asked.url.toEncoded() + "\r\n", ""));
    EXPECT_EQ(failure(http->get(request(u"/x"_s))), u"Connection refused"_s) << "where a redirect leads";
}

TEST_F(HttpClientTest, FollowsARedirect) {
    server.on("/x", ScriptedServer::answer("301 Moved", "Location: /y\r\n", "a body that nobody wants"));
    server.on("/y", ScriptedServer::answer("200 OK", {}, "here"));
    const auto answer = http->get(request(u"/x"_s));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(answer->body, "here");
}

// Each leads to a path of its own, and paths are counted: Qt may ask for one again when its connection was closed.
TEST_F(HttpClientTest, FollowsTenRedirectsAndNoMore) {
    constexpr int length = 12;
    for (int i = 1; i < length; ++i) {
        server.on("/" + QByteArray::number(i),
                  ScriptedServer::answer("302 Found", "Location: /" + QByteArray::number(i + 1) + "\r\n", ""));
    }
    server.on("/" + QByteArray::number(length), ScriptedServer::answer("200 OK", {}, "here"));

    EXPECT_THAT(failure(http->get(request(u"/1"_s))).toStdString(), HasSubstr("redirects"));
    std::set<std::string> asked;
    for (const QByteArray& head : server.requests()) {
        asked.insert(head.split(' ').value(1).toStdString());
    }
    EXPECT_THAT(asked, ElementsAre("/1", "/10", "/11", "/2", "/3", "/4", "/5", "/6", "/7", "/8", "/9"));

    const auto answer = http->get(request(u"/2"_s));
    ASSERT_TRUE(answer) << answer.error().description.toStdString();
    EXPECT_EQ(answer->body, "here");
}

TEST_F(HttpClientTest, SpeaksNothingButHttp) {
    for (const QString& url : {u"file:///etc/passwd"_s, u"ftp://127.0.0.1/x"_s, u"data:,abc"_s, u"qrc:/x"_s,
                               u"/pelloran"_s, u"http:"_s, u"http:///x"_s}) {
        auto asked = request(u"/"_s);
        asked.url = QUrl(url);
        EXPECT_EQ(failure(http->get(asked)), u"unsupported URL"_s) << url.toStdString();
    }
}

TEST_F(HttpClientTest, ReadsNotAByteMoreThanAllowed) {
    struct Case {
        const char* why;
        ScriptedServer::Script script;
        QString expected;
    };

    const QString tooLong = u"the answer is longer than 1000 bytes"_s;
    const QByteArray flood(100'000, 'x');
    const Case cases[] = {
        {"just as long", ScriptedServer::answer("200 OK", {}, QByteArray(1000, 'x')), u"200"_s},
        {"a byte more", ScriptedServer::answer("200 OK", {}, QByteArray(1001, 'x')), tooLong},
        {"two gigabytes, announced",
         ScriptedServer::trickle("HTTP/1.1 200 OK\r\nContent-Length: 2147483648\r\n\r\n", flood, 0), tooLong},
        {"announced alone is enough",
         [](QTcpSocket& socket) { socket.write("HTTP/1.1 200 OK\r\nContent-Length: 2147483648\r\n\r\n"); }, tooLong},
        {"without end", ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", flood, 0), tooLong},
        {"in pieces without end",
         ScriptedServer::trickle("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", "186A0\r\n" + flood + "\r\n",
                                 0),
         tooLong},
        {"of an error the status is enough", ScriptedServer::trickle("HTTP/1.0 404 Not Found\r\n\r\n", flood, 0),
         u"404"_s},
        {"of an error the status is enough, announced",
         ScriptedServer::trickle("HTTP/1.1 500 Oops\r\nContent-Length: 2147483648\r\n\r\n", flood, 0), u"500"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on("/x", c.script);
        const auto answer = http->get(request(u"/x"_s));
        EXPECT_EQ(failure(answer), c.expected);
        EXPECT_LE(answer ? answer->body.size() : 0, 1000);
    }
}

// Qt would read on for good, on a thread that nobody can end.
TEST_F(HttpClientTest, ReadsNoHeadWithoutEnd) {
    struct Case {
        const char* why;
        ScriptedServer::Script script;
    };

    const Case cases[] = {
        {"line after line",
         ScriptedServer::trickle("HTTP/1.1 200 OK\r\n", ("X-A: " + QByteArray(90, 'x') + "\r\n").repeated(1000), 0)},
        {"one line", ScriptedServer::trickle("HTTP/1.1 200 OK\r\nX-A: ", QByteArray(100'000, 'x'), 0)},
        {"the line of the status", ScriptedServer::trickle("HTTP/1.1 200 ", QByteArray(100'000, 'x'), 0)},
        {"news of an answer to come",
         ScriptedServer::trickle("", QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(1000), 0)},
        {"the length of a piece",
         ScriptedServer::trickle("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", QByteArray(100'000, '0'), 0)},
        {"a redirect's", ScriptedServer::trickle("HTTP/1.1 302 Found\r\nLocation: /x\r\n",
                                                 ("X-A: " + QByteArray(90, 'x') + "\r\n").repeated(1000), 0)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto isOver = std::make_shared<std::counting_semaphore<>>(0); // the server outlives this
        server.on("/x", [isOver, script = c.script](QTcpSocket& socket) {
            QObject::connect(&socket, &QTcpSocket::disconnected, &socket, [isOver] { isOver->release(); });
            script(socket);
        });
        auto asked = request(u"/x"_s);
        asked.deadline = 300ms;
        EXPECT_EQ(failure(http->get(asked)), u"The request timed out."_s);
        // Nothing else ends it: where it is left to Qt, this waits for ever.
        ASSERT_TRUE(isOver->try_acquire_for(60s)) << "the server sends on, and somebody reads it";
    }
}

TEST_F(HttpClientTest, ARedirectsOwnBodyIsNobodys) {
    server.on("/x", ScriptedServer::answer("302 Found", "Location: /y\r\n", QByteArray(5000, 'x')));
    server.on("/y", ScriptedServer::answer("200 OK", {}, "here"));
    const auto answer = http->get(request(u"/x"_s));
    ASSERT_TRUE(answer) << answer.error().description.toStdString();
    EXPECT_EQ(answer->body, "here");
}

TEST_F(HttpClientTest, TakesABodyBeyondWhatItReadsAhead) {
    const QByteArray body = longBody();
    server.on("/x", ScriptedServer::answer("200 OK", {}, body));
    auto asked = request(u"/x"_s);
    asked.maximumBytes = qint64{64} * 1024 * 1024;
    const auto answer = http->get(asked);
    ASSERT_TRUE(answer) << answer.error().description.toStdString();
    EXPECT_EQ(answer->body, body);
}

TEST_F(HttpClientTest, WaitsNoLongerThanItMay) {
    struct Case {
        const char* why;
        ScriptedServer::Script script;
        std::chrono::milliseconds silence;
        std::chrono::milliseconds deadline;
    };

    const auto nothing = [](QTcpSocket&) {};
    const Case cases[] = {
        {"silent before the head", nothing, 200ms, 60s},
        {"silent after it", [](QTcpSocket& socket) { socket.write("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n"); },
         200ms, 60s},
        {"silent within the body",
         [](QTcpSocket& socket) { socket.write("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc"); }, 200ms, 60s},
        {"silence outlasts the deadline", nothing, 60s, 200ms},
        {"a head that trickles", ScriptedServer::trickle("HTTP/1.1 200 OK\r\n", "X: y\r\n", 10), 60s, 300ms},
        {"a body that trickles", ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", "x", 10), 60s, 300ms},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        server.on("/x", c.script);
        auto asked = request(u"/x"_s);
        asked.transferTimeout = c.silence;
        asked.deadline = c.deadline;
        QElapsedTimer time;
        time.start();
        EXPECT_EQ(failure(http->get(asked)), u"The request timed out."_s);
        EXPECT_GE(std::chrono::milliseconds(time.elapsed()), std::min(c.silence, c.deadline) - 20ms);
        EXPECT_LT(std::chrono::milliseconds(time.elapsed()), 30s);
    }
}

TEST_F(HttpClientTest, ALittleNowAndThenIsNoSilence) {
    server.on("/x", ScriptedServer::trickle("HTTP/1.0 200 OK\r\n\r\n", "x", 50));
    auto asked = request(u"/x"_s);
    asked.maximumBytes = 20;
    asked.transferTimeout = 900ms; // less than twenty times fifty
    EXPECT_EQ(failure(http->get(asked)), u"the answer is longer than 20 bytes"_s);
}

TEST_F(HttpClientTest, GivesUpWhenItsThreadIsToEnd) {
    const auto asked = std::make_shared<std::counting_semaphore<>>(0); // the server outlives this
    server.on("/x", [asked](QTcpSocket&) { asked->release(); });
    auto queue = SerialQueue::create(u"test"_s);
    QString said;
    QElapsedTimer time;
    time.start();
    queue->submit([&] { said = failure(http->get(request(u"/x"_s))); }, nullptr, [] {});
    asked->acquire();
    queue.reset();
    EXPECT_EQ(said, u"The request was cancelled."_s);
    EXPECT_LT(std::chrono::milliseconds(time.elapsed()), 30s) << "sooner than it would have given up anyway";
}

} // namespace

} // namespace pelloran
