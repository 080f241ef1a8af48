#pragma once

#include "platform/SystemSettings.h"

#include <memory>

namespace pelloran::macos {

// The user's settings of the Mac. Begins to follow the desktop when it is first asked for what the desktop says:
// commands that only want the language have nothing to do with it.
class CocoaSystemSettings final : public SystemSettings {
public:
    CocoaSystemSettings();
    ~CocoaSystemSettings() override;

    QStringList preferredLanguages() const override;
    QString localeIdentifier() const override;
    bool reducesMotion() const override;

    // Absent without an application object of the Mac's own.
    std::optional<Appearance> appearance() const override;

private:
    class Follower;

    void follow() const;

    mutable std::unique_ptr<Follower> follower; // null: not asked yet
};

} // namespace pelloran::macos
