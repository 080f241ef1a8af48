#include "overlay/OverlayPanel/views/MetricRowView.h"

#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/TextLabel.h"

#include <QEvent>

#include <algorithm>
#include <cmath>

namespace pelloran {

MetricRowView::MetricRowView(QWidget* parent, const PanelColors& initialColors)
    : QWidget(parent)
    , keyLabel(new TextLabel(this)) // both owned by this
    , valLabel(new TextLabel(this))
    , valueColor(initialColors.label)
    , colors(initialColors) {
    keyLabel->setMaximumLines(1);
    valLabel->setMaximumLines(1);
    applyMark();
}

void MetricRowView::bind(const MetricValue& metric) {
    keyLabel->setText(metric.kind.label());
    valLabel->setText(metric.formatted());
    highlight = metric.highlight;
    applyMark();
}

void MetricRowView::applyTypography(const ResolvedMetrics& metrics) {
    keyLabel->setTextFont(FontCache::shared().font(metrics.metricKeySize, QFont::Normal));
    valueSize = metrics.metricValueSize;
    applyMark();
}

void MetricRowView::applyLayout(const ResolvedMetrics& metrics) {
    if (spacing != metrics.metricSpacing || minWidthConstraint != metrics.metricRowMinWidth) {
        spacing = metrics.metricSpacing;
        minWidthConstraint = metrics.metricRowMinWidth;
        layoutSubviews();
    }
}

void MetricRowView::setColors(const PanelColors& newColors) {
    colors = newColors;
    applyMark();
}

int MetricRowView::wantedWidth() const {
    const double natural = keyLabel->naturalWidth() + 2 * spacing + valLabel->naturalWidth();
    return static_cast<int>(std::ceil(std::max(natural, minWidthConstraint)));
}

int MetricRowView::rowHeight() const {
    const double below =
        std::max(keyLabel->lineHeight() - keyLabel->baseline(), valLabel->lineHeight() - valLabel->baseline());
    return static_cast<int>(std::ceil(std::max(keyLabel->baseline(), valLabel->baseline()) + below));
}

void MetricRowView::resizeEvent(QResizeEvent*) {
    layoutSubviews();
}

bool MetricRowView::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        layoutSubviews();
        return true;
    }
    return QWidget::event(event);
}

void MetricRowView::layoutSubviews() {
    // The value gets what it needs; the label what is left.
    const int value = std::min(valLabel->naturalWidth(), width());
    const int key =
        std::clamp(width() - value - static_cast<int>(std::lround(2 * spacing)), 0, keyLabel->naturalWidth());
    const double baseline = std::max(keyLabel->baseline(), valLabel->baseline());
    const auto top = [baseline](const TextLabel* label) { return static_cast<int>(baseline - label->baseline()); };
    keyLabel->setGeometry(0, top(keyLabel), key, keyLabel->lineHeight());
    valLabel->setGeometry(width() - value, top(valLabel), value, valLabel->lineHeight());
}

void MetricRowView::applyMark() {
    switch (highlight) {
    case MetricHighlight::high:
        valueColor = colors.systemGreen;
        valueWeight = QFont::Bold;
        break;
    case MetricHighlight::low:
        valueColor = colors.systemRed;
        valueWeight = QFont::Bold;
        break;
    case MetricHighlight::normal:
        valueColor = colors.label;
        valueWeight = QFont::Medium;
        break;
    }
    keyLabel->setColor(colors.secondaryLabel);
    valLabel->setColor(valueColor);
    if (valueSize > 0) {
        valLabel->setTextFont(FontCache::shared().font(valueSize, valueWeight));
    }
}

} // namespace pelloran
