#pragma once

#include "sync/ConfigSyncError.h"

#include <QString>

#include <chrono>
#include <expected>

// Archives from outside, unpacked by the system's tar. A tar that hangs is ended after `patience`, and at once on a
// QThread whose interruption is requested. The ConfigSyncErrors are ExtractFailed, or Platform where tar does not
// start.
namespace pelloran::TarArchive {

constexpr std::chrono::milliseconds defaultPatience = std::chrono::minutes(1);

// Reads the archive through without unpacking a byte. Fails for what must not be unpacked. See TarListing.
std::expected<void, ConfigSyncError> check(const QString& archive,
                                           std::chrono::milliseconds patience = defaultPatience);

// Unpacks into `folder`, which exists. When tar fails, its own words are the message, or "exit N".
std::expected<void, ConfigSyncError> extract(const QString& archive, const QString& folder,
                                             std::chrono::milliseconds patience = defaultPatience);

// The same limits on what lies in `folder` now. Makes everything in it readable for us, and writable where that is
// needed to copy and remove it, whatever the archive said.
std::expected<void, ConfigSyncError> checkUnpacked(const QString& folder);

} // namespace pelloran::TarArchive
