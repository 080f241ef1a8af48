#pragma once

#include "tests/support/QtThread.h"

#include <QByteArray>
#include <QEventLoop>
#include <QHostAddress>
#include <QSslConfiguration>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <semaphore>
#include <utility>
#include <vector>

namespace pelloran::testing {

// A web server on loopback that does with each path what its test says: it can stall, trickle, cut, lie and redirect.
// Works on a thread of its own, because those who ask it wait.
class ScriptedServer {
public:
    // Gets the connection once the request's head has arrived. Runs on the server's thread.
    using Script = std::function<void(QTcpSocket&)>;

    // Speaks TLS where it is told how.
    explicit ScriptedServer(std::optional<QSslConfiguration> configuration = {})
        : tls(std::move(configuration))
        , thread([this] { serve(); }) {
        thread.start();
        listening.acquire();
    }

    ~ScriptedServer() {
        thread.quit();
        thread.join();
    }

    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    QString base() const {
        return QStringLiteral("%1://127.0.0.1:%2")
            .arg(tls ? QStringLiteral("https") : QStringLiteral("http"))
            .arg(port);
    }

    QUrl url(const QString& path) const { return QUrl(base() + path); }

    // A path nobody scripted is answered with 404.
    void on(const QByteArray& path, Script script) {
        const std::scoped_lock lock(mutex);
        scripts[path] = std::move(script);
    }

    // Status, headers (each ended by a line break) and body, and then the end.
    static Script answer(const QByteArray& status, const QByteArray& headers, const QByteArray& body) {
        return [=](QTcpSocket& socket) {
            socket.write("HTTP/1.1 " + status + "\r\n" + headers +
                         "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
            socket.disconnectFromHost();
        };
    }

    // Exactly these bytes, and then the end.
    static Script raw(const QByteArray& bytes) {
        return [=](QTcpSocket& socket) {
            socket.write(bytes);
            socket.disconnectFromHost();
        };
    }

    // The first bytes at once, and `more` again every few milliseconds, without end.
    static Script trickle(const QByteArray& first, const QByteArray& more, int milliseconds) {
        return [=](QTcpSocket& socket) {
            socket.write(first);
            auto* timer = new QTimer(&socket); // owned by the connection
            QObject::connect(timer, &QTimer::timeout, &socket, [&socket, more] {
                if (socket.isOpen() && socket.bytesToWrite() < 1024LL * 1024) { // who asked may have gone
                    socket.write(more);
                }
            });
            timer->start(milliseconds);
        };
    }

    // The heads of all requests, in the order they came.
    std::vector<QByteArray> requests() const {
        const std::scoped_lock lock(mutex);
        return heads;
    }

private:
    void serve() {
        const std::unique_ptr<QTcpServer> made =
            tls ? std::unique_ptr<QTcpServer>(new QSslServer) : std::make_unique<QTcpServer>();
        QTcpServer& server = *made;
        if (tls) {
            static_cast<QSslServer&>(server).setSslConfiguration(*tls);
        }
        server.listen(QHostAddress::LocalHost);
        port = server.serverPort();
        QObject::connect(&server, &QTcpServer::pendingConnectionAvailable, &server, [&] {
            QTcpSocket* const socket = server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            auto head = std::make_shared<QByteArray>();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, head] {
                const bool begun = head->contains("\r\n\r\n");
                *head += socket->readAll();
                if (!begun && head->contains("\r\n\r\n")) {
                    scriptFor (*head)(*socket);
                }
            });
        });
        listening.release();
        QEventLoop loop;
        QObject::connect(&thread, &QThread::finished, &loop, &QEventLoop::quit);
        loop.exec();
    }

    Script scriptFor(const QByteArray& head) {
        const std::scoped_lock lock(mutex);
        heads.push_back(head);
        const auto found = scripts.find(head.split(' ').value(1));
        return found == scripts.end() ? answer("404 Not Found", {}, "not here") : found->second;
    }

    const std::optional<QSslConfiguration> tls;
    mutable std::mutex mutex;
    std::map<QByteArray, Script> scripts;
    std::vector<QByteArray> heads;
    quint16 port = 0;
    std::binary_semaphore listening{0};
    QtThread thread; // last, for it uses the rest
};

} // namespace pelloran::testing
