#pragma once

#include <QCoreApplication>
#include <QMouseEvent>
#include <QWidget>

namespace pelloran::testing {

// The left button held on a window, from where the pointer took hold of it. Events carry the place on the screen: a
// window that is resized at its left or top edge moves under the pointer.
class PanelDrag {
public:
    PanelDrag(QWidget& dragged, QPointF position)
        : panel(dragged)
        , from(panel.mapToGlobal(position)) {
        send(QEvent::MouseButtonPress, Qt::LeftButton, Qt::LeftButton);
    }

    // From where the drag began; y downward.
    void moveBy(QPointF translation) {
        at = translation;
        send(QEvent::MouseMove, Qt::NoButton, Qt::LeftButton);
    }

    void release() { send(QEvent::MouseButtonRelease, Qt::LeftButton, Qt::NoButton); }

private:
    void send(QEvent::Type type, Qt::MouseButton button, Qt::MouseButtons held) {
        const QPointF global = from + at;
        QMouseEvent event(type, panel.mapFromGlobal(global), global, button, held, Qt::NoModifier);
        QCoreApplication::sendEvent(&panel, &event);
    }

    QWidget& panel;
    QPointF from;
    QPointF at;
};

} // namespace pelloran::testing
