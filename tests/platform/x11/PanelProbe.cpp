// A window on an X server, kept there by PanelWindow, for tests that look at it from outside. Says its number first,
// then each change of the compositor. Lines of standard input tell it what to do.
#include "platform/GuiSession.h"
#include "platform/PanelWindow.h"

#include <QApplication>
#include <QMenu>
#include <QSocketNotifier>
#include <QWidget>
#include <QWindow>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>

using namespace pelloran;

namespace {

void say(const QString& line) {
    std::fputs((line + u'\n').toUtf8().constData(), stdout);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    if (const auto ready = GuiSession::prepare(); !ready) {
        say(ready.error());
        return 1;
    }
    QApplication application(argc, argv);
    const auto panel = PanelWindow::create();
    QWidget widget(nullptr, panel->windowFlags());
    widget.setAttribute(Qt::WA_ShowWithoutActivating);
    widget.setGeometry(100, 100, 360, 420);
    widget.winId();
    panel->attach(*widget.windowHandle());
    panel->blurBehind(14);
    widget.show();
    panel->raise();

    const auto sayComposited = [&] { say(QStringLiteral("composited %1").arg(panel->isComposited() ? 1 : 0)); };
    panel->compositingChanged = sayComposited;
    say(QString::number(widget.winId()));
    sayComposited();

    std::unique_ptr<QWidget> alert;
    std::unique_ptr<PanelWindow> aboveAll; // goes before the alert
    QMenu menu;
    menu.addAction(QStringLiteral("an entry"));
    QSocketNotifier commands(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&commands, &QSocketNotifier::activated, &application, [&] {
        char line[100];
        const auto size = read(STDIN_FILENO, line, sizeof line);
        const QByteArray command = QByteArray(line, std::max<qsizetype>(size, 0)).trimmed();
        if (command == "raise") {
            panel->raise();
        } else if (command == "hide") {
            widget.hide();
        } else if (command == "show") {
            widget.show();
            panel->raise();
        } else if (command == "resize") {
            widget.resize(200, 100);
            panel->blurBehind(10);
        } else if (command == "alert") {
            aboveAll = PanelWindow::create();
            alert = std::make_unique<QWidget>(nullptr, aboveAll->windowFlags());
            alert->setGeometry(200, 200, 360, 420);
            alert->winId();
            aboveAll->attach(*alert->windowHandle());
            alert->show();
            aboveAll->raise();
            say(QString::number(alert->winId()));
        } else if (command == "answer") {
            aboveAll.reset();
            alert.reset();
        } else if (command == "menu") {
            menu.popup(widget.geometry().center());
            say(QString::number(menu.winId()));
        } else {
            QCoreApplication::quit();
        }
    });
    return QApplication::exec();
}
