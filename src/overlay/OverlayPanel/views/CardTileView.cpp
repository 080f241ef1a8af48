#include "overlay/OverlayPanel/views/CardTileView.h"

#include "localisation/L10n.h"
#include "overlay/OverlayPanel/layout/TileFit.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/MetricRowView.h"
#include "overlay/OverlayPanel/views/TextLabel.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace pelloran {

namespace {

constexpr int nameLines = 2;

} // namespace

// Every view is owned by this.
CardTileView::CardTileView(QWidget* parent, const PanelColors& initialColors)
    : QWidget(parent)
    , slotLabel(new TextLabel(this))
    , nameLabel(new TextLabel(this))
    , subtitleLabel(new TextLabel(this))
    , unrecognizedLabel(new TextLabel(this)) {
    slotLabel->setHangsPunctuation(true);
    nameLabel->setMaximumLines(nameLines);
    for (MetricRowView*& row : metricPool) {
        row = new MetricRowView(this, initialColors);
        row->hide();
    }
    subtitleLabel->hide();
    unrecognizedLabel->hide();
    setColors(initialColors);
}

void CardTileView::bind(const OverlayCardViewModel& card) {
    slotLabel->setText(u'【' + card.slotLabel + u'】');
    nameLabel->setText(card.name);
    unrecognizedLabel->setText(L10n::tr(u"overlay.unrecognized"));
    subtitleLabel->setText(card.subtitle.value_or(QString()));
    subtitleLabel->setHidden(subtitleLabel->text().isEmpty());
    unrecognizedLabel->setHidden(card.recognized);

    activeMetrics = card.recognized ? static_cast<int>(std::min(metricPool.size(), card.metrics.size())) : 0;
    for (std::size_t index = 0; index < metricPool.size(); ++index) {
        const bool active = index < static_cast<std::size_t>(activeMetrics);
        if (active) {
            metricPool[index]->bind(card.metrics[index]);
        }
        metricPool[index]->setHidden(!active);
    }
}

void CardTileView::applyTypography(const ResolvedMetrics& metrics) {
    FontCache& fonts = FontCache::shared();
    slotLabel->setTextFont(fonts.font(metrics.slotSize, QFont::DemiBold));
    nameLabel->setTextFont(fonts.font(metrics.nameSize, QFont::Bold));
    subtitleLabel->setTextFont(fonts.font(metrics.subtitleSize, QFont::Normal));
    unrecognizedLabel->setTextFont(fonts.font(metrics.slotSize, QFont::Normal));
    for (MetricRowView* row : metricPool) {
        row->applyTypography(metrics);
    }
    layoutSubviews();
}

void CardTileView::applyLayout(const ResolvedMetrics& metrics) {
    if (cornerRadius != metrics.cornerRadius) {
        cornerRadius = metrics.cornerRadius;
        update();
    }
    stackSpacing = metrics.stackInnerSpacing;
    padTop = metrics.cardPadding;
    padLeading = metrics.cardPadding + 2;
    padTrailing = -(metrics.cardPadding + 2);
    padBottom = metrics.cardPadding;
    minWidthConstraint = metrics.cardMinWidth;
    for (MetricRowView* row : metricPool) {
        row->applyLayout(metrics);
    }
    layoutSubviews();
}

void CardTileView::setColors(const PanelColors& newColors) {
    colors = newColors;
    slotLabel->setColor(colors.secondaryLabel);
    nameLabel->setColor(colors.label);
    subtitleLabel->setColor(colors.tertiaryLabel);
    unrecognizedLabel->setColor(colors.systemOrange);
    for (MetricRowView* row : metricPool) {
        row->setColors(colors);
    }
    update();
}

void CardTileView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.tile);
    painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
}

void CardTileView::resizeEvent(QResizeEvent*) {
    layoutSubviews();
}

void CardTileView::showEvent(QShowEvent*) {
    layoutSubviews();
}

bool CardTileView::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        layoutSubviews();
        return true;
    }
    return QWidget::event(event);
}

std::vector<CardTileView::Line> CardTileView::shownLines(int width) const {
    std::vector<Line> lines;
    for (TextLabel* label : {slotLabel, nameLabel, subtitleLabel, unrecognizedLabel}) {
        if (!label->isHidden()) {
            lines.push_back({label, label->heightForWidth(width)});
        }
    }
    for (int index = 0; index < activeMetrics; ++index) {
        lines.push_back({metricPool[index], metricPool[index]->rowHeight()});
    }
    return lines;
}

void CardTileView::layoutSubviews() {
    if (!isVisible()) {
        return; // laid out once it is shown
    }
    const int left = static_cast<int>(std::lround(padLeading));
    const int innerWidth = std::max(width() - left + static_cast<int>(std::lround(padTrailing)), 1);
    // The tile's bottom margin equals its top one, whichever sign its constant has.
    const double padding = std::max(padTop, std::abs(padBottom));

    std::vector<Line> lines;
    TileFit fit;
    // In a tile too low for all of it, the figures matter more than the end of a long name.
    for (const int permitted : {nameLines, 1}) {
        nameLabel->setMaximumLines(permitted);
        lines = shownLines(innerWidth);
        std::vector<int> heights(lines.size());
        std::ranges::transform(lines, heights.begin(), &Line::height);
        fit = fitTile(heights, stackSpacing, padding, height());
        if (fit.fits) {
            break;
        }
    }
    // Whole pixels, so that the rows stand at equal distances.
    const int gap = static_cast<int>(std::floor(fit.spacing));
    int y = static_cast<int>(std::lround(fit.padding));
    for (const Line& line : lines) {
        line.view->setGeometry(left, y, innerWidth, line.height);
        y += line.height + gap;
    }
}

} // namespace pelloran
