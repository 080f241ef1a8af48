#pragma once

#include "sync/ConfigSyncError.h"

#include <QByteArray>

#include <expected>

// What tar says of an archive, judged before a byte is unpacked.
namespace pelloran::TarListing {

// What a bundle may hold: a hundred times what the data files need. Folders count that are only in the names of others:
// tar makes them too, and a name of a few thousand bytes could ask for as many.
constexpr int maximumEntries = 10'000;
constexpr qint64 maximumUnpackedBytes = 512LL * 1024 * 1024;
constexpr qsizetype longestName = 1'000; // bytes

// `names` is what "tar -t" printed, `details` what "tar -tv --numeric-owner" printed of the same archive, by GNU's tar
// or BSD's. Fails, as ExtractFailed, for what must not be unpacked: names that lead elsewhere, links, devices and
// pipes, names that are too long, too many entries or bytes; and for lists that do not belong together.
std::expected<void, ConfigSyncError> check(const QByteArray& names, const QByteArray& details);

// The same words where the limits are found to be broken later.
ConfigSyncError tooManyEntries();
ConfigSyncError tooManyBytes();
ConfigSyncError neitherFileNorFolder(const QString& name);

} // namespace pelloran::TarListing
