#include "update/Versions.h"

#include <QByteArray>
#include <QChar>
#include <QList>

#include <algorithm>
#include <charconv>

namespace pelloran {

namespace {

qint64 leadingNumber(QStringView piece) {
    QByteArray digits;
    for (const char32_t character : piece.toUcs4()) {
        if (!QChar::isNumber(character)) {
            break;
        }
        if (character < U'0' || character > U'9') {
            return 0;
        }
        digits += static_cast<char>(character);
    }
    qint64 number = 0; // and stays so where there are no digits or too many
    std::from_chars(digits.constBegin(), digits.constEnd(), number);
    return number;
}

} // namespace

std::vector<qint64> parseVersionParts(QStringView version) {
    std::vector<qint64> parts;
    for (const QStringView piece : version.split(u'.', Qt::SkipEmptyParts)) {
        parts.push_back(leadingNumber(piece));
    }
    return parts;
}

std::weak_ordering compareVersions(QStringView a, QStringView b) {
    std::vector<qint64> left = parseVersionParts(a);
    std::vector<qint64> right = parseVersionParts(b);
    const std::size_t length = std::max(left.size(), right.size());
    left.resize(length);
    right.resize(length);
    return left <=> right;
}

} // namespace pelloran
