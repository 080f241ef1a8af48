#pragma once

#include "update/AppReleaseInfo.h"
#include "update/AppUpdateCheckResult.h"

#include <QObject>
#include <QString>

namespace pelloran {

class Alerts;
class AppUpdateChecker;
class Browser;

// What the user gets to see of update checks: turns a result into an alert, and the answer into a deed. Keeps nothing;
// every check answers on its own. Main thread. A result that arrives when it is gone is dropped.
class UpdatePrompts final : public QObject {
public:
    // All three outlive it.
    UpdatePrompts(const AppUpdateChecker& updates, Alerts& asking, Browser& opening);

    // Begins a check that speaks up only when there is something to offer.
    void presentLaunchPromptIfNeeded();

    // Begins a check that always answers, and offers a skipped version again.
    void presentManualCheck();

    // News with one button. Waits for the user.
    void presentInfoAlert(const QString& title, const QString& message);

    // Offers `release` to the user of `local` and does what the user answers. Waits for the user.
    void presentUpdateAlert(const QString& local, const AppReleaseInfo& release, bool allowSkip);

    // Has the download opened; nothing is downloaded here. Says so when there is none, or none that could be opened.
    void openDownload(const AppReleaseInfo& release);

private:
    void answer(const AppUpdateCheckResult::UpToDate& result);
    void answer(const AppUpdateCheckResult::Available& result);
    void answer(const AppUpdateCheckResult::SkippedVersion& result);
    void answer(const AppUpdateCheckResult::Offline& result);
    void answer(const AppUpdateCheckResult::Failed& result);

    const AppUpdateChecker& checker;
    Alerts& alerts;
    Browser& browser;
};

} // namespace pelloran
