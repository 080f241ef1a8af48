#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <expected>
#include <memory>

namespace pelloran {

// GET over http or https for a thread that may wait. One thread at a time.
class HttpClient {
public:
    struct Request {
        QUrl url;
        QByteArray accept;                         // the Accept header; empty sends none
        std::chrono::milliseconds transferTimeout; // how long the server may send nothing
        std::chrono::milliseconds deadline;        // for everything: finding the proxy, redirects, trickled bytes
        qint64 maximumBytes;                       // a longer body is a TransportError, and cut after an error's status
    };

    struct Response {
        int status; // of the last answer when redirected
        QByteArray body;
    };

    struct TransportError {
        QString description; // the platform's own text, "timed out" included
    };

    static std::unique_ptr<HttpClient> create();

    virtual ~HttpClient() = default;

    // Waits for the whole body, whatever its status. Keeps nothing from one request to the next: no cookies, no cache,
    // no passwords. The body is what the server sent, never unpacked; redirects are followed, but not from https to
    // http. On a QThread whose interruption is requested it gives up within a moment.
    virtual std::expected<Response, TransportError> get(const Request& request) = 0;

    // Whether the system may still be looking up a host's name for a request, be it one that was given up: nothing ends
    // a lookup, and the end of the application object waits for it. From any thread.
    static bool mayBeLookingUp();
};

} // namespace pelloran
