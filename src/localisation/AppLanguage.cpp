#include "localisation/AppLanguage.h"

#include "localisation/L10n.h"

#include <mutex>

namespace pelloran {

namespace {

const QString& preferenceKey() {
    static const QString key = QStringLiteral("pelloran.language");
    return key;
}

struct Environment {
    std::mutex mutex;
    UserDefaults* defaults = nullptr;
    const SystemSettings* settings = nullptr;
    std::optional<AppLanguage> overridden;

    // With the lock held.
    AppLanguage effective() const {
        if (overridden) {
            return *overridden;
        }
        const auto stored = defaults ? defaults->string(preferenceKey()) : std::nullopt;
        return AppLanguage::fromRawValue(stored.value_or(QString())).value_or(AppLanguage::system);
    }
};

Environment& environment() {
    static Environment shared;
    return shared;
}

} // namespace

std::optional<AppLanguage> AppLanguage::fromRawValue(QStringView text) {
    for (const AppLanguage language : allCases()) {
        if (text == language.rawValue()) {
            return language;
        }
    }
    return std::nullopt;
}

QString AppLanguage::rawValue() const {
    switch (value) {
    case system:
        return QStringLiteral("system");
    case zh:
        return QStringLiteral("zh");
    case en:
        return QStringLiteral("en");
    }
    Q_UNREACHABLE();
}

void AppLanguage::configure(UserDefaults* defaults, const SystemSettings* settings) {
    Environment& env = environment();
    const std::scoped_lock lock(env.mutex);
    env.defaults = defaults;
    env.settings = settings;
    env.overridden.reset();
}

AppLanguage AppLanguage::preference() {
    Environment& env = environment();
    const std::scoped_lock lock(env.mutex);
    return env.effective();
}

void AppLanguage::setPreference(AppLanguage choice) {
    Environment& env = environment();
    bool changes = false;
    {
        const std::scoped_lock lock(env.mutex);
        changes = env.effective() != choice;
        env.overridden.reset();
        if (env.defaults) {
            env.defaults->setString(preferenceKey(), choice.rawValue());
        }
    }
    // Outside the lock: whoever hears of it looks texts up.
    if (changes) {
        Q_EMIT AppLanguageNotifier::shared().posted(didChangeNotification());
    }
}

void AppLanguage::overridePreference(AppLanguage choice) {
    Environment& env = environment();
    const std::scoped_lock lock(env.mutex);
    env.overridden = choice;
}

AppLanguage AppLanguage::resolvedPreference() {
    return preference().resolved();
}

AppLanguage AppLanguage::resolved() const {
    if (value != system) {
        return *this;
    }
    Environment& env = environment();
    const std::scoped_lock lock(env.mutex);
    if (!env.settings) {
        return en;
    }
    const QStringList languages = env.settings->preferredLanguages();
    const QString first = languages.isEmpty() ? env.settings->localeIdentifier() : languages.first();
    return first.toLower().startsWith(QLatin1StringView("zh")) ? zh : en;
}

bool AppLanguage::isChinese() const {
    return resolved() == zh;
}

QString AppLanguage::menuTitle() const {
    switch (value) {
    case system:
        return L10n::tr(u"lang.system");
    case zh:
        return QStringLiteral("中文");
    case en:
        return QStringLiteral("English");
    }
    Q_UNREACHABLE();
}

QString AppLanguage::didChangeNotification() {
    return QStringLiteral("Pelloran.AppLanguageDidChange");
}

AppLanguageNotifier& AppLanguageNotifier::shared() {
    static AppLanguageNotifier notifier;
    return notifier;
}

} // namespace pelloran
