#pragma once

#include "platform/Alerts.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

namespace pelloran::testing {

// Presses the button it is told to, at once.
class FakeAlerts final : public Alerts {
public:
    int runModal(const Alert& alert) override {
        shown.push_back(alert);
        if (const auto user = whenShown) { // who may be told otherwise meanwhile
            user();
        }
        const int last = std::max(static_cast<int>(alert.buttons.size()), 1) - 1;
        return pressed.value_or(last);
    }

    std::vector<Alert> shown;
    std::optional<int> pressed = 0; // absent: closes it
    std::function<void()> whenShown;
};

} // namespace pelloran::testing
