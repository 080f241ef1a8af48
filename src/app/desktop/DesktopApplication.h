#pragma once

#include "app/CommandLine.h"

#include <QString>

namespace pelloran {

class SystemSettings;
class UserDefaults;

// The program with its panel, its status item and its alerts, until the user ends it; gives the exit code. Needs the
// QApplication. A start beside one that runs already only brings that one's panel forward.
int runOnDesktop(const RunLoop& command, SystemSettings& settings, UserDefaults& defaults);

// In place of it where there is no display, for the `reason` given: says what is wrong and gives the exit code. Needs
// a QCoreApplication.
int failWithoutDisplay(const QString& reason);

} // namespace pelloran
