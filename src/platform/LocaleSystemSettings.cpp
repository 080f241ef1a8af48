#include "platform/LocaleSystemSettings.h"

#include <QLocale>

namespace pelloran {

QStringList LocaleSystemSettings::preferredLanguages() const {
    return QLocale::system().uiLanguages();
}

QString LocaleSystemSettings::localeIdentifier() const {
    return QLocale::system().name();
}

bool LocaleSystemSettings::reducesMotion() const {
    return false;
}

std::optional<Appearance> LocaleSystemSettings::appearance() const {
    return std::nullopt;
}

} // namespace pelloran
