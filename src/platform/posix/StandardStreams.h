#pragma once

namespace pelloran {

// Puts something harmless in the place of those standard streams that the program was started without. Else the next
// files to be opened, such as a lock or the connection to the desktop, would get their numbers, and with them every
// line that is printed or logged. Input is at its end; writing fails, as it does without the stream. First of all that
// the program does.
void holdStandardStreams();

} // namespace pelloran
