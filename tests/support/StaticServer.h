#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <vector>

namespace pelloran::testing {

// nginx, set up as docs/publishing.md tells an operator, with a folder of its own to serve on a free port of loopback.
// It runs as an ordinary process of whoever runs the test, reads and writes nothing outside of its folder, and ends
// with the object.
class StaticServer {
public:
    struct Request {
        QString method;
        QString path;
        int status = 0;
        qint64 received = 0; // bytes of the request
        qint64 sent = 0;     // bytes of the answer, head and body
        qint64 body = 0;     // bytes of the answer's body
    };

    // Whether nginx is.
    static bool isInstalled();

    StaticServer();
    ~StaticServer();
    StaticServer(const StaticServer&) = delete;
    StaticServer& operator=(const StaticServer&) = delete;

    // Returns when it takes connections; false when it does not come to that. Always on the same port.
    bool start();

    // What it says of itself, for tests that fail.
    QByteArray errors() const;

    // From now on connections are refused.
    void stop();

    // From now on connections are taken but not answered, until `release`.
    void hold();
    void release();

    // What it serves.
    QString root() const { return folder.path() + QStringLiteral("/www"); }

    // Of the root, without a slash at its end.
    QString url() const { return QStringLiteral("http://127.0.0.1:%1").arg(port); }

    // Puts a file below the root; never seen half written.
    void write(const QString& path, const QByteArray& content) const;

    // All requests that have been answered so far, in that order.
    std::vector<Request> requests();

private:
    bool startOnPort();
    QByteArray configuration() const;

    QString pidFile() const { return folder.path() + QStringLiteral("/nginx.pid"); }

    QTemporaryDir folder;
    QProcess process;
    quint16 port = 0;
    bool held = false;
};

} // namespace pelloran::testing
