#pragma once

#include "platform/TextReader.h"

#include <QImage>
#include <QString>

namespace pelloran::doctor {

// What the picture in this script says.
QString testLineText(Script script);

// A window with light letters with dark outlines, as names on cards have them: one line, or in Chinese the same one on
// each of three cards.
QImage testLinePicture(Script script);

// All that the reader finds on it, each text once.
QString readTestLine(TextReader& reader, Script script);

} // namespace pelloran::doctor
