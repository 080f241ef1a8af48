#include "app/desktop/AppDelegate.h"

#include "app/desktop/Appearance.h"
#include "app/desktop/StatusItem.h"
#include "app/DraftParts.h"
#include "base/Log.h"
#include "data/WinrateStore.h"
#include "localisation/AppLanguage.h"
#include "localisation/L10n.h"
#include "platform/Alerts.h"
#include "platform/ApplicationFiles.h"
#include "platform/ApplicationPresence.h"
#include "platform/SystemSettings.h"
#include "sync/ConfigSync.h"
#include "sync/ShortHash.h"
#include "update/UpdatePrompts.h"

#include <cstdlib>
#include <utility>
#include <variant>

namespace pelloran {

namespace {

const QString idleTitle = QStringLiteral("PL");
const QString draftTitle = QStringLiteral("PL●");

// What the status line calls the configuration in use.
QString installedConfiguration(const ConfigSync& configSync) {
    const auto hash = configSync.localHash();
    return hash ? shortHash(*hash) + u'…' : L10n::tr(u"idle.hashBundled");
}

// Key of the status line's beginning; null where the result has nothing to say there.
const char16_t* headKey(const ConfigSyncResult& result) {
    struct Key {
        const char16_t* operator()(const ConfigSyncResult::UpToDate&) const { return u"sync.upToDate"; }

        const char16_t* operator()(const ConfigSyncResult::Updated&) const { return u"sync.updated"; }

        const char16_t* operator()(const ConfigSyncResult::SkippedOffline&) const { return u"sync.offline"; }

        const char16_t* operator()(const ConfigSyncResult::Failed&) const { return u"sync.failed"; }

        const char16_t* operator()(const ConfigSyncResult::SkippedBusy&) const { return nullptr; }
    };

    return std::visit(Key(), result.outcome);
}

} // namespace

AppDelegate::AppDelegate(Parts toWire)
    : parts(std::move(toWire)) {
    parts.configSync.prepareUpdate = [this, &files = parts.files] {
        return [this, data = std::make_shared<WinrateData>(WinrateData::read(files))] { broughtData = data; };
    };
}

AppDelegate::~AppDelegate() {
    applicationWillTerminate();
}

void AppDelegate::applicationDidFinishLaunching() {
    parts.presence.begin();
    parts.presence.reopened = [this] { applicationShouldHandleReopen(); };
    overlay = parts.makeOverlay();
    overlay->contextMenuRequested = [this](QPoint position) { parts.statusItem.openMenu(position); };
    parts.settings.changed = [this] { systemSettingsDidChange(); };
    setupStatusItem();
    overlay->open(); // in front, but the keyboard stays with the game
    parts.presence.activate();

    // Before the files are read: those that another process puts there meanwhile count as new.
    parts.configSync.loadedHash = parts.configSync.localHash();
    if (const auto loaded = parts.store.loadFromBundle(); !loaded) {
        log(loadFailureLine(loaded.error()));
        parts.alerts.runModal({
            .style = Alerts::Style::critical,
            .messageText = L10n::tr(u"fatal.loadTitle"),
            .informativeText = loaded.error().localizedDescription,
            .buttons = {},
        });
        parts.terminate(EXIT_FAILURE);
        return;
    }
    remarkOnSampleData(parts.store);

    service.emplace(parts.config, parts.store, parts.queue, parts.screenReader);
    service->delegate = weak_from_this();
    if (parts.observe) {
        parts.observe(*service);
    }
    service->start();
    applyIdleBootMessage();
    log(bootLine(parts.store));
    languageObserver =
        connect(&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted, this, &AppDelegate::languageDidChange);
    parts.configSync.startPeriodicSync(
        this, [this](const ConfigSyncResult& result) { handleConfigSyncResult(result); }, true);
    parts.updatePrompts.presentLaunchPromptIfNeeded();
}

void AppDelegate::applicationShouldHandleReopen() {
    if (overlay) {
        overlay->show();
        parts.presence.activate();
    }
}

void AppDelegate::applicationWillTerminate() {
    if (std::exchange(terminated, true)) {
        return;
    }
    disconnect(languageObserver);
    parts.settings.changed = {};
    parts.presence.reopened = {};
    parts.statusItem.chosen = {};
    parts.configSync.stopPeriodicSync();
    parts.configSync.prepareUpdate = {};
    if (service) {
        service->stop();
    }
}

void AppDelegate::draftServiceDidUpdate(const OverlaySnapshot& snapshot) {
    overlay->update(snapshot);
    if (!parts.statusItem.hasImage()) {
        parts.statusItem.setTitle(snapshot.inDraft ? draftTitle : idleTitle);
    }
    if (parts.alsoReceives) {
        parts.alsoReceives->draftServiceDidUpdate(snapshot);
    }
}

void AppDelegate::toggleOverlay() {
    if (!overlay) {
        return;
    }
    if (overlay->isVisible()) {
        overlay->hide();
    } else {
        overlay->show();
    }
}

void AppDelegate::refreshNow() {
    if (service) {
        service->tick();
    }
}

void AppDelegate::checkConfigNow() {
    parts.configSync.syncAsync(this, [this](const ConfigSyncResult& result) { handleConfigSyncResult(result); });
}

void AppDelegate::checkAppUpdateNow() {
    parts.updatePrompts.presentManualCheck();
}

void AppDelegate::selectLanguage(const QString& representedObject) {
    const auto language = AppLanguage::fromRawValue(representedObject);
    if (!language) {
        return;
    }
    AppLanguage::setPreference(*language);
    rebuildStatusMenu();
}

void AppDelegate::quit() {
    parts.terminate(EXIT_SUCCESS);
}

void AppDelegate::setupStatusItem() {
    parts.statusItem.chosen = [this](const StatusMenuEntry& entry) { perform(entry); };
    const auto image = parts.files.resource(QStringLiteral("MenuIcon"), QStringLiteral("png"), QString());
    if (!image || !parts.statusItem.setImage(*image)) {
        parts.statusItem.setTitle(idleTitle);
    }
    parts.statusItem.setToolTip(L10n::tr(u"app.tooltip"));
    rebuildStatusMenu();
}

void AppDelegate::rebuildStatusMenu() {
    parts.statusItem.setMenu(statusMenu(AppLanguage::preference()));
}

void AppDelegate::applyIdleBootMessage() {
    idleStatusLine = L10n::tr(u"idle.boot", {installedConfiguration(parts.configSync)});
    service->idleMessage = idleStatusLine;
    overlay->update(OverlaySnapshot::idle(idleStatusLine));
}

void AppDelegate::applySyncIdleMessage(const ConfigSyncResult& result) {
    const char16_t* head = headKey(result);
    if (!head) {
        return;
    }
    idleStatusLine = L10n::tr(u"idle.line", {L10n::tr(head, {installedConfiguration(parts.configSync)})});
    if (service) {
        service->idleMessage = idleStatusLine;
    }
    // A sync that ends in a draft does not blank its figures.
    if (!service || !service->isInDraft) {
        overlay->update(OverlaySnapshot::idle(idleStatusLine));
    }
}

void AppDelegate::handleConfigSyncResult(const ConfigSyncResult& result) {
    if (terminated || std::holds_alternative<ConfigSyncResult::SkippedBusy>(result.outcome)) {
        return;
    }
    lastSyncResult = result;
    log(QStringLiteral("config sync: ") + result.userMessage());
    if (const auto data = std::exchange(broughtData, nullptr)) {
        if (const auto loaded = parts.store.adopt(*data); !loaded) {
            const DataError& error = loaded.error();
            log(QStringLiteral("reload after sync failed: ") + error.localizedDescription);
            if (!error.path.isEmpty()) {
                log(QStringLiteral(
                        "the next start will fail with that, unless the server brings better files before or "
                        "%1 is removed")
                        .arg(error.path));
            }
        } else {
            log(QStringLiteral("reloaded store cards=%1; source=%2")
                    .arg(parts.store.metaDescription(), parts.store.cardsSourceDescription()));
        }
    }
    applySyncIdleMessage(result);
}

void AppDelegate::languageDidChange() {
    rebuildStatusMenu();
    parts.statusItem.setToolTip(L10n::tr(u"app.tooltip"));
    if (lastSyncResult) {
        applySyncIdleMessage(*lastSyncResult);
    } else {
        applyIdleBootMessage();
    }
    service->relocalizeAndRefresh();
}

void AppDelegate::systemSettingsDidChange() {
    applyAppearance(parts.settings.appearance());
    overlay->systemSettingsChanged();
}

void AppDelegate::perform(const StatusMenuEntry& entry) {
    using Action = StatusMenuEntry::Action;
    switch (entry.action) {
    case Action::toggleOverlay:
        toggleOverlay();
        return;
    case Action::refreshNow:
        refreshNow();
        return;
    case Action::selectLanguage:
        selectLanguage(entry.representedObject);
        return;
    case Action::quit:
        quit();
        return;
    case Action::checkConfigNow:
        checkConfigNow();
        return;
    case Action::checkAppUpdateNow:
        checkAppUpdateNow();
        return;
    case Action::none:
        return;
    }
}

} // namespace pelloran
