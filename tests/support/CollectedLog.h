#pragma once

#include "base/Log.h"

#include <QString>
#include <QStringList>

#include <mutex>

namespace pelloran::testing {

// Takes what is logged while it lives, on any thread, in place of standard error. One at a time.
class CollectedLog {
public:
    CollectedLog() {
        setLogSink([this](const QString& message) {
            const std::scoped_lock lock(mutex);
            messages.append(message);
        });
    }

    ~CollectedLog() { setLogSink({}); }

    CollectedLog(const CollectedLog&) = delete;
    CollectedLog& operator=(const CollectedLog&) = delete;

    // Messages so far, since the last clear().
    QStringList lines() const {
        const std::scoped_lock lock(mutex);
        return messages;
    }

    void clear() {
        const std::scoped_lock lock(mutex);
        messages.clear();
    }

private:
    mutable std::mutex mutex;
    QStringList messages;
};

} // namespace pelloran::testing
