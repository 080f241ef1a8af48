#pragma once

#include <QImage>

struct CGImage;

namespace pelloran::macos {

// The picture over black, in its own colour space where that takes no work: text is read in any. Null where there is no
// memory for it. Any thread.
QImage toImage(CGImage* picture);

} // namespace pelloran::macos
