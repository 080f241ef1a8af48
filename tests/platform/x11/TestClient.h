#pragma once

#include "tests/support/VirtualDisplay.h"

#include <QByteArray>
#include <QImage>
#include <QRect>
#include <QRegion>
#include <QString>

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace pelloran::testing {

// A picture in which each pixel tells its place and each `seed` looks different.
QImage pattern(QSize size, std::uint32_t seed);

// Who owns it composes the screen.
inline constexpr const char* compositorSelection = "_NET_WM_CM_S0";

struct WindowOptions {
    QRect bounds{100, 80, 640, 480};
    xcb_window_t parent = XCB_WINDOW_NONE; // none: the root
    bool overrideRedirect = false;
    bool mapped = true;
    bool inputOnly = false;
    int border = 0;
    int depth = 0; // 0: the parent's; 32: with transparency
    // Painted by the server wherever the window is uncovered.
    QImage background = {}; // NOLINT(readability-redundant-member-init): designated initialisers leave it out
};

// Another program on the display, as far as a test needs one. What it asks of the server has been done when a function
// returns; what a window manager makes of it may take longer.
class TestClient {
public:
    explicit TestClient(const QByteArray& display);
    ~TestClient();
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;

    xcb_window_t root() const { return screen->root; }

    xcb_window_t create(const WindowOptions& options);
    void map(xcb_window_t window);
    void unmap(xcb_window_t window);
    void destroy(xcb_window_t window);
    void raise(xcb_window_t window);
    void lower(xcb_window_t window);
    void setBounds(xcb_window_t window, QRect bounds);
    void setBackground(xcb_window_t window, const QImage& image);
    void paint(xcb_window_t window, const QImage& image);
    // Asks for the paint events of a window; see `nextExposed`.
    void watchExposure(xcb_window_t window);
    // The window of the next paint event, if one has arrived.
    xcb_window_t nextExposed();

    xcb_atom_t atom(const char* name);
    void setText(xcb_window_t window, const char* property, const char* type, const QByteArray& bytes);
    void setNumbers(xcb_window_t window, const char* property, const char* type,
                    const std::vector<std::uint32_t>& numbers);
    void setAtoms(xcb_window_t window, const char* property, const std::vector<const char*>& names);
    std::vector<std::uint32_t> numbers(xcb_window_t window, const char* property);
    QByteArray text(xcb_window_t window, const char* property);
    // Asks the window manager.
    void sendToRoot(xcb_window_t window, const char* message, std::uint32_t first, std::uint32_t second = 0);

    // Who has the keyboard.
    xcb_window_t focus();
    bool isViewable(xcb_window_t window);
    // Of two children of the root, or of the frames around them.
    bool isAbove(xcb_window_t window, xcb_window_t other);
    xcb_window_t parent(xcb_window_t window);
    // From the lowest to the highest.
    std::vector<xcb_window_t> children(xcb_window_t window);
    // On the screen.
    QRect bounds(xcb_window_t window);
    // What is left of a window whose corners are cut, from its own top left corner.
    QRegion shape(xcb_window_t window);
    // What can be seen on the screen.
    QImage screenshot(QRect area);
    // From now on, which of them lost the keyboard and which sizes they had; see the two functions below.
    void watch(xcb_window_t window);
    // How often a watched window has lost the keyboard to another one; a menu that borrows it does not count.
    int focusLosses();
    // Every new size that a watched window has had.
    std::vector<QSize> sizes();
    // Some program keeps the window's pixels apart.
    bool isRedirected(xcb_window_t window);

    // Some program has taken the selection, as a compositor takes compositorSelection.
    bool hasOwner(const char* selection);
    void setOwner(const char* selection, xcb_window_t owner);

    // Waits until the server has done all that was asked.
    void sync();

private:
    void noteEvents();

    xcb_connection_t* connection = nullptr;
    xcb_screen_t* screen = nullptr;
    int noted = 0; // losses of the keyboard
    std::vector<QSize> notedSizes;
};

// Starts openbox on `client`'s display and waits until it puts new windows into frames: it announces itself before it
// is ready, and forgets windows that are mapped in between. False when it does not come to that.
bool startWindowManager(VirtualDisplay& display, TestClient& client);

} // namespace pelloran::testing
