#include "sync/TarListing.h"

#include <QList>
#include <QSet>

#include <optional>

using namespace Qt::StringLiterals;

namespace pelloran::TarListing {

namespace {

ConfigSyncError failure(const QString& message) {
    return {ConfigSyncError::ExtractFailed{message}};
}

ConfigSyncError unreadable() {
    return failure(u"the archive's list of contents cannot be read"_s);
}

// Each ended by a line break: tar writes those of names as "\n". Absent where the last line is cut.
std::optional<QList<QByteArray>> linesOf(const QByteArray& output) {
    QList<QByteArray> lines = output.split('\n');
    if (!lines.takeLast().isEmpty()) {
        return std::nullopt;
    }
    return lines;
}

// The 12 in "-rw-r--r-- 0/0 12 2026-01-31 10:00 " as GNU's tar writes it and in "-rw-r--r--  0 0 0 12 Jan 31 10:00 " as
// BSD's does. Counted from the front, where only numbers are: a date is the archive's to choose, and those that no
// calendar has are written in fewer words.
std::optional<qint64> sizeIn(const QByteArray& details) {
    const QList<QByteArray> words = details.simplified().split(' ');
    const bool isGnu = words.value(1).contains('/');
    bool isNumber = false;
    const qint64 size = words.value(isGnu ? 2 : 4).toLongLong(&isNumber);
    return isNumber && size >= 0 ? std::optional(size) : std::nullopt;
}

// The file or folder that a name is of, and all folders on the way there.
void addPaths(const QByteArray& name, QSet<QByteArray>& paths) {
    QByteArray path;
    for (const QByteArray& part : name.split('/')) {
        if (!part.isEmpty() && part != ".") {
            path += '/' + part;
            paths.insert(path);
        }
    }
}

bool leadsElsewhere(const QByteArray& name) {
    return name.isEmpty() || name.startsWith('/') || name.split('/').contains("..");
}

} // namespace

ConfigSyncError tooManyEntries() {
    return failure(u"the archive holds more than %1 entries"_s.arg(maximumEntries));
}

ConfigSyncError tooManyBytes() {
    return failure(u"the archive unpacks to more than %1 MiB"_s.arg(maximumUnpackedBytes / 1024 / 1024));
}

ConfigSyncError neitherFileNorFolder(const QString& name) {
    return failure(u"\"%1\" in the archive is neither a file nor a folder"_s.arg(name));
}

std::expected<void, ConfigSyncError> check(const QByteArray& names, const QByteArray& details) {
    const auto nameLines = linesOf(names);
    const auto detailLines = linesOf(details);
    if (nameLines && nameLines->size() > maximumEntries) {
        return std::unexpected(tooManyEntries());
    }
    if (!nameLines || !detailLines || detailLines->size() != nameLines->size()) {
        return std::unexpected(unreadable());
    }
    qint64 total = 0;
    QSet<QByteArray> paths;
    for (qsizetype i = 0; i < nameLines->size(); ++i) {
        const QByteArray& name = nameLines->at(i);
        const QByteArray& detail = detailLines->at(i);
        if (name.size() > longestName) {
            return std::unexpected(failure(u"a name in the archive has more than %1 bytes"_s.arg(longestName)));
        }
        if (leadsElsewhere(name)) {
            return std::unexpected(
                failure(u"\"%1\" in the archive leads out of its folder"_s.arg(QString::fromUtf8(name))));
        }
        // Links have an arrow and their target behind the name.
        const bool isPlain = detail.startsWith('-') || detail.startsWith('d');
        if (!isPlain || !detail.endsWith(' ' + name)) {
            return std::unexpected(neitherFileNorFolder(QString::fromUtf8(name)));
        }
        const auto size = sizeIn(detail.chopped(name.size()));
        if (!size) {
            return std::unexpected(unreadable());
        }
        addPaths(name, paths);
        if (paths.size() > maximumEntries) {
            return std::unexpected(tooManyEntries());
        }
        if (*size > maximumUnpackedBytes - total) {
            return std::unexpected(tooManyBytes());
        }
        total += *size;
    }
    return {};
}

} // namespace pelloran::TarListing
