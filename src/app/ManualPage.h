#pragma once

#include <QString>

namespace pelloran {

// pelloran(1): the options and commands of --help, and what else belongs on a manual page, as roff.
QString manualPage();

} // namespace pelloran
