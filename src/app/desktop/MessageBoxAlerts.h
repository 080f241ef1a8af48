#pragma once

#include "platform/Alerts.h"

#include <functional>
#include <memory>

namespace pelloran {

class PanelWindow;

// Alerts as message boxes of the desktop, the one thing of this program that takes the keyboard.
class MessageBoxAlerts final : public Alerts {
public:
    // `above` keeps an alert as high as the panel, which must not hide it, and above a game that comes up later;
    // `activateProgram` brings the program to the front, where only the program in front has the keyboard.
    explicit MessageBoxAlerts(std::function<std::unique_ptr<PanelWindow>()> above,
                              std::function<void()> activateProgram = {});

    int runModal(const Alert& alert) override;

private:
    std::function<std::unique_ptr<PanelWindow>()> makeWindow;
    std::function<void()> activate;
};

} // namespace pelloran
