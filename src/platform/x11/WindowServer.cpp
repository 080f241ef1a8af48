#include "platform/WindowServer.h"

#include "base/Log.h"
#include "platform/x11/WindowImages.h"
#include "platform/x11/WindowList.h"
#include "platform/x11/XcbConnection.h"

#include <utility>

namespace pelloran {

namespace {

QString lineFor(x11::NoConnection reason) {
    switch (reason) {
    case x11::NoConnection::unreachable:
        return QStringLiteral("no X display can be reached (DISPLAY is \"%1\"), so no window can be seen; trying on");
    case x11::NoConnection::silent:
        return QStringLiteral("the X server (DISPLAY is \"%1\") does not answer, so no window can be seen; trying on");
    }
    Q_UNREACHABLE();
}

// Connects when it is first asked, and again after the connection broke: the program may start before its display, or
// outlive it.
class X11WindowServer final : public WindowServer {
public:
    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) override {
        return connect() ? x11::describeWindows(session->connection(), listing) : std::nullopt;
    }

    std::expected<QImage, WindowImageError> image(std::uint32_t windowId) override {
        if (!connect()) {
            return std::unexpected(WindowServerLost{"connecting to $DISPLAY"});
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
            auto connection = x11::XcbConnection::open(connector);
            if (connection) {
                session.emplace(*std::move(connection));
                told.reset();
            } else if (std::exchange(told, connection.error()) != connection.error()) {
                log(lineFor(connection.error()).arg(qEnvironmentVariable("DISPLAY")));
            }
        }
        return session.has_value();
    }

    x11::ServerConnector connector;
    std::optional<Session> session;
    std::optional<x11::NoConnection> told; // why there is no session, as the log has it
};

} // namespace

std::unique_ptr<WindowServer> WindowServer::create() {
    return std::make_unique<X11WindowServer>();
}

} // namespace pelloran
