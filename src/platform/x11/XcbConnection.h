#pragma once

#include "platform/x11/ServerConnector.h"

#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>

#include <cstddef>
#include <cstdlib>
#include <expected>
#include <memory>
#include <type_traits>

namespace pelloran::x11 {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

// An answer of the X server, freed with its owner.
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

// A request that the X server refused, or never answered.
struct Failure {
    const char* call;
    int code; // of the X error; 0: not answered in time; negative (from xcb_connection_has_error): connection broken
};

// A connection of our own to the X server that $DISPLAY names, with the atoms of window managers. A lost server breaks
// the connection (see `broken`) and fails every later request; it never ends the program. A server that hangs fails the
// requests until it goes on. One thread at a time.
class XcbConnection {
public:
    // A server that lacks what every one has counts as unreachable.
    static std::expected<std::unique_ptr<XcbConnection>, NoConnection> open(ServerConnector& connector);

    // For whoever asks once: null where there is no connection, for whatever reason.
    static std::unique_ptr<XcbConnection> open(Patience patience = {});

    ~XcbConnection();
    XcbConnection(const XcbConnection&) = delete;
    XcbConnection& operator=(const XcbConnection&) = delete;

    bool broken() const { return xcb_connection_has_error(connection) != 0; }

    // Neither broken nor silent when it was last asked.
    bool isThere() const { return !stalled && !broken(); }

    // How many requests were given up so far, as their answers did not come in time. Whose answers belong together only
    // if all came looks whether there are more of them behind the last than before the first.
    std::size_t unanswered() const { return unansweredRequests; }

    // For the requests themselves.
    operator xcb_connection_t*() const { return connection; }

    xcb_window_t root() const { return screen->root; }

    const xcb_ewmh_connection_t& atoms() const { return ewmh; }

    xcb_atom_t windowStateAtom() const { return windowState; }

    // Owned by whoever composes the windows of this screen.
    xcb_atom_t compositorAtom() const { return ewmh._NET_WM_CM_Sn[screenNumber]; }

    // Null when the screen has no such visual.
    const xcb_visualtype_t* visual(xcb_visualid_t id) const;

    // How pixels of that depth are packed; null when the server has no such depth.
    const xcb_format_t* pixelFormat(int depth) const;

    bool mostSignificantByteFirst() const;

    // The server can hand out the pixels of one window, covered or not.
    bool canNamePixmaps() const { return composite; }

    // The server is on this machine and takes a file descriptor to memory that both see.
    bool canShareMemory() const { return sharedMemory; }

    // Whether somebody composes the windows of this screen, and has redirected them all.
    bool compositorRuns() const;

    // Waits for the answer to `cookie`: `ask<xcb_get_geometry_reply>(xcb_get_geometry(...), "GetGeometry")`. Send many
    // requests before asking for the first answer; that makes one journey of them.
    template <auto receive, typename Cookie>
    auto ask(Cookie cookie, const char* call) const {
        using Answer = std::remove_pointer_t<decltype(receive(connection, cookie, nullptr))>;
        using Result = std::expected<Reply<Answer>, Failure>;
        xcb_generic_error_t* error = nullptr;
        void* reply = wait(cookie.sequence, &error);
        if (!reply) {
            return Result(std::unexpected(failure(error, call)));
        }
        return Result(Reply<Answer>(static_cast<Answer*>(reply)));
    }

    // Waits until a request without an answer (one of the _checked functions) has been carried out.
    std::expected<void, Failure> check(xcb_void_cookie_t cookie, const char* call) const;

private:
    XcbConnection(OpenedConnection opened, xcb_screen_t* ofDisplay, Patience limits);

    bool initialize();
    bool isLocal() const;
    void* wait(unsigned int request, xcb_generic_error_t** error) const;
    Failure failure(xcb_generic_error_t* error, const char* call) const;

    std::unique_ptr<xcb_connection_t, Disconnect> ownConnection;
    xcb_connection_t* connection; // the same
    xcb_screen_t* screen;
    int screenNumber;
    Patience patience;
    xcb_ewmh_connection_t ewmh{};
    bool hasAtoms = false;
    xcb_atom_t windowState = XCB_ATOM_NONE;
    bool composite = false;
    bool sharedMemory = false;
    mutable bool stalled = false; // the last request was not answered in time
    mutable std::size_t unansweredRequests = 0;
};

} // namespace pelloran::x11
