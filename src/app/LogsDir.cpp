#include "app/LogsDir.h"

#include "draft/DraftModel.h"
#include "draft/LogFolder.h"

namespace pelloran {

std::optional<QString> foundLogsDir() {
    return gameLogsDir(AppConfig().logsDir);
}

QString logsDirToRead(const std::optional<QString>& asked) {
    if (asked) {
        return *asked;
    }
    return foundLogsDir().value_or(AppConfig().logsDir);
}

} // namespace pelloran
