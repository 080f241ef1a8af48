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
// prefix that the folder lies in, as it was named or where links lead, else among the preferences in the Mac user's
// library below `home`, else in $WINEPREFIX, whose other drives may have the game. Without a log folder, in the first
// of the usual prefixes that has the game, which may never have been told to log. Absent where that is not known.
std::optional<QString> logConfigPath(const std::optional<QString>& logsDir, const QString& home,
                                     const EnvironmentLookup& environment);

// Why the file cannot be used or written.
struct LogConfigError {
    enum class Kind {
        leadsNowhere, // a link
        noFile,       // a folder, most likely
        unreadable,
        tooLarge,
        notPlainText,
        isProtected, // the file is not to be written
        unwritable,  // its folder is not, or the disk is full
    };

    Kind kind;
    QString description; // for the user, such as "/a/log.config may not be written"

    bool operator==(const LogConfigError&) const = default;
};

struct LogConfigFile {
    QString path;                            // of the file itself, where links lead there
    std::optional<QByteArray> text;          // absent: there is no file
    std::optional<LogConfigError> toWriting; // what is in the way of writing it
};

// What is there, whether it is text that can be merged or not. Changes nothing, and finds out what would be in the way
// of a change. Errors: `leadsNowhere`, `noFile`, `unreadable`, and `tooLarge` beyond 1 MiB.
std::expected<LogConfigFile, LogConfigError> readLogConfig(const QString& path);

struct WrittenLogConfig {
    QStringList changes; // see MergedLogConfig; empty: nothing was written
    QString backup;      // path of the copy of what was there; "" where nothing was
};

// Merges the file, in one step that the game cannot see half done, and keeps what was there beside it under a name that
// is not taken, with its permissions, which the new one has too. After an error the file is as it was. One that may not
// be written is an error, though another could be put in its place: whoever protected it meant it.
std::expected<WrittenLogConfig, LogConfigError> fixLogConfig(const QString& path);

// What mergeLogConfig() refuses.
LogConfigError notPlainText(const QString& path);

} // namespace pelloran
