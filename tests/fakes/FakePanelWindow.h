#pragma once

#include "platform/PanelWindow.h"

#include <QWindow>

#include <utility>

namespace pelloran::testing {

// Remembers what was asked of it, on a desktop that composes windows or does not, as told.
class FakePanelWindow final : public PanelWindow {
public:
    // No tool window: Qt would raise that one by itself, which a screen in memory cannot do.
    Qt::WindowFlags windowFlags() const override { return Qt::Window | Qt::WindowDoesNotAcceptFocus; }

    void attach(QWindow& attached) override {
        window = &attached;
        ++attachments;
    }

    void raise() override {
        if (window && window->isVisible()) {
            ++raised;
        }
    }

    bool isComposited() const override { return composited; }

    void blurBehind(double cornerRadius) override { blurRadius = cornerRadius; }

    void setComposited(bool nowComposited) {
        if (std::exchange(composited, nowComposited) != nowComposited && compositingChanged) {
            compositingChanged();
        }
    }

    QWindow* window = nullptr;
    int attachments = 0;
    int raised = 0;
    double blurRadius = 0;

private:
    bool composited = true;
};

} // namespace pelloran::testing
