#include "recording/RecordingFolder.h"

#include "recording/Format.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran::recording {

namespace {

// What a file takes up, as most disks reckon it.
qint64 onDisk(qint64 bytes) {
    constexpr qint64 block = 4096;
    return (bytes + block - 1) / block * block;
}

qint64 sizeOfPart(const QString& path) {
    qint64 bytes = 0;
    for (const QFileInfo& file : QDir(path).entryInfoList(QDir::Files | QDir::Hidden | QDir::System)) {
        bytes += onDisk(file.size());
    }
    return bytes;
}

std::unexpected<FileTree::Error> refusal(const QString& why) {
    return std::unexpected(FileTree::Error{why});
}

} // namespace

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
        QFile::setPermissions(recording.folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    const auto listed = FileTree::forEachNameIn(recording.folder, [&](const QString& name) -> FileTree::Done {
        const auto number = partNumber(name);
        if (!number || !QFileInfo(recording.folder + u'/' + name).isDir()) {
            return refusal(
                u"%1 holds something that is no recording (%2); name an empty or a new folder"_s.arg(path, name));
        }
        recording.parts.push_back({*number, sizeOfPart(recording.folder + u'/' + name)});
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
    if (auto room = makeRoom(onDisk(header.size()) + onDisk(cards.size()) + onDisk(classes.size())); !room) {
        return room;
    }
    const int number = lastNumber + 1;
    if (number >= 1'000'000) {
        return refusal(u"%1 has no more room for parts"_s.arg(folder));
    }
    const Part part{number, 0};
    // Fails where another program writes a recording there: two would mix.
    if (!QDir().mkdir(pathOf(part))) {
        return refusal(u"cannot write %1: it is there already, or its folder is not"_s.arg(pathOf(part)));
    }
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
    return addLine(header);
}

FileTree::Done RecordingFolder::addPicture(qint64 number, const QByteArray& png) {
    if (auto room = makeRoom(onDisk(png.size())); !room) {
        return room;
    }
    return addFile(pictureName(number), png);
}

FileTree::Done RecordingFolder::addLine(const QByteArray& line) {
    const qint64 written = events->size();
    const qint64 more = onDisk(written + line.size()) - onDisk(written);
    if (auto room = makeRoom(more); !room) {
        return room;
    }
    parts.back().bytes += more;
    return FileTree::write(*events, line);
}

qint64 RecordingFolder::partSize() const {
    return parts.empty() ? 0 : parts.back().bytes;
}

qint64 RecordingFolder::size() const {
    return std::accumulate(parts.begin(), parts.end(), qint64{0},
                           [](qint64 sum, const Part& part) { return sum + part.bytes; });
}

QString RecordingFolder::pathOf(const Part& part) const {
    return folder + u'/' + partName(part.number);
}

FileTree::Done RecordingFolder::makeRoom(qint64 bytes) {
    const std::size_t kept = events ? 1 : 0; // what is being written stays
    while (size() + bytes > mostBytes) {
        if (parts.size() <= kept) {
            return refusal(u"there is no room for a recording within %1 bytes"_s.arg(mostBytes));
        }
        // Without its events a part is none, should this be interrupted.
        QFile::remove(pathOf(parts.front()) + u'/' + eventFile);
        if (auto removed = FileTree::removeTree(pathOf(parts.front())); !removed) {
            return removed;
        }
        parts.pop_front();
    }
    return {};
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
