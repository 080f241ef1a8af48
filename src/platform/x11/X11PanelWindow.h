#pragma once

#include "platform/PanelWindow.h"
#include "platform/x11/PanelClock.h"

#include <memory>

namespace pelloran::x11 {

// A panel's window that goes by `clock`; PanelWindow::create() gives it real time.
std::unique_ptr<PanelWindow> createPanelWindow(std::unique_ptr<PanelClock> clock);

} // namespace pelloran::x11
