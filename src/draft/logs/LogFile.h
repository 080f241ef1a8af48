#pragma once

#include <QByteArray>
#include <QString>

#include <expected>
#include <functional>

namespace pelloran {

enum class LogFileError {
    unreadable, // missing, no permission, not a regular file, or a read failed
    tooLarge,   // beyond largestLogFile; not a byte of it was read
    notText,    // not UTF-8
};

// No session comes near it; a file beyond it would only stall the caller, at every poll.
constexpr qint64 largestLogFile = 64LL * 1024 * 1024;

// The whole file at `path`, which the game may be writing to. The bytes are valid UTF-8.
//
// A file caught in the middle of writing a character, valid but for a cut-off last one, is read on after a `pause`, up
// to four times, before it counts as no text.
std::expected<QByteArray, LogFileError> readLogFile(const QString& path, const std::function<void()>& pause);

// Why one that is unreadable cannot be opened, in the system's words; "" where it can.
QString whyUnreadable(const QString& path);

// One millisecond. The two writes of a line that crosses the game's write buffer are microseconds apart, so that an
// immediate second look can fall between them as well; four pauses still pass unnoticed.
void pauseForWriter();

} // namespace pelloran
