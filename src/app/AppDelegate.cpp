#include "app/AppDelegate.h"

#include "app/Appearance.h"
#include "app/DraftParts.h"
#include "app/localisation/AppLanguage.h"
#include "app/localisation/L10n.h"
#include "app/StatusItem.h"
#include "data/WinrateStore.h"
#include "platform/Alerts.h"
#include "platform/ApplicationFiles.h"
#include "platform/Log.h"
#include "platform/SystemSettings.h"

#include <utility>

namespace pelloran {

namespace {

const QString idleTitle = QStringLiteral("PL");
const QString draftTitle = QStringLiteral("PL●");

constexpr int done = 0;
constexpr int failed = 1;

} // namespace

AppDelegate::AppDelegate(Surroundings parts)
    : surroundings(std::move(parts))
    , statusItem(surroundings.statusItem)
    , store(surroundings.store) {}

AppDelegate::~AppDelegate() {
    applicationWillTerminate();
}

void AppDelegate::applicationDidFinishLaunching() {
    // With a place in the Dock: a regular application is what Qt makes everywhere.
    overlay = surroundings.makeOverlay();
    overlay->contextMenuRequested = [this](QPoint position) { statusItem.openMenu(position); };
    surroundings.settings.changed = [this] { systemSettingsDidChange(); };
    setupStatusItem();
    overlay->show(); // in front, but the keyboard stays with the game

    if (const auto loaded = store.loadFromBundle(); !loaded) {
        log(loadFailureLine(loaded.error()));
        surroundings.alerts.runModal({
            .style = Alerts::Style::critical,
            .messageText = L10n::tr(u"fatal.loadTitle"),
            .informativeText = loaded.error().localizedDescription,
            .buttons = {},
        });
        surroundings.terminate(failed);
        return;
    }
    remarkOnSampleData(store);

    service.emplace(surroundings.config, store, surroundings.queue, surroundings.screenReader);
    service->delegate = weak_from_this();
    service->start();
    applyIdleBootMessage();
    log(bootLine(store));
    languageObserver =
        connect(&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted, this, &AppDelegate::languageDidChange);
}

void AppDelegate::applicationShouldHandleReopen() {
    if (overlay) {
        overlay->show();
    }
}

void AppDelegate::applicationWillTerminate() {
    if (std::exchange(terminated, true)) {
        return;
    }
    disconnect(languageObserver);
    surroundings.settings.changed = {};
    statusItem.chosen = {};
    if (service) {
        service->stop();
    }
}

void AppDelegate::draftServiceDidUpdate(const OverlaySnapshot& snapshot) {
    overlay->update(snapshot);
    if (!statusItem.hasImage()) {
        statusItem.setTitle(snapshot.inDraft ? draftTitle : idleTitle);
    }
    if (surroundings.alsoReceives) {
        surroundings.alsoReceives->draftServiceDidUpdate(snapshot);
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

void AppDelegate::selectLanguage(const QString& representedObject) {
    const auto language = AppLanguage::fromRawValue(representedObject);
    if (!language) {
        return;
    }
    AppLanguage::setPreference(*language);
    rebuildStatusMenu();
}

void AppDelegate::quit() {
    surroundings.terminate(done);
}

void AppDelegate::setupStatusItem() {
    statusItem.chosen = [this](const StatusMenuEntry& entry) { perform(entry); };
    const auto image = surroundings.files.resource(QStringLiteral("MenuIcon"), QStringLiteral("png"), QString());
    if (!image || !statusItem.setImage(*image)) {
        statusItem.setTitle(idleTitle);
    }
    statusItem.setToolTip(L10n::tr(u"app.tooltip"));
    rebuildStatusMenu();
}

void AppDelegate::rebuildStatusMenu() {
    statusItem.setMenu(statusMenu(AppLanguage::preference()));
}

void AppDelegate::applyIdleBootMessage() {
    idleStatusLine = L10n::tr(u"idle.boot", {L10n::tr(u"idle.hashBundled")});
    service->idleMessage = idleStatusLine;
    overlay->update(OverlaySnapshot::idle(idleStatusLine));
}

void AppDelegate::languageDidChange() {
    rebuildStatusMenu();
    statusItem.setToolTip(L10n::tr(u"app.tooltip"));
    applyIdleBootMessage();
    service->relocalizeAndRefresh();
}

void AppDelegate::systemSettingsDidChange() {
    applyAppearance(surroundings.settings.appearance());
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
    case Action::none:
    case Action::checkConfigNow:
    case Action::checkAppUpdateNow:
        return;
    }
}

} // namespace pelloran
