#include "tests/soak/WholeProgram.h"

#include "app/desktop/AppDelegate.h"
#include "app/desktop/TrayStatusItem.h"
#include "app/ServerClients.h"
#include "base/Log.h"
#include "base/SerialQueue.h"
#include "overlay/OverlayPanelController.h"
#include "platform/ApplicationFiles.h"
#include "platform/ApplicationPresence.h"
#include "platform/PanelWindow.h"
#include "platform/UserDefaults.h"
#include "sync/ConfigSync.h"
#include "update/UpdatePrompts.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace pelloran::soak {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds patience = 60s;
constexpr double never = 1'000'000;      // seconds: the script ticks
constexpr int millisecondsOfATick = 900; // that animations see pass
constexpr int frameLength = 100;         // fewer pictures than a player sees, of the same motions

// Lines of the log that are told of no trouble.
constexpr const char* expected[] = {
    "boot ",
    "no window of the game is found", // while it starts
    "the figures in use are invented samples",
};

AppConfig configFor(const QString& logsDir) {
    AppConfig config;
    config.logsDir = logsDir;
    config.pollInterval = never;
    config.nameLengths = NameLengths::limitedUnlessExact;
    return config;
}

// What Qt has to say is nothing that a season expects, either; but for what no platform without a screen can do.
std::function<void(const QString&)>& warned() {
    static std::function<void(const QString&)> current;
    return current;
}

void hearQt(QtMsgType, const QMessageLogContext&, const QString& message) {
    if (warned() && !message.startsWith(QLatin1StringView("This plugin does not support "))) {
        warned()(message);
    }
}

// Runs the event loop until `done`, which is asked when something was told; false when that takes too long.
bool wait(const std::function<bool()>& done, std::function<void()>& told) {
    QEventLoop loop;
    bool late = false;
    QTimer limit; // QTimer::singleShot would leave one for every tick of the last minute
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, &loop, [&] {
        late = true;
        loop.quit();
    });
    limit.start(patience);
    told = [&] {
        if (done()) {
            loop.quit();
        }
    };
    if (!done()) {
        loop.exec();
    }
    told = {};
    return !late;
}

} // namespace

void WholeProgram::Receiver::draftServiceDidUpdate(const OverlaySnapshot& snapshot) {
    last = snapshot;
    ++count;
    if (told) {
        told();
    }
}

WholeProgram::WholeProgram(Screen& screen, const QString& logsDir, const QString& server)
    : defaults(UserDefaults::create())
    , files(ApplicationFiles::create())
    , store(*files)
    , screenReader([&screen] { return screen.server(); }, [this] { return TextReader::create(*files); })
    , recognition(SerialQueue::create(QStringLiteral("recognition")))
    , presence(ApplicationPresence::create())
    , statusItem(std::make_unique<TrayStatusItem>())
    , configSync(makeConfigSync(server, *files))
    , updates(std::make_unique<UpdateClient>(server, *defaults))
    , updatePrompts(std::make_unique<UpdatePrompts>(updates->checker(), alerts, browser))
    , receiver(std::make_shared<Receiver>()) {
    setLogSink([this](const QString& line) { note(line); });
    warned() = [this](const QString& message) { note(message); };
    qInstallMessageHandler(hearQt);
    AppLanguage::configure(defaults.get(), &settings);
    delegate = std::make_shared<AppDelegate>(AppDelegate::Parts{
        .store = store,
        .screenReader = screenReader,
        .queue = *recognition,
        .presence = *presence,
        .statusItem = *statusItem,
        .alerts = alerts,
        .configSync = *configSync,
        .updatePrompts = *updatePrompts,
        .settings = settings,
        .files = *files,
        .config = configFor(logsDir),
        .makeOverlay =
            [this] {
                return std::make_unique<OverlayPanelController>(settings, PanelWindow::create(),
                                                                MotionPreference::asDesktopSays, defaults.get());
            },
        .terminate = [this](int code) { exitCode = code; },
        .alsoReceives = receiver,
    });
}

WholeProgram::~WholeProgram() {
    delegate->applicationWillTerminate();
    delegate.reset();
    updatePrompts.reset();
    updates.reset();
    configSync.reset();
    recognition.reset();
    qInstallMessageHandler(nullptr);
    setLogSink({});
    AppLanguage::configure(nullptr, nullptr);
}

bool WholeProgram::launch() {
    askedSyncs = 1;
    delegate->applicationDidFinishLaunching();
    const bool settled = settle();
    configSync->stopPeriodicSync(); // goes by the clock on the wall, and would come at any tick
    return exitCode == 0 && alerts.shown.empty() && settled;
}

void WholeProgram::tick() {
    const int before = receiver->count;
    delegate->refreshNow();
    if (!wait([&] { return receiver->count > before; }, receiver->told)) {
        note(QStringLiteral("a tick does not end"));
    }
    time.pass(millisecondsOfATick, frameLength);
}

void WholeProgram::sync() {
    ++askedSyncs;
    delegate->checkConfigNow();
}

bool WholeProgram::settle() {
    // Said from the main thread.
    const QDeadlineTimer deadline(patience);
    while (endedSyncs < askedSyncs) {
        if (deadline.hasExpired()) {
            note(QStringLiteral("a sync does not end"));
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
    return true;
}

void WholeProgram::chooseLanguage(AppLanguage language) {
    const bool changes = AppLanguage::preference() != language;
    const int before = receiver->count;
    delegate->selectLanguage(language.rawValue());
    // A tick comes of it, which a later one would be taken for.
    if (changes && !wait([&] { return receiver->count > before; }, receiver->told)) {
        note(QStringLiteral("a tick does not end"));
    }
}

void WholeProgram::togglePanel() {
    delegate->toggleOverlay();
}

void WholeProgram::changeLook() {
    settings.setAppearance(settings.appearance() == Appearance::light ? Appearance::dark : Appearance::light);
}

void WholeProgram::note(const QString& line) {
    const std::scoped_lock lock(mutex);
    if (line.startsWith(QLatin1StringView("config sync: "))) {
        ++endedSyncs;
    } else if (line.startsWith(QLatin1StringView("reloaded store "))) {
        ++reloadedTimes;
    } else if (std::ranges::none_of(expected,
                                    [&](const char* begin) { return line.startsWith(QLatin1StringView(begin)); })) {
        constexpr qsizetype most = 50; // the soak's own memory does not grow either
        if (otherLines.size() < most) {
            otherLines.append(line);
        }
    }
}

QStringList WholeProgram::complaints() const {
    const std::scoped_lock lock(mutex);
    return otherLines;
}

} // namespace pelloran::soak
