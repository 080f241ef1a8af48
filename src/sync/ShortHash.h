#pragma once

#include <QString>

namespace pelloran {

// The first `count` characters of a hash, as a reader counts them; all of it when there are not more. Hashes of a
// manifest are whatever the server's operator writes.
QString shortHash(const QString& hash, int count = 8);

} // namespace pelloran
