#include "platform/x11/WindowList.h"

#include "platform/x11/WindowOwner.h"
#include "platform/x11/WindowProperties.h"

#include <algorithm>
#include <cstddef>
#include <ranges>
#include <span>
#include <utility>

namespace pelloran::x11 {

namespace {

// Properties are read up to these lengths (in units of 4 bytes): any program may write anything of any size.
constexpr std::uint32_t longestText = 1024;
constexpr std::uint32_t longestList = 16 * 1024;

// Frames, and frames within frames: how far below the root a client window is looked for.
constexpr int deepestClient = 4;
constexpr std::size_t mostWindows = 4096;

using PropertyReply = Reply<xcb_get_property_reply_t>;

xcb_get_property_cookie_t requestProperty(const XcbConnection& connection, xcb_window_t window, xcb_atom_t property,
                                          std::uint32_t longest = longestText) {
    return xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
}

PropertyReply property(const XcbConnection& connection, xcb_get_property_cookie_t cookie) {
    auto reply = connection.ask<xcb_get_property_reply>(cookie, "GetProperty");
    return reply && (*reply)->type != XCB_ATOM_NONE ? *std::move(reply) : nullptr;
}

// Lives as long as the reply.
std::optional<Property> viewOf(const PropertyReply& reply) {
    if (!reply) {
        return std::nullopt;
    }
    // The length that the answer itself has, should the two not agree.
    const auto there = std::int64_t{4} * reply->length;
    const auto length = std::min<std::int64_t>(xcb_get_property_value_length(reply.get()), there);
    return Property{reply->format, {static_cast<const char*>(xcb_get_property_value(reply.get())), length}};
}

std::vector<std::uint32_t> rootNumbers(const XcbConnection& connection, xcb_atom_t atom) {
    const PropertyReply reply = property(connection, requestProperty(connection, connection.root(), atom, longestList));
    return numbersOf(viewOf(reply));
}

// Everything asked of one window, in one journey with that of all others.
struct Requests {
    Requests(const XcbConnection& connection, xcb_window_t client)
        : window(client)
        , attributes(xcb_get_window_attributes(connection, client))
        , geometry(xcb_get_geometry(connection, client))
        , position(xcb_translate_coordinates(connection, client, connection.root(), 0, 0))
        , name(requestProperty(connection, client, connection.atoms()._NET_WM_NAME))
        , oldName(requestProperty(connection, client, XCB_ATOM_WM_NAME))
        , windowClass(requestProperty(connection, client, XCB_ATOM_WM_CLASS))
        , processId(requestProperty(connection, client, connection.atoms()._NET_WM_PID))
        , types(requestProperty(connection, client, connection.atoms()._NET_WM_WINDOW_TYPE))
        , states(requestProperty(connection, client, connection.atoms()._NET_WM_STATE))
        , desktop(requestProperty(connection, client, connection.atoms()._NET_WM_DESKTOP)) {}

    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t position;
    xcb_get_property_cookie_t name;
    xcb_get_property_cookie_t oldName;
    xcb_get_property_cookie_t windowClass;
    xcb_get_property_cookie_t processId;
    xcb_get_property_cookie_t types;
    xcb_get_property_cookie_t states;
    xcb_get_property_cookie_t desktop;
};

// The answers to them, read in full even for a window that will not be listed: an answer nobody takes stays in memory.
struct Answers {
    Answers(const XcbConnection& connection, const Requests& requests)
        : window(requests.window)
        , attributes(connection.ask<xcb_get_window_attributes_reply>(requests.attributes, "GetWindowAttributes"))
        , geometry(connection.ask<xcb_get_geometry_reply>(requests.geometry, "GetGeometry"))
        , position(connection.ask<xcb_translate_coordinates_reply>(requests.position, "TranslateCoordinates"))
        , name(property(connection, requests.name))
        , oldName(property(connection, requests.oldName))
        , windowClass(property(connection, requests.windowClass))
        , processId(property(connection, requests.processId))
        , types(property(connection, requests.types))
        , states(property(connection, requests.states))
        , desktop(property(connection, requests.desktop)) {}

    // False also for a window that was closed since it was listed.
    bool isMapped() const {
        return attributes && geometry && position && (*attributes)->map_state == XCB_MAP_STATE_VIEWABLE &&
               (*attributes)->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
    }

    WindowProperties properties() const {
        return {viewOf(name),  viewOf(oldName), viewOf(windowClass), viewOf(processId),
                viewOf(types), viewOf(states),  viewOf(desktop)};
    }

    xcb_window_t window;
    std::expected<Reply<xcb_get_window_attributes_reply_t>, Failure> attributes;
    std::expected<Reply<xcb_get_geometry_reply_t>, Failure> geometry;
    std::expected<Reply<xcb_translate_coordinates_reply_t>, Failure> position;
    PropertyReply name;
    PropertyReply oldName;
    PropertyReply windowClass;
    PropertyReply processId;
    PropertyReply types;
    PropertyReply states;
    PropertyReply desktop;
};

WindowDescription descriptionOf(const Answers& window, const xcb_ewmh_connection_t& atoms) {
    const WindowProperties properties = window.properties();
    return {
        .number = window.window,
        .ownerName = ownerOf(properties, [](std::uint32_t processId) { return programName(processId); }),
        .name = titleOf(properties),
        .layer = layerOf(properties, (*window.attributes)->override_redirect != 0, atoms),
        .bounds =
            WindowBounds{
                .x = (*window.position)->dst_x,
                .y = (*window.position)->dst_y,
                .width = (*window.geometry)->width,
                .height = (*window.geometry)->height,
            },
    };
}

// Front to back, so the reverse of the server's own order.
std::vector<xcb_window_t> childrenOf(const XcbConnection& connection, xcb_query_tree_cookie_t cookie) {
    const auto tree = connection.ask<xcb_query_tree_reply>(cookie, "QueryTree");
    if (!tree) {
        return {};
    }
    const std::span children(xcb_query_tree_children(tree->get()),
                             static_cast<std::size_t>(xcb_query_tree_children_length(tree->get())));
    return {children.rbegin(), children.rend()};
}

// A window manager that died leaves its lists behind; its check window goes with it. One that never had such a window
// is taken at its word.
bool leftByDeadWindowManager(const XcbConnection& connection) {
    const xcb_atom_t check = connection.atoms()._NET_SUPPORTING_WM_CHECK;
    const std::vector<std::uint32_t> windows = rootNumbers(connection, check);
    if (windows.empty()) {
        return false;
    }
    const PropertyReply own = property(connection, requestProperty(connection, windows.front(), check));
    return firstNumberOf(viewOf(own)) != windows.front();
}

std::vector<xcb_window_t> windowManagersList(const XcbConnection& connection) {
    if (leftByDeadWindowManager(connection)) {
        return {};
    }
    std::vector<xcb_window_t> windows = rootNumbers(connection, connection.atoms()._NET_CLIENT_LIST_STACKING);
    if (windows.empty()) {
        windows = rootNumbers(connection, connection.atoms()._NET_CLIENT_LIST);
    }
    std::ranges::reverse(windows);
    return windows;
}

// The windows that a window manager has marked as its clients, found under `topLevel`, the root's children front to
// back. For window managers that keep no list.
std::vector<xcb_window_t> markedClients(const XcbConnection& connection, const std::vector<xcb_window_t>& topLevel) {
    struct Node {
        xcb_window_t window;
        std::size_t place; // of its top-level window
    };

    std::vector<Node> level;
    level.reserve(topLevel.size());
    for (const xcb_window_t window : topLevel) {
        level.push_back({window, level.size()});
    }
    std::vector<std::vector<xcb_window_t>> clients(topLevel.size()); // by place
    std::size_t seen = 0;
    for (int depth = 0; depth < deepestClient && !level.empty() && seen + level.size() <= mostWindows; ++depth) {
        seen += level.size();
        std::vector<std::pair<xcb_get_property_cookie_t, xcb_query_tree_cookie_t>> requests;
        requests.reserve(level.size());
        for (const Node& node : level) {
            requests.emplace_back(requestProperty(connection, node.window, connection.windowStateAtom()),
                                  xcb_query_tree(connection, node.window));
        }
        std::vector<Node> below;
        for (std::size_t i = 0; i < level.size(); ++i) {
            const PropertyReply mark = property(connection, requests[i].first);
            const std::vector<xcb_window_t> children = childrenOf(connection, requests[i].second);
            if (mark) {
                clients[level[i].place].push_back(level[i].window);
                continue;
            }
            for (const xcb_window_t child : children) {
                below.push_back({child, level[i].place});
            }
        }
        level = std::move(below);
    }
    std::vector<xcb_window_t> windows;
    for (const std::vector<xcb_window_t>& ofOne : clients) {
        windows.insert(windows.end(), ofOne.begin(), ofOne.end());
    }
    return windows;
}

// Front to back.
std::vector<xcb_window_t> applicationWindows(const XcbConnection& connection) {
    if (auto windows = windowManagersList(connection); !windows.empty()) {
        return windows;
    }
    auto topLevel = childrenOf(connection, xcb_query_tree(connection, connection.root()));
    auto marked = markedClients(connection, topLevel);
    return marked.empty() ? std::move(topLevel) : std::move(marked);
}

} // namespace

std::optional<std::vector<WindowDescription>> describeWindows(const XcbConnection& connection, WindowListing listing) {
    const std::size_t unansweredBefore = connection.unanswered();
    const xcb_ewmh_connection_t& atoms = connection.atoms();
    const auto desktops = rootNumbers(connection, atoms._NET_CURRENT_DESKTOP);
    // With no word of a current desktop there is only one.
    const std::uint32_t currentDesktop = desktops.empty() ? onAllDesktops : desktops.front();

    std::vector<Requests> requests;
    for (const xcb_window_t window : applicationWindows(connection) | std::views::take(mostWindows)) {
        requests.emplace_back(connection, window);
    }
    std::vector<WindowDescription> descriptions;
    for (const Requests& request : requests) {
        const Answers window(connection, request);
        if (!window.isMapped()) {
            continue;
        }
        WindowDescription description = descriptionOf(window, atoms);
        const bool wanted = listing == WindowListing::all || (description.layer != desktopLayer &&
                                                              isOnScreen(window.properties(), atoms, currentDesktop));
        if (wanted) {
            descriptions.push_back(std::move(description));
        }
    }
    // A server that hangs has not said that there is no window, and one that went on meanwhile has not told of all.
    if (connection.broken() || connection.unanswered() != unansweredBefore) {
        return std::nullopt;
    }
    return descriptions;
}

} // namespace pelloran::x11
