#include "overlay/OverlayPanelController.h"

#include "overlay/OverlayPanel/FloatingPanel.h"
#include "platform/PanelWindow.h"

#include <QMetaObject>

namespace pelloran {

OverlayPanelController::OverlayPanelController(const SystemSettings&, std::unique_ptr<PanelWindow> window)
    : panelWindow(std::move(window))
    , panel(std::make_unique<FloatingPanel>()) {
    connect(panel.get(), &FloatingPanel::customContextMenuRequested, this,
            [this](QPoint at) { Q_EMIT contextMenuRequested(panel->mapToGlobal(at)); });
}

OverlayPanelController::~OverlayPanelController() = default;

void OverlayPanelController::show() {
    panel->show();
}

void OverlayPanelController::hide() {
    panel->hide();
}

bool OverlayPanelController::isVisible() const {
    return panel->isVisible();
}

void OverlayPanelController::update(const OverlaySnapshot& snapshot) {
    QMetaObject::invokeMethod(this, [this, snapshot] { panel->setWindowTitle(snapshot.title); }, Qt::QueuedConnection);
}

void OverlayPanelController::systemSettingsChanged() {}

} // namespace pelloran
