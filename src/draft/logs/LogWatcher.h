#pragma once

#include "draft/logs/LogFile.h"
#include "model/DraftModel.h"

#include <QByteArray>
#include <QSet>
#include <QString>

#include <expected>
#include <functional>
#include <optional>

namespace pelloran {

// The logs of the newest session, as they are at one moment. The texts are shared, never copied.
struct GameLogs {
    std::optional<QString> sessionDir;       // absent: there is no session
    std::optional<QByteArray> loadingScreen; // absent: cannot be read
    std::optional<QByteArray> arena;

    bool operator==(const GameLogs&) const = default;
};

// Path of the newest session folder, `logsDir` + "/" + its name; absent when there is none. Of folders of the same date
// it is the first by name. The error is why the log folder cannot be listed, in the system's words. From any thread.
std::expected<std::optional<QString>, QString> newestSession(const QString& logsDir);

// Tells from the game's log files alone whether an Arena draft runs, at which phase, and what was picked. Every poll
// reads the files afresh and remembers nothing of them, so a restart of the game or of this program needs no recovery.
// Main thread.
class LogWatcher {
public:
    // `logsDir` is the game's log folder, taken as it stands: "~" and variables mean nothing in it. Nothing is read
    // yet. `pause` is how a poll waits a moment for the game to finish a line (see readLogFile).
    explicit LogWatcher(const QString& logsDir, std::function<void()> pause = pauseForWriter);

    // The newest session; absent also when the log folder cannot be listed.
    std::optional<QString> latestSessionDir() const;

    // What the logs say now. Never fails: what cannot be read keeps its default.
    DraftState poll() const { return stateOf(read()); }

    // The two halves of a poll, for those who want to see what it went by.
    GameLogs read() const;
    static DraftState stateOf(const GameLogs& logs);

private:
    std::optional<QByteArray> read(const QString& path) const;
    void tellOnce(const QString& line) const;

    QString logsDir;
    std::function<void()> pause;
    mutable QSet<QString> told;  // so that each line is logged once, not with every poll
    mutable bool listed = false; // the log folder has been there: it is not one that is still waited for
};

} // namespace pelloran
