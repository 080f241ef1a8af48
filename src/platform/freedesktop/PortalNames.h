#pragma once

#include <QString>

// Where desktops keep what we ask for.
namespace pelloran::freedesktop {

inline const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
inline const QString colorSchemeKey = QStringLiteral("color-scheme");
inline const QString reducedMotionKey = QStringLiteral("reduced-motion");

inline const QString gnomeGroup = QStringLiteral("org.gnome.desktop.interface");
inline const QString gnomeAnimationsKey = QStringLiteral("enable-animations");

inline const QString kdeGroup = QStringLiteral("org.kde.kdeglobals.KDE");
inline const QString kdeDurationKey = QStringLiteral("AnimationDurationFactor");

} // namespace pelloran::freedesktop
