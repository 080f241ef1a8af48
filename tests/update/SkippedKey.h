#pragma once

#include <QString>

namespace pelloran {

// Under which the version that a user wants to hear no more of is stored.
inline const QString skippedKey = QStringLiteral("pelloran.skippedAppVersion");

} // namespace pelloran
