// Any bytes as what tar says of an archive: both lists as they come, or an honest list of the names that are given.
// Nothing that leads out of the folder gets through, and nothing else is held back.

#include "fuzz/Require.h"
#include "sync/TarListing.h"

#include <QList>

#include <algorithm>
#include <cstdint>

namespace {

using namespace pelloran;
using fuzzing::require;

// A plain second opinion.
bool staysInside(const QByteArray& name) {
    const QByteArray path = '/' + name + '/';
    return !name.isEmpty() && name.at(0) != '/' && !path.contains("/../");
}

void readAsTheyCome(const QByteArray& bytes) {
    const qsizetype middle = std::max<qsizetype>(0, bytes.indexOf('\0'));
    const QByteArray names = bytes.first(middle);
    const QByteArray details = bytes.sliced(middle + (middle < bytes.size()));
    if (!TarListing::check(names, details)) {
        return;
    }
    require(names.count('\n') == details.count('\n'));
    require(names.count('\n') <= TarListing::maximumEntries);
    require(names.isEmpty() || names.endsWith('\n'));
    const QList<QByteArray> nameLines = names.split('\n');
    const QList<QByteArray> detailLines = details.split('\n');
    for (qsizetype i = 0; i + 1 < nameLines.size(); ++i) {
        require(staysInside(nameLines[i]));
        require(detailLines[i].endsWith(nameLines[i]));
        require(detailLines[i].at(0) == '-' || detailLines[i].at(0) == 'd');
    }
}

// A name a line, and of each the size that its first byte says, in 3 MiB: 255 of them are more than is allowed.
void describeHonestly(const QByteArray& bytes, bool likeGnu) {
    constexpr qint64 unit = qint64{3} * 1024 * 1024;
    QByteArray names;
    QByteArray details;
    bool clean = true;
    qint64 total = 0;
    const QList<QByteArray> lines = bytes.split('\n');
    for (const QByteArray& line : lines) {
        const qint64 size = line.isEmpty() ? 0 : unit * static_cast<unsigned char>(line.front());
        const QByteArray name = line.sliced(line.isEmpty() ? 0 : 1);
        names += name + '\n';
        details += likeGnu ? "-rw-r--r-- 0/0 " + QByteArray::number(size) + " 2026-01-31 10:00 "
                           : "-rw-r--r--  0 501    20  " + QByteArray::number(size) + " Jan 31 10:00 ";
        details += name + '\n';
        clean = clean && staysInside(name) && name.size() <= TarListing::longestName;
        total += size;
    }
    if (names.count('/') + lines.size() > TarListing::maximumEntries && lines.size() <= TarListing::maximumEntries) {
        return; // perhaps too many folders
    }
    const bool expected =
        clean && total <= TarListing::maximumUnpackedBytes && lines.size() <= TarListing::maximumEntries;
    require(TarListing::check(names, details).has_value() == expected);
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (bytes.isEmpty() || bytes.front() % 3 == 0) {
        readAsTheyCome(bytes.sliced(bytes.isEmpty() ? 0 : 1));
    } else {
        describeHonestly(bytes.sliced(1), bytes.front() % 3 == 1);
    }
    return 0;
}
