#include "overlay/OverlayPanel/views/PanelColors.h"

namespace pelloran {

namespace {

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

} // namespace

Appearance appearanceOf(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness()
               ? Appearance::dark
               : Appearance::light;
}

PanelColors PanelColors::of(Appearance appearance) {
    const QColor sheet(18, 18, 20);
    const QColor label = withAlpha(Qt::white, 0.94);
    return {
        .material = withAlpha(sheet, appearance == Appearance::dark ? 0.92 : 0.95),
        .opaqueMaterial = sheet,
        .border = withAlpha(Qt::white, 0.16),
        .title = QColor::fromRgbF(0.95F, 0.78F, 0.35F),
        .label = label,
        .secondaryLabel = withAlpha(Qt::white, 0.70),
        .tertiaryLabel = withAlpha(Qt::white, 0.58),
        // The lighter set of the usual system colours, which stays readable in small type on a dark sheet.
        .systemGreen = QColor(52, 219, 97),
        .systemRed = QColor(255, 115, 107),
        .systemOrange = QColor(255, 179, 64),
        .tile = withAlpha(label, 0.08),
    };
}

} // namespace pelloran
