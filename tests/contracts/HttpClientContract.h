#pragma once

#include "platform/HttpClient.h"
#include "tests/contracts/BackEnd.h"
#include "tests/support/Printing.h"

#include <memory>

namespace pelloran::testing {

// A client and the server that it asks.
struct ServedClient {
    std::shared_ptr<void> owned; // what has to live as long
    std::unique_ptr<HttpClient> client;
    std::function<QUrl(const QString& path)> url;
    std::function<void(const QString& path, int status, const QByteArray& body)> serve;
    QUrl nowhere; // where no server is
};

class HttpClientContract : public ::testing::TestWithParam<BackEnd<ServedClient>> {
protected:
    std::expected<HttpClient::Response, HttpClient::TransportError> get(const QUrl& url, qint64 maximumBytes = 1000) {
        using namespace std::chrono_literals;
        return served.client->get({url, {}, 10s, 12s, maximumBytes});
    }

    const ServedClient served = GetParam().make();
    const QString path = QStringLiteral("/x");
};

TEST_P(HttpClientContract, BringsStatusAndBodyWhateverTheyAre) {
    struct Case {
        const char* why;
        int status;
        QByteArray body;
    };

    const Case cases[] = {
        {"as it should be", 200, "body"},
        {"no body", 200, ""},
        {"bytes that are no text", 200, QByteArray("\0\xff\r\n\r\n\0", 7)},
        {"an error is an answer", 404, "where?"},
        {"so is a broken server", 500, "oops"},
        {"not changed", 304, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        served.serve(path, c.status, c.body);
        const auto answer = get(served.url(path));
        ASSERT_TRUE(answer) << answer.error().description.toStdString();
        EXPECT_EQ(answer->status, c.status);
        EXPECT_EQ(answer->body, c.body);
    }
}

TEST_P(HttpClientContract, TakesNoMoreThanItIsAllowed) {
    struct Case {
        const char* why;
        int status;
        qint64 maximumBytes;
        bool fails;
        QByteArray body; // where it does not
    };

    const QByteArray body = "0123456789";
    const Case cases[] = {
        {"just enough", 200, 10, false, body},
        {"one too many", 200, 9, true, {}},
        {"nothing is allowed", 200, 0, true, {}},
        {"just enough of an error", 404, 10, false, body},
        {"an error's text is cut", 404, 4, false, "0123"},
        {"to nothing", 500, 0, false, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        served.serve(path, c.status, body);
        const auto answer = get(served.url(path), c.maximumBytes);
        ASSERT_EQ(!answer, c.fails);
        if (answer) {
            EXPECT_EQ(answer->status, c.status);
            EXPECT_EQ(answer->body, c.body);
        } else {
            EXPECT_FALSE(answer.error().description.isEmpty());
        }
    }
}

TEST_P(HttpClientContract, SaysWhyNothingCame) {
    for (const QUrl& url : {served.nowhere, QUrl(), QUrl(QStringLiteral("a.json")), QUrl(QStringLiteral("ftp://h/a")),
                            QUrl(QStringLiteral("https:///a"))}) {
        SCOPED_TRACE(url.toString().toStdString());
        const auto answer = get(url);
        ASSERT_FALSE(answer);
        EXPECT_FALSE(answer.error().description.isEmpty());
    }
}

TEST_P(HttpClientContract, AsksAnewEachTimeAndGoesOnAfterAFailure) {
    served.serve(path, 200, "first");
    ASSERT_TRUE(get(served.url(path)));
    EXPECT_FALSE(get(served.nowhere));
    served.serve(path, 200, "second");
    const auto answer = get(served.url(path));
    ASSERT_TRUE(answer) << answer.error().description.toStdString();
    EXPECT_EQ(answer->body, "second");
}

} // namespace pelloran::testing
