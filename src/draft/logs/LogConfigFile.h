#pragma once

#include "draft/logs/LogConfig.h"
#include "draft/logs/LogsDir.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

// The game's log.config where it lies.
namespace pelloran {

// Where the game that writes its logs to `logsDir` looks for its log.config, whether that is there or not: in the Wine
// prefix that the folder lies in, else among the preferences in the Mac user's library below `home`. Without a log
// folder, in the first of the usual prefixes that has the game, which may never have been told to log. Absent where
// that is not known.
std::optional<QString> logConfigPath(const std::optional<QString>& logsDir, const QString& home,
                                     const EnvironmentLookup& environment);

struct LogConfigFile {
    QString path;                   // of the file itself, where links lead there
    std::optional<QByteArray> text; // absent: there is no file
    bool isWritable = false;        // it, or the folder that it would be in
};

// The error is a sentence: a folder of that name, no permission, too large.
std::expected<LogConfigFile, QString> readLogConfig(const QString& path);

struct WrittenLogConfig {
    QStringList changes; // see MergedLogConfig; empty: nothing was written
    QString backup;      // path of the copy of what was there; "" where nothing was
};

// Merges the file, in one step that the game cannot see half done, and keeps what was there beside it under a name that
// is not taken. The error is a sentence, and then the file is as it was. A file that may not be written is an error,
// though another could be put in its place: whoever protected it meant it.
std::expected<WrittenLogConfig, QString> fixLogConfig(const QString& path);

// For the user's eyes.
QString notPlainText(const QString& path);

} // namespace pelloran
