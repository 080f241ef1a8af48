#pragma once

#include "base/FileTree.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <deque>
#include <expected>
#include <memory>
#include <optional>

namespace pelloran::recording {

// A recording as it is written: parts, of which the oldest go when there is no more room. What is written is on its way
// to the disk when a call returns; a program that dies leaves whole lines, and at most one that is not. On one thread.
class RecordingFolder {
public:
    // Goes on with the recording that is there; makes the folder, for its owner alone, where there is none. A folder
    // that holds anything else, at whatever depth, is refused: in it things are to be removed by themselves. So is one
    // in which a recording is being written.
    static std::expected<RecordingFolder, FileTree::Error> open(const QString& path, qint64 limit);

    // The first lines and the data files of a new part. Everything below goes there.
    FileTree::Done beginPart(const QByteArray& header, const QByteArray& cards, const QByteArray& classes);
    FileTree::Done addPicture(qint64 number, const QByteArray& png);
    FileTree::Done addLine(const QByteArray& line);

    qint64 limit() const { return mostBytes; }

    // Of all that is there, on the disk.
    qint64 size() const;

    // What is in the part by now has to be in any.
    void partHasBegun();

    // What was added to the part since then, on the disk.
    qint64 growth() const;

private:
    struct Part {
        int number;
        qint64 bytes;
    };

    class Lock;

    RecordingFolder(const QString& path, qint64 limit);

    QString pathOf(const Part& part) const;
    FileTree::Done makeRoom(qint64 bytes);
    FileTree::Done removePart(const Part& part) const;
    FileTree::Done addFile(const QString& name, const QByteArray& bytes);

    QString folder;
    qint64 mostBytes;
    int lastNumber = 0;          // of a part, also of one that is gone
    std::deque<Part> parts;      // the last is being written, once there is `events`
    qint64 bytesAtBeginning = 0; // of that one
    std::unique_ptr<QFile> events;
    std::shared_ptr<Lock> lock;
};

} // namespace pelloran::recording
