#pragma once

#include "data/WinrateFormats.h"

#include <QStringList>

// The two data files as they lie in a folder of data, such as the one that a sync installs.
namespace pelloran {

// Paths below the folder, in the order in which they are looked for: the first that is there is the one in use.
QStringList cardFilePaths();
QStringList classFilePaths();

// The whole of it. Errors: "QFile", also for a file too large to be a data file.
std::expected<QByteArray, DataError> readDataFile(const QString& path);

} // namespace pelloran
