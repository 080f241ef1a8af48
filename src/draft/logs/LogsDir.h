#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace pelloran {

// Value of an environment variable; absent when it is not set.
using EnvironmentLookup = std::function<std::optional<QString>(const QString& name)>;

// The game's log folder: `standard` where that folder exists; else the most recently changed one among the usual Wine
// prefixes ($WINEPREFIX, plain Wine, Lutris, Bottles, Steam, PlayOnLinux) below the folder `home`; of equally recent
// ones the first in that order and then by name. Absent when there is none.
std::optional<QString> gameLogsDir(const QString& standard, const QString& home, const EnvironmentLookup& environment);

// The same, and behind it the others, the most recently changed ones first; none twice, whatever links lead to it.
QStringList gameLogsDirs(const QString& standard, const QString& home, const EnvironmentLookup& environment);

// That one on this machine, for this user.
std::optional<QString> foundLogsDir();

// Those prefixes, in that order, whether they are there or not; none twice.
QStringList winePrefixes(const QString& home, const EnvironmentLookup& environment);

// Of the process.
EnvironmentLookup processEnvironment();

// The folder to read: the one asked for, else the one found, else the standard one, so that diagnostics name a place.
QString logsDirToRead(const std::optional<QString>& asked);

} // namespace pelloran
