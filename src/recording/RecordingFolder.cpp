#include "recording/RecordingFolder.h"

#include "recording/Format.h"

#include <QDir>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran::recording {

namespace {

// As most disks reckon; a folder takes up one, too.
constexpr qint64 block = 4096;

constexpr QFile::Permissions ownerAlone = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

// What a file takes up.
qint64 onDisk(qint64 bytes) {
    return (bytes + block - 1) / block * block;
}

std::unexpected<FileTree::Error> refusal(const QString& why) {
    return std::unexpected(FileTree::Error{why});
}

bool isPlain(const QString& path, std::filesystem::file_type type) {
    std::error_code error;
    return std::filesystem::symlink_status(FileTree::native(path), error).type() == type;
}

// On the disk. The error is what is there that is nothing of a part's.
std::expected<qint64, QString> sizeOfPart(const QString& path) {
    if (!isPlain(path, std::filesystem::file_type::directory)) {
        return std::unexpected(QFileInfo(path).fileName());
    }
    qint64 bytes = block;
    QString other;
    const auto listed = FileTree::forEachNameIn(path, [&](const QString& name) -> FileTree::Done {
        const QString file = path + u'/' + name;
        if (!isFileOfPart(name) || !isPlain(file, std::filesystem::file_type::regular)) {
            other = name;
            return refusal({});
        }
        bytes += onDisk(QFileInfo(file).size());
        return {};
    });
    if (!listed) {
        return std::unexpected(QFileInfo(path).fileName() + u'/' + other);
    }
    return bytes;
}

} // namespace

// Of the folder itself, so that nothing lies in it for that. Goes with the program, however that ends. Where the file
// system knows no locks, there is none.
class RecordingFolder::Lock {
public:
    explicit Lock(const QString& path)
        : descriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
        , isTaken(::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {}

    ~Lock() {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    // By somebody else.
    bool isHeldElsewhere() const { return isTaken; }

private:
    const int descriptor;
    const bool isTaken;
};

std::expected<RecordingFolder, FileTree::Error> RecordingFolder::open(const QString& path, qint64 limit) {
    RecordingFolder recording(QDir(path).absolutePath(), limit);
    const QFileInfo info(recording.folder);
    if (info.exists() && !info.isDir()) {
        return refusal(u"%1 is no folder"_s.arg(path));
    }
    if (!info.exists()) {
        if (auto made = FileTree::makeFolders(recording.folder); !made) {
            return std::unexpected(made.error());
        }
        QFile::setPermissions(recording.folder, ownerAlone);
    }
    if (const QString obstacle = FileTree::obstacleTo(recording.folder); !obstacle.isEmpty()) {
        return refusal(obstacle);
    }
    recording.lock = std::make_shared<Lock>(recording.folder);
    if (recording.lock->isHeldElsewhere()) {
        return refusal(u"another program is recording in %1"_s.arg(path));
    }
    const auto listed = FileTree::forEachNameIn(recording.folder, [&](const QString& name) -> FileTree::Done {
        const auto number = partNumber(name);
        const auto bytes =
            number ? sizeOfPart(recording.folder + u'/' + name) : std::expected<qint64, QString>(std::unexpect, name);
        if (!bytes) {
            return refusal(u"%1 holds something that is no recording (%2); name an empty or a new folder"_s.arg(
                path, bytes.error()));
        }
        recording.parts.push_back({*number, *bytes});
        return {};
    });
    if (!listed) {
        return std::unexpected(listed.error());
    }
    std::ranges::sort(recording.parts, {}, &Part::number);
    recording.lastNumber = recording.parts.empty() ? 0 : recording.parts.back().number;
    return recording;
}

RecordingFolder::RecordingFolder(const QString& path, qint64 limit)
    : folder(path)
    , mostBytes(limit) {}

FileTree::Done RecordingFolder::beginPart(const QByteArray& header, const QByteArray& cards,
                                          const QByteArray& classes) {
    events.reset();
    if (auto room = makeRoom(block + onDisk(header.size()) + onDisk(cards.size()) + onDisk(classes.size())); !room) {
        return room;
    }
    const int number = lastNumber + 1;
    if (number >= 1'000'000) {
        return refusal(u"%1 has no more room for parts"_s.arg(folder));
    }
    const Part part{number, block};
    std::error_code error;
    const bool isNew = std::filesystem::create_directory(FileTree::native(pathOf(part)), error);
    if (auto made = FileTree::checked(error, u"make the folder"_s, pathOf(part)); !made) {
        return made;
    }
    if (!isNew) {
        return refusal(u"cannot make the folder %1: it is there already"_s.arg(pathOf(part)));
    }
    QFile::setPermissions(pathOf(part), ownerAlone);
    parts.push_back(part);
    lastNumber = number;
    for (const auto& [name, bytes] : {std::pair(cardFile, cards), std::pair(classFile, classes)}) {
        if (auto added = addFile(name, bytes); !added) {
            return added;
        }
    }
    // The events last: without them the rest is no part yet.
    auto file = std::make_unique<QFile>(pathOf(parts.back()) + u'/' + eventFile);
    if (!file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        return refusal(u"cannot write %1: %2"_s.arg(file->fileName(), file->errorString()));
    }
    events = std::move(file);
    bytesAtBeginning = 0;
    return addLine(header);
}

FileTree::Done RecordingFolder::addPicture(qint64 number, const QByteArray& png) {
    if (auto room = makeRoom(onDisk(png.size())); !room) {
        return room;
    }
    return addFile(pictureName(number), png);
}

FileTree::Done RecordingFolder::addLine(const QByteArray& line) {
    // A file that somebody removed would still take it, and nobody would ever read it.
    struct stat status{};
    if (::fstat(events->handle(), &status) == 0 && status.st_nlink == 0) {
        return refusal(u"somebody has removed %1"_s.arg(events->fileName()));
    }
    const qint64 written = events->size();
    const qint64 more = onDisk(written + line.size()) - onDisk(written);
    if (auto room = makeRoom(more); !room) {
        return room;
    }
    parts.back().bytes += more;
    return FileTree::write(*events, line);
}

void RecordingFolder::partHasBegun() {
    bytesAtBeginning = parts.back().bytes;
}

qint64 RecordingFolder::growth() const {
    return events ? parts.back().bytes - bytesAtBeginning : 0;
}

qint64 RecordingFolder::size() const {
    qint64 bytes = block; // of the folder
    for (const Part& part : parts) {
        bytes += part.bytes;
    }
    return bytes;
}

QString RecordingFolder::pathOf(const Part& part) const {
    return folder + u'/' + partName(part.number);
}

FileTree::Done RecordingFolder::makeRoom(qint64 bytes) {
    // What is being written stays. Nothing goes for what has no room anyway.
    const qint64 staying = block + (events ? parts.back().bytes : 0);
    if (staying + bytes > mostBytes) {
        return refusal(u"there is no room for a recording within %1 bytes"_s.arg(mostBytes));
    }
    while (size() + bytes > mostBytes) {
        if (auto removed = removePart(parts.front()); !removed) {
            return removed;
        }
        parts.pop_front();
    }
    return {};
}

// What was put there since the recording was opened is not ours to remove: it stays, and its folder with it.
FileTree::Done RecordingFolder::removePart(const Part& part) const {
    const QString path = pathOf(part);
    if (!isPlain(path, std::filesystem::file_type::directory)) {
        return {};
    }
    // Without its events a part is none, should this be interrupted.
    QStringList names{eventFile};
    const auto listed = FileTree::forEachNameIn(path, [&](const QString& name) -> FileTree::Done {
        if (isFileOfPart(name) && name != eventFile) {
            names.append(name);
        }
        return {};
    });
    if (!listed) {
        return listed;
    }
    std::error_code error;
    for (const QString& name : std::as_const(names)) {
        std::filesystem::remove(FileTree::native(path + u'/' + name), error);
        if (auto removed = FileTree::checked(error, u"remove"_s, path + u'/' + name); !removed) {
            return removed;
        }
    }
    std::filesystem::remove(FileTree::native(path), error);
    return error == std::errc::directory_not_empty ? FileTree::Done() : FileTree::checked(error, u"remove"_s, path);
}

FileTree::Done RecordingFolder::addFile(const QString& name, const QByteArray& bytes) {
    QFile file(pathOf(parts.back()) + u'/' + name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        return refusal(u"cannot write %1: %2"_s.arg(file.fileName(), file.errorString()));
    }
    parts.back().bytes += onDisk(bytes.size());
    return FileTree::write(file, bytes);
}

} // namespace pelloran::recording
