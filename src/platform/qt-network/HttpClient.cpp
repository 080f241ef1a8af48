#include "platform/HttpClient.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using namespace std::chrono_literals;

// Sites move by one redirect or two; a loop need not be walked to Qt's limit of fifty.
constexpr int maximumRedirects = 10;

// What may arrive ahead of us: the server is held back rather than our memory filled.
constexpr qint64 readAhead = 256 * 1024;

constexpr auto interruptionPoll = 50ms;

QNetworkRequest networkRequest(const HttpClient::Request& request) {
    QNetworkRequest made(request.url);
    // Qt unpacks what is labelled as gzip, unless it is told which encoding to ask for: a server may label a .tar.gz
    // so, and its digest is that of the packed bytes.
    made.setRawHeader("Accept-Encoding", "identity");
    made.setRawHeader("User-Agent", "Pelloran");
    if (!request.accept.isEmpty()) {
        made.setRawHeader("Accept", request.accept);
    }
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
        const QString scheme = request.url.scheme(); // QUrl has it in lower case
        if ((scheme != "http"_L1 && scheme != "https"_L1) || request.url.host().isEmpty()) {
            return std::unexpected(TransportError{u"unsupported URL"_s});
        }

        // One for each request: it belongs to the thread it was made on, and nothing is kept.
        QNetworkAccessManager manager;
        const std::unique_ptr<QNetworkReply> reply(manager.get(networkRequest(request)));
        reply->setReadBufferSize(readAhead);

        QEventLoop loop;
        QByteArray body;
        std::optional<QString> givenUp;
        const auto giveUp = [&](const QString& why) {
            if (!givenUp) {
                givenUp = why;
            }
            loop.quit();
        };
        const auto read = [&] {
            // A byte beyond the limit is enough to know.
            body += reply->read(std::max<qint64>(0, request.maximumBytes + 1 - body.size()));
            if (body.size() > request.maximumBytes) {
                giveUp(u"the answer is longer than %1 bytes"_s.arg(request.maximumBytes));
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
        end.start(request.deadline);
        // A thread that is asked to end must not hold up the program's own end.
        QTimer interruption;
        interruption.start(interruptionPoll);

        const auto heard = [&] { silence.start(); };
        QObject::connect(reply.get(), &QNetworkReply::metaDataChanged, &loop, heard);
        QObject::connect(reply.get(), &QNetworkReply::redirected, &loop, heard);
        QObject::connect(reply.get(), &QNetworkReply::readyRead, &loop, [&] {
            heard();
            read();
        });
        QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
        const auto timedOut = [&] { giveUp(u"The request timed out."_s); };
        QObject::connect(&silence, &QTimer::timeout, &loop, timedOut);
        QObject::connect(&end, &QTimer::timeout, &loop, timedOut);
        QObject::connect(&interruption, &QTimer::timeout, &loop, [&] {
            if (QThread::currentThread()->isInterruptionRequested()) {
                giveUp(u"The request was cancelled."_s);
            }
        });

        if (!reply->isFinished()) {
            loop.exec();
        }
        if (!givenUp) {
            read();
        }
        reply->disconnect(&loop);
        if (givenUp) {
            reply->abort();
            return std::unexpected(TransportError{*givenUp});
        }
        return answer(*reply, std::move(body));
    }

private:
    static std::expected<Response, TransportError> answer(const QNetworkReply& reply, QByteArray body) {
        const QNetworkReply::NetworkError error = reply.error();
        const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        const bool succeeded = status >= 200 && status <= 299;
        // Once in a thousand times Qt finds nothing wrong with a connection that ended in the middle of a body.
        const QVariant promised = reply.header(QNetworkRequest::ContentLengthHeader);
        if (error == QNetworkReply::NoError && succeeded && promised.isValid() && body.size() < promised.toLongLong()) {
            return std::unexpected(TransportError{u"Connection closed"_s});
        }
        // A redirect that was not followed carries the status of the redirect, which is nobody's answer.
        const bool redirectRefused =
            error == QNetworkReply::TooManyRedirectsError || error == QNetworkReply::InsecureRedirectError;
        // Qt makes an error of every status that is none of success, in words of its own: the status tells more.
        if (error == QNetworkReply::NoError ? status != 0 : status != 0 && !succeeded && !redirectRefused) {
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

} // namespace pelloran
