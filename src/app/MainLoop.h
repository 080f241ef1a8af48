#pragma once

#include "app/CommandLine.h"

namespace pelloran {

// Follows the draft until the program is told to end, and gives the exit code. Needs the application object.
int run(const RunLoop& command);

} // namespace pelloran
