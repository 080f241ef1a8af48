#pragma once

#include <QSizeF>

#include <optional>

namespace pelloran {

// Width band of the panel.
enum class SizeClass { compact = 0, regular = 1, large = 2, xLarge = 3 };

std::optional<SizeClass> sizeClassFromRawValue(int rawValue);

// How the tiles are arranged: top to bottom, or side by side.
enum class Axis { vertical, horizontal };

// Every length and font size of the panel, in device-independent pixels; the one source of them. Values are exact
// multiples of a half where they are rounded at all; views round to whole pixels where they must.
struct ResolvedMetrics {
    SizeClass sizeClass = SizeClass::compact;
    double scale = 1; // overall factor, 0.88 to 1.36
    Axis axis = Axis::vertical;

    double contentInset = 0;      // title, message and tiles from the panel's edges
    double sectionSpacing = 0;    // between title, message and tiles, downward
    double cardSpacing = 0;       // between tiles
    double cardPadding = 0;       // inside a tile
    double metricSpacing = 0;     // between a metric's label, spacer and value
    double stackInnerSpacing = 0; // between the lines and rows of a tile
    double cornerRadius = 0;      // of a tile
    double panelCornerRadius = 0; // of the panel's background
    double cardMinWidth = 0;
    double metricRowMinWidth = 0;

    double titleSize = 0;
    double messageSize = 0;
    double slotSize = 0;
    double nameSize = 0;
    double subtitleSize = 0;
    double metricKeySize = 0;
    double metricValueSize = 0;

    // `contentSize` is that of the panel's content in device-independent pixels; a width of 1 or less counts as 1.
    // `previousAxis` matters in a band of widths only: there the panel keeps its axis, so that it does not flap.
    static ResolvedMetrics resolve(QSizeF contentSize, int cardCount, Axis previousAxis);

    // The same, arranged along the other axis: what differs by axis is computed anew.
    ResolvedMetrics along(Axis other) const;

    // Axis and lengths are equal. Font sizes, scale and size class do not count.
    bool layoutEquals(const ResolvedMetrics& other) const;

    // Font sizes are equal.
    bool typographyEquals(const ResolvedMetrics& other) const;

    bool operator==(const ResolvedMetrics&) const = default;
};

// Lengths on the way from one layout to another, `progress` from 0 to 1; everything that is no length is `to`'s.
ResolvedMetrics betweenLayouts(const ResolvedMetrics& from, const ResolvedMetrics& to, double progress);

// The nearest multiple of 0.5, halves away from zero.
double halfRound(double value);

} // namespace pelloran
