#pragma once

#include <QByteArray>

#include <xcb/xcb.h>

#include <chrono>
#include <expected>
#include <future>
#include <memory>

namespace pelloran::x11 {

// How long an answer of the X server is waited for.
struct Patience {
    // A server that is only busy, with a game that starts or a desktop that comes up, answers well within it.
    std::chrono::milliseconds usual{5000};

    // Once it hangs, each of the many requests of a listing must not wait as long again.
    std::chrono::milliseconds whileStalled{10};
};

struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

struct OpenedConnection {
    std::unique_ptr<xcb_connection_t, Disconnect> connection;
    int screenNumber = 0;
};

enum class NoConnection {
    unreachable, // there is no server, or it refuses us
    silent,      // it takes connections and says nothing
};

// Connects to the X server that $DISPLAY names. The library waits for the server's first words without a limit, so each
// attempt has a thread of its own, one at a time: while the server stays silent, later calls wait for the attempt under
// way. A thread that nobody waits for any more, because the connector is gone or $DISPLAY names another server, touches
// nothing of ours: it hangs up as soon as the server speaks or goes, or ends with the program.
class ServerConnector {
public:
    explicit ServerConnector(Patience limits = {})
        : patience(limits) {}

    std::expected<OpenedConnection, NoConnection> connect();

    Patience limits() const { return patience; }

private:
    Patience patience;
    std::future<OpenedConnection> attempt; // under way
    QByteArray attempted;                  // the display that it is for
};

} // namespace pelloran::x11
