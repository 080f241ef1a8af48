#pragma once

#include <QObject>

namespace pelloran {

// Turns SIGTERM, SIGINT and SIGHUP into the orderly end of the event loop, and has a write to a closed pipe fail
// instead of ending the program. A second signal ends it at once, or, where the
// event loop does not come to the first one, as soon as a second has passed. Make one, on the main thread, after the
// application object.
class TerminationSignals final : public QObject {
public:
    TerminationSignals();
};

} // namespace pelloran
