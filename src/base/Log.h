#pragma once

#include <QString>

#include <functional>

namespace pelloran {

// Writes logLine(message) to standard error, where diagnostics belong: standard output is kept for snapshots and
// answers. From any thread; lines of several threads never mix.
void log(const QString& message);

// "[Pelloran] " and the message in one line, as inOneLine() makes it. Of a very long one only the beginning.
QString logLine(const QString& message);

// Receives every later message, as it was given, in place of standard error; an empty function restores standard error.
// For a system with a log of its own, and for tests. Not while other threads log.
void setLogSink(std::function<void(const QString& message)> sink);

} // namespace pelloran
