#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace pelloran {

enum class Appearance { light, dark };

// What the desktop says of its user's preferences.
class SystemSettings {
public:
    static std::unique_ptr<SystemSettings> create();

    virtual ~SystemSettings() = default;

    // Language tags such as "zh-Hans-CN" or "en-GB", the most preferred first; may be empty. Safe from any thread.
    virtual QStringList preferredLanguages() const = 0;

    // Identifier of the current locale, such as "en_GB". Safe from any thread.
    virtual QString localeIdentifier() const = 0;

    // Whether the user asks for things not to move. Followed while running; main thread.
    virtual bool reducesMotion() const = 0;

    // Absent when the desktop does not say: the colours of the palette tell then. Followed while running; main thread.
    virtual std::optional<Appearance> appearance() const = 0;

    // Called on the main thread when reduced motion or the appearance has changed.
    std::function<void()> changed;
};

} // namespace pelloran
