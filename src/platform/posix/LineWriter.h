#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace pelloran {

// Writes lines to a file descriptor, each at once, and never waits for who reads a pipe: what a slow reader's cannot
// take yet is written when it can. When the reader has gone the lines end, not the program. Main thread, with an event
// loop. SIGPIPE must be ignored.
class LineWriter final : public QObject {
public:
    // A reader that far behind has stalled: lines that do not fit any more are left out, whole.
    static constexpr qsizetype maximumPending = qsizetype{4} * 1024 * 1024; // bytes

    // Does not own `descriptor`.
    explicit LineWriter(int descriptor);

    // `line` ends in a line feed.
    void write(const QByteArray& line);

private:
    void flush();

    int descriptor;
    QByteArray pending;
    QSocketNotifier whenWritable;
    bool behind = false; // lines are being left out
    bool closed = false;
};

} // namespace pelloran
