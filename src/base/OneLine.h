#pragma once

#include <QString>

// Text from outside, such as a path or what a server says, on its way to a terminal or a log.
namespace pelloran {

// What a terminal obeys rather than shows, or what makes it show a line in another order than it is: control
// characters, the line ends that only Unicode has, and the marks that turn the direction of text.
bool isObeyedByTerminals(QChar character);

// The text in one line: a space for each such character.
QString inOneLine(QString text);

} // namespace pelloran
