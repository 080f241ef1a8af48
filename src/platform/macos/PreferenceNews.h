#pragma once

#include "platform/SystemSettings.h"

#include <optional>

namespace pelloran::macos {

// What the desktop says of motion and colours at one moment.
struct Preferences {
    bool reducesMotion = false;
    std::optional<Appearance> appearance; // absent: it does not say

    bool operator==(const Preferences&) const = default;
};

// The system tells more often than something changes that matters here: of other options for the eye, of an appearance
// that was set anew.
class PreferenceNews {
public:
    explicit PreferenceNews(const Preferences& atFirst)
        : told(atFirst) {}

    // Whether `now` differs from what was told last. It has been told then.
    bool tell(const Preferences& now) {
        const bool news = now != told;
        told = now;
        return news;
    }

private:
    Preferences told;
};

} // namespace pelloran::macos
