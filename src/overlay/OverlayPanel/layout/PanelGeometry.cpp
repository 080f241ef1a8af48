#include "overlay/OverlayPanel/layout/PanelGeometry.h"

#include <algorithm>
#include <cmath>

namespace pelloran {

namespace {

constexpr double reachable = 40;    // pixels of the panel that must stay on the screen
constexpr double screenMargin = 8;  // to the edge of the screen, for a panel that would pass it
constexpr double handleWidth = 6;   // of the strip along an edge that resizes
constexpr double cornerHandle = 14; // reach of a corner along both of its edges
constexpr double noticeable = 0.5;  // smaller changes of the frame are not worth a move

QSizeF idleSize(const UpwardRect& frame, const std::optional<QSizeF>& userSize, double scale) {
    const double height = std::max(120 * scale, lowestHeight);
    if (userSize) {
        return {std::max(userSize->width(), 320.0), std::max(height, userSize->height())};
    }
    return {std::max(frame.width, 320.0), height};
}

QSizeF columnSize(int cardCount, const QSizeF& current) {
    return {std::clamp(current.width(), 300.0, 420.0), std::max(current.height(), 150.0 * cardCount + 150)};
}

QSizeF rowSize(int cardCount, const UpwardRect& frame, const std::optional<QSizeF>& userSize) {
    const double width = 200.0 * cardCount + 48;
    if (userSize) {
        return {std::max(width, userSize->width()), std::clamp(userSize->height(), 280.0, 420.0)};
    }
    return {std::max(frame.width, width), 280};
}

// The order matters on a screen smaller than the panel: there the bottom left corner is what stays visible.
void keepOn(const UpwardRect& visible, UpwardRect& frame) {
    if (frame.maxX() > visible.maxX()) {
        frame.x = visible.maxX() - frame.width - screenMargin;
    }
    if (frame.maxY() > visible.maxY()) {
        frame.y = visible.maxY() - frame.height - screenMargin;
    }
    if (frame.minX() < visible.minX()) {
        frame.x = visible.minX() + screenMargin;
    }
    if (frame.minY() < visible.minY()) {
        frame.y = visible.minY() + screenMargin;
    }
}

bool nearlyEqual(double one, double other) {
    return std::abs(one - other) <= noticeable;
}

double between(double from, double to, double progress) {
    return from + (to - from) * progress;
}

} // namespace

bool isComfortablyOnScreen(const UpwardRect& frame, const UpwardRect& visible) {
    return frame.maxX() >= visible.minX() + reachable && frame.minX() <= visible.maxX() - reachable &&
           frame.maxY() >= visible.minY() + reachable && frame.minY() <= visible.maxY() - reachable;
}

UpwardRect broughtBack(const UpwardRect& frame, const UpwardRect& visible) {
    return {visible.minX() + initialFrame.x, visible.minY() + initialFrame.y, frame.width, frame.height};
}

std::optional<UpwardRect> adaptedFrame(int cardCount, const UpwardRect& frame, const std::optional<QSizeF>& userSize,
                                       double scale, Axis axis, const std::optional<UpwardRect>& visible) {
    QSizeF size;
    if (cardCount == 0) {
        size = idleSize(frame, userSize, scale);
    } else if (axis == Axis::vertical) {
        size = columnSize(cardCount, userSize.value_or(frame.size()));
    } else {
        size = rowSize(cardCount, frame, userSize);
    }
    UpwardRect adapted{frame.x, frame.y, size.width(), size.height()};
    if (visible) {
        keepOn(*visible, adapted);
    }
    if (nearlyEqual(adapted.width, frame.width) && nearlyEqual(adapted.height, frame.height) &&
        nearlyEqual(adapted.x, frame.x) && nearlyEqual(adapted.y, frame.y)) {
        return std::nullopt;
    }
    return adapted;
}

ResizeHandle resizeHandleAt(QPointF position, QSizeF panelSize) {
    const double toRight = panelSize.width() - position.x();
    const double toBottom = panelSize.height() - position.y();
    ResizeHandle handle{.left = position.x() < handleWidth,
                        .right = toRight <= handleWidth,
                        .top = position.y() < handleWidth,
                        .bottom = toBottom <= handleWidth};
    if (handle.left || handle.right) {
        handle.top = position.y() < cornerHandle;
        handle.bottom = !handle.top && toBottom <= cornerHandle;
    } else if (handle.top || handle.bottom) {
        handle.left = position.x() < cornerHandle;
        handle.right = !handle.left && toRight <= cornerHandle;
    }
    return handle;
}

UpwardRect resizedFrame(const UpwardRect& frame, ResizeHandle handle, QPointF translation) {
    UpwardRect resized = frame;
    if (handle.right) {
        resized.width = std::max(frame.width + translation.x(), minimumSize.width());
    } else if (handle.left) {
        resized.width = std::max(frame.width - translation.x(), minimumSize.width());
        resized.x = frame.maxX() - resized.width;
    }
    if (handle.top) {
        resized.height = std::max(frame.height + translation.y(), minimumSize.height());
    } else if (handle.bottom) {
        resized.height = std::max(frame.height - translation.y(), minimumSize.height());
        resized.y = frame.maxY() - resized.height;
    }
    return resized;
}

UpwardRect betweenFrames(const UpwardRect& from, const UpwardRect& to, double progress) {
    return {between(from.x, to.x, progress), between(from.y, to.y, progress), between(from.width, to.width, progress),
            between(from.height, to.height, progress)};
}

UpwardRect toUpward(const QRect& rect, const QRect& mainScreen) {
    const int bottom = rect.y() + rect.height();
    const int screenBottom = mainScreen.y() + mainScreen.height();
    return {static_cast<double>(rect.x() - mainScreen.x()), static_cast<double>(screenBottom - bottom),
            static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

QRect fromUpward(const UpwardRect& rect, const QRect& mainScreen) {
    const auto whole = [](double length) { return static_cast<int>(std::round(length)); };
    const int height = whole(rect.height);
    const int screenBottom = mainScreen.y() + mainScreen.height();
    return {mainScreen.x() + whole(rect.x), screenBottom - whole(rect.y) - height, whole(rect.width), height};
}

} // namespace pelloran
