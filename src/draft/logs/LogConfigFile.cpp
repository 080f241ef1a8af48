#include "draft/logs/LogConfigFile.h"

#include "base/FileTree.h"

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

// The game's settings of the user who plays in that prefix: of several the ones that were changed last. Where nobody
// has any yet, of the user that Wine would make.
QString settingsIn(const QString& prefix, const EnvironmentLookup& environment) {
    const QDir users(prefix + u"/drive_c/users"_s);
    const QStringList names = users.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    std::optional<QFileInfo> newest;
    for (const QString& name : names) {
        const QFileInfo folder(users.filePath(name + u'/' + settingsFolder));
        if (folder.isDir() && (!newest || folder.lastModified() > newest->lastModified())) {
            newest = folder;
        }
    }
    if (newest) {
        return newest->filePath();
    }
    // Steam's Wine has one user of its own everywhere.
    QString user = environment(u"USER"_s).value_or(QString());
    if (!names.contains(user)) {
        const auto own = std::ranges::find_if(names, [](const QString& name) { return name != u"Public"_s; });
        user = names.contains(u"steamuser"_s) ? u"steamuser"_s : own != names.end() ? *own : user;
    }
    return user.isEmpty() ? QString() : users.filePath(user + u'/' + settingsFolder);
}

} // namespace

std::optional<QString> logConfigPath(const std::optional<QString>& logsDir, const QString& home,
                                     const EnvironmentLookup& environment) {
    std::optional<QString> prefix;
    if (logsDir) {
        const QString absolute = QDir::cleanPath(QFileInfo(*logsDir).absoluteFilePath());
        if (const qsizetype drive = absolute.lastIndexOf(driveFolder); drive >= 0) {
            prefix = absolute.first(drive);
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
        const QString settings = settingsIn(*prefix, environment);
        return settings.isEmpty() ? std::nullopt : std::optional(settings + fileName);
    }
    const QString macPreferences = home + u"/Library/Preferences"_s;
    if (QFileInfo(macPreferences).isDir()) {
        return macPreferences + u"/Blizzard/Hearthstone"_s + fileName;
    }
    return std::nullopt;
}

std::expected<LogConfigFile, QString> readLogConfig(const QString& path) {
    const QFileInfo info(path);
    if (info.isSymLink() && !info.exists()) {
        return std::unexpected(u"%1 is a link that leads nowhere"_s.arg(path));
    }
    if (!info.exists()) {
        return LogConfigFile{path, std::nullopt, FileTree::obstacleTo(path).isEmpty()};
    }
    if (!info.isFile()) {
        return std::unexpected(u"%1 is no file%2"_s.arg(path, info.isDir() ? u" but a folder"_s : QString()));
    }
    const QString itself = info.canonicalFilePath();
    QFile file(itself);
    if (!file.open(QFile::ReadOnly)) {
        return std::unexpected(u"cannot read %1: %2"_s.arg(itself, file.errorString()));
    }
    const QByteArray text = file.read(largestLogConfig + 1);
    if (file.error() != QFile::NoError) {
        return std::unexpected(u"cannot read %1: %2"_s.arg(itself, file.errorString()));
    }
    if (text.size() > largestLogConfig) {
        return std::unexpected(u"%1 is too large to be the game's"_s.arg(itself));
    }
    // The superuser may write everything, and should not either.
    const auto anybody = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    return LogConfigFile{itself, text, info.isWritable() && (info.permissions() & anybody) != 0};
}

std::expected<WrittenLogConfig, QString> fixLogConfig(const QString& path) {
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
    if (!file->isWritable) {
        return std::unexpected(u"%1 may not be written"_s.arg(file->path));
    }
    WrittenLogConfig written{std::move(merged->changes), {}};
    if (file->text) {
        written.backup = file->path + u".bak"_s;
        for (int number = 2; FileTree::exists(written.backup); ++number) {
            written.backup = file->path + u".bak%1"_s.arg(number);
        }
        if (const auto kept = FileTree::copyTree(file->path, written.backup); !kept) {
            return std::unexpected(kept.error().description);
        }
    } else if (const auto made = FileTree::makeFolders(QFileInfo(file->path).path()); !made) {
        return std::unexpected(made.error().description);
    }
    if (const auto done = FileTree::writeAtomically(file->path, merged->text); !done) {
        if (!written.backup.isEmpty()) {
            static_cast<void>(FileTree::removeTree(written.backup)); // what it is a copy of is still there
        }
        return std::unexpected(done.error().description);
    }
    return written;
}

QString notPlainText(const QString& path) {
    return u"%1 is not text in UTF-8 or another encoding of single bytes"_s.arg(path);
}

} // namespace pelloran
