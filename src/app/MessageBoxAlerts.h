#pragma once

#include "platform/Alerts.h"

#include <Qt>

namespace pelloran {

// Alerts as message boxes of the desktop, the one thing of this program that takes the keyboard.
class MessageBoxAlerts final : public Alerts {
public:
    // `above`: the flags that make a window as high as the panel, which must not hide an alert.
    explicit MessageBoxAlerts(Qt::WindowFlags above);

    int runModal(const Alert& alert) override;

private:
    Qt::WindowFlags flags;
};

} // namespace pelloran
