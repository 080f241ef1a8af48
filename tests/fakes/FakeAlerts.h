#pragma once

#include "platform/Alerts.h"

#include <functional>
#include <vector>

namespace pelloran::testing {

// Presses the button it is told to, at once.
class FakeAlerts final : public Alerts {
public:
    int runModal(const Alert& alert) override {
        shown.push_back(alert);
        if (whenShown) {
            whenShown();
        }
        return pressed;
    }

    std::vector<Alert> shown;
    int pressed = 0;
    std::function<void()> whenShown;
};

} // namespace pelloran::testing
