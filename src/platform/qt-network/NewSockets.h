#pragma once

#include <set>

namespace pelloran {

// The connections that this process has made since this was made.
//
// Qt reads the head of an answer byte by byte until it ends or nothing is there, on a thread of its own, and hears of
// nothing meanwhile. Of a server that sends on without end, faster than that, it would never let go: one thread for
// each request, busy and growing for as long as the server likes. Its connection has to be ended from outside.
class NewSockets {
public:
    NewSockets();

    // Ends those on which much waits to be read. Another thread's may be among them, which has it fail as if its server
    // had hung up.
    void endFlooded() const;

private:
    std::set<unsigned long long> present; // by their numbers in the system, which outlive no socket
};

} // namespace pelloran
