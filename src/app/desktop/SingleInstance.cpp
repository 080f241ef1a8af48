#include "app/desktop/SingleInstance.h"

#include "base/Log.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QUrl>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace pelloran {

namespace {

const QByteArray request = QByteArrayLiteral("show\n");
const QByteArray acknowledgement = QByteArrayLiteral("shown\n");

// Whether somebody holds it, as Qt does for as long as a lock lives: the number of a process that a crash left in it
// may have been given to another one since.
bool isHeld(const QString& lockFile) {
    const int file = ::open(QFile::encodeName(lockFile).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return errno != ENOENT;
    }
    const bool isFree = ::flock(file, LOCK_SH | LOCK_NB) == 0;
    ::close(file); // which lets go of it
    return !isFree;
}

// Between two looks at whether the first listens already, or has ended.
constexpr std::chrono::milliseconds pause{20};

} // namespace

SingleInstance::SingleInstance(const QString& folder, const QString& name)
    : usable(!folder.isEmpty())
    , socketPath(folder + u'/' + name + QStringLiteral(".socket"))
    , lock(folder + u'/' + name + QStringLiteral(".lock")) {
    lock.setStaleLockTime(0); // however long it runs; a lock whose process is gone is no lock
    connect(&listeningTimer, &QTimer::timeout, this, &SingleInstance::listenAgain);
    server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* asking = server.nextPendingConnection()) {
            connect(asking, &QLocalSocket::disconnected, asking, &QObject::deleteLater);
            connect(asking, &QLocalSocket::readyRead, this, [this, asking] { answer(*asking); });
            if (asking->bytesAvailable() > 0) {
                answer(*asking);
            }
        }
    });
}

SingleInstance::~SingleInstance() {
    end();
}

SingleInstance::Outcome SingleInstance::begin(std::chrono::milliseconds wait) {
    if (!usable) {
        log(QStringLiteral("there is no private folder for a socket; a second start will not be noticed"));
        return Outcome::unavailable;
    }
    const QDeadlineTimer deadline(wait);
    do {
        if (lock.tryLock(0)) {
            if (!listen()) {
                return Outcome::unavailable;
            }
            listeningTimer.start(checkInterval);
            return Outcome::first;
        }
        if (lock.error() != QLockFile::LockFailedError) {
            log(QStringLiteral("cannot make %1; a second start will not be noticed").arg(lock.fileName()));
            return Outcome::unavailable;
        }
        if (askFirst(std::chrono::milliseconds(deadline.remainingTime()))) {
            return Outcome::handedOver;
        }
        std::this_thread::sleep_for(std::min(pause, wait));
    } while (!deadline.hasExpired());
    return Outcome::firstSilent;
}

void SingleInstance::end() {
    listeningTimer.stop();
    server.close();
    lock.unlock();
}

std::optional<SingleInstance::Running> SingleInstance::running(std::chrono::milliseconds wait) const {
    qint64 process = 0;
    QString host;
    QString application;
    if (!usable || !lock.getLockInfo(&process, &host, &application)) {
        return std::nullopt;
    }
    return process > 0 && isHeld(lock.fileName()) ? std::optional(Running{process, answersAtAll(wait)}) : std::nullopt;
}

// Qt's server closes for good, without a word, when it cannot let one in because no more files can be opened.
void SingleInstance::listenAgain() {
    if (!server.isListening()) {
        QLocalServer::removeServer(socketPath);
        server.listen(socketPath);
    }
}

bool SingleInstance::listen() {
    // Left by one that crashed: the lock says that nobody listens there.
    QLocalServer::removeServer(socketPath);
    if (!server.listen(socketPath)) {
        log(QStringLiteral("cannot listen at %1 (%2); a second start will not be noticed")
                .arg(socketPath, server.errorString()));
        lock.unlock();
        return false;
    }
    return true;
}

// A first one hangs up on words that it does not know, as soon as its event loop turns: that is an answer too.
bool SingleInstance::answersAtAll(std::chrono::milliseconds wait) const {
    const QDeadlineTimer deadline(wait);
    const auto left = [&deadline] { return static_cast<int>(deadline.remainingTime()); };
    QLocalSocket first;
    first.connectToServer(socketPath);
    if (!first.waitForConnected(left())) {
        return false;
    }
    first.write("are you there\n");
    return first.state() == QLocalSocket::UnconnectedState || first.waitForDisconnected(left());
}

bool SingleInstance::askFirst(std::chrono::milliseconds wait) const {
    const QDeadlineTimer deadline(wait);
    const auto left = [&deadline] { return static_cast<int>(deadline.remainingTime()); };
    QLocalSocket first;
    first.connectToServer(socketPath);
    if (!first.waitForConnected(left())) {
        return false;
    }
    first.write(request);
    while (!first.canReadLine()) {
        if (!first.waitForReadyRead(left())) {
            return false;
        }
    }
    return first.readLine() == acknowledgement;
}

void SingleInstance::answer(QLocalSocket& asking) {
    if (!asking.canReadLine() && asking.bytesAvailable() < request.size()) {
        return; // more is to come
    }
    if (asking.readLine() != request) {
        asking.abort(); // none of ours
        return;
    }
    Q_EMIT reopenRequested();
    asking.write(acknowledgement);
    asking.disconnectFromServer(); // when that has been written
}

QString instanceName(const QString& display) {
    QString key = display;
    if (const qsizetype colon = key.lastIndexOf(u':'); colon >= 0) {
        const qsizetype screen = key.indexOf(u'.', colon);
        key = screen < 0 ? key : key.left(screen);
        if (key.left(colon) == QLatin1StringView("unix")) {
            key = key.mid(colon);
        }
    }
    return QStringLiteral("pelloran") + QString::fromLatin1(QUrl::toPercentEncoding(key));
}

} // namespace pelloran
