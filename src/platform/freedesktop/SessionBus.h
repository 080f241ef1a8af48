#pragma once

#include <QByteArray>

#include <chrono>

namespace pelloran::freedesktop {

// Whether somebody takes connections at the first of a bus's addresses that can be reached, and then says nothing to
// the greeting: the bus hangs, or whoever is to start it does. False for kinds of addresses that cannot be tried.
bool isSilentBus(const QByteArray& addresses, std::chrono::milliseconds patience);

// Has this process do without a session bus that is silent, and logs that. Qt waits for it on the main thread, for half
// a minute each time that something of it wants the bus, and at the end again. Before there is an application object
// or a thread.
void avoidSilentSessionBus(std::chrono::milliseconds patience = std::chrono::seconds(2));

} // namespace pelloran::freedesktop
