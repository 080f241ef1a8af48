#pragma once

#include <QObject>

namespace pelloran {

// Turns SIGTERM, SIGINT and SIGHUP into the orderly end of the event loop, and has a write to a closed pipe fail
// instead of ending the program. Another signal then ends it at once; where the event loop has not come to the first
// one yet, only from one second after that on. Make one, on the main thread, after the application object.
class TerminationSignals final : public QObject {
public:
    TerminationSignals();
};

} // namespace pelloran
