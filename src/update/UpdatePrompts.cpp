#include "update/UpdatePrompts.h"

#include "base/Log.h"
#include "localisation/AppLanguage.h"
#include "localisation/L10n.h"
#include "platform/Alerts.h"
#include "platform/Browser.h"
#include "update/AppUpdateChecker.h"

namespace pelloran {

namespace {

// In the user's language before any other; empty when there are none. Notes that a release leaves empty on purpose
// stand for themselves.
QString notesOf(const AppReleaseInfo& release) {
    const bool chinese = AppLanguage::preference().isChinese();
    const auto& first = chinese ? release.notesZh : release.notesEn;
    const auto& last = chinese ? release.notesEn : release.notesZh;
    for (const auto* notes : {&first, &release.notes, &last}) {
        if (*notes) {
            return (*notes)->trimmed();
        }
    }
    return {};
}

} // namespace

UpdatePrompts::UpdatePrompts(const AppUpdateChecker& updates, Alerts& asking, Browser& opening)
    : checker(updates)
    , alerts(asking)
    , browser(opening) {}

void UpdatePrompts::presentLaunchPromptIfNeeded() {
    checker.checkAsync(this, [this](const AppUpdateCheckResult& result) {
        if (const auto* available = std::get_if<AppUpdateCheckResult::Available>(&result.outcome)) {
            answer(*available);
        }
    });
}

void UpdatePrompts::presentManualCheck() {
    checker.checkAsync(this, [this](const AppUpdateCheckResult& result) {
        std::visit([this](const auto& known) { answer(known); }, result.outcome);
    });
}

void UpdatePrompts::answer(const AppUpdateCheckResult::UpToDate& result) {
    presentInfoAlert(L10n::tr(u"update.title.upToDate"),
                     L10n::tr(u"update.body.upToDate", {result.local, result.remote}));
}

void UpdatePrompts::answer(const AppUpdateCheckResult::Available& result) {
    presentUpdateAlert(result.local, result.release, !result.release.isForced());
}

void UpdatePrompts::answer(const AppUpdateCheckResult::SkippedVersion& result) {
    presentUpdateAlert(result.local, result.release, !result.release.isForced());
}

void UpdatePrompts::answer(const AppUpdateCheckResult::Offline& result) {
    presentInfoAlert(L10n::tr(u"update.title.offline"), L10n::tr(u"update.body.offline", {result.reason}));
}

void UpdatePrompts::answer(const AppUpdateCheckResult::Failed& result) {
    presentInfoAlert(L10n::tr(u"update.title.failed"), result.message);
}

void UpdatePrompts::presentInfoAlert(const QString& title, const QString& message) {
    alerts.runModal({
        .style = Alerts::Style::informational,
        .messageText = title,
        .informativeText = message,
        .buttons = {L10n::tr(u"update.btn.ok")},
    });
}

void UpdatePrompts::presentUpdateAlert(const QString& local, const AppReleaseInfo& release, bool allowSkip) {
    Alerts::Alert alert{
        .style = Alerts::Style::informational,
        .messageText = L10n::tr(u"update.title.available"),
        .informativeText = L10n::tr(u"update.body.available", {local, release.version}),
        .buttons = {L10n::tr(u"update.btn.updateNow")},
    };
    if (const QString notes = notesOf(release); !notes.isEmpty()) {
        alert.informativeText += QStringLiteral("\n\n") + notes;
    }
    if (allowSkip) {
        alert.buttons += L10n::tr(u"update.btn.skipVersion");
    }
    alert.buttons += L10n::tr(u"update.btn.ignore");

    const int pressed = alerts.runModal(alert);
    if (pressed == 0) {
        if (checker.skippedVersion() == release.version) {
            checker.setSkippedVersion(std::nullopt);
        }
        openDownload(release);
    } else if (allowSkip && pressed == 1) {
        checker.setSkippedVersion(release.version);
        log(QStringLiteral("app update: skipped version ") + release.version);
    } else {
        log(QStringLiteral("app update: ignored for this launch (remote=") + release.version + u')');
    }
}

void UpdatePrompts::openDownload(const AppReleaseInfo& release) {
    if (const auto url = release.preferredDownloadURL(checker.downloadBaseURLString())) {
        // Of every address, whatever comes of it: what a release leads to is to be seen in the log.
        log(QStringLiteral("app update: opening ") + url->toString(QUrl::FullyEncoded));
        if (browser.open(*url)) {
            return;
        }
        log(Browser::isWebLink(*url) ? QStringLiteral("app update: not opened, the desktop has nothing to open it with")
                                     : QStringLiteral("app update: not opened, it is no link to a web server"));
    }
    presentInfoAlert(L10n::tr(u"update.title.failed"), L10n::tr(u"update.err.noDownloadURL"));
}

} // namespace pelloran
