// The contracts of what shows itself, on a screen in memory; X11ContractTests.cpp runs this program on a display.
#include "app/desktop/MessageBoxAlerts.h"
#include "app/desktop/TrayStatusItem.h"
#include "overlay/OverlayPanelController.h"
#include "tests/contracts/AlertsContract.h"
#include "tests/contracts/ApplicationPresenceContract.h"
#include "tests/contracts/OverlayContract.h"
#include "tests/contracts/PanelWindowContract.h"
#include "tests/contracts/StatusItemContract.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplicationPresence.h"
#include "tests/fakes/FakeOverlay.h"
#include "tests/fakes/FakePanelWindow.h"
#include "tests/fakes/FakeStatusItem.h"
#include "tests/fakes/FakeSystemSettings.h"

#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

#include <algorithm>

namespace pelloran::testing {

namespace {

using ::testing::Values;

// PanelWindow

INSTANTIATE_TEST_SUITE_P(BackEnds, PanelWindowContract,
                         Values(BackEnd<std::unique_ptr<PanelWindow>>{"System", PanelWindow::create},
                                BackEnd<std::unique_ptr<PanelWindow>>{
                                    "Fake", [] { return std::make_unique<FakePanelWindow>(); }}),
                         nameOfBackEnd);

// ApplicationPresence

std::unique_ptr<ApplicationPresence> fakePresence() {
    static QStringList steps;
    return std::make_unique<FakeApplicationPresence>(steps);
}

INSTANTIATE_TEST_SUITE_P(BackEnds, ApplicationPresenceContract,
                         Values(BackEnd<std::unique_ptr<ApplicationPresence>>{"System", ApplicationPresence::create},
                                BackEnd<std::unique_ptr<ApplicationPresence>>{"Fake", fakePresence}),
                         nameOfBackEnd);

// Alerts

// The user sees the alert once it stands there.
void answerTheNextBox(std::optional<int> button, const std::function<void()>& first) {
    auto* const looking = new QTimer(qApp);
    const QWidget* const below = QApplication::activeModalWidget();
    QObject::connect(looking, &QTimer::timeout, looking, [=] {
        auto* const box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!box || box == below || !box->isVisible()) {
            return;
        }
        looking->stop();
        looking->deleteLater();
        if (first) {
            first();
        }
        if (button) {
            QList<QPushButton*> buttons = box->findChildren<QPushButton*>();
            std::ranges::sort(buttons, {}, [](const QPushButton* one) { return one->x(); });
            ASSERT_LT(*button, buttons.size());
            buttons[*button]->click();
        } else {
            box->close();
        }
    });
    looking->start(0);
}

AnsweredAlerts messageBoxes() {
    return {std::make_unique<MessageBoxAlerts>([] { return PanelWindow::create(); }),
            [](Alerts&, std::optional<int> button, const std::function<void()>& first) {
                answerTheNextBox(button, first);
            }};
}

AnsweredAlerts fakeAlerts() {
    return {std::make_unique<FakeAlerts>(),
            [](Alerts& alerts, std::optional<int> button, const std::function<void()>& first) {
                auto& fake = static_cast<FakeAlerts&>(alerts);
                fake.pressed = button;
                fake.whenShown = [&fake, button, first] {
                    if (first) {
                        first(); // may tell it of another one
                    }
                    fake.pressed = button;
                };
            }};
}

INSTANTIATE_TEST_SUITE_P(BackEnds, AlertsContract,
                         Values(BackEnd<AnsweredAlerts>{"MessageBox", messageBoxes},
                                BackEnd<AnsweredAlerts>{"Fake", fakeAlerts}),
                         nameOfBackEnd);

// StatusItem

QAction* actionIn(const QMenu& menu, const QString& title) {
    for (QAction* action : menu.actions()) {
        if (action->text() == title && action->isEnabled() && !action->menu()) {
            return action;
        }
        if (action->menu()) {
            if (QAction* const within = actionIn(*action->menu(), title)) {
                return within;
            }
        }
    }
    return nullptr;
}

ClickedItem trayItem() {
    return {{}, std::make_unique<TrayStatusItem>(), [](StatusItem& item, const QString& title) {
                item.openMenu(QPoint(10, 10));
                auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
                if (!menu) {
                    return false;
                }
                QAction* const action = actionIn(*menu, title);
                menu->close();
                if (action) {
                    action->trigger();
                }
                QCoreApplication::sendPostedEvents();
                return action != nullptr;
            }};
}

// By its title, as a user would.
bool chooseIn(const FakeStatusItem& item, const std::vector<StatusMenuEntry>& entries, const QString& title) {
    return std::ranges::any_of(entries, [&](const StatusMenuEntry& entry) {
        return (entry.title == title && entry.enabled && entry.submenu.empty() &&
                item.choose(entry.action, entry.representedObject)) ||
               chooseIn(item, entry.submenu, title);
    });
}

ClickedItem fakeItem() {
    auto steps = std::make_shared<QStringList>();
    auto item = std::make_unique<FakeStatusItem>(*steps);
    return {steps, std::move(item), [](StatusItem& clicked, const QString& title) {
                const auto& fake = static_cast<const FakeStatusItem&>(clicked);
                const auto entries = fake.menu; // which may be replaced meanwhile
                return chooseIn(fake, entries, title);
            }};
}

INSTANTIATE_TEST_SUITE_P(BackEnds, StatusItemContract,
                         Values(BackEnd<ClickedItem>{"Tray", trayItem}, BackEnd<ClickedItem>{"Fake", fakeItem}),
                         nameOfBackEnd);

// Overlay

MadeOverlay panelOverlay() {
    auto settings = std::make_shared<FakeSystemSettings>();
    auto overlay = std::make_unique<OverlayPanelController>(*settings, PanelWindow::create());
    return {settings, std::move(overlay)};
}

MadeOverlay fakeOverlay() {
    struct Told {
        OverlayRecord record;
        QStringList steps;
    };

    auto told = std::make_shared<Told>();
    auto overlay = std::make_unique<FakeOverlay>(told->record, told->steps);
    return {told, std::move(overlay)};
}

INSTANTIATE_TEST_SUITE_P(BackEnds, OverlayContract,
                         Values(BackEnd<MadeOverlay>{"Panel", panelOverlay}, BackEnd<MadeOverlay>{"Fake", fakeOverlay}),
                         nameOfBackEnd);

} // namespace

} // namespace pelloran::testing
