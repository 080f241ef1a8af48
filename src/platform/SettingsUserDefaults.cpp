#include "base/Log.h"
#include "platform/UserDefaults.h"

#include <QSettings>

#include <mutex>

namespace pelloran {

namespace {

// Objects on the same store share its contents.
class Store final : public QSettings {
public:
    Store()
        : QSettings(IniFormat, UserScope, QStringLiteral("Pelloran"), QStringLiteral("Pelloran")) {
        setFallbacksEnabled(false);
    }
};

// One object serves all threads, under a lock: the store is small and read far more often than written.
class SettingsUserDefaults final : public UserDefaults {
public:
    std::optional<QString> string(const QString& key) const override {
        const std::scoped_lock lock(mutex);
        const QVariant value = settings.value(key);
        if (value.typeId() != QMetaType::QString) {
            return std::nullopt;
        }
        return value.toString();
    }

    void setString(const QString& key, const QString& value) override {
        change(key, [&](Store& store) { store.setValue(key, value); });
    }

    void remove(const QString& key) override {
        Q_ASSERT(!key.isEmpty()); // to QSettings the empty key means all of them
        change(key, [&](Store& store) { store.remove(key); });
    }

    QString file() const override { return settings.fileName(); }

private:
    template <typename Change>
    void change(const QString& key, const Change& apply) {
        const std::scoped_lock lock(mutex);
        // An object's status stays with the first error it met, so each write has an object of its own. A garbled store
        // is an error of its format only: it is written anew.
        Store store;
        apply(store);
        store.sync();
        if (store.status() == QSettings::AccessError) {
            log(QStringLiteral("cannot store the choice \"%1\" in %2; it holds until the program ends")
                    .arg(key, store.fileName()));
        }
    }

    mutable std::mutex mutex;
    Store settings;
};

} // namespace

std::unique_ptr<UserDefaults> UserDefaults::create() {
    return std::make_unique<SettingsUserDefaults>();
}

} // namespace pelloran
