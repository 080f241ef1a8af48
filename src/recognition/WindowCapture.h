#pragma once

#include "platform/WindowServer.h"

#include <QImage>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <vector>

namespace pelloran {

// One window of the desktop.
struct HSWindowInfo {
    std::uint32_t windowId = 0; // the window server's number
    QString owner;              // name of the owning application; "" when absent
    QString title;              // "" when absent
    QRectF bounds;              // in global display points
    bool onscreen = false;      // came from the on-screen listing

    bool operator==(const HSWindowInfo&) const = default;
};

enum class WindowCaptureError { noWindow, captureFailed, zeroSize };

// Always Chinese, whatever the language of the user interface; not for the panel. What is logged is explanation().
QString localizedDescription(WindowCaptureError error);

// Why there is no picture of the game's window: one of the three that everybody handles, and what the window server
// said.
struct CaptureFailure {
    WindowCaptureError error;
    std::optional<WindowImageError> cause; // of `captureFailed`; of `noWindow`, why none can be listed
};

// For the log: what keeps the game from being seen, and what the user can do about it. A permission that is missing
// comes before what looks like another cause without it.
QString explanation(const CaptureFailure& failure, CapturePermission permission);

// Finds the game's window, takes its picture and cuts pieces out of pictures. Keeps nothing from call to call: between
// two of them the window may have moved, grown or been replaced. From the thread of the server that is passed.
namespace WindowCapture {

// The windows on screen, front to back; with `includeOffscreen` the others after them. Each window once within the two,
// and only those that could hold a game (see `parse`). A listing that the server refuses adds nothing.
std::vector<HSWindowInfo> listWindows(WindowServer& server, bool includeOffscreen);

// Keeps numbered windows of the normal layer that are at least 400 points wide and 300 high, in the given order.
std::vector<HSWindowInfo> parse(std::span<const WindowDescription> descriptions, bool onscreen);

// The game's window among all windows; absent when there is none. `hint` is a part of the owner's name or of the title,
// in any case; "" leaves only the game's own name to go by.
std::optional<HSWindowInfo> findHearthstone(WindowServer& server, const QString& hint);

// The choice itself: a title with the game's name before any other, then a window on screen, then the larger, then the
// earlier one.
std::optional<HSWindowInfo> chooseHearthstone(std::span<const HSWindowInfo> windows, const QString& hint);

// The window alone, one pixel a point. Fails with `captureFailed` and its cause, or `zeroSize`; `noWindow` is for
// callers that found no window to capture.
std::expected<QImage, CaptureFailure> capture(WindowServer& server, std::uint32_t windowId);

struct GamePicture {
    HSWindowInfo window;
    QImage image;
};

// Both in one: the game's window, found and captured. Fails with `noWindow` too; its cause then is a server that lists
// no windows at all.
std::expected<GamePicture, CaptureFailure> captureGame(WindowServer& server, const QString& hint);

// The part of `image` under `frac` (fractions of its size, y from the top), grown to whole pixels and clipped to the
// image; a negative width or height runs from the origin to the left or upward. Absent when 2 pixels or fewer are left
// in either direction, so also for no image.
std::optional<QImage> crop(const QImage& image, const QRectF& frac);

} // namespace WindowCapture

} // namespace pelloran
