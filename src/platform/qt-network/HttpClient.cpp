#include "platform/HttpClient.h"

#include "platform/qt-network/NewSockets.h"
#include "platform/qt-network/SystemProxies.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <optional>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using namespace std::chrono_literals;

// Sites move by one redirect or two; a loop need not be walked to Qt's limit of fifty.
constexpr int maximumRedirects = 10;

// What may arrive ahead of us: the server is held back rather than our memory filled.
constexpr qint64 readAhead = qint64{256} * 1024;

// What may arrive besides the body asked for. Qt keeps all of a head, and those come as fast as a network can. Far
// more than any has, for what is counted may be another thread's answer.
constexpr qint64 mostBesides = qint64{8} * 1024 * 1024;

constexpr auto poll = 50ms;

// Whether as many files can be opened as a request may take. Qt gives each manager and each look-up of a name a thread,
// and one that cannot have what it waits by ends the whole program, in GLib or in Qt itself.
std::error_code roomForARequest() {
    // With Qt 6.4 on Linux a plain request to a host by its name takes four, and fewer than two end the program. The
    // others are for what a secure one, a proxy and a request to the other server meanwhile take.
    constexpr std::size_t plenty = 32;
    std::array<int, plenty> opened{};
    opened.fill(-1);
    std::error_code error;
    for (int& each : opened) {
        each = ::open("/", O_RDONLY | O_CLOEXEC);
        if (each < 0) {
            error = {errno, std::generic_category()};
            break;
        }
    }
    for (const int each : opened) {
        if (each >= 0) {
            ::close(each);
        }
    }
    return error;
}

// Requests of which nothing was sent until now, or until they were given up: their host may be looked up for as long as
// the system's resolver likes. Needs no destructor, as a thread may come home after the end of main().
constinit std::atomic<int> unsent = 0;

// Counts one request there until it is sent or over, and again where it is led to another host.
class UnsentRequest {
public:
    UnsentRequest() { ++unsent; }

    void settle() {
        if (std::exchange(isCounted, false)) {
            --unsent;
        }
    }

    void wasRedirected() {
        if (!std::exchange(isCounted, true)) {
            ++unsent;
        }
    }

private:
    bool isCounted = true;
};

QNetworkRequest networkRequest(const HttpClient::Request& request) {
    QNetworkRequest made(request.url);
    // Qt unpacks what is labelled as gzip, unless it is told which encoding to ask for: a server may label a .tar.gz
    // so, and its digest is that of the packed bytes.
    made.setRawHeader("Accept-Encoding", "identity");
    made.setRawHeader("User-Agent", "Pelloran");
    if (!request.accept.isEmpty()) {
        made.setRawHeader("Accept", request.accept);
    }
    // Of HTTP/2 a head of 16 kB may stand for 50 MB, over which Qt sits for minutes, with nobody to end it.
    made.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    made.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    made.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    made.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    made.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    made.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    made.setMaximumRedirectsAllowed(maximumRedirects);
    return made;
}

class QtHttpClient final : public HttpClient {
public:
    std::expected<Response, TransportError> get(const Request& request) override {
        const QDeadlineTimer deadline(request.deadline, Qt::PreciseTimer);
        const QString scheme = request.url.scheme(); // QUrl has it in lower case
        if ((scheme != "http"_L1 && scheme != "https"_L1) || request.url.host().isEmpty()) {
            return std::unexpected(TransportError{u"unsupported URL"_s});
        }
        if (const auto error = roomForARequest()) {
            return std::unexpected(TransportError{QString::fromStdString(error.message())});
        }

        const NewSockets connections;
        // One for each request: it belongs to the thread it was made on, and nothing is kept.
        QNetworkAccessManager manager;
        SystemProxies* proxies = nullptr; // owned by the manager
        if (QNetworkProxyFactory::usesSystemConfiguration()) {
            proxies = new SystemProxies(deadline);
            manager.setProxyFactory(proxies);
        }
        std::unique_ptr<QNetworkReply> reply(manager.get(networkRequest(request)));
        reply->setReadBufferSize(readAhead);

        UnsentRequest lookup;
        QEventLoop loop;
        QByteArray body;
        bool isTooLong = false;
        std::optional<QString> givenUp;
        const auto giveUp = [&](const QString& why) {
            if (!givenUp) {
                givenUp = why;
            }
            loop.quit();
        };
        const auto stop = [&] {
            isTooLong = true;
            loop.quit();
        };
        const auto read = [&] {
            // A byte beyond the limit is enough to know. Asked for more than there is, Qt makes room for all of it.
            const qint64 wanted = request.maximumBytes + 1 - body.size();
            body += reply->read(std::clamp<qint64>(wanted, 0, reply->bytesAvailable()));
            if (body.size() > request.maximumBytes) {
                stop();
            }
        };

        // Not Qt's own transfer timeout: it ends as "Operation canceled".
        QTimer silence;
        silence.setSingleShot(true);
        silence.setTimerType(Qt::PreciseTimer);
        silence.start(request.transferTimeout);
        QTimer end;
        end.setSingleShot(true);
        end.setTimerType(Qt::PreciseTimer);
        end.start(std::chrono::ceil<std::chrono::milliseconds>(deadline.remainingTimeAsDuration()));
        // A thread that is asked to end must not hold up the program's own end, and nothing is heard of a head before
        // it is whole.
        QTimer now;
        now.start(poll);
        const qint64 mostReceived = mostBesides + request.maximumBytes + request.maximumBytes / 2; // however packed

        const auto heard = [&] { silence.start(); };
        QObject::connect(reply.get(), &QNetworkReply::requestSent, &loop, [&] { lookup.settle(); });
        QObject::connect(reply.get(), &QNetworkReply::metaDataChanged, &loop, [&] {
            heard();
            // What announces itself as too long need not be waited for. A redirect's body is nobody's.
            if (hasSucceeded(statusOf(*reply)) &&
                reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > request.maximumBytes) {
                stop();
            }
        });
        QObject::connect(reply.get(), &QNetworkReply::redirected, &loop, [&] {
            heard();
            lookup.wasRedirected();
        });
        QObject::connect(reply.get(), &QNetworkReply::readyRead, &loop, [&] {
            heard();
            read();
        });
        QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
        const auto timedOut = [&] { giveUp(u"The request timed out."_s); };
        QObject::connect(&silence, &QTimer::timeout, &loop, timedOut);
        QObject::connect(&end, &QTimer::timeout, &loop, timedOut);
        const auto isInterrupted = [] { return QThread::currentThread()->isInterruptionRequested(); };
        const auto cancelled = [&] { giveUp(u"The request was cancelled."_s); };
        QObject::connect(&now, &QTimer::timeout, &loop, [&] {
            if (isInterrupted()) {
                cancelled();
            } else if (connections.mostReceived() > mostReceived) {
                giveUp(tooLong(mostReceived));
            }
        });

        if (!reply->isFinished()) {
            loop.exec();
        }
        if (!givenUp && !isTooLong) {
            read();
        }
        if (proxies && !proxies->wereFound()) {
            isInterrupted() ? cancelled() : timedOut();
        }
        if (!givenUp) {
            lookup.settle();
        }
        reply->disconnect(&loop);
        const int status = statusOf(*reply);
        if (givenUp || isTooLong) {
            // Not abort(): where Qt has made an error of the status and not yet said that the reply is finished, that
            // warns of a second error.
            reply.reset();
            connections.end();
        }
        if (givenUp) {
            return std::unexpected(TransportError{*givenUp});
        }
        if (isTooLong && hasSucceeded(status)) {
            return std::unexpected(TransportError{tooLong(request.maximumBytes)});
        }
        if (isTooLong) {
            return Response{status, body.first(request.maximumBytes)};
        }
        return answer(*reply, std::move(body));
    }

private:
    static QString tooLong(qint64 limit) { return u"the answer is longer than %1 bytes"_s.arg(limit); }

    // 0 before the first answer.
    static int statusOf(const QNetworkReply& reply) {
        return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    }

    static bool hasSucceeded(int status) { return status >= 200 && status <= 299; }

    static std::expected<Response, TransportError> answer(const QNetworkReply& reply, QByteArray body) {
        const QNetworkReply::NetworkError error = reply.error();
        const int status = statusOf(reply);
        // Once in some hundred times Qt finds nothing wrong with a connection that ended in the middle of a body.
        const QVariant promised = reply.header(QNetworkRequest::ContentLengthHeader);
        if (error == QNetworkReply::NoError && hasSucceeded(status) && promised.isValid() &&
            body.size() < promised.toLongLong()) {
            return std::unexpected(TransportError{u"Connection closed"_s});
        }
        // What was wrong with a redirect, or with the connection that it led to, comes with the status of the redirect,
        // which is nobody's answer.
        const bool redirectFailed = status >= 300 && status <= 399 && error != QNetworkReply::NoError &&
                                    error <= QNetworkReply::UnknownProxyError;
        // Qt makes an error of every status that is none of success, in words of its own: the status tells more.
        if (error == QNetworkReply::NoError ? status != 0 : status != 0 && !hasSucceeded(status) && !redirectFailed) {
            return Response{status, std::move(body)};
        }
        return std::unexpected(
            TransportError{error == QNetworkReply::NoError ? u"bad server response"_s : reply.errorString()});
    }
};

} // namespace

std::unique_ptr<HttpClient> HttpClient::create() {
    return std::make_unique<QtHttpClient>();
}

bool HttpClient::mayBeLookingUp() {
    return unsent > 0;
}

} // namespace pelloran
