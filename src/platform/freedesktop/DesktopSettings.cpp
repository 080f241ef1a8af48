#include "platform/freedesktop/DesktopSettings.h"

#include <QStandardPaths>

#include <utility>

namespace pelloran::freedesktop {

DesktopPlaces DesktopPlaces::ofSession() {
    return {
        .busAddress = QString(),
        .kdeGlobals =
            QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/kdeglobals"),
        .gnome = isGnome(qEnvironmentVariable("XDG_CURRENT_DESKTOP")),
    };
}

DesktopSettings::DesktopSettings(DesktopPlaces where)
    : places(std::move(where))
    , portal(places.busAddress, places.portalPatience) {
    QObject::connect(&portal, &PortalSettings::answered, &portal,
                     [this](const std::optional<PortalGroups>& groups) { portalAnswered(groups); });
    QObject::connect(&portal, &PortalSettings::changed, &portal,
                     [this](const QString& group, const QString& key, const QVariant& value) {
                         preferences.setInPortal(group, key, value);
                         tellIfChanged();
                     });
}

void DesktopSettings::portalAnswered(const std::optional<PortalGroups>& groups) {
    preferences.setPortal(groups);
    if (!preferences.portalTellsOfMotion()) {
        askElsewhere();
    }
    tellIfChanged();
}

void DesktopSettings::askElsewhere() {
    if (!kde) {
        kde = std::make_unique<KdeGlobals>(places.kdeGlobals);
        kde->changed = [this] {
            preferences.setKdeAnimationDurationFactor(kde->factor());
            tellIfChanged();
        };
        preferences.setKdeAnimationDurationFactor(kde->factor());
    }
    if (places.gnome && !gnome) {
        gnome = std::make_unique<GnomeAnimations>([this](std::optional<bool> enabled) {
            preferences.setGnomeAnimations(enabled);
            tellIfChanged();
        });
    }
}

void DesktopSettings::tellIfChanged() {
    if (reducesMotion() == toldReducesMotion && appearance() == toldAppearance) {
        return;
    }
    toldReducesMotion = reducesMotion();
    toldAppearance = appearance();
    if (changed) {
        changed();
    }
}

} // namespace pelloran::freedesktop
