#pragma once

#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"

#include <QPointF>
#include <QRect>
#include <QSizeF>

#include <optional>

// Where the panel stands and how large it is, as plain values in device-independent pixels. The rules are written for
// axes that begin at the bottom left corner of the main screen, y running upward; Qt's y runs downward. Everything here
// is upward, and the two functions at the end are the only ones that convert.
namespace pelloran {

// `x` and `y` are the bottom left corner.
struct UpwardRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }

    double minY() const { return y; }

    double maxX() const { return x + width; }

    double maxY() const { return y + height; }

    QSizeF size() const { return {width, height}; }

    bool operator==(const UpwardRect&) const = default;
};

// Where a first run opens the panel.
constexpr UpwardRect initialFrame{40, 60, 360, 420};

// As small as the user can drag it.
constexpr QSizeF minimumSize(280, 200);

// As low as it makes itself, for a message. It stays so low where the user drags it wider then.
constexpr double lowestHeight = 160;

// Enough of `frame` lies on the visible part of the screen to be seen and taken hold of.
bool isComfortablyOnScreen(const UpwardRect& frame, const UpwardRect& visible);

// `frame`, moved to where a lost panel comes back on a screen.
UpwardRect broughtBack(const UpwardRect& frame, const UpwardRect& visible);

// The frame that suits `cardCount` tiles, from the frame the panel has and the size the user gave it, if any. It keeps
// its bottom left corner unless it would leave the `visible` part of its screen (absent: no screen is known). Absent
// when the panel stands so already, to half a pixel.
std::optional<UpwardRect> adaptedFrame(int cardCount, const UpwardRect& frame, const std::optional<QSizeF>& userSize,
                                       double scale, Axis axis, const std::optional<UpwardRect>& visible);

// What the pointer has hold of: edges, two of them at a corner, none inside.
struct ResizeHandle {
    bool left = false;
    bool right = false;
    bool top = false;
    bool bottom = false;

    bool isNone() const { return !left && !right && !top && !bottom; }

    bool operator==(const ResizeHandle&) const = default;
};

// What of the panel the user has hold of.
enum class UserHold { nothing, background, edge };

// `position` is measured from the panel's top left corner downward, as Qt's mouse events tell it.
ResizeHandle resizeHandleAt(QPointF position, QSizeF panelSize);

// `frame` with the held edges moved by `translation` (y upward); the other edges stay, and it gets no smaller than
// `minimumSize`.
UpwardRect resizedFrame(const UpwardRect& frame, ResizeHandle handle, QPointF translation);

// `from` at progress 0, `to` at 1.
UpwardRect betweenFrames(const UpwardRect& from, const UpwardRect& to, double progress);

// To and from Qt's rectangles; `mainScreen` is the whole of the main screen. Frames round to whole pixels.
UpwardRect toUpward(const QRect& rect, const QRect& mainScreen);
QRect fromUpward(const UpwardRect& rect, const QRect& mainScreen);

} // namespace pelloran
