#pragma once

#include "platform/SystemSettings.h"

#include <utility>

namespace pelloran::testing {

class FakeSystemSettings final : public SystemSettings {
public:
    QStringList preferredLanguages() const override { return languages; }

    QString localeIdentifier() const override { return locale; }

    bool reducesMotion() const override { return lessMotion; }

    std::optional<Appearance> appearance() const override { return look; }

    void setReducesMotion(bool reduced) {
        if (std::exchange(lessMotion, reduced) != reduced) {
            tellChange();
        }
    }

    void setAppearance(std::optional<Appearance> appearance) {
        if (std::exchange(look, appearance) != appearance) {
            tellChange();
        }
    }

    QStringList languages{QStringLiteral("en-US")};
    QString locale = QStringLiteral("en_US");

private:
    void tellChange() const {
        if (changed) {
            changed();
        }
    }

    bool lessMotion = false;
    std::optional<Appearance> look;
};

} // namespace pelloran::testing
