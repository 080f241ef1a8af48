#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace pelloran::testing {

// What the system tells of a process, from its state on: "T" is stopped. Empty when there is none.
inline QList<QByteArray> statusOf(qint64 process) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' ');
}

// What it has had of the processors until now.
inline std::chrono::milliseconds processorTimeOf(qint64 process) {
    const QList<QByteArray> status = statusOf(process);
    return std::chrono::milliseconds((status.value(11).toLongLong() + status.value(12).toLongLong()) * 1000 /
                                     sysconf(_SC_CLK_TCK));
}

// Has a process hang for as long as this object lives.
class Suspended {
public:
    explicit Suspended(qint64 process)
        : suspended(static_cast<pid_t>(process)) {
        ::kill(suspended, SIGSTOP);
        // It may still answer until it has got the signal.
        for (int i = 0; i < 2000 && statusOf(process).value(0) != "T"; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(statusOf(process).value(0), QByteArray("T"));
    }

    ~Suspended() { ::kill(suspended, SIGCONT); }

    Suspended(const Suspended&) = delete;
    Suspended& operator=(const Suspended&) = delete;

private:
    const pid_t suspended;
};

} // namespace pelloran::testing
