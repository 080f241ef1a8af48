#include "platform/SystemSettings.h"

#include <QLocale>

namespace pelloran {

namespace {

class LocaleSystemSettings final : public SystemSettings {
public:
    QStringList preferredLanguages() const override { return QLocale::system().uiLanguages(); }

    QString localeIdentifier() const override { return QLocale::system().name(); }

    bool reducesMotion() const override { return false; }

    std::optional<Appearance> appearance() const override { return std::nullopt; }
};

} // namespace

std::unique_ptr<SystemSettings> SystemSettings::create() {
    return std::make_unique<LocaleSystemSettings>();
}

} // namespace pelloran
