#include "draft/LogWatcher.h"

namespace pelloran {

LogWatcher::LogWatcher(const QString& folder)
    : logsDir(folder) {}

std::optional<QString> LogWatcher::latestSessionDir() const {
    return std::nullopt;
}

DraftState LogWatcher::poll() const {
    return {};
}

} // namespace pelloran
