#pragma once

#include "data/WinrateFormats.h"

namespace pelloran {

// For the user's eyes: what is wrong, and with which file.
inline QString describe(const DataError& error) {
    const bool tellsPath = error.path.isEmpty() || error.localizedDescription.contains(error.path);
    return tellsPath ? error.localizedDescription : error.path + QStringLiteral(": ") + error.localizedDescription;
}

} // namespace pelloran
