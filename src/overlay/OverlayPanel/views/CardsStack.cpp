#include "overlay/OverlayPanel/views/CardsStack.h"

#include <QEvent>
#include <QPainter>

#include <cmath>
#include <utility>
#include <vector>

namespace pelloran {

CardsStack::CardsStack(QWidget* parent)
    : QWidget(parent)
    , opacity(new QGraphicsOpacityEffect(this)) {
    opacity->setOpacity(1);
    opacity->setEnabled(false);
    setGraphicsEffect(opacity);
}

void CardsStack::applyLayout(const ResolvedMetrics& metrics) {
    if (orientation != metrics.axis || spacing != metrics.cardSpacing) {
        orientation = metrics.axis;
        spacing = metrics.cardSpacing;
        layoutSubviews();
    }
}

double CardsStack::alpha() const {
    return opacity->opacity();
}

void CardsStack::setAlpha(double alpha) {
    opacity->setOpacity(alpha);
    opacity->setEnabled(alpha < 1);
}

QPixmap CardsStack::picture() {
    if (size().isEmpty()) {
        return {}; // a long message left it no room
    }
    QPixmap pixmap(size() * devicePixelRatioF());
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    pixmap.fill(Qt::transparent);
    render(&pixmap, QPoint(), QRegion(), QWidget::DrawChildren);
    return pixmap;
}

void CardsStack::layoutSubviews() {
    std::vector<QWidget*> tiles;
    for (QWidget* tile : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (!tile->isHidden()) {
            tiles.push_back(tile);
        }
    }
    const bool sideBySide = orientation == Axis::horizontal;
    const double length = sideBySide ? width() : height();
    const double gap = spacing;
    const auto count = static_cast<double>(tiles.size());
    const double share = (length - gap * (count - 1)) / count;
    double at = 0;
    for (QWidget* tile : tiles) {
        // Edges are rounded, not lengths: the last tile ends where the stack does.
        const int from = static_cast<int>(std::lround(at));
        const int to = static_cast<int>(std::lround(at + share));
        if (sideBySide) {
            tile->setGeometry(from, 0, to - from, height());
        } else {
            tile->setGeometry(0, from, width(), to - from);
        }
        at += share + gap;
    }
}

void CardsStack::resizeEvent(QResizeEvent*) {
    layoutSubviews();
}

bool CardsStack::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        layoutSubviews();
        return true;
    }
    return QWidget::event(event);
}

FadingPicture::FadingPicture(QWidget* parent, QPixmap shown)
    : QWidget(parent)
    , picture(std::move(shown)) {}

void FadingPicture::setAlpha(double newAlpha) {
    alpha = newAlpha;
    update();
}

void FadingPicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(alpha);
    painter.drawPixmap(rect(), picture);
}

} // namespace pelloran
