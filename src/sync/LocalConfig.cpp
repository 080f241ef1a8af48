#include "sync/LocalConfig.h"

#include "base/Log.h"
#include "sync/TarArchive.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QStringDecoder>
#include <QThread>
#include <QUuid>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

using Done = std::expected<void, ConfigSyncError>;

constexpr auto downloadPrefix = "pl-config-"_L1;
// Older than any installation could be.
constexpr auto abandonedAfter = 1h;
constexpr std::chrono::duration<unsigned long, std::milli> lockPoll = 50ms;

fs::path native(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

std::unexpected<ConfigSyncError> fileError(const QString& doing, const QString& path, const QString& why) {
    return std::unexpected(ConfigSyncError{ConfigSyncError::Platform{u"cannot %1 %2: %3"_s.arg(doing, path, why)}});
}

Done checked(const std::error_code& error, const QString& doing, const QString& path) {
    if (error) {
        return fileError(doing, path, QString::fromStdString(error.message()));
    }
    return {};
}

QString newUuid() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

bool exists(const QString& path) {
    std::error_code error;
    return fs::symlink_status(native(path), error).type() != fs::file_type::not_found;
}

Done makeFolders(const QString& path) {
    std::error_code error;
    fs::create_directories(native(path), error);
    // A file of that name is no error to create_directories in every library.
    if (!error && !fs::is_directory(native(path), error) && !error) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    return checked(error, u"make the folder"_s, path);
}

// With everything in it, folders that may not be written included.
Done removeTree(const QString& path) {
    const fs::path root = native(path);
    std::error_code ignored; // what matters shows at the removal
    if (fs::symlink_status(root, ignored).type() == fs::file_type::directory) {
        fs::permissions(root, fs::perms::owner_all, fs::perm_options::add, ignored);
        fs::recursive_directory_iterator entry(root, ignored);
        for (; !ignored && entry != fs::recursive_directory_iterator(); entry.increment(ignored)) {
            if (entry->symlink_status(ignored).type() == fs::file_type::directory) {
                fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
            }
        }
    }
    std::error_code error;
    fs::remove_all(root, error);
    return checked(error, u"remove"_s, path);
}

// Of a full disk the first write may tell only that it wrote less; the next one tells why.
bool writeAll(QFileDevice& file, const char* bytes, qint64 count) {
    while (count > 0) {
        const qint64 written = file.write(bytes, count);
        if (written <= 0) {
            return false;
        }
        bytes += written;
        count -= written;
    }
    return true;
}

Done writeAtomically(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !writeAll(file, bytes.constData(), bytes.size()) || !file.commit()) {
        return fileError(u"write"_s, path, file.errorString());
    }
    return {};
}

// The bytes alone: the copy gets the permissions of any new file.
Done copyFile(const QString& from, const QString& to) {
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return fileError(u"read"_s, from, source.errorString());
    }
    QFile target(to);
    if (!target.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        return fileError(u"write"_s, to, target.errorString());
    }
    QByteArray block(qsizetype{256} * 1024, Qt::Uninitialized);
    while (true) {
        const qint64 count = source.read(block.data(), block.size());
        if (count < 0) {
            return fileError(u"read"_s, from, source.errorString());
        }
        if (count == 0) {
            return {};
        }
        if (!writeAll(target, block.constData(), count)) {
            return fileError(u"write"_s, to, target.errorString());
        }
    }
}

// Calls `each` with every name in a folder, until one fails.
template <typename Each>
Done forEachNameIn(const QString& folder, const Each& each) {
    std::error_code error;
    fs::directory_iterator entry(native(folder), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (QThread::currentThread()->isInterruptionRequested()) {
            return std::unexpected(ConfigSyncError{ConfigSyncError::Platform{u"interrupted"_s}});
        }
        if (auto done = each(QFile::decodeName(entry->path().filename().c_str())); !done) {
            return done;
        }
    }
    return checked(error, u"read"_s, folder);
}

// Files and folders; the source holds nothing else.
Done copyTree(const QString& from, const QString& to) {
    if (!QFileInfo(from).isDir()) {
        return copyFile(from, to);
    }
    std::error_code error;
    fs::create_directory(native(to), error);
    if (auto made = checked(error, u"make the folder"_s, to); !made) {
        return made;
    }
    return forEachNameIn(from, [&](const QString& name) { return copyTree(from + u'/' + name, to + u'/' + name); });
}

// What installations that were killed have left behind. `mine` is the folder of this one: its owner and its age tell
// what is ours and what is old, without asking who we are and what time it is.
void removeAbandonedDownloads(const QFileInfo& mine) {
    const QDir folder(mine.path());
    for (const QFileInfo& other : folder.entryInfoList({downloadPrefix + u"*"_s}, QDir::Dirs | QDir::NoSymLinks)) {
        const bool isDownload = !QUuid::fromString(other.fileName().sliced(downloadPrefix.size())).isNull();
        const auto age = std::chrono::milliseconds(other.lastModified().msecsTo(mine.lastModified()));
        if (isDownload && other.ownerId() == mine.ownerId() && age > abandonedAfter) {
            if (const auto removed = removeTree(other.filePath()); !removed) {
                log(removed.error().localizedDescription());
            }
        }
    }
}

// Removes a folder when it goes out of scope.
class Removal {
public:
    explicit Removal(const QString& folder)
        : path(folder) {}

    ~Removal() {
        if (const auto removed = removeTree(path); !removed) {
            log(removed.error().localizedDescription());
        }
    }

    Removal(const Removal&) = delete;
    Removal& operator=(const Removal&) = delete;

private:
    QString path;
};

// False when another process held it all the time.
std::expected<bool, ConfigSyncError> lockWithin(std::chrono::milliseconds patience, QLockFile& lock) {
    // The death of the process that held it makes a lock stale. Where the file does not tell who that was, because the
    // power went before it was written or the machine has another name by now, its age does; a living one's lock is
    // held by the system too, and stays.
    lock.setStaleLockTime(abandonedAfter);
    const QDeadlineTimer deadline(patience);
    while (!lock.tryLock(0)) {
        if (lock.error() != QLockFile::LockFailedError) {
            return fileError(u"lock"_s, lock.fileName(), u"no permission or no space"_s);
        }
        if (deadline.hasExpired() || QThread::currentThread()->isInterruptionRequested()) {
            return false;
        }
        QThread::msleep(lockPoll.count());
    }
    return true;
}

} // namespace

std::error_code InstallTools::rename(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::rename(from, to, error);
    return error;
}

LocalConfig::LocalConfig(const ApplicationFiles& files, InstallTools installTools)
    : directory(files.configurationFolder())
    , tools(std::move(installTools)) {}

QString LocalConfig::localHashURL() const {
    return directory + u"/.content_hash"_s;
}

QString LocalConfig::lockPath() const {
    return directory + u".lock"_s;
}

QString LocalConfig::backup() const {
    return directory + u".bak"_s;
}

std::optional<QString> LocalConfig::localHash() const {
    QFile file(localHashURL());
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString hash = decoder(file.readAll());
    QString trimmed = hash.trimmed();
    return decoder.hasError() || trimmed.isEmpty() ? std::nullopt : std::optional(std::move(trimmed));
}

bool LocalConfig::hasUsableLocalConfig() const {
    const QStringList required = requiredFiles();
    return std::ranges::any_of(required,
                               [this](const QString& name) { return QFileInfo::exists(directory + u'/' + name); });
}

QStringList LocalConfig::requiredFiles() {
    return {
        u"winrates/class_winrates.json"_s,
        u"winrates/all_classes_LAST_7_DAYS.json"_s,
        u"winrates/MAGE_LAST_7_DAYS.json"_s,
        u"mage_arena_LAST_7_DAYS.json"_s,
    };
}

auto LocalConfig::install(const RemoteManifest& manifest, const QByteArray& rawManifest, const QByteArray& bundle) const
    -> std::expected<Installation, ConfigSyncError> {
    if (const auto made = makeFolders(QFileInfo(directory).path()); !made) {
        return std::unexpected(made.error());
    }
    QLockFile lock(lockPath());
    const auto locked = lockWithin(tools.lockPatience, lock);
    if (!locked) {
        return std::unexpected(locked.error());
    }
    if (!*locked) {
        return Installation::busy;
    }
    restoreLocked(); // before the folder is made, which would hide what another process left between its two moves
    // Another process may have installed the very same since we asked the server.
    if (localHash() == manifest.hash && hasUsableLocalConfig()) {
        return Installation::done;
    }
    if (const auto installed = installLocked(manifest, rawManifest, bundle); !installed) {
        return std::unexpected(installed.error());
    }
    return Installation::done;
}

LocalConfig::Done LocalConfig::installLocked(const RemoteManifest& manifest, const QByteArray& rawManifest,
                                             const QByteArray& bundle) const {
    if (auto made = makeFolders(directory); !made) {
        return made;
    }
    tools.after(InstallStep::madeConfigFolder);

    const QString download = tools.temporaryFolder + u'/' + downloadPrefix + newUuid();
    const QString extraction = download + u"/extract"_s;
    const QString archive = download + u"/config.tar.gz"_s;
    const Removal removal(download);
    if (auto made = makeFolders(extraction); !made) {
        return made;
    }
    tools.after(InstallStep::madeDownloadFolder);
    removeAbandonedDownloads(QFileInfo(download));

    if (auto written = writeAtomically(archive, bundle); !written) {
        return written;
    }
    tools.after(InstallStep::wroteArchive);
    if (auto unpacked = extractTarGz(archive, extraction); !unpacked) {
        return unpacked;
    }
    tools.after(InstallStep::unpacked);

    const QString staging = directory + u".staging-"_s + newUuid();
    if (auto staged = stage(extraction, staging, manifest, rawManifest); !staged) {
        return staged;
    }
    return swap(staging);
}

std::expected<void, ConfigSyncError> LocalConfig::extractTarGz(const QString& archive, const QString& folder) {
    if (auto harmless = TarArchive::check(archive); !harmless) {
        return harmless;
    }
    if (auto unpacked = TarArchive::extract(archive, folder); !unpacked) {
        return unpacked;
    }
    return TarArchive::checkUnpacked(folder);
}

// The next content of the configuration folder, beside it.
LocalConfig::Done LocalConfig::stage(const QString& extraction, const QString& staging, const RemoteManifest& manifest,
                                     const QByteArray& rawManifest) const {
    if (auto removed = removeTree(staging); !removed) {
        return removed;
    }
    if (auto made = makeFolders(staging); !made) {
        return made;
    }
    tools.after(InstallStep::madeStaging);
    const auto copied = forEachNameIn(extraction, [&](const QString& name) -> Done {
        // Two names there may be one here, where case does not matter.
        if (auto removed = removeTree(staging + u'/' + name); !removed) {
            return removed;
        }
        return copyTree(extraction + u'/' + name, staging + u'/' + name);
    });
    if (!copied) {
        return copied;
    }
    tools.after(InstallStep::copiedItems);
    if (auto written = writeAtomically(staging + u"/.content_hash"_s, manifest.hash.toUtf8()); !written) {
        return written;
    }
    tools.after(InstallStep::wroteHash);
    if (auto written = writeAtomically(staging + u"/manifest.json"_s, rawManifest); !written) {
        return written;
    }
    tools.after(InstallStep::wroteManifest);
    // A swap that survives a loss of power must not bring files whose content did not.
    if (auto synced = syncTree(staging); !synced) {
        return synced;
    }
    tools.after(InstallStep::syncedStaging);
    return {};
}

LocalConfig::Done LocalConfig::syncTree(const QString& path) const {
    if (QFileInfo(path).isDir()) {
        if (auto synced = forEachNameIn(path, [&](const QString& name) { return syncTree(path + u'/' + name); });
            !synced) {
            return synced;
        }
    }
    return checked(tools.sync(native(path)), u"write"_s, path);
}

LocalConfig::Done LocalConfig::swap(const QString& staging) const {
    if (auto removed = removeTree(backup()); !removed) {
        return removed;
    }
    tools.after(InstallStep::removedOldBackup);
    if (!tools.exchange(native(staging), native(directory))) {
        tools.after(InstallStep::exchanged);
        // Under the backup's name the next installation removes what this one could not.
        if (const auto error = tools.move(native(staging), native(backup()))) {
            log(u"cannot set the old configuration aside: "_s + QString::fromStdString(error.message()));
        }
    } else {
        if (exists(directory)) {
            if (auto moved = checked(tools.move(native(directory), native(backup())), u"move"_s, directory); !moved) {
                return moved;
            }
            tools.after(InstallStep::movedConfigToBackup);
        }
        if (auto moved = checked(tools.move(native(staging), native(directory)), u"move"_s, staging); !moved) {
            if (!exists(directory) && exists(backup())) {
                if (const auto error = tools.move(native(backup()), native(directory))) {
                    log(u"cannot put the configuration back: "_s + QString::fromStdString(error.message()));
                }
            }
            return moved;
        }
        tools.after(InstallStep::movedStagingToConfig);
    }
    // The new content is in use, whatever becomes of the old one; which has to be there until that is certain.
    const QString parent = QFileInfo(directory).path();
    if (const auto synced = checked(tools.sync(native(parent)), u"write"_s, parent); !synced) {
        log(synced.error().localizedDescription());
    }
    if (const auto removed = removeTree(backup()); !removed) {
        log(removed.error().localizedDescription());
    }
    tools.after(InstallStep::removedBackup);
    return {};
}

void LocalConfig::restoreInterruptedSwap() const {
    if (exists(directory) || !exists(backup())) {
        return;
    }
    // A process that is between its two moves right now needs no help.
    QLockFile lock(lockPath());
    if (const auto locked = lockWithin(0ms, lock); locked && *locked) {
        restoreLocked();
    }
}

void LocalConfig::restoreLocked() const {
    if (exists(directory) || !exists(backup())) {
        return;
    }
    if (const auto error = tools.move(native(backup()), native(directory))) {
        log(u"cannot put the configuration back: "_s + QString::fromStdString(error.message()));
    } else {
        log(u"an update of the configuration was cut off: the previous files are back in place"_s);
    }
}

} // namespace pelloran
