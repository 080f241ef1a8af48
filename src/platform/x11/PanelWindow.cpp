#include "platform/PanelWindow.h"

#include "platform/x11/RoundedRegion.h"
#include "platform/x11/X11Panel.h"
#include "platform/x11/X11PanelWindow.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPlatformSurfaceEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace pelloran {

namespace {

bool qtIsOnX11() {
    return QGuiApplication::platformName() == QStringLiteral("xcb");
}

// Qt leaves a screen's origin where it is and scales its size.
QRect physicalBounds(const QScreen& screen) {
    const QSizeF size = QSizeF(screen.geometry().size()) * screen.devicePixelRatio();
    return {screen.geometry().topLeft(), size.toSize()};
}

x11::WindowsAndScreens describeWindowsAndScreens() {
    x11::WindowsAndScreens described;
    for (const QWindow* window : QGuiApplication::allWindows()) {
        // Asking the others for their number would make them.
        if (window->handle() && window->isTopLevel()) {
            // A tray icon bypasses the manager too, and sits in a window of the desktop's which is not ours.
            const bool managed = !window->flags().testFlag(Qt::BypassWindowManagerHint);
            described.ourWindows.push_back({static_cast<xcb_window_t>(window->winId()), managed});
        }
    }
    for (const QScreen* screen : QGuiApplication::screens()) {
        described.screens.push_back(physicalBounds(*screen));
    }
    return described;
}

class X11PanelWindow final : public QObject, public PanelWindow {
public:
    explicit X11PanelWindow(std::unique_ptr<x11::PanelClock> clock) {
        inOrder.push_back(this);
        if (!qtIsOnX11()) {
            return;
        }
        if (auto connection = x11::XcbConnection::open()) {
            panel = std::make_unique<x11::X11Panel>(std::move(connection), describeWindowsAndScreens, std::move(clock));
            panel->compositingChanged = [this] {
                if (compositingChanged) {
                    compositingChanged();
                }
            };
            panel->cameToTop = [this] { raiseTheNext(); };
        }
    }

    ~X11PanelWindow() override { std::erase(inOrder, this); }

    Qt::WindowFlags windowFlags() const override {
        return Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint |
               Qt::WindowDoesNotAcceptFocus;
    }

    void attach(QWindow& attached) override {
        window = &attached;
        window->installEventFilter(this);
        tellNumber();
    }

    void raise() override {
        if (canBeSeen()) {
            panel->raise();
        }
    }

    // Without a connection nobody can tell, and pictures made without a desktop are translucent.
    bool isComposited() const override { return !panel || panel->isComposited(); }

    void blurBehind(double cornerRadius) override {
        if (!panel || !window) {
            return;
        }
        const double ratio = window->devicePixelRatio();
        const QSize size = (QSizeF(window->size()) * ratio).toSize();
        panel->setBlurRegion(x11::roundedRegion(size, cornerRadius * ratio));
    }

protected:
    // Some changes of a window make Qt replace it.
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::PlatformSurface &&
            static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() == QPlatformSurfaceEvent::SurfaceCreated) {
            tellNumber();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool canBeSeen() const { return panel && window && window->isVisible(); }

    // Which raises the one after it, and so on.
    void raiseTheNext() const {
        const auto self = std::ranges::find(inOrder, this);
        const auto next = std::find_if(self + 1, inOrder.end(), [](const auto* later) { return later->canBeSeen(); });
        if (next != inOrder.end()) {
            (*next)->raise();
        }
    }

    void tellNumber() {
        if (panel && window->handle()) {
            panel->setWindow(static_cast<xcb_window_t>(window->winId()));
        }
    }

    std::unique_ptr<x11::X11Panel> panel; // null: Qt is not on an X server
    QWindow* window = nullptr;

    static inline std::vector<X11PanelWindow*> inOrder; // as they were made
};

} // namespace

std::unique_ptr<PanelWindow> PanelWindow::create() {
    return x11::createPanelWindow(std::make_unique<x11::EventLoopClock>());
}

std::unique_ptr<PanelWindow> x11::createPanelWindow(std::unique_ptr<PanelClock> clock) {
    return std::make_unique<X11PanelWindow>(std::move(clock));
}

} // namespace pelloran
