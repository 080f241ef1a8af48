#include "tests/platform/qt-network/HttpClientTest.h"
#include "tests/support/TestCertificate.h"

#include <QSslConfiguration>
#include <QSslSocket>

#include <gmock/gmock.h>

#include <memory>

namespace pelloran {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// A server with a certificate of its own, which this process trusts while the test runs.
class SecureHttpClientTest : public HttpClientTest {
protected:
    void SetUp() override {
        if (!QSslSocket::supportsSsl()) {
            GTEST_SKIP() << "Qt has no TLS here";
        }
        const auto made = testing::makeCertificate(testing::CertificateKind::valid);
        if (!made) {
            GTEST_SKIP() << "needs the openssl program";
        }
        certified = made->server;
        secure = std::make_unique<ScriptedServer>(certified);
        trusting.addCaCertificate(made->issuer);
        secure->on("/x", ScriptedServer::answer("200 OK", {}, "secret"));
        server.on("/x", ScriptedServer::answer("200 OK", {}, "open"));
    }

    ~SecureHttpClientTest() override { QSslConfiguration::setDefaultConfiguration(before); }

    QString get(const QString& path) {
        auto asked = request(path);
        asked.url = secure->url(path);
        const auto answer = http->get(asked);
        return answer ? QString::fromUtf8(answer->body) : answer.error().description;
    }

    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = before;
    QSslConfiguration certified; // the server's
    std::unique_ptr<ScriptedServer> secure;
};

TEST_F(SecureHttpClientTest, TrustsOnlyWhomTheSystemTrusts) {
    EXPECT_THAT(get(u"/x"_s).toStdString(), HasSubstr("self-signed"));
    server.on("/up", ScriptedServer::answer("302 Found", "Location: " + secure->url(u"/x"_s).toEncoded() + "\r\n", ""));
    EXPECT_THAT(failure(http->get(request(u"/up"_s))).toStdString(), HasSubstr("self-signed")) << "nor when led there";
    EXPECT_TRUE(secure->requests().empty());
    QSslConfiguration::setDefaultConfiguration(trusting);
    EXPECT_EQ(get(u"/x"_s), u"secret"_s);
}

TEST_F(SecureHttpClientTest, TellsNothingToWhoeverIsSomebodyElse) {
    const auto other = testing::makeCertificate(testing::CertificateKind::ofAnotherHost);
    ASSERT_TRUE(other);
    secure = std::make_unique<ScriptedServer>(other->server);
    trusting.addCaCertificate(other->issuer);
    QSslConfiguration::setDefaultConfiguration(trusting);
    EXPECT_THAT(get(u"/x"_s).toStdString(), HasSubstr("did not match any of the valid hosts"));
    EXPECT_TRUE(secure->requests().empty());
}

TEST_F(SecureHttpClientTest, TakesABodyBeyondWhatItReadsAhead) {
    QSslConfiguration::setDefaultConfiguration(trusting);
    const QByteArray body = longBody();
    secure->on("/long", ScriptedServer::answer("200 OK", {}, body));
    auto asked = request(u"/long"_s);
    asked.url = secure->url(u"/long"_s);
    asked.maximumBytes = body.size();
    const auto answer = http->get(asked);
    ASSERT_TRUE(answer) << answer.error().description.toStdString();
    EXPECT_EQ(answer->body, body);
}

// What comes faster than Qt reads it byte by byte is kept as fast.
TEST_F(SecureHttpClientTest, KeepsNoHeadWithoutEnd) {
    QSslConfiguration::setDefaultConfiguration(trusting);
    secure->on("/x", ScriptedServer::trickle("HTTP/1.1 200 OK\r\n",
                                             ("X-A: " + QByteArray(90, 'x') + "\r\n").repeated(5000), 0));
    auto asked = request(u"/x"_s);
    asked.url = secure->url(u"/x"_s);
    EXPECT_EQ(failure(http->get(asked)), u"the answer is longer than 8390108 bytes"_s);
}

// There a head of 16 kB can say twelve thousand times what it said once, and Qt takes minutes over it.
TEST_F(SecureHttpClientTest, SpeaksHttp1WhateverElseIsOffered) {
    QSslConfiguration::setDefaultConfiguration(trusting);
    certified.setAllowedNextProtocols({QSslConfiguration::ALPNProtocolHTTP2, QSslConfiguration::NextProtocolHttp1_1});
    secure = std::make_unique<ScriptedServer>(certified);
    secure->on("/x", ScriptedServer::answer("200 OK", {}, "secret"));
    EXPECT_EQ(get(u"/x"_s), u"secret"_s);
    ASSERT_FALSE(secure->requests().empty());
    EXPECT_THAT(secure->requests().front().toStdString(), StartsWith("GET /x HTTP/1.1\r\n"));
}

TEST_F(SecureHttpClientTest, IsLedFromOpenToSecureButNotBack) {
    QSslConfiguration::setDefaultConfiguration(trusting);
    server.on("/up", ScriptedServer::answer("302 Found", "Location: " + secure->url(u"/x"_s).toEncoded() + "\r\n", ""));
    const auto up = http->get(request(u"/up"_s));
    ASSERT_TRUE(up) << up.error().description.toStdString();
    EXPECT_EQ(up->body, "secret");
    const std::size_t openRequests = server.requests().size();
    secure->on("/down",
               ScriptedServer::answer("302 Found", "Location: " + server.url(u"/x"_s).toEncoded() + "\r\n", ""));
    EXPECT_EQ(get(u"/down"_s), u"Insecure redirect"_s);
    EXPECT_EQ(server.requests().size(), openRequests);
}

} // namespace

} // namespace pelloran
