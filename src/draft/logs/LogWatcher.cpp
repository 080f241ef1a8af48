#include "draft/logs/LogWatcher.h"

#include "base/FileTree.h"
#include "base/Log.h"
#include "draft/logs/ArenaLog.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <expected>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace pelloran {

namespace {

// QFileInfo's dates have milliseconds; two sessions of one test or one quick restart can share them.
using Date = std::filesystem::file_time_type;

struct Session {
    QString name;
    Date modified;
};

// Fails where the folder cannot be listed to its end.
std::expected<std::vector<Session>, std::error_code> sessionsIn(const QString& folder) {
    std::error_code error;
    std::vector<Session> sessions;
    std::filesystem::directory_iterator entry(QFile::encodeName(folder).toStdString(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const QString name = QFile::decodeName(QByteArray::fromStdString(entry->path().filename().string()));
        if (name.startsWith(QLatin1StringView("Hearthstone_"))) {
            std::error_code unknownDate;
            const Date modified = entry->last_write_time(unknownDate);
            sessions.push_back({name, unknownDate ? Date::min() : modified});
        }
    }
    if (error) {
        return std::unexpected(error);
    }
    return sessions;
}

} // namespace

std::expected<std::optional<QString>, QString> newestSession(const QString& logsDir) {
    const auto sessions = sessionsIn(logsDir);
    if (!sessions) {
        return std::unexpected(QString::fromStdString(sessions.error().message()));
    }
    // The system lists in no order of its own: by name, two equal dates give the same folder every time.
    const auto newest = std::ranges::max_element(*sessions, [](const Session& one, const Session& other) {
        return one.modified != other.modified ? one.modified < other.modified : one.name > other.name;
    });
    return newest == sessions->end() ? std::nullopt : std::optional(logsDir + u'/' + newest->name);
}

LogWatcher::LogWatcher(const QString& folder, std::function<void()> pauseForGame)
    : logsDir(folder)
    , pause(std::move(pauseForGame)) {}

std::optional<QString> LogWatcher::latestSessionDir() const {
    auto newest = newestSession(logsDir);
    if (!newest) {
        // One that has never been there is waited for: that is told where the folder is chosen.
        if (listed || FileTree::exists(logsDir)) {
            tellOnce(QStringLiteral("the log folder %1 cannot be listed: %2").arg(logsDir, newest.error()));
        }
        return std::nullopt;
    }
    listed = true;
    return *std::move(newest);
}

GameLogs LogWatcher::read() const {
    GameLogs logs;
    logs.sessionDir = latestSessionDir();
    if (logs.sessionDir) {
        if (FileTree::exists(*logs.sessionDir) && !QFileInfo(*logs.sessionDir).isDir()) {
            tellOnce(QStringLiteral("%1 is no folder, so there are no logs in it").arg(*logs.sessionDir));
        }
        logs.loadingScreen = read(*logs.sessionDir + QStringLiteral("/LoadingScreen.log"));
        logs.arena = read(*logs.sessionDir + QStringLiteral("/Arena.log"));
    }
    return logs;
}

DraftState LogWatcher::stateOf(const GameLogs& logs) {
    DraftState state;
    state.sessionDir = logs.sessionDir;
    if (!state.sessionDir) {
        state.scene = QStringLiteral("NO_SESSION");
        return state;
    }
    if (logs.loadingScreen) {
        state.scene = lastScene(*logs.loadingScreen).value_or(state.scene);
    }
    if (logs.arena) {
        readArenaLog(*logs.arena, state);
        decidePhase(state);
    }
    return state;
}

std::optional<QByteArray> LogWatcher::read(const QString& path) const {
    auto text = readLogFile(path, pause);
    if (text) {
        return *std::move(text);
    }
    // A log that is not there yet is nothing to speak of.
    if (!FileTree::exists(path)) {
        return std::nullopt;
    }
    switch (text.error()) {
    case LogFileError::tooLarge:
        tellOnce(QStringLiteral("%1 is larger than %2 MiB and is not read")
                     .arg(path, QString::number(largestLogFile / 1024 / 1024)));
        break;
    case LogFileError::unreadable: {
        const QString why = whyUnreadable(path);
        tellOnce(QStringLiteral("%1 cannot be read").arg(path) + (why.isEmpty() ? why : QStringLiteral(": ") + why));
        break;
    }
    case LogFileError::notText:
        tellOnce(QStringLiteral("%1 is not text in UTF-8 and is not used").arg(path));
        break;
    }
    return std::nullopt;
}

void LogWatcher::tellOnce(const QString& line) const {
    if (!told.contains(line)) {
        told.insert(line);
        log(line);
    }
}

} // namespace pelloran
