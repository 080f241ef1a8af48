#pragma once

#include <QtGlobal>

namespace pelloran {

// What the system has taken in on a TCP connection so far, read or not; 0 where it does not tell.
qint64 receivedBytes(int descriptor);

} // namespace pelloran
