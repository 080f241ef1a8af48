#include "platform/Log.h"
#include "platform/UserDefaults.h"

#include <QSettings>

#include <mutex>

namespace pelloran {

namespace {

// QSettings speaks to each system's own store. One object serves all threads, under a lock: the store is small and
// read far more often than written.
class SettingsUserDefaults final : public UserDefaults {
public:
    SettingsUserDefaults()
#ifdef Q_OS_MACOS
        : settings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("com.local"),
                   QStringLiteral("Pelloran"))
#else
        : settings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Pelloran"), QStringLiteral("Pelloran"))
#endif
    {
        settings.setFallbacksEnabled(false);
    }

    std::optional<QString> string(const QString& key) const override {
        const std::scoped_lock lock(mutex);
        const QVariant value = settings.value(key);
        if (value.typeId() != QMetaType::QString) {
            return std::nullopt;
        }
        return value.toString();
    }

    void setString(const QString& key, const QString& value) override {
        const std::scoped_lock lock(mutex);
        settings.setValue(key, value);
        settings.sync();
        if (settings.status() != QSettings::NoError) {
            log(QStringLiteral("cannot store the choice \"%1\" in %2; it holds until the program ends")
                    .arg(key, settings.fileName()));
        }
    }

private:
    mutable std::mutex mutex;
    QSettings settings;
};

} // namespace

std::unique_ptr<UserDefaults> UserDefaults::create() {
    return std::make_unique<SettingsUserDefaults>();
}

} // namespace pelloran
