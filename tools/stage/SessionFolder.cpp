#include "tools/stage/SessionFolder.h"

#include <QDateTime>
#include <QDir>

#include <utility>

namespace pelloran::stage {

namespace {

QDateTime localTime(std::chrono::system_clock::time_point time) {
    using std::chrono::milliseconds;
    return QDateTime::fromMSecsSinceEpoch(std::chrono::floor<milliseconds>(time.time_since_epoch()).count());
}

// "20:31:33.1828830": down to the ten-millionth of a second.
QString stamp(std::chrono::system_clock::time_point time) {
    using Tick = std::chrono::duration<qint64, std::ratio<1, 10'000'000>>;
    const qint64 ticks = std::chrono::floor<Tick>(time.time_since_epoch()).count() % Tick::period::den;
    return localTime(time).toString(QStringLiteral("HH:mm:ss")) +
           QStringLiteral(".%1").arg(ticks, 7, 10, QLatin1Char('0'));
}

} // namespace

std::expected<SessionFolder, QString> SessionFolder::create(const QString& logsDir, Clock clock) {
    SessionFolder session;
    session.clock = std::move(clock);
    const QString name = localTime(session.clock()).toString(QStringLiteral("'Hearthstone_'yyyy_MM_dd_HH_mm_ss"));
    session.folder = QDir(logsDir).absoluteFilePath(name);
    if (!QDir().mkpath(logsDir) || !QDir(logsDir).mkdir(name)) {
        return std::unexpected(QStringLiteral("cannot make the session folder %1").arg(session.folder));
    }
    session.arena = std::make_unique<QFile>(session.folder + QStringLiteral("/Arena.log"));
    session.loadingScreen = std::make_unique<QFile>(session.folder + QStringLiteral("/LoadingScreen.log"));
    for (QFile* file : {session.arena.get(), session.loadingScreen.get()}) {
        if (!file->open(QIODevice::WriteOnly | QIODevice::Append)) {
            return std::unexpected(file->fileName() + QStringLiteral(": ") + file->errorString());
        }
    }
    return session;
}

bool SessionFolder::write(const std::vector<LogLine>& lines) {
    bool written = true;
    for (const LogLine& line : lines) {
        QFile& file = line.file == LogFile::arena ? *arena : *loadingScreen;
        const QByteArray bytes = QStringLiteral("D %1 %2\n").arg(stamp(clock()), line.text).toUtf8();
        written = file.write(bytes) == bytes.size() && file.flush() && written;
    }
    return written;
}

} // namespace pelloran::stage
