#include "app/LogsDir.h"

#include "draft/logs/LogFolder.h"
#include "model/DraftModel.h"

#include <QDir>
#include <QtGlobal>

namespace pelloran {

std::optional<QString> foundLogsDir() {
    const EnvironmentLookup environment = [](const QString& name) {
        const QByteArray variable = name.toLocal8Bit();
        return qEnvironmentVariableIsSet(variable) ? std::optional(qEnvironmentVariable(variable)) : std::nullopt;
    };
    return gameLogsDir(AppConfig().logsDir, QDir::homePath(), environment);
}

QString logsDirToRead(const std::optional<QString>& asked) {
    if (asked) {
        return *asked;
    }
    return foundLogsDir().value_or(AppConfig().logsDir);
}

} // namespace pelloran
