#pragma once

#include "base/DiskSync.h"
#include "base/PathExchange.h"

#include <QDir>
#include <QString>

#include <chrono>
#include <filesystem>
#include <functional>
#include <system_error>

// What an installation goes by, for tests to put something else in its place.
namespace pelloran {

// What an installation has just done.
enum class InstallStep {
    madeConfigFolder,
    madeDownloadFolder,
    wroteArchive,
    unpacked,
    madeStaging,
    copiedItems,
    wroteHash,
    wroteManifest,
    syncedStaging,
    removedOldBackup,
    exchanged,            // the new content is in place
    movedConfigToBackup,  // where the two cannot be exchanged; as after `exchanged`, but then nothing is in place
    movedStagingToConfig, // the new content is in place
    removedBackup,
    movedStagingToBackup, // where somebody's own files are to be kept; then as after `removedOldBackup`
    keptOwnFiles,         // the new content is in place, and the old one has its lasting name
};

// What an installation asks of the system.
struct InstallTools {
    using PathOperation =
        std::function<std::error_code(const std::filesystem::path& from, const std::filesystem::path& to)>;

    static std::error_code rename(const std::filesystem::path& from, const std::filesystem::path& to);

    PathOperation exchange = exchangePaths;
    PathOperation move = rename;
    std::function<std::error_code(const std::filesystem::path& fileOrFolder)> sync = syncToDisk;
    std::function<void(InstallStep)> after = [](InstallStep) {};
    std::chrono::milliseconds lockPatience = std::chrono::seconds(10); // for another process that installs
    QString temporaryFolder = QDir::tempPath();
};

} // namespace pelloran
