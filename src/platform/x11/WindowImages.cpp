#include "platform/x11/WindowImages.h"

#include "platform/x11/PixelLayout.h"

#include <QRect>

#include <sys/mman.h>
#include <unistd.h>
#include <xcb/composite.h>
#include <xcb/shm.h>

#include <chrono>
#include <thread>
#include <utility>

namespace pelloran::x11 {

namespace {

// What a program may need to paint what was covered, once its window is kept apart: two frames at 30 a second.
constexpr std::chrono::milliseconds repaintTime{66};

constexpr int deepestWindow = 32; // further from the root than any window is

WindowImageError translated(const Failure& failure, const XcbConnection& connection) {
    if (!connection.isThere()) {
        return WindowServerLost{failure.call};
    }
    if (failure.code == XCB_WINDOW || failure.code == XCB_DRAWABLE) {
        return WindowGone{};
    }
    return WindowServerFailed{failure.call, failure.code};
}

// The pixels of a window at one moment, kept alive by the server whatever becomes of the window.
class WindowPixmap {
public:
    WindowPixmap(const XcbConnection& serverConnection, xcb_window_t window)
        : connection(serverConnection)
        , pixmap(xcb_generate_id(serverConnection))
        , named(xcb_composite_name_window_pixmap_checked(serverConnection, window, pixmap)) {}

    ~WindowPixmap() {
        if (exists) {
            xcb_free_pixmap(connection, pixmap);
            xcb_flush(connection); // the next request may be hours away, and this is a whole window's memory
        }
    }

    WindowPixmap(const WindowPixmap&) = delete;
    WindowPixmap& operator=(const WindowPixmap&) = delete;

    xcb_pixmap_t id() const { return pixmap; }

    // Waits for the server. To be called once, in any case.
    std::expected<void, Failure> check() {
        auto done = connection.check(named, "NameWindowPixmap");
        exists = done.has_value();
        return done;
    }

private:
    const XcbConnection& connection;
    xcb_pixmap_t pixmap;
    xcb_void_cookie_t named;
    bool exists = false;
};

} // namespace

Redirection::Redirection(const XcbConnection& serverConnection, xcb_window_t window)
    : connection(&serverConnection)
    , redirected(window) {}

Redirection::~Redirection() {
    if (redirected != XCB_WINDOW_NONE) {
        // The window may be gone, and its redirection with it.
        const auto done = connection->check(
            xcb_composite_unredirect_window_checked(*connection, redirected, XCB_COMPOSITE_REDIRECT_AUTOMATIC),
            "UnredirectWindow");
        static_cast<void>(done);
    }
}

Redirection::Redirection(Redirection&& other) noexcept
    : connection(other.connection)
    , redirected(std::exchange(other.redirected, XCB_WINDOW_NONE)) {}

Redirection& Redirection::operator=(Redirection&& other) noexcept {
    std::swap(connection, other.connection);
    std::swap(redirected, other.redirected);
    return *this;
}

std::expected<Redirection, Failure> Redirection::begin(const XcbConnection& connection, xcb_window_t window) {
    const auto cookie = xcb_composite_redirect_window_checked(connection, window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    if (const auto done = connection.check(cookie, "RedirectWindow"); !done) {
        return std::unexpected(done.error());
    }
    return Redirection(connection, window);
}

std::unique_ptr<SharedMemory> SharedMemory::create(const XcbConnection& connection, std::size_t size) {
    const int file = memfd_create("pelloran-window", MFD_CLOEXEC);
    if (file < 0) {
        return nullptr;
    }
    void* mapped = MAP_FAILED;
    if (ftruncate(file, static_cast<off_t>(size)) == 0) {
        mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    }
    if (mapped == MAP_FAILED) {
        close(file);
        return nullptr;
    }
    std::unique_ptr<SharedMemory> memory(new SharedMemory(connection, mapped, size));
    // Sending the descriptor closes it here.
    const auto cookie = xcb_shm_attach_fd_checked(connection, memory->id, file, 0);
    if (!connection.check(cookie, "ShmAttachFd")) {
        memory->id = XCB_NONE;
        return nullptr;
    }
    return memory;
}

SharedMemory::SharedMemory(const XcbConnection& serverConnection, void* mapped, std::size_t size)
    : connection(serverConnection)
    , memory(mapped)
    , length(size)
    , id(xcb_generate_id(serverConnection)) {}

SharedMemory::~SharedMemory() {
    if (id != XCB_NONE) {
        xcb_shm_detach(connection, id);
        xcb_flush(connection);
    }
    munmap(memory, length);
}

// What to take out of a pixmap.
struct WindowImages::Region {
    xcb_window_t window;
    xcb_pixmap_t pixmap;
    QRect rectangle;
    PixelLayout layout;
};

WindowImages::WindowImages(const XcbConnection& serverConnection)
    : connection(serverConnection) {}

std::expected<QImage, WindowImageError> WindowImages::take(xcb_window_t window) {
    auto image = takeOrFail(window);
    if (!image) {
        return std::unexpected(translated(image.error(), connection));
    }
    return *std::move(image);
}

std::expected<QImage, Failure> WindowImages::takeOrFail(xcb_window_t window) {
    if (!connection.canNamePixmaps()) {
        return std::unexpected(Failure{"the X server lacks the Composite extension", 0});
    }
    const auto topLevel = topLevelOf(window);
    if (!topLevel) {
        redirection.reset();
        return std::unexpected(topLevel.error());
    }
    if (const auto redirected = redirect(*topLevel); !redirected) {
        return std::unexpected(redirected.error());
    }

    // All in one journey, so that little can change in between; what does is found out below.
    WindowPixmap pixmap(connection, *topLevel);
    const auto attributesCookie = xcb_get_window_attributes(connection, *topLevel);
    const auto frameCookie = xcb_get_geometry(connection, *topLevel);
    const auto pixmapCookie = xcb_get_geometry(connection, pixmap.id());
    const auto placeCookie = xcb_translate_coordinates(connection, window, *topLevel, 0, 0);
    const auto windowCookie = xcb_get_geometry(connection, window);
    const auto named = pixmap.check();
    const auto attributes = connection.ask<xcb_get_window_attributes_reply>(attributesCookie, "GetWindowAttributes");
    const auto frame = connection.ask<xcb_get_geometry_reply>(frameCookie, "GetGeometry");
    const auto whole = connection.ask<xcb_get_geometry_reply>(pixmapCookie, "GetGeometry");
    const auto place = connection.ask<xcb_translate_coordinates_reply>(placeCookie, "TranslateCoordinates");
    const auto size = connection.ask<xcb_get_geometry_reply>(windowCookie, "GetGeometry");
    if (!size) { // first: when the window is gone, all else fails for that reason
        return std::unexpected(size.error());
    }
    if (!named) {
        // Unmapped; or the number has passed to another window, which is not redirected yet.
        redirection.reset();
        return std::unexpected(named.error());
    }
    for (const Failure* failure : {attributes ? nullptr : &attributes.error(), frame ? nullptr : &frame.error(),
                                   whole ? nullptr : &whole.error(), place ? nullptr : &place.error()}) {
        if (failure) {
            return std::unexpected(*failure);
        }
    }

    const xcb_visualtype_t* visual = connection.visual((*attributes)->visual);
    const xcb_format_t* format = connection.pixelFormat((*whole)->depth);
    if (!visual || !format) {
        return std::unexpected(Failure{"a visual that its screen does not list", XCB_MATCH});
    }
    const int border = (*frame)->border_width; // the pixmap begins with it, coordinates do not
    const Region region{
        .window = window,
        .pixmap = pixmap.id(),
        .rectangle = QRect((*place)->dst_x + border, (*place)->dst_y + border, (*size)->width, (*size)->height),
        .layout = {format->bits_per_pixel, format->scanline_pad, connection.mostSignificantByteFirst(),
                   visual->red_mask, visual->green_mask, visual->blue_mask},
    };
    if (!QRect(0, 0, (*whole)->width, (*whole)->height).contains(region.rectangle)) {
        return std::unexpected(Failure{"the window has outgrown its frame's pixels", XCB_MATCH});
    }
    return pixels(region);
}

std::expected<xcb_window_t, Failure> WindowImages::topLevelOf(xcb_window_t window) const {
    for (int depth = 0; depth < deepestWindow; ++depth) {
        const auto tree = connection.ask<xcb_query_tree_reply>(xcb_query_tree(connection, window), "QueryTree");
        if (!tree) {
            return std::unexpected(tree.error());
        }
        if ((*tree)->parent == (*tree)->root) {
            return window;
        }
        if ((*tree)->parent == XCB_WINDOW_NONE) {
            return std::unexpected(Failure{"the desktop itself is no window to capture", XCB_MATCH});
        }
        window = (*tree)->parent;
    }
    return std::unexpected(Failure{"QueryTree", XCB_MATCH});
}

// The whole top-level window: where somebody composes the screen its pixels are kept apart already, and the game is not
// made to draw through yet another copy.
std::expected<void, Failure> WindowImages::redirect(xcb_window_t topLevel) {
    if (redirection && redirection->window() == topLevel) {
        return {};
    }
    redirection.reset();
    auto begun = Redirection::begin(connection, topLevel);
    if (!begun) {
        return std::unexpected(begun.error());
    }
    redirection.emplace(*std::move(begun));
    if (!connection.compositorRuns()) {
        // Until now nobody kept what was covered: the program has just been asked to paint it.
        std::this_thread::sleep_for(repaintTime);
    }
    return {};
}

std::expected<QImage, Failure> WindowImages::pixels(const Region& region) {
    const QRect& area = region.rectangle;
    const auto x = static_cast<std::int16_t>(area.x());
    const auto y = static_cast<std::int16_t>(area.y());
    const auto width = static_cast<std::uint16_t>(area.width());
    const auto height = static_cast<std::uint16_t>(area.height());
    constexpr std::uint32_t allPlanes = ~std::uint32_t{0};
    const std::size_t length = region.layout.bytesPerLine(area.width()) * static_cast<std::size_t>(area.height());

    std::span<const std::byte> bytes;
    Reply<xcb_get_image_reply_t> message; // holds the bytes when they are not in shared memory
    xcb_get_geometry_cookie_t after{};
    if (prepareSharedMemory(length)) {
        const auto cookie = xcb_shm_get_image(connection, region.pixmap, x, y, width, height, allPlanes,
                                              XCB_IMAGE_FORMAT_Z_PIXMAP, sharedMemory->segment(), 0);
        after = xcb_get_geometry(connection, region.window);
        if (const auto done = connection.ask<xcb_shm_get_image_reply>(cookie, "ShmGetImage"); !done) {
            xcb_discard_reply(connection, after.sequence);
            return std::unexpected(done.error());
        }
        bytes = sharedMemory->bytes();
    } else {
        const auto cookie =
            xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, region.pixmap, x, y, width, height, allPlanes);
        after = xcb_get_geometry(connection, region.window);
        auto image = connection.ask<xcb_get_image_reply>(cookie, "GetImage");
        if (!image) {
            xcb_discard_reply(connection, after.sequence);
            return std::unexpected(image.error());
        }
        message = *std::move(image);
        bytes = std::as_bytes(std::span(xcb_get_image_data(message.get()),
                                        static_cast<std::size_t>(xcb_get_image_data_length(message.get()))));
    }
    const auto size = connection.ask<xcb_get_geometry_reply>(after, "GetGeometry");
    if (!size) {
        return std::unexpected(size.error());
    }
    if (QSize((*size)->width, (*size)->height) != area.size()) {
        return std::unexpected(Failure{"the window changed its size meanwhile", XCB_MATCH});
    }
    QImage image = toImage(bytes, area.size(), region.layout);
    if (image.isNull()) {
        return std::unexpected(Failure{"pixels that are not colours under masks", XCB_MATCH});
    }
    return image;
}

// Keeps what there is while it is neither too small nor much too large.
bool WindowImages::prepareSharedMemory(std::size_t size) {
    if (!connection.canShareMemory()) {
        return false;
    }
    const std::size_t present = sharedMemory ? sharedMemory->bytes().size() : 0;
    if (present < size || present / 4 > size) {
        sharedMemory.reset();
        sharedMemory = SharedMemory::create(connection, size);
    }
    return sharedMemory != nullptr;
}

} // namespace pelloran::x11
