#pragma once

#include "app/desktop/StatusMenu.h"
#include "data/WinrateData.h"
#include "draft/DraftService.h"
#include "overlay/Overlay.h"
#include "sync/ConfigSyncResult.h"

#include <QMetaObject>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace pelloran {

class Alerts;
class ApplicationFiles;
class ApplicationPresence;
class ConfigSync;
class ScreenReader;
class SerialQueue;
class StatusItem;
class SystemSettings;
class UpdatePrompts;
class WinrateStore;

// The wiring of the desktop program: loads the data, starts the draft service and the configuration sync, owns the
// panel, fills the status item and its menu, hands on every snapshot, loads the data again when a sync brought some or
// finds what another process brought, and makes all visible text anew when the language changes. Lives for the whole
// run, held by a std::shared_ptr; main thread only.
class AppDelegate final : public QObject,
                          public DraftServiceDelegate,
                          public std::enable_shared_from_this<AppDelegate> {
public:
    // What it wires together. All references outlive it.
    struct Parts {
        WinrateStore& store;
        ScreenReader& screenReader;
        SerialQueue& queue;
        ApplicationPresence& presence;
        StatusItem& statusItem;
        Alerts& alerts;
        ConfigSync& configSync;
        UpdatePrompts& updatePrompts;
        SystemSettings& settings;
        const ApplicationFiles& files;
        AppConfig config;
        std::function<std::unique_ptr<Overlay>()> makeOverlay;
        std::function<void(int exitCode)> terminate;        // ends the event loop, once it runs
        std::shared_ptr<DraftServiceDelegate> alsoReceives; // every snapshot of the service; may be null
        // Called with the service before it starts; may be empty.
        std::function<void(const DraftService&)> observe = {}; // NOLINT(readability-redundant-member-init)
    };

    explicit AppDelegate(Parts toWire);
    ~AppDelegate() override;

    // The whole start, from the running event loop. Where the data cannot be loaded it says so and terminates.
    void applicationDidFinishLaunching();

    // The user has started the program again while it runs.
    void applicationShouldHandleReopen();

    // Stops what runs. The second call and every later one do nothing.
    void applicationWillTerminate();

    void draftServiceDidUpdate(const OverlaySnapshot& snapshot) override;

    // What the menu's entries do.
    void toggleOverlay();
    void refreshNow();
    void checkConfigNow();
    void checkAppUpdateNow();
    void selectLanguage(const QString& representedObject);
    void quit();

private:
    void setupStatusItem();
    void rebuildStatusMenu();
    void applyIdleBootMessage();
    void applySyncIdleMessage(const ConfigSyncResult& result);
    void handleConfigSyncResult(const ConfigSyncResult& result);
    void languageDidChange();
    void systemSettingsDidChange();
    void perform(const StatusMenuEntry& entry);

    const Parts parts;
    std::unique_ptr<Overlay> overlay;
    std::optional<DraftService> service; // once the data has been loaded
    QString idleStatusLine;
    std::optional<ConfigSyncResult> lastSyncResult; // the last that was not about being busy
    std::shared_ptr<WinrateData> broughtData;       // by or before the sync whose result comes next
    QMetaObject::Connection languageObserver;
    bool terminated = false;
};

} // namespace pelloran
