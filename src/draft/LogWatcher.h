#pragma once

#include "draft/DraftModel.h"

#include <QString>

#include <optional>

namespace pelloran {

// Tells from the game's log files alone whether an Arena draft runs, at which phase, and what was picked. Keeps no
// memory between polls, so a restart of the game or of this program needs no recovery. Main thread.
class LogWatcher {
public:
    // `logsDir` is the game's log folder. Nothing is read yet.
    explicit LogWatcher(const QString& logsDir);

    // Path of the newest session folder; absent when there is none or the log folder cannot be listed.
    std::optional<QString> latestSessionDir() const;

    // What the logs say now. Never fails: what cannot be read keeps its default.
    DraftState poll() const;

private:
    QString logsDir;
};

} // namespace pelloran
