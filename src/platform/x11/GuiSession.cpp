#include "platform/GuiSession.h"

#include "platform/x11/ServerConnector.h"

#include <QByteArray>
#include <QByteArrayList>

namespace pelloran::GuiSession {

namespace {

constexpr char platformVariable[] = "QT_QPA_PLATFORM";

// Of a value such as "xcb:option;wayland", what Qt tries first.
bool triesXcbFirst(const QByteArray& platforms) {
    return platforms.split(';').front().split(':').front() == "xcb";
}

bool reachesServer() {
    // Qt would wait without a limit for a server that hangs.
    return x11::ServerConnector().connect().has_value();
}

} // namespace

std::expected<void, QString> prepare() {
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
