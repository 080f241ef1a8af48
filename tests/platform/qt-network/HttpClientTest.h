#pragma once

#include "platform/HttpClient.h"
#include "tests/support/ScriptedServer.h"

#include <QNetworkProxyFactory>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace pelloran {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ScriptedServer;

class HttpClientTest : public ::testing::Test {
protected:
    HttpClientTest() {
        // Loopback is reached without the proxy that this machine may have.
        QNetworkProxyFactory::setUseSystemConfiguration(false);
    }

    HttpClient::Request request(const QString& path) const { return {server.url(path), {}, 60s, 60s, 1000}; }

    // The text of a failure; the status of what is none.
    static QString failure(const std::expected<HttpClient::Response, HttpClient::TransportError>& answer) {
        return answer ? QString::number(answer->status) : answer.error().description;
    }

    static QByteArray longBody() {
        QByteArray body(5'000'000, '\0');
        for (qsizetype i = 0; i < body.size(); ++i) {
            body[i] = static_cast<char>(i % 251);
        }
        return body;
    }

    QByteArray headOf(const QString& path) {
        EXPECT_TRUE(http->get(request(path)));
        return server.requests().back().toLower();
    }

    ScriptedServer server;
    std::unique_ptr<HttpClient> http = HttpClient::create();
};

} // namespace pelloran
