#pragma once

#include "platform/SystemSettings.h"

namespace pelloran {

// The half that Qt tells alike on every system: the languages. Knows of no other preference; a back end that does
// derives from it.
class LocaleSystemSettings : public SystemSettings {
public:
    QStringList preferredLanguages() const override;
    QString localeIdentifier() const override;
    bool reducesMotion() const override;
    std::optional<Appearance> appearance() const override;
};

} // namespace pelloran
