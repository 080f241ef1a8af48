#pragma once

#include "recording/Format.h"

#include <QFile>
#include <QImage>
#include <QString>

#include <expected>
#include <memory>
#include <optional>
#include <vector>

namespace pelloran::recording {

// A file that is one, is no link to another place, and is not too large.
std::expected<void, QString> checkFile(const QString& path, qint64 largest);

// The numbers of a recording's parts, in their order. Those without events are none yet, or none any more.
std::expected<std::vector<int>, QString> partsOf(const QString& folder);

// One part, line by line. Errors are sentences.
class PartReader {
public:
    // Null: it has no whole first line. Whoever wrote it was interrupted then, and nothing is lost with it.
    static std::expected<std::unique_ptr<PartReader>, QString> open(const QString& folder, int number);

    const PartHeader& header() const { return head; }

    // Absent at the end.
    std::expected<std::optional<TickRecord>, QString> next();

    // Of the line that next() gave last, from 1.
    qint64 line() const { return lines; }

    // The last line has no end: whoever wrote it was interrupted.
    bool isCutOff() const { return cutOff; }

    // The file's path, where there is such a file as it may be.
    std::expected<QString, QString> dataFile(const QString& name) const;

    // Of the size that `bands` come to.
    std::expected<QImage, QString> picture(qint64 number, const std::vector<BandRecord>& bands) const;

private:
    explicit PartReader(const QString& path);

    std::expected<std::optional<QByteArray>, QString> nextLine();
    QString complaint(const QString& what) const;

    QString folder;
    QFile events;
    std::unique_ptr<char[]> buffer; // as large as the longest line
    PartHeader head;
    qint64 lines = 0;
    bool cutOff = false;
};

} // namespace pelloran::recording
