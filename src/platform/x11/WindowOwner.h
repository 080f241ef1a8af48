#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <cstdint>
#include <optional>

// Who a window belongs to, when the window itself names only what started its program.
namespace pelloran::x11 {

// True for the window classes that Wine, Proton and their desktops give to whatever runs in them.
bool isLauncher(QStringView windowClass);

// The name of a program from what the system knows of its process: `commandLine` with arguments that each end in a NUL
// (as in /proc/PID/cmdline), `shortName` of 15 bytes at most. Folders, also Windows ones, and ".exe" are dropped; a
// loader is skipped for the program it loads. "" when nothing is known.
QString programName(const QByteArray& commandLine, const QByteArray& shortName);

// The same for a running process; absent when there is none or it may not be looked at.
std::optional<QString> programName(std::uint32_t processId);

} // namespace pelloran::x11
