#pragma once

#include "platform/freedesktop/DesktopPreferences.h"
#include "platform/freedesktop/GnomeAnimations.h"
#include "platform/freedesktop/KdeGlobals.h"
#include "platform/freedesktop/PortalSettings.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace pelloran::freedesktop {

// Where to look.
struct DesktopPlaces {
    static DesktopPlaces ofSession();

    QString busAddress; // empty: the session's
    QString kdeGlobals; // the file
    bool gnome = false; // the desktop is GNOME, so that its tool knows
    std::chrono::milliseconds portalPatience = PortalSettings::usualPatience;
};

// Follows the user's preferences. It begins with defaults and tells when it knows better; nothing waits. Main thread,
// with an event loop.
class DesktopSettings {
public:
    explicit DesktopSettings(DesktopPlaces where);

    bool reducesMotion() const { return preferences.reducesMotion(); }

    std::optional<Appearance> appearance() const { return preferences.appearance(); }

    std::function<void()> changed;

private:
    void portalAnswered(const std::optional<PortalGroups>& groups);
    void askElsewhere();
    void tellIfChanged();

    DesktopPlaces places;
    DesktopPreferences preferences;
    bool toldReducesMotion = false;
    std::optional<Appearance> toldAppearance;
    std::unique_ptr<KdeGlobals> kde;        // null: the portal suffices
    std::unique_ptr<GnomeAnimations> gnome; // null: the portal suffices, or it is not GNOME
    PortalSettings portal;
};

} // namespace pelloran::freedesktop
