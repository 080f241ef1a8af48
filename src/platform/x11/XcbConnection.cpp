#include "platform/x11/XcbConnection.h"

#include <poll.h>
#include <sys/socket.h>
#include <xcb/composite.h>
#include <xcb/shm.h>
#include <xcb/xcbext.h>

#include <chrono>
#include <cstdlib>
#include <string_view>
#include <tuple>
#include <utility>

namespace pelloran::x11 {

namespace {

using Clock = std::chrono::steady_clock;

bool isPresent(xcb_connection_t* connection, xcb_extension_t* extension) {
    const xcb_query_extension_reply_t* reply = xcb_get_extension_data(connection, extension);
    return reply && reply->present;
}

} // namespace

std::expected<std::unique_ptr<XcbConnection>, NoConnection> XcbConnection::open(ServerConnector& connector) {
    auto opened = connector.connect();
    if (!opened) {
        return std::unexpected(opened.error());
    }
    xcb_screen_t* screen = nullptr;
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(opened->connection.get()));
    for (int i = 0; screens.rem > 0; ++i, xcb_screen_next(&screens)) {
        if (i == opened->screenNumber) {
            screen = screens.data;
        }
    }
    if (!screen) {
        return std::unexpected(NoConnection::unreachable);
    }
    std::unique_ptr<XcbConnection> connection(new XcbConnection(*std::move(opened), screen, connector.limits()));
    if (!connection->initialize()) {
        const bool isSilent = connection->stalled && !connection->broken();
        return std::unexpected(isSilent ? NoConnection::silent : NoConnection::unreachable);
    }
    return connection;
}

std::unique_ptr<XcbConnection> XcbConnection::open(Patience patience) {
    ServerConnector connector(patience);
    auto connection = open(connector);
    return connection ? *std::move(connection) : nullptr;
}

XcbConnection::XcbConnection(OpenedConnection opened, xcb_screen_t* ofDisplay, Patience limits)
    : ownConnection(std::move(opened.connection))
    , connection(ownConnection.get())
    , screen(ofDisplay)
    , screenNumber(opened.screenNumber)
    , patience(limits) {}

XcbConnection::~XcbConnection() {
    if (hasAtoms) {
        xcb_ewmh_connection_wipe(&ewmh);
    }
}

bool XcbConnection::initialize() {
    xcb_prefetch_extension_data(connection, &xcb_composite_id);
    xcb_prefetch_extension_data(connection, &xcb_shm_id);
    constexpr std::string_view name = "WM_STATE";
    const auto atom = xcb_intern_atom(connection, 0, name.size(), name.data());
    xcb_intern_atom_cookie_t* const ewmhAtoms = xcb_ewmh_init_atoms(connection, &ewmh);
    // Answers come in order: after this one all the others are there, and nothing below waits without a limit.
    const auto last = ask<xcb_get_input_focus_reply>(xcb_get_input_focus(connection), "GetInputFocus");
    if (!last) {
        std::free(ewmhAtoms);
        xcb_ewmh_connection_wipe(&ewmh);
        return false;
    }
    // On failure the library has freed what it took.
    hasAtoms = xcb_ewmh_init_atoms_replies(&ewmh, ewmhAtoms, nullptr) != 0;
    const auto atomReply = ask<xcb_intern_atom_reply>(atom, "InternAtom");
    if (!hasAtoms || !atomReply) {
        return false;
    }
    windowState = (*atomReply)->atom;

    // A request of an extension that is not there would break the connection.
    if (isPresent(connection, &xcb_composite_id)) {
        const auto version = ask<xcb_composite_query_version_reply>(xcb_composite_query_version(connection, 0, 2),
                                                                    "CompositeQueryVersion");
        composite = version && std::tuple((*version)->major_version, (*version)->minor_version) >= std::tuple(0, 2);
    }
    if (isLocal() && isPresent(connection, &xcb_shm_id)) {
        const auto version = ask<xcb_shm_query_version_reply>(xcb_shm_query_version(connection), "ShmQueryVersion");
        sharedMemory = version && std::tuple((*version)->major_version, (*version)->minor_version) >= std::tuple(1, 2);
    }
    return !broken();
}

// A descriptor sent over anything but a local socket would break the connection.
bool XcbConnection::isLocal() const {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    return getsockname(xcb_get_file_descriptor(connection), reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
           address.ss_family == AF_UNIX;
}

const xcb_visualtype_t* XcbConnection::visual(xcb_visualid_t id) const {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0; xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0; xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id == id) {
                return visual.data;
            }
        }
    }
    return nullptr;
}

const xcb_format_t* XcbConnection::pixelFormat(int depth) const {
    auto format = xcb_setup_pixmap_formats_iterator(xcb_get_setup(connection));
    for (; format.rem > 0; xcb_format_next(&format)) {
        if (format.data->depth == depth) {
            return format.data;
        }
    }
    return nullptr;
}

bool XcbConnection::mostSignificantByteFirst() const {
    return xcb_get_setup(connection)->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
}

bool XcbConnection::compositorRuns() const {
    const auto owner =
        ask<xcb_get_selection_owner_reply>(xcb_get_selection_owner(connection, compositorAtom()), "GetSelectionOwner");
    return owner && (*owner)->owner != XCB_WINDOW_NONE;
}

std::expected<void, Failure> XcbConnection::check(xcb_void_cookie_t cookie, const char* call) const {
    // Asking for an answer to something else limits the wait: when it is there, so is the outcome of the request.
    if (const auto later = ask<xcb_get_input_focus_reply>(xcb_get_input_focus(connection), call); !later) {
        xcb_discard_reply(connection, cookie.sequence);
        return std::unexpected(later.error());
    }
    if (xcb_generic_error_t* error = xcb_request_check(connection, cookie)) {
        return std::unexpected(failure(error, call));
    }
    return {};
}

// The answer, or null with `error` set where there is one.
void* XcbConnection::wait(unsigned int request, xcb_generic_error_t** error) const {
    const auto deadline = Clock::now() + (stalled ? patience.whileStalled : patience.usual);
    xcb_flush(connection);
    void* reply = nullptr;
    while (xcb_poll_for_reply(connection, request, &reply, error) == 0) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            stalled = true;
            ++unansweredRequests;
            xcb_discard_reply(connection, request);
            return nullptr;
        }
        pollfd readable{xcb_get_file_descriptor(connection), POLLIN, 0};
        poll(&readable, 1, static_cast<int>(left.count()));
    }
    stalled = false;
    return reply;
}

// Takes `error`, which is null when there was no answer.
Failure XcbConnection::failure(xcb_generic_error_t* error, const char* call) const {
    const Reply<xcb_generic_error_t> owned(error);
    return {call, owned ? owned->error_code : -xcb_connection_has_error(connection)};
}

} // namespace pelloran::x11
