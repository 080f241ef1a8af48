#include "platform/SystemSettings.h"

#include <QLocale>

namespace pelloran {

namespace {

class LocaleSystemSettings final : public SystemSettings {
public:
    QStringList preferredLanguages() const override { return QLocale::system().uiLanguages(); }

    QString localeIdentifier() const override { return QLocale::system().name(); }
};

} // namespace

std::unique_ptr<SystemSettings> SystemSettings::create() {
    return std::make_unique<LocaleSystemSettings>();
}

} // namespace pelloran
