#pragma once

#include "platform/SystemSettings.h"

#include <QMap>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace pelloran::freedesktop {

// What the settings portal hands out: values by group and key. Whatever types they have.
using PortalGroups = QMap<QString, QVariantMap>;

// What the desktop's several places say, put together. A place that says nothing, or something that makes no sense, has
// no part in it.
class DesktopPreferences {
public:
    // All that the portal says; absent when there is no portal, or no longer.
    void setPortal(std::optional<PortalGroups> groups);
    void setInPortal(const QString& group, const QString& key, const QVariant& value);

    // Read by ourselves; they count as long as the portal says nothing of motion.
    void setKdeAnimationDurationFactor(std::optional<double> factor) { kdeFactor = factor; }

    void setGnomeAnimations(std::optional<bool> enabled) { gnomeAnimations = enabled; }

    bool portalTellsOfMotion() const { return portalReducesMotion().has_value(); }

    // Any place that asks for it suffices: they are set by different hands, and missing motion hurts nobody.
    bool reducesMotion() const;

    std::optional<Appearance> appearance() const;

private:
    std::optional<bool> portalReducesMotion() const;
    QVariant inPortal(const QString& group, const QString& key) const;

    PortalGroups portal;
    std::optional<double> kdeFactor;
    std::optional<bool> gnomeAnimations;
};

} // namespace pelloran::freedesktop
