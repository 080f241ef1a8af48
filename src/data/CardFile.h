#pragma once

#include "data/WinrateFormats.h"

namespace pelloran {

// What a card file holds, whichever of its shapes it has:
// - a WinrateFile with at least one row;
// - loose: an object with rows in an array under "cards", or per class under "classes", where each value is an array of
//   rows or an object with one under "cards". Arrays that hold anything but objects, and all else, are passed over.
struct CardFile {
    std::vector<CardStats> rows; // never empty
    QString description;         // what the rows are, in a few words
    bool isSample = false;       // the file says that its figures are made up
    QString fetchedAt;           // when the figures were taken, as the file says it; "" where it does not

    // `fileName` (without folders) goes into descriptions. Errors: the parser's; the decoder's for a bad row in a loose
    // shape; "Pelloran" 2 when there are no rows.
    static std::expected<CardFile, DataError> decode(const QByteArray& json, const QString& fileName);

    bool operator==(const CardFile&) const = default;
};

} // namespace pelloran
