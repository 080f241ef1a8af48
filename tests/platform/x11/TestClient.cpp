#include "tests/platform/x11/TestClient.h"

#include <xcb/composite.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace pelloran::testing {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

template <typename T>
using Owned = std::unique_ptr<T, Free>;

xcb_visualid_t visualOfDepth(const xcb_screen_t* screen, int wanted) {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth == wanted && xcb_depth_visuals_length(depth.data) > 0) {
            return xcb_depth_visuals(depth.data)->visual_id;
        }
    }
    return screen->root_visual;
}

} // namespace

QImage pattern(QSize size, std::uint32_t seed) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const std::uint32_t mixed =
                (static_cast<std::uint32_t>(y) << 12 | static_cast<std::uint32_t>(x)) * (2654435761U + 2 * seed);
            image.setPixel(x, y, 0xff000000 | mixed >> 8);
        }
    }
    return image;
}

TestClient::TestClient(const QByteArray& display)
    : connection(xcb_connect(display.constData(), nullptr))
    , screen(xcb_setup_roots_iterator(xcb_get_setup(connection)).data) {
    if (xcb_get_extension_data(connection, &xcb_composite_id)->present) {
        const Owned<xcb_composite_query_version_reply_t> version(
            xcb_composite_query_version_reply(connection, xcb_composite_query_version(connection, 0, 2), nullptr));
    }
    if (xcb_get_extension_data(connection, &xcb_xfixes_id)->present) {
        const Owned<xcb_xfixes_query_version_reply_t> version(
            xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 5, 0), nullptr));
    }
}

TestClient::~TestClient() {
    xcb_disconnect(connection);
}

void TestClient::sync() {
    const Owned<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

xcb_window_t TestClient::create(const WindowOptions& options) {
    const xcb_window_t window = xcb_generate_id(connection);
    std::uint32_t depth = XCB_COPY_FROM_PARENT;
    xcb_visualid_t visual = XCB_COPY_FROM_PARENT;
    if (options.depth != 0) {
        depth = static_cast<std::uint32_t>(options.depth);
        visual = visualOfDepth(screen, options.depth);
    }
    const xcb_colormap_t colors = xcb_generate_id(connection);
    xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colors, screen->root,
                        options.depth != 0 ? visual : screen->root_visual);
    const std::uint32_t values[] = {0, options.overrideRedirect ? 1U : 0U, colors};
    const QRect& bounds = options.bounds;
    const xcb_window_t parentWindow = options.parent == XCB_WINDOW_NONE ? screen->root : options.parent;
    if (options.inputOnly) {
        xcb_create_window(connection, 0, window, parentWindow, static_cast<std::int16_t>(bounds.x()),
                          static_cast<std::int16_t>(bounds.y()), static_cast<std::uint16_t>(bounds.width()),
                          static_cast<std::uint16_t>(bounds.height()), 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
    } else {
        xcb_create_window(connection, static_cast<std::uint8_t>(depth), window, parentWindow,
                          static_cast<std::int16_t>(bounds.x()), static_cast<std::int16_t>(bounds.y()),
                          static_cast<std::uint16_t>(bounds.width()), static_cast<std::uint16_t>(bounds.height()),
                          static_cast<std::uint16_t>(options.border), XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                          XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP, values);
    }
    if (!options.background.isNull()) {
        setBackground(window, options.background);
    }
    if (options.mapped) {
        map(window);
    }
    sync();
    return window;
}

void TestClient::map(xcb_window_t window) {
    xcb_map_window(connection, window);
    sync();
}

void TestClient::unmap(xcb_window_t window) {
    xcb_unmap_window(connection, window);
    sync();
}

void TestClient::destroy(xcb_window_t window) {
    xcb_destroy_window(connection, window);
    sync();
}

void TestClient::raise(xcb_window_t window) {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    sync();
}

void TestClient::lower(xcb_window_t window) {
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    xcb_configure_window(connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    sync();
}

void TestClient::setBounds(xcb_window_t window, QRect bounds) {
    const std::int32_t values[] = {bounds.x(), bounds.y(), bounds.width(), bounds.height()};
    xcb_configure_window(connection, window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values);
    sync();
}

void TestClient::setBackground(xcb_window_t window, const QImage& image) {
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    xcb_create_pixmap(connection, geometry->depth, pixmap, window, static_cast<std::uint16_t>(image.width()),
                      static_cast<std::uint16_t>(image.height()));
    paint(pixmap, image);
    xcb_change_window_attributes(connection, window, XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_free_pixmap(connection, pixmap);
    xcb_clear_area(connection, 1, window, 0, 0, 0, 0);
    sync();
}

void TestClient::paint(xcb_drawable_t drawable, const QImage& image) {
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, drawable), nullptr));
    if (!geometry) {
        return;
    }
    const QImage packed = image.convertToFormat(geometry->depth == 16   ? QImage::Format_RGB16
                                                : geometry->depth == 32 ? QImage::Format_ARGB32_Premultiplied
                                                                        : QImage::Format_RGB32);
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_gc(connection, context, drawable, 0, nullptr);
    xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, context, static_cast<std::uint16_t>(packed.width()),
                  static_cast<std::uint16_t>(packed.height()), 0, 0, 0, geometry->depth,
                  static_cast<std::uint32_t>(packed.sizeInBytes()), packed.constBits());
    xcb_free_gc(connection, context);
    sync();
}

void TestClient::watchExposure(xcb_window_t window) {
    const std::uint32_t events = XCB_EVENT_MASK_EXPOSURE;
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &events);
    sync();
}

xcb_window_t TestClient::nextExposed() {
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
        if ((event->response_type & 0x7f) == XCB_EXPOSE) {
            return reinterpret_cast<const xcb_expose_event_t*>(event.get())->window;
        }
    }
    return XCB_WINDOW_NONE;
}

xcb_atom_t TestClient::atom(const char* name) {
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr));
    return reply->atom;
}

void TestClient::setText(xcb_window_t window, const char* property, const char* type, const QByteArray& bytes) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom(property), atom(type), 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.constData());
    sync();
}

void TestClient::setNumbers(xcb_window_t window, const char* property, const char* type,
                            const std::vector<std::uint32_t>& values) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom(property), atom(type), 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
    sync();
}

void TestClient::setAtoms(xcb_window_t window, const char* property, const std::vector<const char*>& names) {
    std::vector<std::uint32_t> values;
    values.reserve(names.size());
    for (const char* name : names) {
        values.push_back(atom(name));
    }
    setNumbers(window, property, "ATOM", values);
}

std::vector<std::uint32_t> TestClient::numbers(xcb_window_t window, const char* property) {
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1024),
        nullptr));
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

QByteArray TestClient::text(xcb_window_t window, const char* property) {
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1024),
        nullptr));
    if (!reply || reply->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())), xcb_get_property_value_length(reply.get())};
}

void TestClient::sendToRoot(xcb_window_t window, const char* message, std::uint32_t first, std::uint32_t second) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    event.data.data32[0] = first;
    event.data.data32[1] = second;
    xcb_send_event(connection, 0, screen->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    sync();
}

xcb_window_t TestClient::focus() {
    const Owned<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return reply ? reply->focus : xcb_window_t{XCB_WINDOW_NONE};
}

bool TestClient::isViewable(xcb_window_t window) {
    const Owned<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool TestClient::isAbove(xcb_window_t window, xcb_window_t other) {
    const auto topLevel = [this](xcb_window_t inner) {
        xcb_window_t outer = inner;
        for (xcb_window_t next = parent(outer); next != root() && next != XCB_WINDOW_NONE; next = parent(outer)) {
            outer = next;
        }
        return outer;
    };
    const std::vector<xcb_window_t> stack = children(root());
    return std::ranges::find(stack, topLevel(window)) > std::ranges::find(stack, topLevel(other));
}

xcb_window_t TestClient::parent(xcb_window_t window) {
    const Owned<xcb_query_tree_reply_t> reply(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    return reply ? reply->parent : xcb_window_t{XCB_WINDOW_NONE};
}

std::vector<xcb_window_t> TestClient::children(xcb_window_t window) {
    const Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    if (!tree) {
        return {};
    }
    const xcb_window_t* first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

QRect TestClient::bounds(xcb_window_t window) {
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    const Owned<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(
        connection, xcb_translate_coordinates(connection, window, root(), 0, 0), nullptr));
    if (!geometry || !origin) {
        return {};
    }
    return {origin->dst_x, origin->dst_y, geometry->width, geometry->height};
}

QRegion TestClient::shape(xcb_window_t window) {
    const xcb_xfixes_region_t region = xcb_generate_id(connection);
    xcb_xfixes_create_region_from_window(connection, region, window, XCB_SHAPE_SK_BOUNDING);
    const Owned<xcb_xfixes_fetch_region_reply_t> reply(
        xcb_xfixes_fetch_region_reply(connection, xcb_xfixes_fetch_region(connection, region), nullptr));
    xcb_xfixes_destroy_region(connection, region);
    QRegion shape;
    if (reply) {
        const xcb_rectangle_t* parts = xcb_xfixes_fetch_region_rectangles(reply.get());
        for (int i = 0; i < xcb_xfixes_fetch_region_rectangles_length(reply.get()); ++i) {
            shape += QRect(parts[i].x, parts[i].y, parts[i].width, parts[i].height);
        }
    }
    return shape;
}

QImage TestClient::screenshot(QRect area) {
    const QRect visible = area & bounds(root());
    const Owned<xcb_get_image_reply_t> reply(xcb_get_image_reply(
        connection,
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root(), static_cast<std::int16_t>(visible.x()),
                      static_cast<std::int16_t>(visible.y()), static_cast<std::uint16_t>(visible.width()),
                      static_cast<std::uint16_t>(visible.height()), ~0U),
        nullptr));
    if (!reply) {
        return {};
    }
    return QImage(xcb_get_image_data(reply.get()), visible.width(), visible.height(), QImage::Format_RGB32).copy();
}

void TestClient::watch(xcb_window_t window) {
    const std::uint32_t events = XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &events);
    sync();
    noteEvents();
    noted = 0;
    notedSizes.clear();
}

int TestClient::focusLosses() {
    noteEvents();
    return noted;
}

std::vector<QSize> TestClient::sizes() {
    noteEvents();
    return notedSizes;
}

void TestClient::noteEvents() {
    sync();
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
        const int type = event->response_type & 0x7f;
        if (type == XCB_FOCUS_OUT) {
            const auto* loss = reinterpret_cast<const xcb_focus_out_event_t*>(event.get());
            const bool lent = loss->mode == XCB_NOTIFY_MODE_GRAB || loss->mode == XCB_NOTIFY_MODE_WHILE_GRABBED;
            if (!lent && loss->detail != XCB_NOTIFY_DETAIL_POINTER) {
                ++noted;
            }
        } else if (type == XCB_CONFIGURE_NOTIFY) {
            const auto* change = reinterpret_cast<const xcb_configure_notify_event_t*>(event.get());
            const QSize size(change->width, change->height);
            if (notedSizes.empty() || notedSizes.back() != size) {
                notedSizes.push_back(size);
            }
        }
    }
}

bool TestClient::isRedirected(xcb_window_t window) {
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    const Owned<xcb_generic_error_t> error(
        xcb_request_check(connection, xcb_composite_name_window_pixmap_checked(connection, window, pixmap)));
    if (error) {
        return false;
    }
    xcb_free_pixmap(connection, pixmap);
    return true;
}

bool TestClient::hasOwner(const char* selection) {
    const Owned<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom(selection)), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

void TestClient::setOwner(const char* selection, xcb_window_t owner) {
    xcb_set_selection_owner(connection, owner, atom(selection), XCB_CURRENT_TIME);
    sync();
}

bool startWindowManager(VirtualDisplay& display, TestClient& client) {
    const auto managesNewWindows = [&client] {
        const xcb_window_t probe = client.create({});
        const bool managed = eventually([&] { return client.parent(probe) != client.root(); }, 100);
        client.destroy(probe);
        return managed;
    };
    return display.startProgram(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")}) &&
           eventually(managesNewWindows);
}

} // namespace pelloran::testing
