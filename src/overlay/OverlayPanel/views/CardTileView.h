#pragma once

#include "model/OverlayModel.h"
#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"
#include "overlay/OverlayPanel/views/PanelColors.h"

#include <QWidget>

#include <array>
#include <vector>

namespace pelloran {

class MetricRowView;
class TextLabel;

// One offer: its place, its name, and either its figures or a word that it was not recognised. Made once and bound to
// other contents for every snapshot. Binding and typography may come in either order.
class CardTileView final : public QWidget {
public:
    CardTileView(QWidget* parent, const PanelColors& colors);

    void bind(const OverlayCardViewModel& card);
    void applyTypography(const ResolvedMetrics& metrics);
    void applyLayout(const ResolvedMetrics& metrics);
    void setColors(const PanelColors& colors);

    // The metrics' minimum. No layout asks: the tiles share what there is, which may be less.
    double minimumTileWidth() const { return minWidthConstraint; }

    TextLabel* const slotLabel;
    TextLabel* const nameLabel; // two lines at most
    TextLabel* const subtitleLabel;
    TextLabel* const unrecognizedLabel;
    std::array<MetricRowView*, 6> metricPool;
    int activeMetrics = 0;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool event(QEvent* event) override;

private:
    struct Line {
        QWidget* view;
        int height;
    };

    void layoutSubviews();
    std::vector<Line> shownLines(int width) const;

    PanelColors colors;
    double stackSpacing = 4;
    double padTop = 10;
    double padLeading = 12;
    double padTrailing = -12;
    double padBottom = -10;
    double minWidthConstraint = 220;
    double cornerRadius = 10;
};

} // namespace pelloran
