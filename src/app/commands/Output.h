#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

// Standard output of the commands.
namespace pelloran {

// At once, so that a reader of a pipe sees each answer when it is there.
void print(const QByteArray& text);

void printLines(const QStringList& lines);

// How wide the terminal is that somebody reads it on; absent where it goes elsewhere.
std::optional<int> terminalColumns();

} // namespace pelloran
