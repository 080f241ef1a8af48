#include "recording/RecordingReader.h"

#include "base/FileTree.h"

#include <QFileInfo>
#include <QImageReader>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pelloran::recording {

namespace {

constexpr int mostMegabytes = 300;           // of a picture in memory
constexpr qint64 lineRoom = largestLine + 3; // with its end, a byte that is too much, and a NUL

} // namespace

std::expected<void, QString> checkFile(const QString& path, qint64 largest) {
    const QFileInfo info(path);
    if (info.isSymLink()) {
        return std::unexpected(u"%1 is a link; a recording has none"_s.arg(path));
    }
    if (!info.isFile()) { // opening a pipe would wait for its writer
        return std::unexpected(u"%1 is not there, or is no file"_s.arg(path));
    }
    if (info.size() > largest) {
        return std::unexpected(u"%1 has more than %2 bytes"_s.arg(path, QString::number(largest)));
    }
    return {};
}

std::expected<std::vector<int>, QString> partsOf(const QString& folder) {
    if (!QFileInfo(folder).isDir()) {
        return std::unexpected(u"%1 is no folder"_s.arg(folder));
    }
    std::vector<int> parts;
    const auto listed = FileTree::forEachNameIn(folder, [&](const QString& name) -> FileTree::Done {
        const auto number = partNumber(name);
        const QString path = folder + u'/' + name;
        if (number && QFileInfo(path).isSymLink()) {
            return std::unexpected(FileTree::Error{u"%1 is a link; a recording has none"_s.arg(path)});
        }
        if (number && FileTree::exists(path + u'/' + eventFile)) {
            parts.push_back(*number);
        }
        if (parts.size() > mostParts) {
            return std::unexpected(
                FileTree::Error{u"%1 has more than %2 parts"_s.arg(folder, QString::number(mostParts))});
        }
        return {};
    });
    if (!listed) {
        return std::unexpected(listed.error().description);
    }
    if (parts.empty()) {
        return std::unexpected(u"%1 holds no recording"_s.arg(folder));
    }
    std::ranges::sort(parts);
    return parts;
}

PartReader::PartReader(const QString& path)
    : folder(path)
    , events(path + u'/' + eventFile)
    , buffer(std::make_unique_for_overwrite<char[]>(lineRoom)) {}

std::expected<std::unique_ptr<PartReader>, QString> PartReader::open(const QString& folder, int number) {
    std::unique_ptr<PartReader> part(new PartReader(folder + u'/' + partName(number)));
    if (const auto checked = checkFile(part->events.fileName(), largestEventFile); !checked) {
        return std::unexpected(checked.error());
    }
    if (!part->events.open(QIODevice::ReadOnly)) {
        return std::unexpected(u"cannot read %1: %2"_s.arg(part->events.fileName(), part->events.errorString()));
    }
    const auto line = part->nextLine();
    if (!line) {
        return std::unexpected(line.error());
    }
    if (!*line) {
        return nullptr;
    }
    auto head = parseHeader(**line);
    if (!head) {
        return std::unexpected(part->complaint(head.error()));
    }
    part->head = *std::move(head);
    return part;
}

std::expected<std::optional<TickRecord>, QString> PartReader::next() {
    const auto line = nextLine();
    if (!line) {
        return std::unexpected(line.error());
    }
    if (!*line) {
        return std::nullopt;
    }
    auto tick = parseTick(**line);
    if (!tick) {
        return std::unexpected(complaint(tick.error()));
    }
    return *std::move(tick);
}

std::expected<QString, QString> PartReader::dataFile(const QString& name) const {
    QString path = folder + u'/' + name;
    if (const auto checked = checkFile(path, largestDataFile); !checked) {
        return std::unexpected(checked.error());
    }
    return path;
}

std::expected<QImage, QString> PartReader::picture(qint64 number, const std::vector<BandRecord>& bands) const {
    const QString path = folder + u'/' + pictureName(number);
    if (const auto checked = checkFile(path, largestPicture); !checked) {
        return std::unexpected(checked.error());
    }
    qint64 width = 0;
    qint64 height = 0;
    for (const BandRecord& band : bands) {
        width = std::max(width, band.width);
        height += band.height;
    }
    // Its size first: a small file can unfold to any.
    QImageReader::setAllocationLimit(mostMegabytes);
    QImageReader file(path, "png");
    if (file.size() != QSize(int(width), int(height))) {
        return std::unexpected(
            u"%1 is not as large as the line %2 of %3 says"_s.arg(path, QString::number(lines), eventFile));
    }
    QImage image = file.read();
    if (image.isNull()) {
        return std::unexpected(u"%1 cannot be read: %2"_s.arg(path, file.errorString()));
    }
    return image;
}

std::expected<std::optional<QByteArray>, QString> PartReader::nextLine() {
    // Qt would make room for the longest line for each line.
    const qint64 size = events.readLine(buffer.get(), lineRoom);
    if (size <= 0) {
        return std::nullopt;
    }
    QByteArray line(buffer.get(), size);
    if (!line.endsWith('\n')) {
        if (line.size() > largestLine) {
            ++lines;
            return std::unexpected(complaint(u"is longer than %1 bytes"_s.arg(largestLine)));
        }
        cutOff = true;
        return std::nullopt;
    }
    ++lines;
    return line;
}

QString PartReader::complaint(const QString& what) const {
    return u"%1: line %2 %3"_s.arg(events.fileName(), QString::number(lines), what);
}

} // namespace pelloran::recording
