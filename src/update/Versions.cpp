#include "update/Versions.h"

#include <QChar>
#include <QStringIterator>

#include <algorithm>
#include <charconv>

namespace pelloran {

namespace {

// The numerals of any script at the beginning of `piece`.
QStringView leadingNumerals(QStringView piece) {
    qsizetype length = 0;
    for (QStringIterator characters(piece); characters.hasNext() && QChar::isNumber(characters.next());) {
        length = characters.index();
    }
    return piece.first(length);
}

qint64 numberOf(QStringView numerals) {
    const QByteArray digits = numerals.toUtf8(); // whatever is not 0 to 9 is no digit in UTF-8 either
    const char* const end = digits.constEnd();
    qint64 number = 0;
    const auto [stopped, error] = std::from_chars(digits.constBegin(), end, number);
    return error == std::errc() && stopped == end ? number : 0;
}

} // namespace

std::vector<qint64> parseVersionParts(QStringView version) {
    std::vector<qint64> parts;
    for (const QStringView piece : version.split(u'.', Qt::SkipEmptyParts)) {
        parts.push_back(numberOf(leadingNumerals(piece)));
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
