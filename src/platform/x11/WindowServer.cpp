#include "platform/WindowServer.h"

#include "base/Log.h"
#include "platform/x11/WindowImages.h"
#include "platform/x11/WindowList.h"
#include "platform/x11/XcbConnection.h"

#include <utility>

namespace pelloran {

namespace {

// Connects when it is first asked, and again after the connection broke: the program may start before its display, or
// outlive it.
class X11WindowServer final : public WindowServer {
public:
    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) override {
        return connect() ? x11::describeWindows(session->connection(), listing) : std::nullopt;
    }

    std::expected<QImage, WindowImageError> image(std::uint32_t windowId) override {
        if (!connect()) {
            return std::unexpected(WindowServerFailed{"cannot reach the X server of $DISPLAY", 0});
        }
        return session->images.take(windowId);
    }

    // X11 has no such permission: who may connect may look.
    CapturePermission permission() const override { return CapturePermission::granted; }

private:
    struct Session {
        explicit Session(std::unique_ptr<x11::XcbConnection> opened)
            : owned(std::move(opened))
            , images(*owned) {}

        const x11::XcbConnection& connection() const { return *owned; }

        std::unique_ptr<x11::XcbConnection> owned;
        x11::WindowImages images; // ends before the connection
    };

    bool connect() {
        if (session && session->connection().broken()) {
            session.reset();
        }
        if (!session) {
            if (auto connection = x11::XcbConnection::open()) {
                session.emplace(std::move(connection));
                toldOfMissingDisplay = false;
            } else if (!std::exchange(toldOfMissingDisplay, true)) {
                log(QStringLiteral(
                        "no X display can be reached (DISPLAY is \"%1\"), so no window can be seen; trying on")
                        .arg(qEnvironmentVariable("DISPLAY")));
            }
        }
        return session.has_value();
    }

    std::optional<Session> session;
    bool toldOfMissingDisplay = false;
};

} // namespace

std::unique_ptr<WindowServer> WindowServer::create() {
    return std::make_unique<X11WindowServer>();
}

} // namespace pelloran
