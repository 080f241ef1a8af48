#include "platform/GuiSession.h"
#include "platform/PanelWindow.h"

#include <QtGlobal>

namespace pelloran {

namespace {

// A plain window that stays on top, until the system's own back end takes its place.
class PlainPanelWindow final : public PanelWindow {
public:
    Qt::WindowFlags windowFlags() const override {
        return Qt::Tool | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint | Qt::WindowStaysOnTopHint |
               Qt::WindowDoesNotAcceptFocus;
    }

    void attach(QWindow&) override {}

    void raise() override {}

    bool isComposited() const override { return true; }

    void blurBehind(double) override {}
};

} // namespace

std::unique_ptr<PanelWindow> PanelWindow::create() {
    return std::make_unique<PlainPanelWindow>();
}

std::expected<void, QString> GuiSession::prepare() {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || !qEnvironmentVariableIsEmpty("DISPLAY")) {
        return {};
    }
    return std::unexpected(QStringLiteral("no X display can be reached: DISPLAY is not set"));
}

} // namespace pelloran
