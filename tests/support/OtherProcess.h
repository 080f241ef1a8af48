#pragma once

#include "tests/support/ProcessStatus.h"

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace pelloran::testing {

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
