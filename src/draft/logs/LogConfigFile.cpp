#include "draft/logs/LogConfigFile.h"

#include "base/FileTree.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Real ones have some hundred bytes.
constexpr qint64 largestLogConfig = qint64{1024} * 1024;

const QString driveFolder = u"/drive_c/"_s;
const QString gameFolder = u"drive_c/Program Files (x86)/Hearthstone"_s;
const QString settingsFolder = u"AppData/Local/Blizzard/Hearthstone"_s;
const QString fileName = u"/log.config"_s;

// When anything was last written there: a game changes its files, which does not touch the folder.
QDateTime lastChange(const QFileInfo& folder) {
    QDateTime last = folder.lastModified();
    for (const QFileInfo& entry : QDir(folder.filePath()).entryInfoList(QDir::Files | QDir::Hidden)) {
        last = std::max(last, entry.lastModified());
    }
    return last;
}

// The game's settings of the user who plays in that prefix: of several the ones that were changed last. Where nobody
// has any yet, of the user that Wine would make.
QString settingsIn(const QString& prefix, const EnvironmentLookup& environment) {
    const QDir users(prefix + u"/drive_c/users"_s);
    const QStringList names = users.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    QString newest;
    QDateTime newestChange;
    for (const QString& name : names) {
        const QFileInfo folder(users.filePath(name + u'/' + settingsFolder));
        if (!folder.isDir()) {
            continue;
        }
        const QDateTime change = lastChange(folder);
        if (newest.isEmpty() || change > newestChange) {
            newest = folder.filePath();
            newestChange = change;
        }
    }
    if (!newest.isEmpty()) {
        return newest;
    }
    // Steam's Wine has one user of its own everywhere.
    QString user = environment(u"USER"_s).value_or(QString());
    if (!names.contains(user)) {
        const auto own = std::ranges::find_if(names, [](const QString& name) { return name != u"Public"_s; });
        user = names.contains(u"steamuser"_s) ? u"steamuser"_s : own != names.end() ? *own : user;
    }
    return user.isEmpty() ? QString() : users.filePath(user + u'/' + settingsFolder);
}

std::optional<QString> prefixOf(const QString& path) {
    const qsizetype drive = path.lastIndexOf(driveFolder);
    return drive < 0 ? std::nullopt : std::optional(path.first(drive));
}

std::optional<QString> pathIn(const QString& prefix, const EnvironmentLookup& environment) {
    const QString settings = settingsIn(prefix, environment);
    return settings.isEmpty() ? std::nullopt : std::optional(settings + fileName);
}

LogConfigError unreadable(const QString& path, const QString& why) {
    return {LogConfigError::Kind::unreadable, u"cannot read %1: %2"_s.arg(path, why)};
}

// What is made there is made beside it first, and so is the copy of what was there.
std::optional<LogConfigError> obstacleToWriting(const QString& path) {
    const QString obstacle = FileTree::obstacleTo(path);
    return obstacle.isEmpty() ? std::nullopt
                              : std::optional(LogConfigError{LogConfigError::Kind::unwritable, obstacle});
}

} // namespace

std::optional<QString> logConfigPath(const std::optional<QString>& logsDir, const QString& home,
                                     const EnvironmentLookup& environment) {
    std::optional<QString> prefix;
    if (logsDir) {
        const QFileInfo folder(*logsDir);
        prefix = prefixOf(QDir::cleanPath(folder.absoluteFilePath()));
        if (!prefix) {
            prefix = prefixOf(folder.canonicalFilePath());
        }
    } else {
        const QStringList prefixes = winePrefixes(home, environment);
        const auto withGame = std::ranges::find_if(
            prefixes, [](const QString& each) { return QFileInfo(each + u'/' + gameFolder).isDir(); });
        if (withGame != prefixes.end()) {
            prefix = *withGame;
        }
    }
    if (prefix) {
        return pathIn(*prefix, environment);
    }
    const QString macPreferences = home + u"/Library/Preferences"_s;
    if (QFileInfo(macPreferences).isDir()) {
        return macPreferences + u"/Blizzard/Hearthstone"_s + fileName;
    }
    const QString chosen = environment(u"WINEPREFIX"_s).value_or(QString());
    return logsDir && QFileInfo(chosen + driveFolder).isDir() ? pathIn(chosen, environment) : std::nullopt;
}

std::expected<LogConfigFile, LogConfigError> readLogConfig(const QString& path) {
    using Kind = LogConfigError::Kind;
    const QFileInfo info(path);
    if (info.isSymLink() && !info.exists()) {
        return std::unexpected(LogConfigError{Kind::leadsNowhere, u"%1 is a link that leads nowhere"_s.arg(path)});
    }
    if (!info.exists()) {
        return LogConfigFile{path, std::nullopt, obstacleToWriting(path)};
    }
    if (!info.isFile()) {
        return std::unexpected(LogConfigError{
            Kind::noFile, u"%1 is no file%2"_s.arg(path, info.isDir() ? u" but a folder"_s : QString())});
    }
    const QString itself = info.canonicalFilePath();
    QFile file(itself);
    if (!file.open(QFile::ReadOnly)) {
        return std::unexpected(unreadable(itself, file.errorString()));
    }
    const QByteArray text = file.read(largestLogConfig + 1);
    if (file.error() != QFile::NoError) {
        return std::unexpected(unreadable(itself, file.errorString()));
    }
    if (text.size() > largestLogConfig) {
        return std::unexpected(LogConfigError{Kind::tooLarge, u"%1 is too large to be the game's"_s.arg(itself)});
    }
    // The superuser may write everything, and should not either.
    const auto anybody = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    const bool isProtected = !info.isWritable() || (info.permissions() & anybody) == 0;
    return LogConfigFile{itself, text,
                         isProtected
                             ? std::optional(LogConfigError{Kind::isProtected, u"%1 may not be written"_s.arg(itself)})
                             : obstacleToWriting(QFileInfo(itself).path())};
}

std::expected<WrittenLogConfig, LogConfigError> fixLogConfig(const QString& path) {
    const auto failed = [](const FileTree::Error& error) {
        return std::unexpected(LogConfigError{LogConfigError::Kind::unwritable, error.description});
    };
    const auto file = readLogConfig(path);
    if (!file) {
        return std::unexpected(file.error());
    }
    auto merged = mergeLogConfig(file->text.value_or(QByteArray()));
    if (!merged) {
        return std::unexpected(notPlainText(file->path));
    }
    if (merged->changes.isEmpty()) {
        return WrittenLogConfig();
    }
    if (file->toWriting) {
        return std::unexpected(*file->toWriting);
    }
    WrittenLogConfig written{std::move(merged->changes), {}};
    if (file->text) {
        written.backup = file->path + u".bak"_s;
        for (int number = 2; FileTree::exists(written.backup); ++number) {
            written.backup = file->path + u".bak%1"_s.arg(number);
        }
        if (const auto kept = FileTree::copyTree(file->path, written.backup); !kept) {
            return failed(kept.error());
        }
        // Who may not read the one need not read the other. Where there are no permissions nothing is lost.
        QFile::setPermissions(written.backup, QFile::permissions(file->path));
    } else if (const auto made = FileTree::makeFolders(QFileInfo(file->path).path()); !made) {
        return failed(made.error());
    }
    if (const auto done = FileTree::writeAtomically(file->path, merged->text); !done) {
        if (!written.backup.isEmpty()) {
            const auto removed = FileTree::removeTree(written.backup);
            static_cast<void>(removed); // what it is a copy of is still there
        }
        return failed(done.error());
    }
    return written;
}

LogConfigError notPlainText(const QString& path) {
    return {LogConfigError::Kind::notPlainText,
            u"%1 is not text in UTF-8 or another encoding of single bytes"_s.arg(path)};
}

} // namespace pelloran
