#include "update/AppUpdateChecker.h"

#include "base/SerialQueue.h"
#include "base/StrictURL.h"
#include "localisation/L10n.h"
#include "platform/CheckedGet.h"
#include "platform/UserDefaults.h"
#include "update/Versions.h"

#include <QUrl>

#include <memory>
#include <utility>

namespace pelloran {

namespace {

QString skippedVersionKey() {
    return QStringLiteral("pelloran.skippedAppVersion");
}

bool hasText(const std::optional<QString>& text) {
    return text && !text->isEmpty();
}

QString describe(const AppUpdateError& error) {
    return error.localizedDescription();
}

QString describe(const HttpClient::TransportError& error) {
    return error.description;
}

QString describe(const AppReleaseInfo::DecodeError& error) {
    return error.description;
}

} // namespace

AppUpdateChecker::AppUpdateChecker(Means checkWith, LocalApplication application, const QString& base)
    : means(checkWith)
    , local(std::move(application))
    , downloadBase(base)
    , latestURLString(base + QStringLiteral("/latest.json")) {}

QString AppUpdateChecker::localVersion() const {
    return hasText(local.version) ? *local.version : hasText(local.build) ? *local.build : QStringLiteral("0");
}

QString AppUpdateChecker::localBuild() const {
    return local.build.value_or(QStringLiteral("?"));
}

std::optional<QString> AppUpdateChecker::skippedVersion() const {
    const auto stored = means.defaults.string(skippedVersionKey());
    return hasText(stored) ? stored : std::nullopt;
}

void AppUpdateChecker::setSkippedVersion(const std::optional<QString>& version) const {
    if (hasText(version)) {
        means.defaults.setString(skippedVersionKey(), *version);
    } else {
        means.defaults.remove(skippedVersionKey());
    }
}

AppUpdateCheckResult AppUpdateChecker::checkNow() const {
    const auto release = fetchLatest();
    if (!release) {
        const QString reason = std::visit([](const auto& error) { return describe(error); }, release.error());
        return {AppUpdateCheckResult::Offline{reason}};
    }
    return evaluate(*release);
}

AppUpdateCheckResult AppUpdateChecker::evaluate(const AppReleaseInfo& release) const {
    const QString running = localVersion();
    const QString remote = release.version.trimmed();
    if (remote.isEmpty()) {
        return {AppUpdateCheckResult::Failed{L10n::tr(u"update.err.invalidLatest")}};
    }
    const std::optional<QString> skipped = skippedVersion();
    const bool skipsRemote = skipped && compareVersions(*skipped, remote) == 0;
    if (compareVersions(running, remote) >= 0) {
        if (skipped && !skipsRemote) {
            setSkippedVersion(std::nullopt);
        }
        return {AppUpdateCheckResult::UpToDate{running, remote}};
    }
    if (skipsRemote && !release.isForced()) {
        return {AppUpdateCheckResult::SkippedVersion{running, release}};
    }
    return {AppUpdateCheckResult::Available{running, release}};
}

void AppUpdateChecker::checkAsync(QObject* receiver,
                                  std::function<void(const AppUpdateCheckResult& result)> onComplete) const {
    const auto result = std::make_shared<AppUpdateCheckResult>();
    means.workQueue.submit([checker = *this, result] { *result = checker.checkNow(); }, receiver,
                           [result, onComplete = std::move(onComplete)] { onComplete(*result); });
}

struct AppUpdateChecker::Reason {
    FetchError operator()(UnwantedStatus status) const {
        return AppUpdateError{AppUpdateError::HttpStatus{status.code}};
    }

    FetchError operator()(const HttpClient::TransportError& error) const { return error; }
};

std::expected<AppReleaseInfo, AppUpdateChecker::FetchError> AppUpdateChecker::fetchLatest() const {
    const auto url = strictURL(latestURLString);
    if (!url) {
        return std::unexpected(AppUpdateError{AppUpdateError::BadURL{}});
    }
    const auto body = checkedGet(means.http, *url, QByteArrayLiteral("application/json"), timeout, maximumBytes);
    if (!body) {
        return std::unexpected(std::visit(Reason(), body.error()));
    }
    auto release = AppReleaseInfo::decode(*body);
    if (!release) {
        return std::unexpected(release.error());
    }
    if (release->version.trimmed().isEmpty()) {
        return std::unexpected(AppUpdateError{AppUpdateError::InvalidLatest{}});
    }
    return std::move(*release);
}

} // namespace pelloran
