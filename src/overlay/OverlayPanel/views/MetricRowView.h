#pragma once

#include "model/OverlayModel.h"
#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"
#include "overlay/OverlayPanel/views/PanelColors.h"

#include <QFont>
#include <QWidget>

namespace pelloran {

class TextLabel;

// One figure of a tile: its label on the left, its value at the right edge, coloured and weighted by its mark.
class MetricRowView final : public QWidget {
public:
    static constexpr double initialSpacing = 8;

    MetricRowView(QWidget* parent, const PanelColors& colors);

    void bind(const MetricValue& metric);
    void applyTypography(const ResolvedMetrics& metrics);
    void applyLayout(const ResolvedMetrics& metrics);
    void setColors(const PanelColors& colors);

    // What its texts take, and the metrics' minimum at least. No layout asks: the tile gives it what there is.
    int wantedWidth() const;
    int rowHeight() const;

    TextLabel* const keyLabel;
    TextLabel* const valLabel;

    QFont::Weight valueWeight = QFont::Medium;
    QColor valueColor;

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    void layoutSubviews();
    void applyMark();

    MetricHighlight highlight = MetricHighlight::normal;
    PanelColors colors;
    double spacing = initialSpacing; // between label, spacer and value
    double minWidthConstraint = 0;
    double valueSize = 0; // 0: no font has been given yet
};

} // namespace pelloran
