#include "sync/ConfigInstaller.h"

#include "base/Log.h"
#include "sync/InstallTools.h"
#include "sync/TarArchive.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QThread>
#include <QUuid>

#include <unistd.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using namespace std::chrono_literals;

using FileTree::checked;
using FileTree::copyTree;
using FileTree::exists;
using FileTree::forEachNameIn;
using FileTree::makeFolders;
using FileTree::makePrivateFolder;
using FileTree::native;
using FileTree::removeTree;
using FileTree::writeAtomically;

constexpr auto downloadPrefix = "pl-config-"_L1;
constexpr auto stagingInfix = ".staging-"_L1;
// Older than any installation could be.
constexpr auto abandonedAfter = 1h;
constexpr std::chrono::duration<unsigned long, std::milli> lockPoll = 50ms;

std::unexpected<ConfigSyncError> failure(const FileTree::Error& error) {
    return std::unexpected(ConfigSyncError{ConfigSyncError::Platform{error.description}});
}

// Of a move by which content gets back to where it was: logs why it failed, if it did; false then.
bool putBack(const std::error_code& error) {
    if (error) {
        log(u"cannot put the configuration back: "_s + QString::fromStdString(error.message()));
    }
    return !error;
}

QString newUuid() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

// Our own ones and older than any installation could be, whatever is under way elsewhere.
bool isAbandoned(const QFileInfo& folder) {
    return folder.ownerId() == ::geteuid() &&
           folder.lastModified() < QDateTime::currentDateTime().addDuration(-abandonedAfter);
}

void removeOrLog(const QString& folder) {
    if (const auto removed = removeTree(folder); !removed) {
        log(removed.error().description);
    }
}

// Folders in `parent` that are called `prefix` and a UUID.
QFileInfoList leftOvers(const QString& parent, const QString& prefix) {
    QFileInfoList found = QDir(parent).entryInfoList({prefix + u'*'}, QDir::Dirs | QDir::NoSymLinks);
    found.removeIf(
        [&](const QFileInfo& folder) { return QUuid::fromString(folder.fileName().sliced(prefix.size())).isNull(); });
    return found;
}

// What installations that were killed have left behind.
void removeAbandonedDownloads(const QString& temporaryFolder) {
    for (const QFileInfo& download : leftOvers(temporaryFolder, downloadPrefix)) {
        if (isAbandoned(download)) {
            removeOrLog(download.filePath());
        }
    }
}

// The one that an installation prepares when it fails stays until the next one: a server whose content always fails
// must not fill the disk.
enum class Stagings {
    all, // only with the lock held
    abandoned,
};

void removeStagings(const QString& directory, Stagings which) {
    const QFileInfo configuration(directory);
    for (const QFileInfo& staging : leftOvers(configuration.path(), configuration.fileName() + stagingInfix)) {
        if (which == Stagings::all || isAbandoned(staging)) {
            removeOrLog(staging.filePath());
        }
    }
}

// Whether a sync has filled the folder. The file is looked at, not what is in it: its content may be anybody's.
bool isFilledBySync(const QString& folder) {
    std::error_code unknown;
    return std::filesystem::is_regular_file(native(folder + u"/.content_hash"_s), unknown);
}

// Whether somebody's files would go with the folder, which is where none is known that a sync can bring again. What
// cannot be listed counts as full.
bool holdsOwnFiles(const QString& folder) {
    if (!exists(folder) || isFilledBySync(folder)) {
        return false;
    }
    namespace fs = std::filesystem;
    std::error_code error;
    fs::recursive_directory_iterator entry(native(folder), error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code unknown;
        if (entry->symlink_status(unknown).type() != fs::file_type::directory) {
            return true;
        }
    }
    return static_cast<bool>(error);
}

// False when another process held it all the time.
std::expected<bool, FileTree::Error> lockWithin(std::chrono::milliseconds patience, QLockFile& lock) {
    // The death of the process that held it makes a lock stale. Where the file does not tell who that was, because the
    // power went before it was written or the machine has another name by now, its age does; a living one's lock is
    // held by the system too, and stays.
    lock.setStaleLockTime(abandonedAfter);
    const QDeadlineTimer deadline(patience);
    while (!lock.tryLock(0)) {
        if (lock.error() != QLockFile::LockFailedError) {
            return std::unexpected(
                FileTree::Error{u"cannot lock %1: no permission or no space"_s.arg(lock.fileName())});
        }
        if (deadline.hasExpired() || QThread::currentThread()->isInterruptionRequested()) {
            return false;
        }
        QThread::msleep(lockPoll.count());
    }
    return true;
}

} // namespace

std::error_code InstallTools::rename(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code error;
    std::filesystem::rename(from, to, error);
    return error;
}

ConfigInstaller::ConfigInstaller(LocalConfig config)
    : ConfigInstaller(std::move(config), InstallTools()) {}

ConfigInstaller::ConfigInstaller(LocalConfig config, InstallTools installTools)
    : local(std::move(config))
    , tools(std::make_shared<const InstallTools>(std::move(installTools))) {}

QString ConfigInstaller::lockPath() const {
    return directory() + u".lock"_s;
}

QString ConfigInstaller::backup() const {
    return directory() + u".bak"_s;
}

auto ConfigInstaller::install(const RemoteManifest& manifest, const QByteArray& rawManifest,
                              const QByteArray& bundle) const -> std::expected<Installation, ConfigSyncError> {
    if (const auto made = makeFolders(QFileInfo(directory()).path()); !made) {
        return failure(made.error());
    }
    QLockFile lock(lockPath());
    auto locked = lockWithin(tools->lockPatience, lock);
    if (!locked && lock.error() == QLockFile::UnknownError) {
        // No room for it, perhaps for what earlier installations have left.
        removeAbandonedDownloads(tools->temporaryFolder);
        removeStagings(directory(), Stagings::abandoned);
        locked = lockWithin(tools->lockPatience, lock);
    }
    if (!locked) {
        return failure(locked.error());
    }
    if (!*locked) {
        return Installation::busy;
    }
    restoreLocked(); // before the folder is made, which would hide what another process left between its two moves
    // Another process may have installed the very same since we asked the server.
    if (local.localHash() == manifest.hash && local.hasUsableLocalConfig()) {
        return Installation::done;
    }
    if (const auto installed = installLocked(manifest, rawManifest, bundle); !installed) {
        return std::unexpected(installed.error());
    }
    return Installation::done;
}

std::expected<void, ConfigSyncError> ConfigInstaller::installLocked(const RemoteManifest& manifest,
                                                                    const QByteArray& rawManifest,
                                                                    const QByteArray& bundle) const {
    // First of all, for whatever is made may need the room.
    removeAbandonedDownloads(tools->temporaryFolder);
    removeStagings(directory(), Stagings::all);

    if (const auto made = makeFolders(directory()); !made) {
        return failure(made.error());
    }
    tools->after(InstallStep::madeConfigFolder);

    const QString download = tools->temporaryFolder + u'/' + downloadPrefix + newUuid();
    const QString extraction = download + u"/extract"_s;
    const QString archive = download + u"/config.tar.gz"_s;
    // Between the look at an archive and its unpacking nobody else may change it: this folder's place is a shared one.
    if (const auto made = makePrivateFolder(download); !made) {
        return failure(made.error());
    }
    const FileTree::Removal removal(download);
    if (const auto made = makeFolders(extraction); !made) {
        return failure(made.error());
    }
    tools->after(InstallStep::madeDownloadFolder);

    if (const auto written = writeAtomically(archive, bundle); !written) {
        return failure(written.error());
    }
    tools->after(InstallStep::wroteArchive);
    if (auto unpacked = extractTarGz(archive, extraction); !unpacked) {
        return unpacked;
    }
    tools->after(InstallStep::unpacked);

    const QString staging = directory() + stagingInfix + newUuid();
    if (const auto staged = stage(extraction, staging, manifest, rawManifest); !staged) {
        return failure(staged.error());
    }
    if (const auto swapped = swap(staging); !swapped) {
        return failure(swapped.error());
    }
    return {};
}

std::expected<void, ConfigSyncError> ConfigInstaller::extractTarGz(const QString& archive, const QString& folder) {
    if (auto harmless = TarArchive::check(archive); !harmless) {
        return harmless;
    }
    if (auto unpacked = TarArchive::extract(archive, folder); !unpacked) {
        return unpacked;
    }
    return TarArchive::checkUnpacked(folder);
}

// The next content of the configuration folder, beside it.
FileTree::Done ConfigInstaller::stage(const QString& extraction, const QString& staging, const RemoteManifest& manifest,
                                      const QByteArray& rawManifest) const {
    if (auto removed = removeTree(staging); !removed) {
        return removed;
    }
    if (auto made = makeFolders(staging); !made) {
        return made;
    }
    tools->after(InstallStep::madeStaging);
    const auto copied = forEachNameIn(extraction, [&](const QString& name) -> FileTree::Done {
        // Two names there may be one here, where case does not matter.
        if (auto removed = removeTree(staging + u'/' + name); !removed) {
            return removed;
        }
        return copyTree(extraction + u'/' + name, staging + u'/' + name);
    });
    if (!copied) {
        return copied;
    }
    tools->after(InstallStep::copiedItems);
    if (auto written = writeAtomically(staging + u"/.content_hash"_s, manifest.hash.toUtf8()); !written) {
        return written;
    }
    tools->after(InstallStep::wroteHash);
    if (auto written = writeAtomically(staging + u"/manifest.json"_s, rawManifest); !written) {
        return written;
    }
    tools->after(InstallStep::wroteManifest);
    // A swap that survives a loss of power must not bring files whose content did not.
    if (auto synced = syncTree(staging); !synced) {
        return synced;
    }
    tools->after(InstallStep::syncedStaging);
    return {};
}

FileTree::Done ConfigInstaller::syncTree(const QString& path) const {
    if (QFileInfo(path).isDir()) {
        if (auto synced = forEachNameIn(path, [&](const QString& name) { return syncTree(path + u'/' + name); });
            !synced) {
            return synced;
        }
    }
    return checked(tools->sync(native(path)), u"write"_s, path);
}

FileTree::Done ConfigInstaller::swap(const QString& staging) const {
    // A swap that was cut off has left somebody's own files there, or what may go.
    if (auto cleared = holdsOwnFiles(backup()) ? keepBackup() : removeTree(backup()); !cleared) {
        return cleared;
    }
    tools->after(InstallStep::removedOldBackup);
    if (holdsOwnFiles(directory())) {
        return swapAndKeep(staging);
    }
    if (!tools->exchange(native(staging), native(directory()))) {
        tools->after(InstallStep::exchanged);
        // Under the backup's name the next installation removes what this one could not.
        if (const auto error = tools->move(native(staging), native(backup()))) {
            log(u"cannot set the old configuration aside: "_s + QString::fromStdString(error.message()));
        }
    } else if (auto moved = swapByMoves(staging); !moved) {
        return moved;
    }
    // The new content is in use, whatever becomes of the old one; which has to be there until that is certain.
    syncParent();
    if (const auto removed = removeTree(backup()); !removed) {
        log(removed.error().description);
    }
    tools->after(InstallStep::removedBackup);
    return {};
}

// Where the folders cannot be exchanged: the old content goes to the backup, the new one to its place.
FileTree::Done ConfigInstaller::swapByMoves(const QString& staging) const {
    if (exists(directory())) {
        if (auto moved = checked(tools->move(native(directory()), native(backup())), u"move"_s, directory()); !moved) {
            return moved;
        }
        tools->after(InstallStep::movedConfigToBackup);
    }
    if (auto moved = checked(tools->move(native(staging), native(directory())), u"move"_s, staging); !moved) {
        if (!exists(directory()) && exists(backup())) {
            putBack(tools->move(native(backup()), native(directory())));
        }
        return moved;
    }
    tools->after(InstallStep::movedStagingToConfig);
    return {};
}

// The first sync of a folder that somebody has filled by hand. It replaces nothing that it cannot keep.
FileTree::Done ConfigInstaller::swapAndKeep(const QString& staging) const {
    // Under the backup's name when they are exchanged: whatever ends this program then, the next installation finds
    // somebody's own files there and knows them for that.
    if (auto moved = checked(tools->move(native(staging), native(backup())), u"move"_s, staging); !moved) {
        return moved;
    }
    tools->after(InstallStep::movedStagingToBackup);
    if (!tools->exchange(native(backup()), native(directory()))) {
        tools->after(InstallStep::exchanged);
    } else {
        if (auto moved = checked(tools->move(native(backup()), native(staging)), u"move"_s, backup()); !moved) {
            return moved;
        }
        if (auto moved = swapByMoves(staging); !moved) {
            return moved;
        }
    }
    if (auto kept = keepBackup(); !kept) {
        if (putBack(tools->move(native(directory()), native(staging)))) {
            putBack(tools->move(native(backup()), native(directory())));
        }
        return kept;
    }
    tools->after(InstallStep::keptOwnFiles);
    syncParent();
    return {};
}

FileTree::Done ConfigInstaller::keepBackup() const {
    const QString parent = QFileInfo(directory()).path();
    const QString doing = u"keep your own win-rate files in"_s;
    QString kept = parent + u"/winrates-before-sync"_s;
    std::error_code unknown;
    for (int number = 2;
         std::filesystem::symlink_status(native(kept), unknown).type() != std::filesystem::file_type::not_found;
         ++number) {
        // Where it cannot be told what is there, every name would be taken, without end.
        if (unknown) {
            return checked(unknown, doing, kept);
        }
        kept = parent + u"/winrates-before-sync-%1"_s.arg(number);
    }
    if (auto moved = checked(tools->move(native(backup()), native(kept)), doing, kept); !moved) {
        return moved;
    }
    log(u"a sync has put the server's files in the place of your own win-rate files, which are kept in "_s + kept);
    return {};
}

void ConfigInstaller::syncParent() const {
    const QString parent = QFileInfo(directory()).path();
    if (const auto synced = checked(tools->sync(native(parent)), u"write"_s, parent); !synced) {
        log(synced.error().description);
    }
}

void ConfigInstaller::restoreInterruptedSwap() const {
    if (exists(directory()) || !exists(backup())) {
        return;
    }
    // A process that is between its two moves right now needs no help.
    QLockFile lock(lockPath());
    if (const auto locked = lockWithin(0ms, lock); locked && *locked) {
        restoreLocked();
    }
}

void ConfigInstaller::restoreLocked() const {
    if (exists(directory()) || !exists(backup())) {
        return;
    }
    if (putBack(tools->move(native(backup()), native(directory())))) {
        log(u"an update of the configuration was cut off: the previous files are back in place"_s);
    }
}

} // namespace pelloran
