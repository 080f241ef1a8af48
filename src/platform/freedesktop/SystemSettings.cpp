#include "platform/SystemSettings.h"

#include "platform/freedesktop/DesktopSettings.h"
#include "platform/LocaleSystemSettings.h"

#include <memory>

namespace pelloran {

namespace {

// Begins to follow the desktop when it is first asked for what the desktop says: commands that only want the language
// have nothing to do with it.
class DesktopSystemSettings final : public LocaleSystemSettings {
public:
    bool reducesMotion() const override { return desktop().reducesMotion(); }

    std::optional<Appearance> appearance() const override { return desktop().appearance(); }

private:
    const freedesktop::DesktopSettings& desktop() const {
        if (!followed) {
            followed = std::make_unique<freedesktop::DesktopSettings>(freedesktop::DesktopPlaces::ofSession());
            followed->changed = [this] {
                if (changed) {
                    changed();
                }
            };
        }
        return *followed;
    }

    mutable std::unique_ptr<freedesktop::DesktopSettings> followed;
};

} // namespace

std::unique_ptr<SystemSettings> SystemSettings::create() {
    return std::make_unique<DesktopSystemSettings>();
}

} // namespace pelloran
