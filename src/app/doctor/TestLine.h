#pragma once

#include <QImage>
#include <QString>

#include <memory>

namespace pelloran {

class TextReader;

namespace doctor {

// What the picture says.
QString testLineText();

// A window with one line of light letters with dark outlines, as names on cards have them.
QImage testLinePicture();

// All that the reader finds on it.
QString readTestLine(TextReader& reader);

} // namespace doctor

} // namespace pelloran
