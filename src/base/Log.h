#pragma once

#include <QString>

#include <functional>

namespace pelloran {

// Writes "[Pelloran] " and the message as one line to standard error, where diagnostics belong: standard output is kept
// for snapshots and answers. Line breaks in the message become spaces. From any thread; lines of several threads never
// mix.
void log(const QString& message);

// Receives every later message, without the prefix, in place of standard error; an empty function restores standard
// error. For tests. Not while other threads log.
void setLogSink(std::function<void(const QString& message)> sink);

} // namespace pelloran
