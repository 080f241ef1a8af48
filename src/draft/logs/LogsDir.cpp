#include "draft/logs/LogsDir.h"

#include "model/DraftModel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QtGlobal>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <vector>

namespace pelloran {

namespace {

std::filesystem::path nativePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

bool isFolder(const QString& path) {
    std::error_code none;
    return std::filesystem::is_directory(nativePath(path), none);
}

// Paths of the entries of `folder`, by name; none when it cannot be listed.
QStringList entriesOf(const QString& folder) {
    QStringList entries;
    std::error_code error;
    std::filesystem::directory_iterator entry(nativePath(folder), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        entries.append(folder + u'/' + QFile::decodeName(QByteArray::fromStdString(entry->path().filename().string())));
    }
    std::ranges::sort(entries);
    return entries;
}

} // namespace

QStringList winePrefixes(const QString& home, const EnvironmentLookup& environment) {
    QStringList prefixes;
    if (const auto chosen = environment(QStringLiteral("WINEPREFIX")); chosen && !chosen->isEmpty()) {
        prefixes.append(*chosen);
    }
    prefixes.append(home + QStringLiteral("/.wine"));
    for (const QString& below : {
             QStringLiteral("/Games"),
             QStringLiteral("/.var/app/com.usebottles.bottles/data/bottles/bottles"),
             QStringLiteral("/.local/share/bottles/bottles"),
             QStringLiteral("/.PlayOnLinux/wineprefix"),
         }) {
        prefixes.append(entriesOf(home + below));
    }
    for (const QString& steam : {
             QStringLiteral("/.steam/steam"),
             QStringLiteral("/.local/share/Steam"),
             QStringLiteral("/.var/app/com.valvesoftware.Steam/.local/share/Steam"),
         }) {
        for (const QString& game : entriesOf(home + steam + QStringLiteral("/steamapps/compatdata"))) {
            prefixes.append(game + QStringLiteral("/pfx"));
        }
    }
    prefixes.removeDuplicates();
    return prefixes;
}

QStringList gameLogsDirs(const QString& standard, const QString& home, const EnvironmentLookup& environment) {
    struct Found {
        QString folder;
        std::filesystem::file_time_type date;
    };

    std::vector<Found> inPrefixes;
    for (const QString& prefix : winePrefixes(home, environment)) {
        const QString folder = prefix + QStringLiteral("/drive_c/Program Files (x86)/Hearthstone/Logs");
        if (isFolder(folder)) {
            std::error_code unknown;
            const auto date = std::filesystem::last_write_time(nativePath(folder), unknown);
            inPrefixes.push_back({folder, unknown ? std::filesystem::file_time_type::min() : date});
        }
    }
    std::ranges::stable_sort(inPrefixes, std::ranges::greater(), &Found::date);
    QStringList folders;
    QStringList real; // Steam's folder has several names
    if (isFolder(standard)) {
        folders.append(standard);
        real.append(QFileInfo(standard).canonicalFilePath());
    }
    for (const Found& found : inPrefixes) {
        if (const QString path = QFileInfo(found.folder).canonicalFilePath(); !real.contains(path)) {
            real.append(path);
            folders.append(found.folder);
        }
    }
    return folders;
}

std::optional<QString> gameLogsDir(const QString& standard, const QString& home, const EnvironmentLookup& environment) {
    const QStringList folders = gameLogsDirs(standard, home, environment);
    return folders.isEmpty() ? std::nullopt : std::optional(folders.first());
}

EnvironmentLookup processEnvironment() {
    return [](const QString& name) {
        const QByteArray variable = name.toLocal8Bit();
        return qEnvironmentVariableIsSet(variable) ? std::optional(qEnvironmentVariable(variable)) : std::nullopt;
    };
}

std::optional<QString> foundLogsDir() {
    return gameLogsDir(AppConfig().logsDir, QDir::homePath(), processEnvironment());
}

QString logsDirToRead(const std::optional<QString>& asked) {
    if (asked) {
        return *asked;
    }
    return foundLogsDir().value_or(AppConfig().logsDir);
}

} // namespace pelloran
