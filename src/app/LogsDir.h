#pragma once

#include <QString>

#include <optional>

namespace pelloran {

// The game's log folder on this machine; absent when it lies in none of the usual places.
std::optional<QString> foundLogsDir();

// The folder to read: the one asked for, else the one found, else the standard one, so that diagnostics name a place.
QString logsDirToRead(const std::optional<QString>& asked);

} // namespace pelloran
