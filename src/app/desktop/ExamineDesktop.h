#pragma once

#include "app/CommandLine.h"

#include <QString>

#include <expected>

namespace pelloran {

// The checks of `doctor` that need the desktop, or the parts of the program that only run there. `session` is what
// GuiSession::prepare() gave: with a display it needs the QApplication, else a QCoreApplication. Gives the exit code.
int examineDesktop(const ExamineDesktop& command, const std::expected<void, QString>& session);

} // namespace pelloran
