#include "base/FileTree.h"

#include "base/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QThread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace pelloran::FileTree {

namespace {

namespace fs = std::filesystem;

std::unexpected<Error> failure(const QString& doing, const QString& path, const QString& why) {
    return std::unexpected(Error{u"cannot %1 %2: %3"_s.arg(doing, path, why)});
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

// The bytes alone: the copy gets the permissions of any new file.
Done copyFile(const QString& from, const QString& to) {
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return failure(u"read"_s, from, source.errorString());
    }
    QFile target(to);
    if (!target.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        return failure(u"write"_s, to, target.errorString());
    }
    QByteArray block(qsizetype{256} * 1024, Qt::Uninitialized);
    while (true) {
        const qint64 count = source.read(block.data(), block.size());
        if (count == 0) {
            return {};
        }
        if (count > 0 && writeAll(target, block.constData(), count)) {
            continue;
        }
        const auto failed =
            count < 0 ? failure(u"read"_s, from, source.errorString()) : failure(u"write"_s, to, target.errorString());
        target.remove(); // half of it is no copy
        return failed;
    }
}

} // namespace

fs::path native(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

Done checked(const std::error_code& error, const QString& doing, const QString& path) {
    if (error) {
        return failure(doing, path, QString::fromStdString(error.message()));
    }
    return {};
}

bool exists(const QString& path) {
    std::error_code error;
    return fs::symlink_status(native(path), error).type() != fs::file_type::not_found;
}

QString obstacleTo(const QString& path) {
    QFileInfo nearest(path);
    if (!nearest.exists()) {
        do {
            nearest = QFileInfo(nearest.path());
        } while (!nearest.exists() && !nearest.isRoot());
        if (!nearest.isDir()) {
            return u"%1 is no folder"_s.arg(nearest.filePath());
        }
    }
    return nearest.isWritable() ? QString() : u"%1 may not be written"_s.arg(nearest.filePath());
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

Done makePrivateFolder(const QString& path) {
    if (auto made = makeFolders(QFileInfo(path).path()); !made) {
        return made;
    }
    if (::mkdir(native(path).c_str(), S_IRWXU) != 0) {
        return checked(std::error_code(errno, std::generic_category()), u"make the folder"_s, path);
    }
    return {};
}

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

Done openToRead(QFile& file) {
    const int descriptor = ::open(native(file.fileName()).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) {
        return std::unexpected(Error{QString::fromStdString(std::generic_category().message(errno))});
    }
    struct stat found{};
    if (::fstat(descriptor, &found) != 0 || !S_ISREG(found.st_mode)) {
        ::close(descriptor);
        return std::unexpected(Error{u"it is no file"_s});
    }
    if (!file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return std::unexpected(Error{file.errorString()});
    }
    return {};
}

std::expected<QByteArray, Error> read(const QString& path, qint64 most) {
    QFile file(path);
    if (const auto opened = openToRead(file); !opened) {
        return failure(u"read"_s, path, opened.error().description);
    }
    if (file.size() > most) {
        return failure(u"read"_s, path, u"larger than %1 bytes"_s.arg(most));
    }
    QByteArray bytes = file.read(most);
    if (file.error() != QFileDevice::NoError) {
        return failure(u"read"_s, path, file.errorString());
    }
    return bytes;
}

Done write(QFileDevice& file, const QByteArray& bytes) {
    if (!writeAll(file, bytes.constData(), bytes.size())) {
        return failure(u"write"_s, file.fileName(), file.errorString());
    }
    return {};
}

Done writeAtomically(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    // Of bytes in a buffer commit() tells nobody that the disk has no room for them.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !writeAll(file, bytes.constData(), bytes.size()) ||
        !file.commit()) {
        return failure(u"write"_s, path, file.errorString());
    }
    return {};
}

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

Done forEachNameIn(const QString& folder, const std::function<Done(const QString& name)>& each) {
    std::error_code error;
    fs::directory_iterator entry(native(folder), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (QThread::currentThread()->isInterruptionRequested()) {
            return std::unexpected(Error{u"interrupted"_s});
        }
        if (auto done = each(QFile::decodeName(entry->path().filename().c_str())); !done) {
            return done;
        }
    }
    return checked(error, u"read"_s, folder);
}

Removal::Removal(const QString& folder)
    : path(folder) {}

Removal::~Removal() {
    if (const auto removed = removeTree(path); !removed) {
        log(removed.error().description);
    }
}

} // namespace pelloran::FileTree
