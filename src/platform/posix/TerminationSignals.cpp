#include "platform/posix/TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace pelloran {

namespace {

// A signal handler may do next to nothing, but it may write to a socket; the event loop reads the other end. Not a
// pipe: behind Qt's notifier is what the system has for sockets on a Mac.
int writeEnd = -1;

void tellEventLoop(int) {
    const int error = errno; // of whatever was interrupted
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
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
        // A second signal ends the program at once: the orderly end waits for the look under way, and that may wait for
        // a display that hangs.
        for (const int signal : terminating) {
            std::signal(signal, SIG_DFL);
        }
        QCoreApplication::exit(0); // unlike quit(), which a window that declines to close can stop
    });
    for (const int signal : terminating) {
        if (std::signal(signal, tellEventLoop) == SIG_IGN) {
            std::signal(signal, SIG_IGN); // as whoever started the program wants it, such as nohup
        }
    }
}

} // namespace pelloran
