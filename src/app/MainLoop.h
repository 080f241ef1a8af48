#pragma once

#include "app/CommandLine.h"

namespace pelloran {

// Follows the draft without a panel until the program is told to end, and gives the exit code. Needs the application
// object, and no display.
int run(const RunLoop& command);

} // namespace pelloran
