#pragma once

#include "platform/x11/PanelClock.h"
#include "platform/x11/RaiseSchedule.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>
#include <QSocketNotifier>

#include <functional>
#include <memory>
#include <vector>

namespace pelloran::x11 {

// What the X server does not tell of our own program and of the screens.
struct WindowsAndScreens {
    struct Window {
        xcb_window_t id = XCB_WINDOW_NONE;
        bool managed = true; // so that a window manager may have put a frame around it
    };

    std::vector<Window> ourWindows;
    std::vector<QRect> screens; // physical pixels
};

// Keeps one window, known by its number, above those of other programs, and follows the compositor. All of it happens
// in the event loop of the thread that made it. Once the connection has broken nothing happens any more.
class X11Panel {
public:
    X11Panel(std::unique_ptr<XcbConnection> serverConnection,
             std::function<WindowsAndScreens()> describeWindowsAndScreens,
             std::unique_ptr<PanelClock> time = std::make_unique<EventLoopClock>());

    // It need not be known to the server yet: what is asked for it until then is made up for when it is mapped.
    void setWindow(xcb_window_t window);

    // At once, but never above a screen locker. Nothing happens while the window is not mapped; mapping raises it.
    void raise();

    bool isComposited() const { return composited; }

    // The part of the window, in physical pixels, behind which the compositor is to blur. Empty: none.
    void setBlurRegion(std::vector<QRect> region);

    std::function<void()> compositingChanged;

    // Called when it has been put above every other window, those of this program included.
    std::function<void()> cameToTop;

private:
    struct View;

    void watchServer();
    void readEvents();
    void note(const xcb_generic_event_t& event);
    void look();
    View view() const;
    bool holdsManaged(xcb_window_t window, int depth) const;
    std::vector<xcb_window_t> topLevelsOf(const std::vector<WindowsAndScreens::Window>& windows) const;
    void putOnTop();
    void storeBlurRegion();
    void planLook();

    std::unique_ptr<XcbConnection> connection;
    std::function<WindowsAndScreens()> windowsAndScreens;
    xcb_window_t panel = XCB_WINDOW_NONE;
    xcb_atom_t blurAtom = XCB_ATOM_NONE;
    int firstFixesEvent = -1; // none: the extension is missing
    bool composited = false;
    std::vector<QRect> blurRegion;
    bool wantsBlur = false;
    RaiseSchedule schedule;
    std::unique_ptr<PanelClock> clock;
    QSocketNotifier incoming;
};

} // namespace pelloran::x11
