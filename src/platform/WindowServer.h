#pragma once

#include <QImage>
#include <QString>

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace pelloran {

// Bounds as a window server gives them, in global display points; any of the four may be missing.
struct WindowBounds {
    std::optional<double> x;
    std::optional<double> y;
    std::optional<double> width;
    std::optional<double> height;

    bool operator==(const WindowBounds&) const = default;
};

// One window as the window server describes it. Nothing is promised to be there: what counts as a usable window is
// decided by WindowCapture, which can be tested without a desktop.
struct WindowDescription {
    std::optional<std::int64_t> number;
    std::optional<QString> ownerName;
    std::optional<QString> name;
    std::optional<int> layer; // 0: normal windows and dialogs; anything else: docks, menus, desktops, notifications
    std::optional<WindowBounds> bounds;

    bool operator==(const WindowDescription&) const = default;
};

enum class WindowListing {
    onScreen, // what the user can see now, without the desktop's own furniture
    all,      // also windows that are hidden, on other desktops or behind others
};

// Whether this program may look at other programs' windows. A state to show, not a failure.
enum class CapturePermission { granted, notAsked, denied };

struct WindowGone {};

struct CaptureDenied {};

struct WindowServerFailed {
    std::string call; // what was asked of the system
    int code;         // the system's own error number
};

// It has gone, or does not answer.
struct WindowServerLost {
    std::string call; // what was asked of it
};

using WindowImageError = std::variant<WindowGone, CaptureDenied, WindowServerFailed, WindowServerLost>;

// Lists and captures other programs' windows. Made and used on one thread.
class WindowServer {
public:
    // Never fails: with no display every call answers "refused" or an error.
    static std::unique_ptr<WindowServer> create();

    virtual ~WindowServer() = default;

    // Windows front to back. Absent when the server refuses or cannot be reached.
    virtual std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) = 0;

    // The contents of one window as they are now, also when other windows cover it: without its frame and shadow, one
    // pixel a point, opaque. Blocks for about a frame, and for some more the first time a window is asked for, until it
    // has painted what was covered. A window that closes or changes its size meanwhile is an error.
    virtual std::expected<QImage, WindowImageError> image(std::uint32_t windowId) = 0;

    virtual CapturePermission permission() const = 0;
};

} // namespace pelloran
