#pragma once

#include <QStringView>

#include <compare>
#include <vector>

namespace pelloran {

// The numbers between the dots of a version; empty pieces are dropped. A piece counts with the numerals it begins with:
// "1.2rc1" is 1, 2 and "v2.0" is 0, 0. Numerals other than 0 to 9, and numbers above 64 bits with sign, make it 0.
std::vector<qint64> parseVersionParts(QStringView version);

// Part by part, a missing one being 0: "1.2" and "1.2.0" are equivalent, and "1.10" is greater than "1.9".
std::weak_ordering compareVersions(QStringView a, QStringView b);

} // namespace pelloran
