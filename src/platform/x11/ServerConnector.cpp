#include "platform/x11/ServerConnector.h"

#include <QtGlobal>

#include <thread>
#include <utility>

namespace pelloran::x11 {

namespace {

std::future<OpenedConnection> begin(const QByteArray& display) {
    std::promise<OpenedConnection> answer;
    std::future<OpenedConnection> attempt = answer.get_future();
    std::thread([display, promise = std::move(answer)]() mutable {
        OpenedConnection opened;
        opened.connection.reset(xcb_connect(display.constData(), &opened.screenNumber));
        // Goes with the promise where nobody takes it.
        promise.set_value(std::move(opened));
    }).detach();
    return attempt;
}

} // namespace

std::expected<OpenedConnection, NoConnection> ServerConnector::connect() {
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty()) {
        return std::unexpected(NoConnection::unreachable);
    }
    const bool isUnderWay = attempt.valid() && attempted == display;
    if (!isUnderWay) {
        attempt = begin(display);
        attempted = display;
    }
    if (attempt.wait_for(isUnderWay ? patience.whileStalled : patience.usual) != std::future_status::ready) {
        return std::unexpected(NoConnection::silent);
    }
    OpenedConnection opened = attempt.get();
    if (xcb_connection_has_error(opened.connection.get())) {
        return std::unexpected(NoConnection::unreachable);
    }
    return opened;
}

} // namespace pelloran::x11
