#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace pelloran {

// The user's choices, kept from one run to the next. Safe from any thread.
class UserDefaults {
public:
    // The system's own store: an INI file under the user's configuration folder on Linux, the defaults system on macOS.
    static std::unique_ptr<UserDefaults> create();

    virtual ~UserDefaults() = default;

    // The text stored under `key`; absent when there is none or it is not text.
    virtual std::optional<QString> string(const QString& key) const = 0;

    // Stores `value` under `key`. A store that cannot be written is logged and the value holds until the program ends.
    virtual void setString(const QString& key, const QString& value) = 0;

    // Forgets what is stored under `key`, if anything, text or not. A store that cannot be written is logged and the
    // key stays absent until the program ends.
    virtual void remove(const QString& key) = 0;

    // Path of the file that holds them; empty where they are the system's to keep.
    virtual QString file() const { return {}; }
};

} // namespace pelloran
