// A window on an X server, kept there by PanelWindow, for tests that look at it from outside. Says its number first,
// then each change of the compositor. Lines of standard input tell it what to do.
#include "platform/GuiSession.h"
#include "platform/PanelWindow.h"
#include "platform/x11/X11PanelWindow.h"

#include <QApplication>
#include <QMenu>
#include <QSocketNotifier>
#include <QWidget>
#include <QWindow>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

using namespace pelloran;

namespace {

void say(const QString& line) {
    std::fputs((line + u'\n').toUtf8().constData(), stdout);
    std::fflush(stdout);
}

// Real time, which can be put forward.
class ProbeClock final : public x11::PanelClock {
public:
    explicit ProbeClock(std::chrono::hours& putForwardBy, int& countedLooks)
        : ahead(putForwardBy)
        , looks(countedLooks) {
        real.alarm = [this] {
            alarm();
            ++looks;
        };
    }

    TimePoint now() const override { return real.now() + ahead; }

    void setAlarm(TimePoint due) override { real.setAlarm(due - ahead); }

    void clearAlarm() override { real.clearAlarm(); }

    bool hasAlarm() const override { return real.hasAlarm(); }

private:
    std::chrono::hours& ahead;
    int& looks;
    x11::EventLoopClock real;
};

} // namespace

int main(int argc, char** argv) {
    if (const auto ready = GuiSession::prepare(); !ready) {
        say(ready.error());
        return 1;
    }
    QApplication application(argc, argv);
    std::chrono::hours ahead{0};
    int looks = 0;
    const auto panel = x11::createPanelWindow(std::make_unique<ProbeClock>(ahead, looks));
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
    const auto obey = [&](const QByteArray& command) {
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
        } else if (command == "later") {
            ++ahead;
            say(QString::number(looks));
        } else if (command == "looks") {
            say(QString::number(looks));
        } else if (command == "alert") {
            aboveAll = x11::createPanelWindow(std::make_unique<ProbeClock>(ahead, looks));
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
    };
    QSocketNotifier commands(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&commands, &QSocketNotifier::activated, &application, [&] {
        char bytes[100];
        const auto size = read(STDIN_FILENO, bytes, sizeof bytes);
        const QByteArray lines = QByteArray(bytes, std::max<qsizetype>(size, 0)).trimmed();
        for (const QByteArray& line : lines.split('\n')) { // none: whoever gave the commands is gone
            obey(line);
        }
    });
    return QApplication::exec();
}
