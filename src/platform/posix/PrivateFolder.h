#pragma once

#include <QString>

namespace pelloran {

// The folder for what only this user's programs may see of each other, such as a lock or a socket: the session's own
// where the system provides one, else one below `temporary`; in either case one that nobody else can enter. Empty when
// that cannot be had.
QString privateRuntimeFolder(const QString& sessionFolder, const QString& temporary);

// The same for whoever only looks: the second one is not made. Empty also where it is not there yet.
QString existingPrivateRuntimeFolder(const QString& sessionFolder, const QString& temporary);

} // namespace pelloran
