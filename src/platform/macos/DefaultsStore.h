#pragma once

#include "platform/UserDefaults.h"

#include <QString>

#include <functional>
#include <map>
#include <mutex>
#include <optional>

namespace pelloran::macos {

// The system's defaults, as two calls. Safe from any thread.
struct SystemDefaults {
    // The text under a key; absent when there is none or it is not text.
    std::function<std::optional<QString>(const QString& key)> read;

    // Stores the value, or forgets the key where it is absent. False when that is not known to have reached the disk.
    std::function<bool(const QString& key, const std::optional<QString>& value)> write;

    QString name; // of the store, for the log
};

// What the seam owes beyond the system's own promises: a choice that could not be stored holds until the program ends.
class DefaultsStore final : public UserDefaults {
public:
    explicit DefaultsStore(SystemDefaults system);

    std::optional<QString> string(const QString& key) const override;
    void setString(const QString& key, const QString& value) override;
    void remove(const QString& key) override;

private:
    void change(const QString& key, const std::optional<QString>& value);

    const SystemDefaults system;
    mutable std::mutex mutex;
    std::map<QString, std::optional<QString>> unstored; // what the system does not have, or still has
};

} // namespace pelloran::macos
