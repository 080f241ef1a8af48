#pragma once

#include "data/WinrateFormats.h"

namespace pelloran {

// What is wrong, in English: the description of a file without cards is the same Chinese text in every language.
inline QString explanation(const DataError& error) {
    const bool isWithoutCards = error.domain == QStringLiteral("Pelloran") && error.code == 2;
    return isWithoutCards ? QStringLiteral("holds no card in any form that is known") : error.localizedDescription;
}

// The same with the file that it is about.
inline QString describe(const DataError& error) {
    const QString what = explanation(error);
    return error.path.isEmpty() || what.contains(error.path) ? what : error.path + QStringLiteral(": ") + what;
}

} // namespace pelloran
