#pragma once

#include "platform/UserDefaults.h"

#include <QHash>

#include <mutex>

namespace pelloran::testing {

class FakeUserDefaults final : public UserDefaults {
public:
    std::optional<QString> string(const QString& key) const override {
        const std::scoped_lock lock(mutex);
        const auto found = stored.constFind(key);
        return found == stored.constEnd() ? std::nullopt : std::optional(*found);
    }

    void setString(const QString& key, const QString& value) override {
        const std::scoped_lock lock(mutex);
        stored.insert(key, value);
        ++writes;
    }

    void remove(const QString& key) override {
        const std::scoped_lock lock(mutex);
        stored.remove(key);
        ++writes;
    }

    int writes = 0;

private:
    mutable std::mutex mutex;
    QHash<QString, QString> stored;
};

} // namespace pelloran::testing
