#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace pelloran {

// What the desktop says of its user's preferences. Safe from any thread.
class SystemSettings {
public:
    static std::unique_ptr<SystemSettings> create();

    virtual ~SystemSettings() = default;

    // Language tags such as "zh-Hans-CN" or "en-GB", the most preferred first; may be empty.
    virtual QStringList preferredLanguages() const = 0;

    // Identifier of the current locale, such as "en_GB".
    virtual QString localeIdentifier() const = 0;
};

} // namespace pelloran
