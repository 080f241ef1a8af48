#pragma once

#include <QByteArray>
#include <QStringList>

// Standard output of the commands.
namespace pelloran {

// At once, so that a reader of a pipe sees each answer when it is there.
void print(const QByteArray& text);

void printLines(const QStringList& lines);

} // namespace pelloran
