#include "platform/posix/TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>

namespace pelloran {

namespace {

// A signal handler may do next to nothing, but it may write to a socket; the event loop reads the other end. Not a
// pipe: behind Qt's notifier is what the system has for sockets on a Mac.
int writeEnd = -1;

// When the first signal came, in nanoseconds of the clock that runs evenly; 0: none yet.
constinit std::atomic<std::int64_t> firstSignal = 0;
static_assert(decltype(firstSignal)::is_always_lock_free, "a signal handler must not wait");

// Whoever ends a session may send two kinds of signals in one go.
constexpr std::int64_t inOneGo = 1'000'000'000;

void tellEventLoop(int signal) {
    const int error = errno; // of whatever was interrupted
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    const std::int64_t now = std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
    std::int64_t first = 0;
    if (firstSignal.compare_exchange_strong(first, now)) {
        const char byte = 0;
        [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
    } else if (now - first > inOneGo) {
        // The orderly end has not come to its own, or has not begun: something hangs that it waits for, such as the
        // desktop.
        std::signal(signal, SIG_DFL);
        ::raise(signal); // on the way out of here
    }
    errno = error;
}

constexpr std::array terminating{SIGTERM, SIGINT, SIGHUP};

} // namespace

TerminationSignals::TerminationSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) {
        return; // the signals keep ending the program at once
    }
    ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    writeEnd = ends[1];
    auto* notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::exit(0); // unlike quit(), which a window that declines to close can stop
    });
    for (const int signal : terminating) {
        if (std::signal(signal, tellEventLoop) == SIG_IGN) {
            std::signal(signal, SIG_IGN); // as whoever started the program wants it, such as nohup
        }
    }
}

} // namespace pelloran
