#pragma once

#include <QObject>

namespace pelloran {

// Turns SIGTERM, SIGINT and SIGHUP into the orderly end of the event loop, and has a write to a closed pipe fail
// instead of ending the program. Another signal, a second or more after the first, ends it at once; what comes before
// is the same wish. Make one, on the main thread, after the application object.
class TerminationSignals final : public QObject {
public:
    TerminationSignals();
};

} // namespace pelloran
