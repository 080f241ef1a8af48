#include "app/MessageBoxAlerts.h"

#include "app/localisation/L10n.h"
#include "platform/PanelWindow.h"

#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace pelloran {

namespace {

QMessageBox::Icon iconFor(Alerts::Style style) {
    switch (style) {
    case Alerts::Style::informational:
        return QMessageBox::Information;
    case Alerts::Style::warning:
        return QMessageBox::Warning;
    case Alerts::Style::critical:
        return QMessageBox::Critical;
    }
    Q_UNREACHABLE();
}

// The same for all buttons, so that they stand in the order given: desktops differ in which role they put first.
constexpr auto role = QMessageBox::ActionRole;

// News carry the program's own symbol; what is wrong, the one that this desktop has for it.
void setSymbol(QMessageBox& box, Alerts::Style style) {
    box.setIcon(iconFor(style));
    const QIcon own = QGuiApplication::windowIcon();
    if (style == Alerts::Style::informational && !own.isNull()) {
        constexpr int side = 48; // points
        box.setIconPixmap(own.pixmap(QSize(side, side), box.devicePixelRatio()));
    }
}

// A heading of what follows it: not every desktop tells them apart.
void emphasizeText(QMessageBox& box) {
    if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
        QFont font = label->font();
        font.setBold(true);
        label->setFont(font);
    }
}

// Short lines stay whole: by itself the box is as narrow as its buttons and its heading allow.
void giveRoomToLines(QMessageBox& box) {
    if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
        constexpr int most = 380; // points; longer lines are easier to read when broken
        label->setWordWrap(false);
        const int natural = label->sizeHint().width();
        label->setWordWrap(true);
        label->setMinimumWidth(std::min(natural, most));
    }
}

// With a line around it: a window that no window manager knows has no frame, and may lie on one of the same colour.
class FramedMessageBox final : public QMessageBox {
protected:
    void paintEvent(QPaintEvent* event) override {
        QMessageBox::paintEvent(event);
        if (windowFlags().testFlag(Qt::X11BypassWindowManagerHint)) {
            QPainter painter(this);
            painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
            painter.drawRect(rect().adjusted(0, 0, -1, -1));
        }
    }
};

} // namespace

MessageBoxAlerts::MessageBoxAlerts(std::function<std::unique_ptr<PanelWindow>()> above)
    : makeWindow(std::move(above)) {}

int MessageBoxAlerts::runModal(const Alert& alert) {
    FramedMessageBox box;
    const auto window = makeWindow(); // goes before the box
    // As high as the panel, but unlike it with the keyboard.
    box.setWindowFlags(box.windowFlags() |
                       (window->windowFlags() & (Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint)));
    setSymbol(box, alert.style);
    box.setWindowTitle(QGuiApplication::applicationDisplayName());
    // What comes from servers and files must not be taken for markup.
    box.setTextFormat(Qt::PlainText);
    box.setText(alert.messageText);
    box.setInformativeText(alert.informativeText);
    emphasizeText(box);
    giveRoomToLines(box);

    const QStringList titles = alert.buttons.isEmpty() ? QStringList{L10n::tr(u"update.btn.ok")} : alert.buttons;
    QList<QAbstractButton*> buttons;
    for (QString title : titles) {
        buttons.append(box.addButton(title.replace(u'&', QStringLiteral("&&")), role));
    }
    box.setDefaultButton(qobject_cast<QPushButton*>(buttons.first()));
    box.setEscapeButton(buttons.last());

    box.winId(); // makes it known to the window server
    window->attach(*box.windowHandle());
    // A window that no window manager knows is neither placed nor given the keyboard by one.
    QTimer::singleShot(0, &box, [&box, &window] {
        box.move(box.screen()->availableGeometry().center() - box.rect().center());
        window->raise();
        box.activateWindow();
    });
    box.exec();
    const qsizetype pressed = buttons.indexOf(box.clickedButton());
    return static_cast<int>(pressed < 0 ? buttons.size() - 1 : pressed);
}

} // namespace pelloran
