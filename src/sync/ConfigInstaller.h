#pragma once

#include "base/FileTree.h"
#include "sync/ConfigSyncError.h"
#include "sync/LocalConfig.h"
#include "sync/RemoteManifest.h"

#include <QByteArray>
#include <QString>

#include <expected>
#include <memory>

namespace pelloran {

struct InstallTools;

// Puts new data files in the place of those that are there. Whatever happens to an installation, the configuration
// folder holds its old content or the complete new one, a loss of power included; where two folders cannot be exchanged
// in one step there is a moment with neither, and restoreInterruptedSwap() or the next installation mends what died in
// it. What lies in a folder that no sync has filled is never removed: the first installation there leaves it in a
// folder beside it, winrates-before-sync, or fails. On one thread at a time.
class ConfigInstaller {
public:
    // With the system's own tools, or others. Not explicit: the configuration is all that an installer needs.
    ConfigInstaller(LocalConfig config);
    ConfigInstaller(LocalConfig config, InstallTools tools);

    const LocalConfig& config() const { return local; }

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
    std::expected<void, ConfigSyncError> installLocked(const RemoteManifest& manifest, const QByteArray& rawManifest,
                                                       const QByteArray& bundle) const;
    FileTree::Done stage(const QString& extraction, const QString& staging, const RemoteManifest& manifest,
                         const QByteArray& rawManifest) const;
    FileTree::Done syncTree(const QString& path) const;
    FileTree::Done swap(const QString& staging) const;
    FileTree::Done swapByMoves(const QString& staging) const;
    FileTree::Done swapAndKeep(const QString& staging) const;
    FileTree::Done keepBackup() const;
    void syncParent() const;
    void restoreLocked() const;

    QString directory() const { return local.configDirectory(); }

    QString lockPath() const;
    QString backup() const;

    LocalConfig local;
    std::shared_ptr<const InstallTools> tools;
};

} // namespace pelloran
