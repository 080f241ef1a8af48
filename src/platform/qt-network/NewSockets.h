#pragma once

#include <QtGlobal>

#include <compare>
#include <set>
#include <string>

namespace pelloran {

// What tells one socket from another.
struct SocketKey {
    // `number` is the system's, which outlives no socket. It is 0 for each on a Mac: there the descriptor and the local
    // address tell.
    static SocketKey of(unsigned long long number, int descriptor, std::string localAddress);

    unsigned long long number = 0;
    int descriptor = 0;
    std::string localAddress;

    auto operator<=>(const SocketKey&) const = default;
};

// The connections that this process has made since this was made.
//
// Qt reads the head of an answer byte by byte until it ends or nothing is there, on a thread of its own, and hears of
// nothing meanwhile. Of a server that sends on without end, faster than that, it would never let go: one thread for
// each request, busy and growing for as long as the server likes. Its connection has to be counted and ended from
// outside.
class NewSockets {
public:
    NewSockets();

    // What has arrived on the one on which most has. It may be another thread's.
    qint64 mostReceived() const;

    // Ends those that lead to the network, whatever waits on them: how much is read ahead of a flood goes up and down.
    // Another thread's may be among them, which has it fail as if its server had hung up.
    void end() const;

    // How many descriptors are looked at where a process may have `limit`; negative: as many as it likes.
    static int looksAt(long limit);

private:
    std::set<SocketKey> present;
};

} // namespace pelloran
