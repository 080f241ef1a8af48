#include "platform/GuiSession.h"

#include "platform/freedesktop/SessionBus.h"
#include "platform/x11/ServerConnector.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QCoreApplication>

#include <utility>

namespace pelloran::GuiSession {

namespace {

constexpr char platformVariable[] = "QT_QPA_PLATFORM";

// Of a value such as "xcb:option;wayland", what Qt tries first.
bool triesXcbFirst(const QByteArray& platforms) {
    return platforms.split(';').front().split(':').front() == "xcb";
}

// A server without clients starts anew, and turns away who connects meanwhile: where nobody else is there yet, this
// connection is kept until Qt has its own.
x11::OpenedConnection& untilQtIsThere() {
    static x11::OpenedConnection kept;
    return kept;
}

bool reachesServer() {
    // Qt would wait without a limit for a server that hangs.
    auto opened = x11::ServerConnector().connect();
    if (!opened) {
        return false;
    }
    untilQtIsThere() = *std::move(opened);
    qAddPreRoutine([] { untilQtIsThere() = {}; }); // called once the application object has connected
    return true;
}

} // namespace

std::expected<void, QString> prepare() {
    freedesktop::avoidSilentSessionBus();
    if (qEnvironmentVariableIsEmpty(platformVariable)) {
        // A window on a Wayland desktop can neither stay on top nor be placed. XWayland's can.
        qputenv(platformVariable, "xcb");
    }
    if (!triesXcbFirst(qgetenv(platformVariable)) || reachesServer()) {
        return {};
    }
    const QString display = qEnvironmentVariable("DISPLAY");
    if (display.isEmpty()) {
        return std::unexpected(QStringLiteral("No desktop to show the panel on: the variable $DISPLAY is not set."));
    }
    return std::unexpected(
        QStringLiteral("No desktop to show the panel on: the X server of $DISPLAY (\"%1\") cannot be reached.")
            .arg(display));
}

QString display() {
    return qEnvironmentVariable("DISPLAY");
}

} // namespace pelloran::GuiSession
