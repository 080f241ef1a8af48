#include "base/SerialQueue.h"
#include "tests/platform/qt-network/HttpClientTest.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <memory>
#include <semaphore>

namespace pelloran {

namespace {

using ::testing::HasSubstr;

TEST_F(HttpClientTest, AsksTheProxyThatTheSystemNames) {
    qputenv("http_proxy", server.url(u"/"_s).toEncoded());
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    auto asked = request(u"/"_s);
    asked.url = QUrl(u"http://pelloran.invalid/x"_s);
    failure(http->get(asked));
    QNetworkProxyFactory::setUseSystemConfiguration(false);
    qunsetenv("http_proxy");
    ASSERT_FALSE(server.requests().empty());
    EXPECT_THAT(server.requests().front().toStdString(), HasSubstr("pelloran.invalid"));
}

// The system names a script for its proxies, which a server that says nothing is to hand out.
class StalledProxyTest : public HttpClientTest {
protected:
    StalledProxyTest() {
        server.on("/x", ScriptedServer::answer("200 OK", {}, "x"));
        scripts->on("/proxy.pac", [this](QTcpSocket&) { asked.release(); });
        qputenv("http_proxy", "pac+" + scripts->url(u"/proxy.pac"_s).toEncoded());
        QNetworkProxyFactory::setUseSystemConfiguration(true);
        outside.url = QUrl(u"http://pelloran.invalid/"_s); // this machine itself would need no proxy
    }

    ~StalledProxyTest() override {
        // Lets go of who still waits for the script, and then the next one has its turn.
        scripts.reset();
        EXPECT_EQ(failure(http->get(request(u"/x"_s))), u"200"_s);
        QNetworkProxyFactory::setUseSystemConfiguration(false);
        qunsetenv("http_proxy");
    }

    std::unique_ptr<ScriptedServer> scripts = std::make_unique<ScriptedServer>();
    std::counting_semaphore<> asked{0};
    HttpClient::Request outside = request(u"/"_s);
};

TEST_F(StalledProxyTest, IsNotWaitedForBeyondTheDeadline) {
    outside.deadline = 300ms;
    for (const char* why : {"the first", "one that waits for the first"}) {
        SCOPED_TRACE(why);
        QElapsedTimer time;
        time.start();
        const QString said = failure(http->get(outside));
        if (scripts->requests().empty()) {
            GTEST_SKIP() << "Qt asks for no such script here: " << said.toStdString();
        }
        EXPECT_EQ(said, u"The request timed out."_s);
        EXPECT_GE(std::chrono::milliseconds(time.elapsed()), 280ms);
        EXPECT_LT(std::chrono::milliseconds(time.elapsed()), 30s);
    }
}

TEST_F(StalledProxyTest, DoesNotHoldUpTheEndOfTheThread) {
    auto queue = SerialQueue::create(u"test"_s);
    QString said;
    queue->submit([&] { said = failure(http->get(outside)); }, nullptr, [] {});
    const bool hasAsked = asked.try_acquire_for(3s);
    QElapsedTimer time;
    time.start();
    queue.reset();
    if (!hasAsked) {
        GTEST_SKIP() << "Qt asks for no such script here: " << said.toStdString();
    }
    EXPECT_EQ(said, u"The request was cancelled."_s);
    EXPECT_LT(std::chrono::milliseconds(time.elapsed()), 30s) << "sooner than it would have given up anyway";
}

} // namespace

} // namespace pelloran
