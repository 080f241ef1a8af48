#include "platform/PanelWindow.h"

#include "platform/x11/RoundedRegion.h"
#include "platform/x11/X11Panel.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPlatformSurfaceEvent>
#include <QScreen>
#include <QWindow>

#include <cmath>

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

x11::Surroundings describeSurroundings() {
    x11::Surroundings surroundings;
    for (const QWindow* window : QGuiApplication::allWindows()) {
        // Asking the others for their number would make them.
        if (window->handle() && window->isTopLevel()) {
            // A tray icon bypasses the manager too, and sits in a window of the desktop's which is not ours.
            const bool managed = !window->flags().testFlag(Qt::BypassWindowManagerHint);
            surroundings.ourWindows.push_back({static_cast<xcb_window_t>(window->winId()), managed});
        }
    }
    for (const QScreen* screen : QGuiApplication::screens()) {
        surroundings.screens.push_back(physicalBounds(*screen));
    }
    return surroundings;
}

class X11PanelWindow final : public QObject, public PanelWindow {
public:
    X11PanelWindow() {
        if (!qtIsOnX11()) {
            return;
        }
        if (auto connection = x11::XcbConnection::open()) {
            panel = std::make_unique<x11::X11Panel>(std::move(connection), describeSurroundings);
            panel->compositingChanged = [this] {
                if (compositingChanged) {
                    compositingChanged();
                }
            };
        }
    }

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
        if (panel && window && window->isVisible()) {
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
    void tellNumber() {
        if (panel && window->handle()) {
            panel->setWindow(static_cast<xcb_window_t>(window->winId()));
        }
    }

    std::unique_ptr<x11::X11Panel> panel; // null: Qt is not on an X server
    QWindow* window = nullptr;
};

} // namespace

std::unique_ptr<PanelWindow> PanelWindow::create() {
    return std::make_unique<X11PanelWindow>();
}

} // namespace pelloran
