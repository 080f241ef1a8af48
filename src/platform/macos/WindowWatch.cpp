#include "platform/macos/WindowWatch.h"

#include <QEvent>
#include <QPlatformSurfaceEvent>

#include <utility>

namespace pelloran::macos {

WindowWatch::WindowWatch(QWindow& followed)
    : followedWindow(&followed) {
    followed.installEventFilter(this);
}

bool WindowWatch::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::PlatformSurface: {
        const auto what = static_cast<const QPlatformSurfaceEvent*>(event)->surfaceEventType();
        tell(what == QPlatformSurfaceEvent::SurfaceCreated ? came : leaves);
        break;
    }
    case QEvent::Show:
        comes = true; // the native window is put on screen after this event, and may be made anew for it
        break;
    case QEvent::Expose:
        // One comes with every change of size as well.
        if (followedWindow && followedWindow->isExposed() && std::exchange(comes, false)) {
            tell(came);
        }
        break;
    case QEvent::Hide:
        comes = false;
        tell(leaves);
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void WindowWatch::tell(const std::function<void()>& listener) {
    if (listener) {
        listener();
    }
}

} // namespace pelloran::macos
