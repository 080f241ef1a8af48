#include "base/Log.h"
#include "platform/UserDefaults.h"

#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <map>
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

// Where Store has its file. It reads that as soon as it is made.
QString storePath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Pelloran/Pelloran.ini");
}

// Why a Store would be waited for without end, or as good as that; empty where it would not. What else may be wrong
// with its file is Qt's to find.
QString obstacle() {
    const QFileInfo file(storePath());
    constexpr qint64 most = qint64{1024} * 1024; // choices have some hundred bytes
    if (file.exists() && !file.isFile() && !file.isDir()) {
        return QStringLiteral("it is no file");
    }
    return file.isFile() && file.size() > most ? QStringLiteral("it is larger than 1 MiB") : QString();
}

// One object serves all threads, under a lock: the store is small and read far more often than written.
class SettingsUserDefaults final : public UserDefaults {
public:
    SettingsUserDefaults() {
        if (const QString why = obstacle(); why.isEmpty()) {
            settings.emplace();
        } else {
            log(QStringLiteral("the choices stored in %1 cannot be used: %2").arg(storePath(), why));
        }
    }

    std::optional<QString> string(const QString& key) const override {
        const std::scoped_lock lock(mutex);
        if (const auto found = unstored.find(key); found != unstored.end()) {
            return found->second;
        }
        const QVariant value = settings ? settings->value(key) : QVariant();
        if (value.typeId() != QMetaType::QString) {
            return std::nullopt;
        }
        return value.toString();
    }

    void setString(const QString& key, const QString& value) override { change(key, value); }

    void remove(const QString& key) override {
        Q_ASSERT(!key.isEmpty()); // to QSettings the empty key means all of them
        change(key, std::nullopt);
    }

    QString file() const override { return settings ? settings->fileName() : storePath(); }

private:
    void change(const QString& key, const std::optional<QString>& value) {
        const std::scoped_lock lock(mutex);
        if (!obstacle().isEmpty()) {
            unstored[key] = value;
            logNotStored(key, storePath());
            return;
        }
        unstored.erase(key);
        // An object's status stays with the first error it met, so each write has an object of its own. A garbled store
        // is an error of its format only: it is written anew.
        Store store;
        if (value) {
            store.setValue(key, *value);
        } else {
            store.remove(key);
        }
        store.sync();
        if (store.status() == QSettings::AccessError) {
            logNotStored(key, store.fileName());
        } else if (!settings) {
            settings.emplace(); // what stood in the way is gone
        }
    }

    static void logNotStored(const QString& key, const QString& path) {
        log(QStringLiteral("cannot store the choice \"%1\" in %2; it holds until the program ends").arg(key, path));
    }

    mutable std::mutex mutex;
    std::optional<Store> settings;                      // none where its file could not be read in any time
    std::map<QString, std::optional<QString>> unstored; // absent: removed
};

} // namespace

std::unique_ptr<UserDefaults> UserDefaults::create() {
    return std::make_unique<SettingsUserDefaults>();
}

} // namespace pelloran
