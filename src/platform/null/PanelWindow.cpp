#include "platform/PanelWindow.h"

#include <QWindow>

namespace pelloran {

namespace {

// As far as Qt goes on every system: above ordinary windows, but not above a full-screen one.
class NullPanelWindow final : public PanelWindow {
public:
    Qt::WindowFlags windowFlags() const override {
        return Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus;
    }

    void attach(QWindow& attached) override { window = &attached; }

    void raise() override {
        if (window && window->isVisible()) {
            window->raise();
        }
    }

    bool isComposited() const override { return true; }

    void blurBehind(double) override {}

private:
    QWindow* window = nullptr;
};

} // namespace

std::unique_ptr<PanelWindow> PanelWindow::create() {
    return std::make_unique<NullPanelWindow>();
}

} // namespace pelloran
