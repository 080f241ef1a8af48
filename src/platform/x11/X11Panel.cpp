#include "platform/x11/X11Panel.h"

#include "platform/x11/Obscuring.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

namespace pelloran::x11 {

namespace {

constexpr int deepestFrame = 8; // windows that a window manager puts around one

// More than any desktop has. The rest would only make each look slower.
constexpr std::size_t mostStacked = 2000;

// A frame holds what it frames within so many steps, among so many parts.
constexpr int deepestManaged = 2;
constexpr std::size_t mostParts = 32;

QRect boundsOf(const xcb_get_geometry_reply_t& geometry) {
    return {geometry.x, geometry.y, geometry.width + 2 * geometry.border_width,
            geometry.height + 2 * geometry.border_width};
}

} // namespace

struct X11Panel::View {
    bool viewable = false;
    PanelView state = PanelView::free;
};

X11Panel::X11Panel(std::unique_ptr<XcbConnection> serverConnection,
                   std::function<WindowsAndScreens()> describeWindowsAndScreens, std::unique_ptr<PanelClock> time)
    : connection(std::move(serverConnection))
    , windowsAndScreens(std::move(describeWindowsAndScreens))
    , clock(std::move(time))
    , incoming(xcb_get_file_descriptor(*connection), QSocketNotifier::Read) {
    clock->alarm = [this] { look(); };
    QObject::connect(&incoming, &QSocketNotifier::activated, &incoming, [this] { readEvents(); });
    watchServer();
}

void X11Panel::watchServer() {
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(*connection, connection->root(), XCB_CW_EVENT_MASK, &events);

    constexpr std::string_view blurName = "_KDE_NET_WM_BLUR_BEHIND_REGION";
    const auto atom = xcb_intern_atom(*connection, 0, blurName.size(), blurName.data());
    xcb_prefetch_extension_data(*connection, &xcb_xfixes_id);
    if (const auto reply = connection->ask<xcb_intern_atom_reply>(atom, "InternAtom")) {
        blurAtom = (*reply)->atom;
    }
    // After this answer the one about the extension is there too, so that asking for it does not wait.
    composited = connection->compositorRuns();
    if (connection->broken()) {
        return;
    }
    const auto* fixes = xcb_get_extension_data(*connection, &xcb_xfixes_id);
    if (fixes && fixes->present) {
        const auto version = connection->ask<xcb_xfixes_query_version_reply>(
            xcb_xfixes_query_version(*connection, 1, 0), "FixesQueryVersion");
        if (version) {
            firstFixesEvent = fixes->first_event;
            xcb_xfixes_select_selection_input(*connection, connection->root(), connection->compositorAtom(),
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                                  XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                                  XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
            // It may have come or gone in between.
            composited = connection->compositorRuns();
        }
    }
    xcb_flush(*connection);
}

void X11Panel::setWindow(xcb_window_t window) {
    panel = window;
    storeBlurRegion();
    schedule.changed(clock->now());
    planLook();
}

void X11Panel::raise() {
    if (const View found = view(); found.viewable && found.state != PanelView::locked) {
        putOnTop();
        schedule.raised(clock->now());
    }
    readEvents();
}

void X11Panel::setBlurRegion(std::vector<QRect> region) {
    blurRegion = std::move(region);
    wantsBlur = true;
    storeBlurRegion();
}

void X11Panel::readEvents() {
    const bool wasComposited = composited;
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(*connection)}) {
        note(*event);
    }
    if (connection->broken()) {
        // The descriptor stays readable for ever.
        incoming.setEnabled(false);
        clock->clearAlarm();
        return;
    }
    planLook();
    if (composited != wasComposited && compositingChanged) {
        compositingChanged();
    }
}

void X11Panel::note(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7f; // without the mark of what a program sent
    if (firstFixesEvent >= 0 && type == firstFixesEvent + XCB_XFIXES_SELECTION_NOTIFY) {
        const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
        if (notify.selection == connection->compositorAtom()) {
            composited = notify.owner != XCB_WINDOW_NONE;
        }
        return;
    }
    switch (type) {
    case XCB_MAP_NOTIFY:
        if (reinterpret_cast<const xcb_map_notify_event_t&>(event).window == panel) {
            storeBlurRegion();
            if (const View found = view(); found.viewable && found.state != PanelView::locked) {
                putOnTop();
            }
        }
        [[fallthrough]];
    case XCB_CONFIGURE_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    // When a locker goes it may uncover what came on top of the panel meanwhile.
    case XCB_UNMAP_NOTIFY:
    case XCB_DESTROY_NOTIFY:
        schedule.changed(clock->now());
        break;
    default:
        break;
    }
}

void X11Panel::planLook() {
    const auto due = schedule.nextLook();
    if (!due || panel == XCB_WINDOW_NONE || connection->broken()) {
        clock->clearAlarm();
        return;
    }
    if (!clock->hasAlarm()) {
        clock->setAlarm(*due);
    }
}

void X11Panel::look() {
    const View found = view();
    if (schedule.looked(clock->now(), found.viewable && found.state == PanelView::obscured)) {
        putOnTop();
    }
    readEvents(); // while waiting for answers, events have been read off the socket
}

// Not viewable when the server does not answer.
X11Panel::View X11Panel::view() const {
    if (panel == XCB_WINDOW_NONE) {
        return {};
    }
    const auto tree =
        connection->ask<xcb_query_tree_reply>(xcb_query_tree(*connection, connection->root()), "QueryTree");
    if (!tree) {
        return {};
    }
    // From the bottom to the top.
    const std::span<const xcb_window_t> children(xcb_query_tree_children(tree->get()),
                                                 static_cast<std::size_t>(xcb_query_tree_children_length(tree->get())));
    const auto place = std::ranges::find(children, panel);
    const std::span<const xcb_window_t> windows(
        place, std::min(mostStacked, static_cast<std::size_t>(children.end() - place)));

    struct Request {
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
    };

    std::vector<Request> requests;
    requests.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        requests.push_back({xcb_get_window_attributes(*connection, window), xcb_get_geometry(*connection, window)});
    }
    std::vector<StackedWindow> found;
    bool panelIsThere = false;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const auto attributes =
            connection->ask<xcb_get_window_attributes_reply>(requests[i].attributes, "GetWindowAttributes");
        const auto geometry = connection->ask<xcb_get_geometry_reply>(requests[i].geometry, "GetGeometry");
        if (!attributes || !geometry) {
            continue; // gone since
        }
        panelIsThere = panelIsThere || i == 0;
        found.push_back({
            .id = windows[i],
            .bounds = boundsOf(**geometry),
            .viewable = (*attributes)->map_state == XCB_MAP_STATE_VIEWABLE,
            .inputOnly = (*attributes)->_class == XCB_WINDOW_CLASS_INPUT_ONLY,
            .bypassesManager = (*attributes)->override_redirect != 0,
        });
    }
    if (!panelIsThere || !found.front().viewable) {
        return {};
    }
    const std::span<StackedWindow> above = std::span(found).subspan(1);
    if (above.empty()) {
        return {.viewable = true};
    }
    const WindowsAndScreens around = windowsAndScreens();
    const std::vector<xcb_window_t> ours = topLevelsOf(around.ourWindows);
    for (StackedWindow& window : above) {
        window.ours = std::ranges::find(ours, window.id) != ours.end();
        // The frames of many window managers bypass them as well.
        window.bypassesManager = window.bypassesManager && window.viewable && !holdsManaged(window.id, deepestManaged);
    }
    return {.viewable = true, .state = panelView(found.front().bounds, above, around.screens)};
}

// Whether the window, or one inside of it down to that depth, carries the mark that window managers put on what they
// manage.
bool X11Panel::holdsManaged(xcb_window_t window, int depth) const {
    const auto mark = connection->ask<xcb_get_property_reply>(
        xcb_get_property(*connection, 0, window, connection->windowStateAtom(), XCB_GET_PROPERTY_TYPE_ANY, 0, 0),
        "GetProperty");
    if (mark && (*mark)->type != XCB_ATOM_NONE) {
        return true;
    }
    if (depth == 0) {
        return false;
    }
    const auto tree = connection->ask<xcb_query_tree_reply>(xcb_query_tree(*connection, window), "QueryTree");
    if (!tree) {
        return false;
    }
    const std::span<const xcb_window_t> children(xcb_query_tree_children(tree->get()),
                                                 static_cast<std::size_t>(xcb_query_tree_children_length(tree->get())));
    return std::ranges::any_of(children.first(std::min(children.size(), mostParts)),
                               [&](xcb_window_t child) { return holdsManaged(child, depth - 1); });
}

// The children of the root that `windows` are, or are framed by.
std::vector<xcb_window_t> X11Panel::topLevelsOf(const std::vector<WindowsAndScreens::Window>& windows) const {
    std::vector<xcb_window_t> topLevels;
    for (const WindowsAndScreens::Window& window : windows) {
        xcb_window_t topLevel = window.id;
        for (int i = 0; window.managed && i < deepestFrame; ++i) {
            const auto tree = connection->ask<xcb_query_tree_reply>(xcb_query_tree(*connection, topLevel), "QueryTree");
            if (!tree || (*tree)->parent == connection->root() || (*tree)->parent == XCB_WINDOW_NONE) {
                break;
            }
            topLevel = (*tree)->parent;
        }
        topLevels.push_back(topLevel);
    }
    return topLevels;
}

void X11Panel::putOnTop() {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(*connection, panel, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_flush(*connection);
    // What is put above it next is asked for over another connection, and the server keeps no order between two.
    if (cameToTop && connection->ask<xcb_get_input_focus_reply>(xcb_get_input_focus(*connection), "GetInputFocus")) {
        cameToTop();
    }
}

void X11Panel::storeBlurRegion() {
    if (!wantsBlur || panel == XCB_WINDOW_NONE || blurAtom == XCB_ATOM_NONE) {
        return;
    }
    std::vector<std::uint32_t> numbers;
    numbers.reserve(4 * blurRegion.size());
    for (const QRect& part : blurRegion) {
        for (const int number : {part.x(), part.y(), part.width(), part.height()}) {
            numbers.push_back(static_cast<std::uint32_t>(number));
        }
    }
    if (numbers.empty()) {
        // With the property there and empty, compositors blur behind all of the window.
        xcb_delete_property(*connection, panel, blurAtom);
    } else {
        xcb_change_property(*connection, XCB_PROP_MODE_REPLACE, panel, blurAtom, XCB_ATOM_CARDINAL, 32,
                            static_cast<std::uint32_t>(numbers.size()), numbers.data());
    }
    xcb_flush(*connection);
}

} // namespace pelloran::x11
