#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

// Standard output of the commands.
namespace pelloran {

// At once, so that a reader of a pipe sees each answer when it is there.
void print(const QByteArray& text);

void printLines(const QStringList& lines);

// How many columns the terminal has that somebody reads it on, 40 at least, and 80 where it does not tell; absent where
// it goes elsewhere.
std::optional<int> terminalColumns();

} // namespace pelloran
