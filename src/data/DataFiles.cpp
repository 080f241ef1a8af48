#include "data/DataFiles.h"

#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Far above any real file (about 4 MB), far below what would hurt.
constexpr qint64 largestFile = 64LL * 1024 * 1024;

} // namespace

QStringList cardFilePaths() {
    return {
        u"winrates/all_classes_LAST_7_DAYS.json"_s,
        u"all_classes_LAST_7_DAYS.json"_s,
        u"mage_arena_LAST_7_DAYS.json"_s,
        u"winrates/MAGE_LAST_7_DAYS.json"_s,
        u"Resources/mage_arena_LAST_7_DAYS.json"_s,
        u"Resources/winrates/MAGE_LAST_7_DAYS.json"_s,
        u"Resources/winrates/all_classes_LAST_7_DAYS.json"_s,
    };
}

QStringList classFilePaths() {
    return {
        u"winrates/class_winrates.json"_s,
        u"class_winrates.json"_s,
        u"Resources/winrates/class_winrates.json"_s,
    };
}

std::expected<QByteArray, DataError> readDataFile(const QString& path) {
    QFile file(path);
    const auto failed = [&](const QString& why) {
        return std::unexpected(DataError{u"QFile"_s, file.error(), path + u": "_s + why});
    };
    if (!file.open(QFile::ReadOnly)) {
        return failed(file.errorString());
    }
    // QFile makes room for all that it is asked for: first for what it says it has, then for the rest of what does not
    // say, such as a pipe, or has grown.
    const qint64 expected = std::min(file.size(), largestFile) + 1;
    QByteArray bytes = file.read(expected);
    if (bytes.size() == expected && expected <= largestFile) {
        bytes += file.read(largestFile + 1 - expected);
    }
    if (file.error() != QFile::NoError) {
        return failed(file.errorString());
    }
    if (bytes.size() > largestFile) {
        return failed(u"larger than 64 MiB"_s);
    }
    return bytes;
}

} // namespace pelloran
