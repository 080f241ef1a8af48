#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pelloran {

namespace {

// At this size of the content the scale is exactly 1.
constexpr QSizeF referenceSize(360, 420);

// Between these widths the panel keeps the axis it has.
constexpr double horizontalFrom = 580;
constexpr double horizontalDownTo = 520;

constexpr double smallestFont = 11; // below it Chinese characters run together

using Length = double ResolvedMetrics::*;

constexpr std::array<Length, 10> lengths{
    &ResolvedMetrics::contentInset,      &ResolvedMetrics::sectionSpacing,    &ResolvedMetrics::cardSpacing,
    &ResolvedMetrics::cardPadding,       &ResolvedMetrics::metricSpacing,     &ResolvedMetrics::stackInnerSpacing,
    &ResolvedMetrics::cornerRadius,      &ResolvedMetrics::panelCornerRadius, &ResolvedMetrics::cardMinWidth,
    &ResolvedMetrics::metricRowMinWidth,
};

constexpr std::array<Length, 7> fontSizes{
    &ResolvedMetrics::titleSize,       &ResolvedMetrics::messageSize,  &ResolvedMetrics::slotSize,
    &ResolvedMetrics::nameSize,        &ResolvedMetrics::subtitleSize, &ResolvedMetrics::metricKeySize,
    &ResolvedMetrics::metricValueSize,
};

SizeClass sizeClassOf(double width) {
    if (width < 320) {
        return SizeClass::compact;
    }
    if (width < 480) {
        return SizeClass::regular;
    }
    return width < 640 ? SizeClass::large : SizeClass::xLarge;
}

Axis axisOf(double width, int cardCount, Axis previous) {
    if (cardCount < 2) {
        return Axis::vertical;
    }
    const double threshold = previous == Axis::horizontal ? horizontalDownTo : horizontalFrom;
    return width >= threshold ? Axis::horizontal : Axis::vertical;
}

double scaleOf(double width, double height) {
    const double fromHeight = height > 1 ? (height / referenceSize.height()) * 0.22 : 0.22 / referenceSize.height();
    const double raw = (width / referenceSize.width()) * 0.78 + fromHeight;
    return std::min(std::max(std::pow(std::max(raw, 0.01), 0.78), 0.88), 1.36);
}

double cardSpacingOf(double scale, Axis axis) {
    return halfRound((axis == Axis::horizontal ? 10 : 12) * scale);
}

double cardMinWidthOf(double scale, Axis axis) {
    return halfRound((axis == Axis::horizontal ? 160 : 220) * std::min(scale, 1.2));
}

} // namespace

double halfRound(double value) {
    return std::round(2 * value) / 2;
}

std::optional<SizeClass> sizeClassFromRawValue(int rawValue) {
    if (rawValue < 0 || rawValue > 3) {
        return std::nullopt;
    }
    return static_cast<SizeClass>(rawValue);
}

ResolvedMetrics ResolvedMetrics::resolve(QSizeF contentSize, int cardCount, Axis previousAxis) {
    const double width = contentSize.width() <= 1 ? 1.0 : contentSize.width();
    ResolvedMetrics m;
    m.sizeClass = sizeClassOf(width);
    m.axis = axisOf(width, cardCount, previousAxis);
    m.scale = scaleOf(width, contentSize.height());

    const double s = m.scale;
    m.contentInset = halfRound(12 * s);
    m.sectionSpacing = halfRound(10 * s);
    m.cardSpacing = cardSpacingOf(s, m.axis);
    m.cardPadding = halfRound(10 * s);
    m.metricSpacing = halfRound(6 * s);
    m.stackInnerSpacing = std::max(halfRound(4 * s), 3.0);
    m.cornerRadius = std::max(halfRound(10 * s), 8.0);
    m.panelCornerRadius = m.cornerRadius + 2;
    m.cardMinWidth = cardMinWidthOf(s, m.axis);
    m.metricRowMinWidth = s > 1.15 ? 161 : halfRound(140 * s);

    // Fonts grow with the band and, within it, with the scale.
    const double k = 0.55 * static_cast<int>(m.sizeClass) + 4.5 * (s - 1);
    const auto size = [k](double base, double share) { return std::max(halfRound(base + share * k), smallestFont); };
    m.titleSize = size(13.5, 0.9);
    m.messageSize = size(12.5, 0.7);
    m.slotSize = size(11.5, 0.6);
    m.nameSize = size(14.5, 1);
    m.subtitleSize = size(11, 0.5);
    m.metricKeySize = size(12, 0.6);
    m.metricValueSize = m.messageSize;
    return m;
}

ResolvedMetrics ResolvedMetrics::along(Axis other) const {
    ResolvedMetrics turned = *this;
    if (other != axis) {
        turned.axis = other;
        turned.cardSpacing = cardSpacingOf(scale, other);
        turned.cardMinWidth = cardMinWidthOf(scale, other);
    }
    return turned;
}

bool ResolvedMetrics::layoutEquals(const ResolvedMetrics& other) const {
    return axis == other.axis &&
           std::ranges::all_of(lengths, [&](Length length) { return this->*length == other.*length; });
}

bool ResolvedMetrics::typographyEquals(const ResolvedMetrics& other) const {
    return std::ranges::all_of(fontSizes, [&](Length size) { return this->*size == other.*size; });
}

ResolvedMetrics betweenLayouts(const ResolvedMetrics& from, const ResolvedMetrics& to, double progress) {
    ResolvedMetrics between = to;
    if (progress < 1) { // the end is exact
        for (const Length length : lengths) {
            between.*length = from.*length + (to.*length - from.*length) * progress;
        }
    }
    return between;
}

} // namespace pelloran
