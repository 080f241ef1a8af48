#include "overlay/OverlayPanel/views/CloseButton.h"

#include <QPainter>

namespace pelloran {

namespace {

constexpr int side = 22;       // pixels
constexpr double reach = 3.75; // of the cross from its centre

} // namespace

CloseButton::CloseButton(QWidget* parent)
    : QAbstractButton(parent) {
    setFixedSize(side, side);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
}

void CloseButton::setColor(const QColor& color) {
    if (color != cross) {
        cross = color;
        update();
    }
}

void CloseButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse()) {
        QColor disc = cross;
        disc.setAlphaF(isDown() ? 0.3F : 0.18F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(disc);
        painter.drawEllipse(QRectF(rect()).adjusted(2, 2, -2, -2));
    }
    painter.setPen(QPen(cross, 1.5, Qt::SolidLine, Qt::RoundCap));
    painter.translate(QRectF(rect()).center());
    painter.drawLine(QPointF(-reach, -reach), QPointF(reach, reach));
    painter.drawLine(QPointF(-reach, reach), QPointF(reach, -reach));
}

void CloseButton::enterEvent(QEnterEvent*) {
    update();
}

void CloseButton::leaveEvent(QEvent*) {
    update();
}

} // namespace pelloran
