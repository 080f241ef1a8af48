#pragma once

#include "tools/stage/LogScript.h"

#include <QFile>
#include <QString>

#include <chrono>
#include <expected>
#include <functional>
#include <memory>
#include <vector>

namespace pelloran::stage {

using Clock = std::function<std::chrono::system_clock::time_point()>;

// One session of the game in its log folder, with its two log files. Every line is flushed at once, so that a reader
// sees them come one by one.
class SessionFolder {
public:
    // Makes "Hearthstone_YYYY_MM_DD_hh_mm_ss" (local time) with two empty logs below `logsDir`, which is made if need
    // be. A folder of that name that is there already is an error: the game never goes on with an old session. The
    // error is for people.
    static std::expected<SessionFolder, QString> create(const QString& logsDir, Clock clock);

    // Adds the lines with the time that the clock gives for each. False when a file could not be written.
    bool write(const std::vector<LogLine>& lines);

    QString path() const { return folder; }

private:
    SessionFolder() = default;

    QString folder;
    Clock clock;
    std::unique_ptr<QFile> arena;
    std::unique_ptr<QFile> loadingScreen;
};

} // namespace pelloran::stage
