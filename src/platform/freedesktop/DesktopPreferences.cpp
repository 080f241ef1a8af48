#include "platform/freedesktop/DesktopPreferences.h"

#include "platform/freedesktop/PortalNames.h"

#include <cmath>
#include <utility>

namespace pelloran::freedesktop {

namespace {

std::optional<double> integer(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return value.toDouble();
    default:
        return std::nullopt;
    }
}

std::optional<bool> truth(const QVariant& value) {
    return value.typeId() == QMetaType::Bool ? std::optional(value.toBool()) : std::nullopt;
}

// KDE keeps it as text, and hands it out as such or as a number.
std::optional<double> factor(const QVariant& value) {
    bool isNumber = value.typeId() == QMetaType::Double;
    double number = isNumber ? value.toDouble() : 0;
    if (value.typeId() == QMetaType::QString) {
        number = value.toString().trimmed().toDouble(&isNumber);
    }
    return isNumber && std::isfinite(number) ? std::optional(number) : integer(value);
}

} // namespace

void DesktopPreferences::setPortal(std::optional<PortalGroups> groups) {
    portal = std::move(groups).value_or(PortalGroups());
}

void DesktopPreferences::setInPortal(const QString& group, const QString& key, const QVariant& value) {
    portal[group][key] = value;
}

bool DesktopPreferences::reducesMotion() const {
    if (const auto said = portalReducesMotion()) {
        return *said;
    }
    return kdeFactor == 0.0 || gnomeAnimations == false;
}

std::optional<Appearance> DesktopPreferences::appearance() const {
    const auto scheme = integer(inPortal(appearanceGroup, colorSchemeKey));
    if (scheme == 1.0) {
        return Appearance::dark;
    }
    if (scheme == 2.0) {
        return Appearance::light;
    }
    return std::nullopt; // 0 is "no preference", and so is what is not known yet
}

std::optional<bool> DesktopPreferences::portalReducesMotion() const {
    const auto reduced = integer(inPortal(appearanceGroup, reducedMotionKey));
    const auto animations = truth(inPortal(gnomeGroup, gnomeAnimationsKey));
    const auto duration = factor(inPortal(kdeGroup, kdeDurationKey));
    if (!reduced && !animations && !duration) {
        return std::nullopt;
    }
    return reduced == 1.0 || animations == false || duration == 0.0;
}

QVariant DesktopPreferences::inPortal(const QString& group, const QString& key) const {
    return portal.value(group).value(key);
}

} // namespace pelloran::freedesktop
