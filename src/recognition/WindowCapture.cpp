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

// Whole pixels between `from` and `to`, whichever comes first, to the outside, within 0 and `limit`. Stays in floating
// point: fractions may be anything, and what does not fit an int must not reach one before it is clipped.
std::optional<std::pair<int, int>> pixelRange(double from, double to, int limit) {
    const auto [low, high] = std::minmax(from, to); // a negative size runs backwards
    const double first = std::clamp(std::floor(low), 0.0, static_cast<double>(limit));
    const double end = std::clamp(std::ceil(high), 0.0, static_cast<double>(limit));
    const double length = end - first;
    if (!(length > 2)) { // also when one is not a number
        return std::nullopt;
    }
    return std::pair(static_cast<int>(first), static_cast<int>(length));
}

struct CauseText {
    QString operator()(const WindowGone&) const {
        return QStringLiteral("the game's window closed while its picture was taken; another one is looked for");
    }

    QString operator()(const CaptureDenied&) const {
        return QStringLiteral("the system does not let Pelloran see other programs' windows: allow it in the system's "
                              "settings (on macOS: Privacy & Security, Screen Recording) and start Pelloran again; "
                              "where it was built without window capture, nothing helps");
    }

    QString operator()(const WindowServerLost& lost) const {
        return QStringLiteral("the desktop that shows the game's window has gone or does not answer (%1); it is asked "
                              "again at every look")
            .arg(QString::fromStdString(lost.call));
    }

    QString operator()(const WindowServerFailed& failed) const {
        return QStringLiteral("the game's window cannot be captured: %1 (error %2); bring the game back where it is "
                              "minimised, and start it anew where this goes on")
            .arg(QString::fromStdString(failed.call))
            .arg(failed.code);
    }
};

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

QString explanation(const CaptureFailure& failure, CapturePermission permission) {
    switch (permission) {
    case CapturePermission::granted:
        break;
    case CapturePermission::notAsked:
        return QStringLiteral("the system has not asked yet whether Pelloran may see other programs' windows: answer "
                              "its question and start Pelloran again");
    case CapturePermission::denied:
        return CauseText()(CaptureDenied());
    }
    switch (failure.error) {
    case WindowCaptureError::noWindow:
        if (failure.cause) {
            return QStringLiteral(
                "no window can be seen at all: look whether the desktop of this program runs and answers");
        }
        return QStringLiteral("no window of the game is found: start the game, bring it back where it is minimised, or "
                              "name its window with --window-owner");
    case WindowCaptureError::captureFailed:
        return failure.cause ? std::visit(CauseText(), *failure.cause) : localizedDescription(failure.error);
    case WindowCaptureError::zeroSize:
        return QStringLiteral("the game's window has no size: bring it back or make it larger");
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

std::expected<QImage, CaptureFailure> capture(WindowServer& server, std::uint32_t windowId) {
    std::expected<QImage, WindowImageError> image = server.image(windowId);
    if (!image) {
        return std::unexpected(CaptureFailure{WindowCaptureError::captureFailed, std::move(image).error()});
    }
    if (image->width() == 0 || image->height() == 0) {
        return std::unexpected(CaptureFailure{WindowCaptureError::zeroSize, std::nullopt});
    }
    image->setDevicePixelRatio(1);
    return *std::move(image);
}

std::expected<GamePicture, CaptureFailure> captureGame(WindowServer& server, const QString& hint) {
    auto window = findHearthstone(server, hint);
    if (!window) {
        CaptureFailure failure{WindowCaptureError::noWindow, std::nullopt};
        // Windows that cannot be listed are not the same as none, and finding one does not tell.
        if (!server.describeWindows(WindowListing::onScreen)) {
            failure.cause = WindowServerFailed{"listing of windows refused", 0};
        }
        return std::unexpected(std::move(failure));
    }
    auto image = capture(server, window->windowId);
    if (!image) {
        return std::unexpected(std::move(image).error());
    }
    return GamePicture{*std::move(window), *std::move(image)};
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
