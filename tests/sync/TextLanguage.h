#pragma once

#include "localisation/AppLanguage.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeUserDefaults.h"

namespace pelloran::testing {

// While it lives, texts are English unless the test says otherwise.
class TextLanguage {
public:
    explicit TextLanguage(const QString& code = QStringLiteral("en")) {
        defaults.setString(QStringLiteral("pelloran.language"), code);
        AppLanguage::configure(&defaults, &settings);
    }

    ~TextLanguage() { AppLanguage::configure(nullptr, nullptr); }

    TextLanguage(const TextLanguage&) = delete;
    TextLanguage& operator=(const TextLanguage&) = delete;

private:
    FakeUserDefaults defaults;
    FakeSystemSettings settings;
};

} // namespace pelloran::testing
