#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <unistd.h>

#include <chrono>
#include <optional>

namespace pelloran::testing {

// What the system tells of a process, from its state on: "T" is stopped. Empty when there is none.
inline QList<QByteArray> statusOf(qint64 process) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' '); // behind the name, which may hold anything
}

// What it has had of the processors until now, by the clock of the system's accounting, which goes by hundredths of a
// second. Absent when there is none.
inline std::optional<std::chrono::milliseconds> processorTimeOf(qint64 process) {
    const QList<QByteArray> status = statusOf(process);
    if (status.isEmpty()) {
        return std::nullopt;
    }
    const qint64 ticks = status.value(11).toLongLong() + status.value(12).toLongLong();
    return std::chrono::milliseconds(ticks * 1000 / sysconf(_SC_CLK_TCK));
}

} // namespace pelloran::testing
