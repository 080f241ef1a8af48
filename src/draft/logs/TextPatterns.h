#pragma once

#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <optional>

// Regular expressions over whole texts, as the game's logs need them: digits and white space are Unicode's, and `.`
// stops at every line end Unicode knows (LF, VT, FF, CR, NEL, LS, PS). A pattern that does not compile matches nothing.
namespace pelloran {

// `pattern` with those rules; it compiles when first used.
QRegularExpression textPattern(const QString& pattern);

// Group 1 of every match; matches in which it took no part are left out.
QStringList matches(const QString& text, const QString& pattern);

// Groups 1 to n of every match; a group that took no part is "".
QList<QStringList> allGroups(const QString& text, const QString& pattern);

// Groups 1 to n of the first match; absent when there is none.
std::optional<QStringList> firstMatch(const QString& text, const QString& pattern);

} // namespace pelloran
