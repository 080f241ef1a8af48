#include "platform/CheckedGet.h"

#include "tests/fakes/FakeHttpClient.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace pelloran {

namespace {

const QString address = u"http://h.example/a"_s;

TEST(CheckedGet, GivesTheBodyOfWhatTheServerCallsDone) {
    struct Case {
        const char* why;
        int status;
        bool wanted;
    };

    const Case cases[] = {
        {"the last that only informs", 199, false},
        {"done", 200, true},
        {"done, another kind", 206, true},
        {"the last of its hundred", 299, true},
        {"a redirect that was not followed", 300, false},
        {"not there", 404, false},
        {"the server's own fault", 503, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        testing::FakeHttpClient http;
        http.answer(address, c.status, "body");
        const auto body = checkedGet(http, QUrl(address), {}, 1s, 100);
        ASSERT_EQ(body.has_value(), c.wanted);
        if (body) {
            EXPECT_EQ(*body, "body");
        } else {
            ASSERT_TRUE(std::holds_alternative<UnwantedStatus>(body.error()));
            EXPECT_EQ(std::get<UnwantedStatus>(body.error()).code, c.status);
        }
    }
}

TEST(CheckedGet, TellsWhyThereIsNoAnswer) {
    testing::FakeHttpClient http;
    http.fail(address, u"no route"_s);
    const auto body = checkedGet(http, QUrl(address), {}, 1s, 100);
    ASSERT_FALSE(body.has_value());
    ASSERT_TRUE(std::holds_alternative<HttpClient::TransportError>(body.error()));
    EXPECT_EQ(std::get<HttpClient::TransportError>(body.error()).description, u"no route"_s);
}

TEST(CheckedGet, AsksForWhatItWasGiven) {
    testing::FakeHttpClient http;
    http.answer(address, 200, {});
    EXPECT_TRUE(checkedGet(http, QUrl(address), "application/json", 10s, 77).has_value());
    ASSERT_EQ(http.requests.size(), 1U);
    const HttpClient::Request& request = http.requests.front();
    EXPECT_EQ(request.url, QUrl(address));
    EXPECT_EQ(request.accept, "application/json");
    EXPECT_EQ(request.transferTimeout, 10s);
    EXPECT_EQ(request.deadline, 12s) << "a trickle is given two seconds more";
    EXPECT_EQ(request.maximumBytes, 77);
}

} // namespace

} // namespace pelloran
