#include "platform/posix/LineWriter.h"

#include "base/Log.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

namespace pelloran {

namespace {

bool canWrite(int descriptor) {
    pollfd query{.fd = descriptor, .events = POLLOUT, .revents = 0};
    return ::poll(&query, 1, 0) > 0;
}

} // namespace

LineWriter::LineWriter(int target)
    : descriptor(target)
    , whenWritable(QSocketNotifier::Write) {
    whenWritable.setSocket(descriptor);
    connect(&whenWritable, &QSocketNotifier::activated, this, &LineWriter::flush);
}

void LineWriter::write(const QByteArray& line) {
    if (closed) {
        return;
    }
    if (pending.size() + line.size() > maximumPending) {
        if (!std::exchange(behind, true)) {
            log(QStringLiteral(
                "the reader of the snapshots has fallen behind; lines that do not fit any more are left out"));
        }
        return;
    }
    pending += line;
    flush();
}

void LineWriter::flush() {
    // The descriptor may be shared with a shell, so it stays blocking. A pipe that can be written takes PIPE_BUF bytes
    // without blocking.
    while (!pending.isEmpty() && canWrite(descriptor)) {
        const auto chunk = static_cast<std::size_t>(std::min<qsizetype>(pending.size(), PIPE_BUF));
        const ssize_t written = ::write(descriptor, pending.constData(), chunk);
        if (written > 0) {
            pending.remove(0, written);
        } else if (errno != EINTR && errno != EAGAIN) {
            if (errno != EPIPE) {
                log(QStringLiteral("the snapshots end, standard output cannot be written: %1")
                        .arg(QString::fromLocal8Bit(std::strerror(errno))));
            }
            closed = true;
            pending.clear();
        }
    }
    whenWritable.setEnabled(!pending.isEmpty());
    behind = behind && !pending.isEmpty();
}

} // namespace pelloran
