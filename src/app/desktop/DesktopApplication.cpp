#include "app/desktop/DesktopApplication.h"

#include "app/desktop/AppDelegate.h"
#include "app/desktop/Appearance.h"
#include "app/desktop/MessageBoxAlerts.h"
#include "app/desktop/SingleInstance.h"
#include "app/desktop/TrayStatusItem.h"
#include "app/DraftParts.h"
#include "app/ServerClients.h"
#include "base/Log.h"
#include "base/SerialQueue.h"
#include "overlay/OverlayPanelController.h"
#include "platform/ApplicationFiles.h"
#include "platform/ApplicationPresence.h"
#include "platform/Browser.h"
#include "platform/GuiSession.h"
#include "platform/PanelWindow.h"
#include "platform/posix/PrivateFolder.h"
#include "platform/posix/TerminationSignals.h"
#include "platform/SystemSettings.h"
#include "sync/ConfigSync.h"
#include "update/UpdatePrompts.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QSessionManager>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <utility>

namespace pelloran {

namespace {

// What the session manager restarts at the next log-in is the user's list of programs, not what happened to run.
void leaveRestartToTheUser(QSessionManager& manager) {
    manager.setRestartHint(QSessionManager::RestartNever);
}

// Where the connection to the desktop breaks, Qt says so and calls exit() from within the event loop: nothing that
// main() holds would end, and what is static would go while our threads use it. So what has to be done comes first, and
// nothing after it. One at a time; on the main thread.
class EndWithDesktop {
public:
    explicit EndWithDesktop(std::function<void()> leave) {
        atEnd = std::move(leave);
        static const int registered = std::atexit(&EndWithDesktop::end);
        Q_UNUSED(registered);
    }

    ~EndWithDesktop() { atEnd = {}; }

    EndWithDesktop(const EndWithDesktop&) = delete;
    EndWithDesktop& operator=(const EndWithDesktop&) = delete;

private:
    static void end() {
        if (!atEnd) {
            return; // main() has come to its end
        }
        log(QStringLiteral("the desktop has gone or has hung up on Pelloran, which ends with it: start it again where "
                           "you are logged in"));
        atEnd();
        std::fflush(nullptr);
        std::_Exit(EXIT_FAILURE);
    }

    static inline std::function<void()> atEnd;
};

} // namespace

int runOnDesktop(const RunLoop& command, SystemSettings& settings, UserDefaults& defaults) {
    SingleInstance instance(privateRuntimeFolder(qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath()),
                            instanceName(GuiSession::display()));
    switch (instance.begin()) {
    case SingleInstance::Outcome::first:
    case SingleInstance::Outcome::unavailable:
        break;
    case SingleInstance::Outcome::handedOver:
        log(QStringLiteral("running already; its panel has been brought forward"));
        if (command.resetPanel) {
            log(QStringLiteral("--reset-panel has forgotten nothing; end the running program first"));
        }
        if (command.record) {
            log(QStringLiteral("--record keeps nothing; end the running program first"));
        }
        return EXIT_SUCCESS;
    case SingleInstance::Outcome::firstSilent:
        log(QStringLiteral("running already, but it does not answer; end it first (\"pelloran doctor\" tells how)"));
        return EXIT_FAILURE;
    }

    const TerminationSignals signals;
    QApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, qApp, leaveRestartToTheUser);
    QObject::connect(qApp, &QGuiApplication::saveStateRequest, qApp, leaveRestartToTheUser);
    applyAppearance(settings.appearance());
    writeChineseAsThePanel();
    remarkOnMissingFonts();

    DraftParts parts(command);
    if (const auto icon = parts.files->resource(QStringLiteral("pelloran"), QStringLiteral("png"), QString())) {
        QApplication::setWindowIcon(QIcon(*icon));
    }
    const auto presence = ApplicationPresence::create();
    MessageBoxAlerts alerts(PanelWindow::create, [&presence] { presence->activate(); });
    TrayStatusItem statusItem;
    if (!statusItem.isAvailable()) {
        log(QStringLiteral(
            "this desktop has no status area; the menu opens on a right click of the panel, and starting "
            "Pelloran again shows one that was closed"));
    }
    // Mends what an earlier run left half done, so before the data is loaded.
    const auto configSync = makeConfigSync(command.configServer, *parts.files);
    const UpdateClient updates(command.updateServer, defaults);
    const auto browser = Browser::create();
    UpdatePrompts updatePrompts(updates.checker(), alerts, *browser);
    if (command.resetPanel) {
        defaults.remove(OverlayPanelController::placesKey);
    }
    const auto motion = command.reduceMotion ? MotionPreference::reduced : MotionPreference::asDesktopSays;
    const auto delegate = std::make_shared<AppDelegate>(AppDelegate::Parts{
        .store = parts.store,
        .screenReader = parts.screenReader,
        .queue = *parts.recognition,
        .presence = *presence,
        .statusItem = statusItem,
        .alerts = alerts,
        .configSync = *configSync,
        .updatePrompts = updatePrompts,
        .settings = settings,
        .files = *parts.files,
        .config = parts.config,
        .makeOverlay =
            [&settings, &defaults, motion] {
                return std::make_unique<OverlayPanelController>(settings, PanelWindow::create(), motion, &defaults);
            },
        .terminate = &QCoreApplication::exit,
        .alsoReceives = parts.printer,
        .observe = [&parts](const DraftService& service) { parts.observe(service); },
    });
    QObject::connect(&instance, &SingleInstance::reopenRequested, delegate.get(),
                     &AppDelegate::applicationShouldHandleReopen);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, delegate.get(), [&instance, &delegate] {
        instance.end(); // a start from now on is not to wait for this one
        delegate->applicationWillTerminate();
    });
    // The user's choices are stored as they are made.
    const EndWithDesktop endWithDesktop([&] {
        instance.end();
        delegate->applicationWillTerminate();
        parts.finishRecording();
    });
    QTimer::singleShot(0, delegate.get(), &AppDelegate::applicationDidFinishLaunching);
    return QCoreApplication::exec();
}

int failWithoutDisplay(const QString& reason) {
    // Data that cannot be loaded would be the next thing to fail.
    const auto files = ApplicationFiles::create();
    WinrateStore store(*files);
    if (const auto loaded = store.loadFromBundle(); !loaded) {
        log(loadFailureLine(loaded.error()));
    } else {
        log(QStringLiteral("%1; --no-panel follows the draft without a display").arg(reason));
    }
    return EXIT_FAILURE;
}

} // namespace pelloran
