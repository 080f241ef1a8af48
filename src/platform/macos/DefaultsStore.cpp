#include "platform/macos/DefaultsStore.h"

#include "base/Log.h"

#include <utility>

namespace pelloran::macos {

DefaultsStore::DefaultsStore(SystemDefaults systemDefaults)
    : system(std::move(systemDefaults)) {}

std::optional<QString> DefaultsStore::string(const QString& key) const {
    const std::scoped_lock lock(mutex);
    const auto held = unstored.find(key);
    return held != unstored.end() ? held->second : system.read(key);
}

void DefaultsStore::setString(const QString& key, const QString& value) {
    change(key, value);
}

void DefaultsStore::remove(const QString& key) {
    change(key, std::nullopt);
}

void DefaultsStore::change(const QString& key, const std::optional<QString>& value) {
    const std::scoped_lock lock(mutex);
    if (system.write(key, value)) {
        unstored.erase(key);
        return;
    }
    unstored[key] = value;
    log(QStringLiteral("cannot store the choice \"%1\" in %2; it holds until the program ends").arg(key, system.name));
}

} // namespace pelloran::macos
