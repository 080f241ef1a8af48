#include "recognition/WindowCapture.h"

#include <QStringView>

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <utility>

namespace pelloran {

namespace {

constexpr double leastWidth = 400;  // points; smaller ones are splash screens and tool windows
constexpr double leastHeight = 300; // points

constexpr QStringView gameName = u"hearthstone";

bool namesGame(const QString& text) {
    return text.toLower().contains(gameName);
}

bool isCandidate(const HSWindowInfo& window, const QString& lowerHint) {
    const QString text = (window.owner + u' ' + window.title).toLower();
    return (!lowerHint.isEmpty() && text.contains(lowerHint)) || text.contains(gameName);
}

double area(const HSWindowInfo& window) {
    return window.bounds.width() * window.bounds.height();
}

bool replaces(const HSWindowInfo& later, const HSWindowInfo& best) {
    const bool laterNamesGame = namesGame(later.title);
    if (laterNamesGame != namesGame(best.title)) {
        return laterNamesGame;
    }
    if (later.onscreen != best.onscreen) {
        return later.onscreen;
    }
    return area(later) > area(best);
}

// Whole pixels from `from` to `to`, to the outside, within 0 and `limit`. Stays in floating point: fractions may be
// anything, and what does not fit an int must not reach one before it is clipped.
std::optional<std::pair<int, int>> pixelRange(double from, double to, int limit) {
    const double first = std::clamp(std::floor(from), 0.0, static_cast<double>(limit));
    const double end = std::clamp(std::ceil(to), 0.0, static_cast<double>(limit));
    const double length = end - first;
    if (!(length > 2)) { // also when one is not a number
        return std::nullopt;
    }
    return std::pair(static_cast<int>(first), static_cast<int>(length));
}

} // namespace

QString localizedDescription(WindowCaptureError error) {
    switch (error) {
    case WindowCaptureError::noWindow:
        return QStringLiteral("未找到 Hearthstone 窗口");
    case WindowCaptureError::captureFailed:
        return QStringLiteral("截屏失败：请在 系统设置 → 隐私与安全性 → 屏幕录制 中授权 Pelloran，并重启应用");
    case WindowCaptureError::zeroSize:
        return QStringLiteral("截到的窗口尺寸为 0");
    }
    Q_UNREACHABLE();
}

namespace WindowCapture {

std::vector<HSWindowInfo> listWindows(WindowServer& server, bool includeOffscreen) {
    std::vector<HSWindowInfo> windows;
    if (const auto descriptions = server.describeWindows(WindowListing::onScreen)) {
        windows = parse(*descriptions, true);
    }
    if (!includeOffscreen) {
        return windows;
    }
    std::unordered_set<std::uint32_t> listed;
    for (const HSWindowInfo& window : windows) {
        listed.insert(window.windowId);
    }
    if (const auto descriptions = server.describeWindows(WindowListing::all)) {
        std::ranges::copy_if(parse(*descriptions, false), std::back_inserter(windows),
                             [&](const HSWindowInfo& window) { return !listed.contains(window.windowId); });
    }
    return windows;
}

std::vector<HSWindowInfo> parse(std::span<const WindowDescription> descriptions, bool onscreen) {
    std::vector<HSWindowInfo> windows;
    for (const WindowDescription& description : descriptions) {
        if (!description.number || description.layer.value_or(0) != 0) {
            continue;
        }
        const WindowBounds bounds = description.bounds.value_or(WindowBounds{});
        const double width = bounds.width.value_or(0);
        const double height = bounds.height.value_or(0);
        if (!(width >= leastWidth && height >= leastHeight)) { // not a number: not kept
            continue;
        }
        windows.push_back({
            .windowId = static_cast<std::uint32_t>(*description.number),
            .owner = description.ownerName.value_or(QString()),
            .title = description.name.value_or(QString()),
            .bounds = QRectF(bounds.x.value_or(0), bounds.y.value_or(0), width, height),
            .onscreen = onscreen,
        });
    }
    return windows;
}

std::optional<HSWindowInfo> findHearthstone(WindowServer& server, const QString& hint) {
    return chooseHearthstone(listWindows(server, true), hint);
}

std::optional<HSWindowInfo> chooseHearthstone(std::span<const HSWindowInfo> windows, const QString& hint) {
    const QString lowerHint = hint.toLower();
    const HSWindowInfo* best = nullptr;
    for (const HSWindowInfo& window : windows) {
        if (isCandidate(window, lowerHint) && (!best || replaces(window, *best))) {
            best = &window;
        }
    }
    return best ? std::optional(*best) : std::nullopt;
}

std::expected<QImage, WindowCaptureError> capture(WindowServer& server, std::uint32_t windowId) {
    std::expected<QImage, WindowImageError> image = server.image(windowId);
    if (!image) {
        return std::unexpected(WindowCaptureError::captureFailed);
    }
    if (image->width() == 0 || image->height() == 0) {
        return std::unexpected(WindowCaptureError::zeroSize);
    }
    image->setDevicePixelRatio(1);
    return *std::move(image);
}

std::optional<QImage> crop(const QImage& image, const QRectF& frac) {
    const double width = image.width();
    const double height = image.height();
    const auto columns = pixelRange(frac.x() * width, frac.x() * width + frac.width() * width, image.width());
    const auto rows = pixelRange(frac.y() * height, frac.y() * height + frac.height() * height, image.height());
    if (!columns || !rows) {
        return std::nullopt;
    }
    QImage piece = image.copy(columns->first, rows->first, columns->second, rows->second);
    if (piece.isNull()) { // out of memory
        return std::nullopt;
    }
    piece.setDevicePixelRatio(1);
    return piece;
}

} // namespace WindowCapture

} // namespace pelloran
