#include "overlay/OverlayPanel/views/MaterialView.h"

#include <QPainter>

namespace pelloran {

MaterialView::MaterialView(QWidget* parent, const PanelColors& initialColors)
    : QWidget(parent)
    , colors(initialColors) {}

void MaterialView::setColors(const PanelColors& newColors) {
    colors = newColors;
    update();
}

void MaterialView::setCornerRadius(double newRadius) {
    if (newRadius != radius) {
        radius = newRadius;
        update();
    }
}

void MaterialView::setTranslucent(bool nowTranslucent) {
    if (nowTranslucent != translucent) {
        translucent = nowTranslucent;
        update();
    }
}

void MaterialView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double hairline = 1 / devicePixelRatioF();
    const double half = hairline / 2;
    painter.setPen(QPen(colors.border, hairline));
    painter.setBrush(translucent ? colors.material : colors.opaqueMaterial);
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), radius, radius);
}

} // namespace pelloran
