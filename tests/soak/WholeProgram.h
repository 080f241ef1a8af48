#pragma once

#include "data/WinrateStore.h"
#include "draft/DraftService.h"
#include "recognition/ScreenReader.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeBrowser.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/soak/Scenes.h"
#include "tests/support/ManualAnimationTime.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <mutex>

namespace pelloran {

class AppDelegate;
class ApplicationFiles;
class ApplicationPresence;
class ConfigSync;
class SerialQueue;
class TrayStatusItem;
class UpdateClient;
class UpdatePrompts;
class UserDefaults;

namespace soak {

// The desktop program in one piece, as DesktopApplication wires it, on Qt's platform without a screen: threads, reader,
// sync, panel and menu are the real ones. In place of what a desktop has for it there are the screen and the settings,
// and time passes only by ticks.
class WholeProgram {
public:
    // Needs a QApplication, and the folders of the environment to itself. Looks at `screen`, which outlives it; syncs
    // with `server`.
    WholeProgram(Screen& screen, const QString& logsDir, const QString& server);
    ~WholeProgram();

    // False when the data cannot be loaded.
    bool launch();

    // One tick to its end, and what a player sees of the panel's motion until the next one.
    void tick();

    // What was published last.
    const OverlaySnapshot& shown() const { return receiver->last; }

    // Looks for new data; settle() waits for what comes of it.
    void sync();
    bool settle();

    void chooseLanguage(AppLanguage language);
    void togglePanel();
    void changeLook();

    int syncs() const { return endedSyncs; }

    int reloads() const { return reloadedTimes; }

    // Lines of the log that a season does not expect.
    QStringList complaints() const;

private:
    struct Receiver final : DraftServiceDelegate {
        void draftServiceDidUpdate(const OverlaySnapshot& snapshot) override;

        OverlaySnapshot last;
        int count = 0;
        std::function<void()> told;
    };

    void note(const QString& line);

    // In the order in which one needs the other.
    mutable std::mutex mutex; // over what the log tells
    int endedSyncs = 0;
    int reloadedTimes = 0;
    QStringList otherLines;
    int askedSyncs = 0;
    int exitCode = 0;
    testing::ManualAnimationTime time;
    testing::FakeSystemSettings settings;
    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<ApplicationFiles> files;
    WinrateStore store;
    ScreenReader screenReader;
    std::unique_ptr<SerialQueue> recognition;
    std::unique_ptr<ApplicationPresence> presence;
    testing::FakeAlerts alerts;
    std::unique_ptr<TrayStatusItem> statusItem;
    std::unique_ptr<ConfigSync> configSync;
    testing::FakeBrowser browser;
    std::unique_ptr<UpdateClient> updates;
    std::unique_ptr<UpdatePrompts> updatePrompts;
    std::shared_ptr<Receiver> receiver;
    std::shared_ptr<AppDelegate> delegate;
};

} // namespace soak

} // namespace pelloran
