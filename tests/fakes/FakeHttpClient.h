#pragma once

#include "platform/HttpClient.h"

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace pelloran::testing {

// Answers by URL as the test tells it. An address nobody told it of cannot be reached.
class FakeHttpClient final : public HttpClient {
public:
    using Answer = std::expected<Response, TransportError>;

    void answer(const QString& url, int status, const QByteArray& body) { answers[url] = Response{status, body}; }

    void fail(const QString& url, const QString& description) {
        answers[url] = std::unexpected(TransportError{description});
    }

    Answer get(const Request& request) override {
        requests.push_back(request);
        if (onRequest) {
            onRequest(request);
        }
        const auto found = answers.find(request.url.toString(QUrl::FullyEncoded));
        if (found == answers.end()) {
            return std::unexpected(TransportError{QStringLiteral("Connection refused")});
        }
        Answer answer = found->second;
        if (answer && answer->body.size() > request.maximumBytes) {
            if (answer->status >= 200 && answer->status <= 299) {
                return std::unexpected(TransportError{QStringLiteral("answer too long")});
            }
            answer->body.truncate(request.maximumBytes);
        }
        return answer;
    }

    std::vector<Request> requests;
    std::function<void(const Request&)> onRequest; // while the caller waits

private:
    std::map<QString, Answer> answers;
};

} // namespace pelloran::testing
