#pragma once

#include "platform/SystemSettings.h"

namespace pelloran::testing {

class FakeSystemSettings final : public SystemSettings {
public:
    QStringList preferredLanguages() const override { return languages; }

    QString localeIdentifier() const override { return locale; }

    QStringList languages{QStringLiteral("en-US")};
    QString locale = QStringLiteral("en_US");
};

} // namespace pelloran::testing
