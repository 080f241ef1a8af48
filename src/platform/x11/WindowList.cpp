#include "platform/x11/WindowList.h"

#include "platform/x11/WindowOwner.h"

#include <QByteArrayList>
#include <QByteArrayView>
#include <QStringDecoder>

#include <algorithm>
#include <ranges>
#include <utility>

namespace pelloran::x11 {

namespace {

// Properties are read up to these lengths (in units of 4 bytes): any program may write anything of any size.
constexpr std::uint32_t longestText = 1024;
constexpr std::uint32_t longestList = 16 * 1024;

constexpr std::uint32_t onAllDesktops = 0xffffffff;

// Frames, and frames within frames: how far below the root a client window is looked for.
constexpr int deepestClient = 4;
constexpr std::size_t mostWindows = 4096;

// Layers beside the normal one; only "not 0" counts, the numbers tell them apart in diagnostics.
enum Layer { desktopLayer = -1, normalLayer = 0, floatingLayer = 3, dockLayer = 20, popUpLayer = 101 };

using PropertyReply = Reply<xcb_get_property_reply_t>;

xcb_get_property_cookie_t requestProperty(const XcbConnection& connection, xcb_window_t window, xcb_atom_t property,
                                          std::uint32_t longest = longestText) {
    return xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
}

PropertyReply property(const XcbConnection& connection, xcb_get_property_cookie_t cookie) {
    auto reply = connection.ask<xcb_get_property_reply>(cookie, "GetProperty");
    return reply && (*reply)->type != XCB_ATOM_NONE ? *std::move(reply) : nullptr;
}

QByteArrayView bytesOf(const PropertyReply& reply) {
    if (!reply || reply->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())), xcb_get_property_value_length(reply.get())};
}

std::vector<std::uint32_t> numbersOf(const PropertyReply& reply) {
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {first, first + xcb_get_property_value_length(reply.get()) / 4};
}

std::optional<std::uint32_t> firstNumberOf(const PropertyReply& reply) {
    const std::vector<std::uint32_t> numbers = numbersOf(reply);
    return numbers.empty() ? std::nullopt : std::optional(numbers.front());
}

std::vector<std::uint32_t> rootNumbers(const XcbConnection& connection, xcb_atom_t atom) {
    return numbersOf(property(connection, requestProperty(connection, connection.root(), atom, longestList)));
}

// Titles of old programs may be in any encoding, whatever type they claim: UTF-8 where it fits, else Latin-1.
QString oldText(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : text;
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

std::optional<QString> titleOf(const Answers& window) {
    if (window.name) {
        return QString::fromUtf8(bytesOf(window.name));
    }
    return window.oldName ? std::optional(oldText(bytesOf(window.oldName))) : std::nullopt;
}

std::optional<QString> ownerOf(const Answers& window) {
    // Instance and class, each ended by a NUL.
    const QByteArrayList names = bytesOf(window.windowClass).toByteArray().split('\0');
    if (names.size() < 2) {
        return std::nullopt;
    }
    QString windowClass = oldText(names[1]);
    if (isLauncher(windowClass)) {
        if (const auto processId = firstNumberOf(window.processId)) {
            return programName(*processId).value_or(windowClass);
        }
    }
    return windowClass;
}

int layerOf(const Answers& window, const xcb_ewmh_connection_t& atoms) {
    const std::pair<xcb_atom_t, Layer> layers[] = {
        {atoms._NET_WM_WINDOW_TYPE_NORMAL, normalLayer},       {atoms._NET_WM_WINDOW_TYPE_DIALOG, normalLayer},
        {atoms._NET_WM_WINDOW_TYPE_DESKTOP, desktopLayer},     {atoms._NET_WM_WINDOW_TYPE_DOCK, dockLayer},
        {atoms._NET_WM_WINDOW_TYPE_TOOLBAR, floatingLayer},    {atoms._NET_WM_WINDOW_TYPE_UTILITY, floatingLayer},
        {atoms._NET_WM_WINDOW_TYPE_SPLASH, floatingLayer},     {atoms._NET_WM_WINDOW_TYPE_MENU, popUpLayer},
        {atoms._NET_WM_WINDOW_TYPE_DROPDOWN_MENU, popUpLayer}, {atoms._NET_WM_WINDOW_TYPE_POPUP_MENU, popUpLayer},
        {atoms._NET_WM_WINDOW_TYPE_TOOLTIP, popUpLayer},       {atoms._NET_WM_WINDOW_TYPE_NOTIFICATION, popUpLayer},
        {atoms._NET_WM_WINDOW_TYPE_COMBO, popUpLayer},         {atoms._NET_WM_WINDOW_TYPE_DND, popUpLayer},
    };
    // A window names its types in the order of its preference; those we do not know are passed over.
    for (const std::uint32_t type : numbersOf(window.types)) {
        const auto* const known = std::ranges::find(layers, type, &std::pair<xcb_atom_t, Layer>::first);
        if (known != std::end(layers)) {
            return known->second;
        }
    }
    return (*window.attributes)->override_redirect ? popUpLayer : normalLayer;
}

bool isOnScreen(const Answers& window, const xcb_ewmh_connection_t& atoms, std::uint32_t currentDesktop) {
    const std::vector<std::uint32_t> states = numbersOf(window.states);
    if (std::ranges::find(states, atoms._NET_WM_STATE_HIDDEN) != states.end()) {
        return false;
    }
    const std::uint32_t own = firstNumberOf(window.desktop).value_or(onAllDesktops);
    return own == onAllDesktops || currentDesktop == onAllDesktops || own == currentDesktop;
}

WindowDescription descriptionOf(const Answers& window, const xcb_ewmh_connection_t& atoms) {
    return {
        .number = window.window,
        .ownerName = ownerOf(window),
        .name = titleOf(window),
        .layer = layerOf(window, atoms),
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
    return !windows.empty() &&
           firstNumberOf(property(connection, requestProperty(connection, windows.front(), check))) != windows.front();
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
        const bool wanted = listing == WindowListing::all ||
                            (description.layer != desktopLayer && isOnScreen(window, atoms, currentDesktop));
        if (wanted) {
            descriptions.push_back(std::move(description));
        }
    }
    if (connection.broken()) {
        return std::nullopt;
    }
    return descriptions;
}

} // namespace pelloran::x11
