#pragma once

#include <QString>

// The distance of readings from names written down as plainly as it can be said, in characters: what the fast one has
// to agree with. Shares no code with it.
namespace pelloran::reference {

double readingDistance(const QString& reading, const QString& name);

} // namespace pelloran::reference
