#include "tests/support/StaticServer.h"

#include "tests/support/EndWithParent.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <gtest/gtest.h>

#include <csignal>

namespace pelloran::testing {

namespace {

constexpr int patience = 10'000; // milliseconds
const QString marker = QStringLiteral("/so-far");

// Often where only the administrator's search path leads.
QString programPath() {
    const QString name = QStringLiteral("nginx");
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty()
               ? QStandardPaths::findExecutable(name, {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/local/sbin")})
               : found;
}

// Below those that systems hand out by themselves: one of those may belong to somebody's connection by the time that a
// stopped server wants it back. Another program may still take it first; that is for the caller to notice.
quint16 freePort() {
    constexpr int tries = 100;
    for (int i = 0; i < tries; ++i) {
        const auto port = static_cast<quint16>(QRandomGenerator::global()->bounded(15'000, 32'000));
        if (QTcpServer probe; probe.listen(QHostAddress::LocalHost, port)) {
            return port;
        }
    }
    return 0;
}

// The site of the operator's guide, without what is the machine's.
QString documentedSite() {
    QFile guide(QStringLiteral(PELLORAN_PUBLISHING_GUIDE));
    EXPECT_TRUE(guide.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(guide.readAll());
    const QString opening = QStringLiteral("```nginx\n");
    const qsizetype begin = text.indexOf(opening);
    const qsizetype end = text.indexOf(QStringLiteral("```"), begin + opening.size());
    EXPECT_TRUE(begin >= 0 && end > begin) << "the guide has no configuration";
    static const QRegularExpression ofTheMachine(QStringLiteral("^ *(listen|server_name|root|access_log) .*;$"),
                                                 QRegularExpression::MultilineOption);
    return text.mid(begin + opening.size(), end - begin - opening.size()).remove(ofTheMachine);
}

} // namespace

bool StaticServer::isInstalled() {
    return !programPath().isEmpty();
}

StaticServer::StaticServer() {
    EXPECT_TRUE(folder.isValid() && QDir().mkpath(root()));
    endWithParent(process);
}

StaticServer::~StaticServer() {
    stop();
}

bool StaticServer::start() {
    if (port != 0) {
        return startOnPort();
    }
    constexpr int tries = 5;
    for (int i = 0; i < tries; ++i) {
        port = freePort();
        if (startOnPort()) {
            return true;
        }
    }
    return false;
}

bool StaticServer::startOnPort() {
    QFile file(folder.path() + QStringLiteral("/nginx.conf"));
    if (!file.open(QIODevice::WriteOnly) || file.write(configuration()) < 0) {
        return false;
    }
    file.close();
    QFile::remove(pidFile());
    process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    process.setStandardErrorFile(QProcess::nullDevice()); // it writes the same to its log
    process.start(programPath(), {QStringLiteral("-p"), folder.path(), QStringLiteral("-c"), file.fileName(),
                                  QStringLiteral("-e"), folder.path() + QStringLiteral("/error.log")});
    // The server may have written its file before this process has heard that it started: what counts is asked for only
    // after that.
    if (!process.waitForStarted(patience)) {
        return false;
    }
    // It writes that file once it listens.
    const bool listens = QTest::qWaitFor(
        [this] { return QFileInfo::exists(pidFile()) || process.state() == QProcess::NotRunning; }, patience);
    if (listens && process.state() == QProcess::Running) {
        return true;
    }
    stop(); // the next try removes the file, and a server that still ran would not write another
    return false;
}

QByteArray StaticServer::errors() const {
    QFile log(folder.path() + QStringLiteral("/error.log"));
    return (process.state() == QProcess::Running ? "it runs; " : "it has ended; ") +
           (log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray("no log"));
}

void StaticServer::stop() {
    if (process.state() == QProcess::NotRunning) {
        return;
    }
    release();
    process.terminate();
    if (!process.waitForFinished(patience)) {
        process.kill();
        process.waitForFinished(patience);
    }
}

void StaticServer::hold() {
    held = true;
    ::kill(static_cast<pid_t>(process.processId()), SIGSTOP);
}

void StaticServer::release() {
    if (held) {
        held = false;
        ::kill(static_cast<pid_t>(process.processId()), SIGCONT);
    }
}

void StaticServer::write(const QString& path, const QByteArray& content) const {
    const QString target = root() + u'/' + path;
    ASSERT_TRUE(QDir().mkpath(QFileInfo(target).path()));
    QSaveFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit());
}

std::vector<StaticServer::Request> StaticServer::requests() {
    if (process.state() == QProcess::Running) {
        // It does one thing after the other and notes each before the next: once it has closed this connection, all
        // that was answered before is in its log.
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        EXPECT_TRUE(socket.waitForConnected(patience)) << "the server does not take connections";
        socket.write("GET " + marker.toLatin1() + " HTTP/1.0\r\n\r\n");
        EXPECT_TRUE(socket.state() == QAbstractSocket::UnconnectedState || socket.waitForDisconnected(patience))
            << "the server does not answer";
    }
    std::vector<Request> all;
    QFile log(folder.path() + QStringLiteral("/access.log"));
    EXPECT_TRUE(log.open(QIODevice::ReadOnly)) << "the server has no log";
    for (const QByteArray& line : log.readAll().split('\n')) {
        const QByteArrayList fields = line.split('\t');
        const QString path = QString::fromUtf8(fields.value(1));
        if (fields.size() == 6 && path != marker) {
            all.push_back({QString::fromUtf8(fields[0]), path, fields[2].toInt(), fields[3].toLongLong(),
                           fields[4].toLongLong(), fields[5].toLongLong()});
        }
    }
    return all;
}

// One process, which is what ends and what is held; with paths for all that it would keep in the system's folders.
QByteArray StaticServer::configuration() const {
    return QStringLiteral(R"(daemon off;
master_process off;
pid "%1/nginx.pid";
error_log "%1/error.log";
events { worker_connections 64; }
http {
  log_format counted "$request_method\t$request_uri\t$status\t$request_length\t$bytes_sent\t$body_bytes_sent";
  access_log "%1/access.log" counted;
  client_body_temp_path "%1/temporary";
  proxy_temp_path "%1/temporary";
  fastcgi_temp_path "%1/temporary";
  uwsgi_temp_path "%1/temporary";
  scgi_temp_path "%1/temporary";
  root "%2";
  %3
}
)")
        .arg(folder.path(), root(),
             documentedSite().replace(QStringLiteral("server {"),
                                      QStringLiteral("server { listen 127.0.0.1:%1;").arg(port)))
        .toUtf8();
}

} // namespace pelloran::testing
