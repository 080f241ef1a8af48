#pragma once

#include "base/DiskSync.h"
#include "base/PathExchange.h"
#include "platform/ApplicationFiles.h"
#include "sync/ConfigSyncError.h"
#include "sync/RemoteManifest.h"

#include <QByteArray>
#include <QDir>
#include <QString>
#include <QStringList>

#include <chrono>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <system_error>

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

// The data files that a sync leaves on disk. Whatever happens to an installation, the configuration folder holds its
// old content or the complete new one, a loss of power included; where two folders cannot be exchanged in one step
// there is a moment with neither, and restoreInterruptedSwap() or the next installation mends what died in it.
// Installations belong on one thread at a time; everything else may be asked from any.
class LocalConfig {
public:
    explicit LocalConfig(const ApplicationFiles& files, InstallTools tools = {});

    QString configDirectory() const { return directory; }

    // Path of the file that holds the installed content's hash.
    QString localHashURL() const;

    // Without white space around it; absent when there is no such file, or nothing readable in it.
    std::optional<QString> localHash() const;

    // Whether any of the required files is there.
    bool hasUsableLocalConfig() const;

    // Paths below the folder of data files. One of them is enough to go on with.
    static QStringList requiredFiles();

    enum class Installation {
        done,
        busy, // another process is at it, and was not done within the patience for it
    };

    // Unpacks the bundle and puts it in the place of the configuration folder's content, with the manifest as it came.
    // Errors: ExtractFailed, or the file system's.
    std::expected<Installation, ConfigSyncError> install(const RemoteManifest& manifest, const QByteArray& rawManifest,
                                                         const QByteArray& bundle) const;

    // Unpacks an archive that holds nothing but files and folders with clean names. See TarArchive.
    static std::expected<void, ConfigSyncError> extractTarGz(const QString& archive, const QString& folder);

    // For the start of the program: when a swap was cut off between its two moves, puts the old content back.
    void restoreInterruptedSwap() const;

private:
    using Done = std::expected<void, ConfigSyncError>;

    Done installLocked(const RemoteManifest& manifest, const QByteArray& rawManifest, const QByteArray& bundle) const;
    Done stage(const QString& extraction, const QString& staging, const RemoteManifest& manifest,
               const QByteArray& rawManifest) const;
    Done syncTree(const QString& path) const;
    Done swap(const QString& staging) const;
    void restoreLocked() const;
    QString lockPath() const;
    QString backup() const;

    QString directory;
    InstallTools tools;
};

} // namespace pelloran
