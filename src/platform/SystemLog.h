#pragma once

#include <QString>

#include <functional>

// Where a desktop wants the diagnostics of a program with windows, whose standard error nobody need see.
namespace pelloran::SystemLog {

// For setLogSink(); empty where that is standard error. From any thread.
std::function<void(const QString& message)> sink();

} // namespace pelloran::SystemLog
