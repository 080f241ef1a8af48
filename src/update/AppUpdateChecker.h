#pragma once

#include "platform/HttpClient.h"
#include "update/AppReleaseInfo.h"
#include "update/AppUpdateCheckResult.h"
#include "update/AppUpdateError.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <chrono>
#include <expected>
#include <functional>
#include <optional>
#include <variant>

class QObject;

namespace pelloran {

class SerialQueue;
class UserDefaults;

// Asks the update server for the newest release, compares it with the running program, and remembers the version that
// the user does not want. All but the remembered version is fixed when it is made; from any thread, except as said.
class AppUpdateChecker {
public:
    // What it checks with. All of it outlives the work that was begun.
    struct Means {
        HttpClient& http; // used by checks alone
        UserDefaults& defaults;
        SerialQueue& workQueue;
    };

    // What the running program says of itself.
    struct LocalApplication {
        std::optional<QString> version;
        std::optional<QString> build;
    };

    // What the work queue is called.
    static constexpr QStringView workQueueLabel = u"com.local.pelloran.appupdate";

    // How long the server may be silent; two seconds later a check ends whatever happens.
    static constexpr std::chrono::seconds timeout{10};

    // Of a description that is taken. It has some hundred bytes, with long notes some thousand.
    static constexpr qint64 maximumBytes = qint64{1024} * 1024;

    // `downloadBase`: the server's address followed by "/download"; the description of the newest release lies below.
    AppUpdateChecker(Means checkWith, LocalApplication application, const QString& downloadBase);

    // The version, else the build number, else "0"; an empty one counts as absent.
    QString localVersion() const;

    // The build number, even if empty; "?" when there is none.
    QString localBuild() const;

    const QString& downloadBaseURLString() const { return downloadBase; }

    // The version that the user chose to skip; never empty. Setting none or an empty one forgets it.
    std::optional<QString> skippedVersion() const;
    void setSkippedVersion(const std::optional<QString>& version) const;

    // Waits for the network, so never on the main thread and one check at a time. Nothing is tried twice.
    AppUpdateCheckResult checkNow() const;

    // What `release` means to this program. Forgets a skipped version that an up-to-date program has left behind.
    AppUpdateCheckResult evaluate(const AppReleaseInfo& release) const;

    // Checks on the work queue and delivers on the thread that made it, unless `receiver` has been deleted by then.
    // Goes on without the checker.
    void checkAsync(QObject* receiver, std::function<void(const AppUpdateCheckResult& result)> onComplete) const;

private:
    using FetchError = std::variant<AppUpdateError, HttpClient::TransportError, AppReleaseInfo::DecodeError>;
    struct Reason;

    std::expected<AppReleaseInfo, FetchError> fetchLatest() const;

    Means means;
    LocalApplication local;
    QString downloadBase;
    QString latestURLString;
};

} // namespace pelloran
