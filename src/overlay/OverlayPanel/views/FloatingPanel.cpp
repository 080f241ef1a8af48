#include "overlay/OverlayPanel/views/FloatingPanel.h"

#include "overlay/OverlayPanel/views/CloseButton.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>

#include <cmath>

namespace pelloran {

namespace {

QRect mainScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry() : QRect();
}

Qt::CursorShape cursorFor(ResizeHandle handle) {
    if ((handle.left && handle.top) || (handle.right && handle.bottom)) {
        return Qt::SizeFDiagCursor;
    }
    if ((handle.right && handle.top) || (handle.left && handle.bottom)) {
        return Qt::SizeBDiagCursor;
    }
    if (handle.left || handle.right) {
        return Qt::SizeHorCursor;
    }
    return handle.isNone() ? Qt::ArrowCursor : Qt::SizeVerCursor;
}

} // namespace

FloatingPanel::FloatingPanel(Qt::WindowFlags flags)
    : QWidget(nullptr, flags | Qt::FramelessWindowHint)
    , closeButton(new CloseButton(this)) { // owned by this
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setMouseTracking(true);
    setFrame(initialFrame);
    connect(closeButton, &CloseButton::clicked, this, [this] {
        hide();
        Q_EMIT didCloseByUser();
    });
}

UpwardRect FloatingPanel::frame() const {
    return toUpward(geometry(), mainScreen());
}

void FloatingPanel::setFrame(const UpwardRect& frame) {
    setGeometry(fromUpward(frame, mainScreen()));
}

std::optional<UpwardRect> FloatingPanel::visibleFrame() const {
    const QScreen* own = screen();
    return own ? std::optional(toUpward(own->availableGeometry(), mainScreen())) : mainVisibleFrame();
}

std::optional<UpwardRect> FloatingPanel::mainVisibleFrame() {
    const QScreen* main = QGuiApplication::primaryScreen();
    return main ? std::optional(toUpward(main->availableGeometry(), main->geometry())) : std::nullopt;
}

std::vector<UpwardRect> FloatingPanel::visibleFrames() {
    std::vector<UpwardRect> frames;
    for (const QScreen* screen : QGuiApplication::screens()) {
        frames.push_back(toUpward(screen->availableGeometry(), mainScreen()));
    }
    return frames;
}

UserHold FloatingPanel::hold() const {
    if (!drag) {
        return UserHold::nothing;
    }
    return drag->handle.isNone() ? UserHold::background : UserHold::edge;
}

void FloatingPanel::placeCloseButton(double inset) {
    closeButtonInset = inset;
    const int gap = static_cast<int>(std::lround(inset)) - CloseButton::margin;
    closeButton->move(width() - gap - closeButton->width(), gap);
    closeButton->raise();
}

int FloatingPanel::closeButtonWidth() const {
    return closeButton->width();
}

void FloatingPanel::setCloseButtonColor(const QColor& color) {
    closeButton->setColor(color);
}

void FloatingPanel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        Q_EMIT paletteDidChange();
    }
}

void FloatingPanel::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    endDrag(); // an earlier one, whose release went to a menu or an alert that opened meanwhile
    Q_EMIT willStartDrag();
    drag = Drag{resizeHandleAt(event->position(), size()), event->globalPosition(), frame()};
    if (inLiveResize()) {
        Q_EMIT willStartLiveResize();
    }
}

void FloatingPanel::mouseMoveEvent(QMouseEvent* event) {
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        endDrag(); // its release went elsewhere
    }
    if (!drag) {
        setCursor(cursorFor(resizeHandleAt(event->position(), size())));
        return;
    }
    const QPointF moved = event->globalPosition() - drag->from;
    const QPointF upward(moved.x(), -moved.y());
    if (drag->handle.isNone()) {
        UpwardRect target = drag->frame;
        target.x += upward.x();
        target.y += upward.y();
        setFrame(target);
    } else {
        setFrame(resizedFrame(drag->frame, drag->handle, upward));
    }
}

void FloatingPanel::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        endDrag();
    }
}

void FloatingPanel::resizeEvent(QResizeEvent*) {
    placeCloseButton(closeButtonInset);
    Q_EMIT didResize();
}

void FloatingPanel::hideEvent(QHideEvent*) {
    endDrag(); // the release of the button will not reach a hidden window
}

void FloatingPanel::endDrag() {
    const bool resizing = inLiveResize();
    const bool changed = drag && frame() != drag->frame; // not for a click
    drag.reset();
    if (resizing) {
        Q_EMIT didEndLiveResize();
    }
    if (changed) {
        Q_EMIT didEndDrag();
    }
}

} // namespace pelloran
