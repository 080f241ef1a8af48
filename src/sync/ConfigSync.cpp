#include "sync/ConfigSync.h"

#include "base/Digest.h"

#include <QPointer>

#include <cmath>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

std::unexpected<ConfigSyncError> failure(decltype(ConfigSyncError::reason) reason) {
    return std::unexpected(ConfigSyncError{std::move(reason)});
}

// Of the installed files, where the sync leaves or finds other ones than those of `loaded`.
std::optional<QString> hashToLoad(const ConfigSyncResult& result, const std::optional<QString>& loaded) {
    if (const auto* updated = std::get_if<ConfigSyncResult::Updated>(&result.outcome)) {
        return updated->hash;
    }
    const auto* found = std::get_if<ConfigSyncResult::UpToDate>(&result.outcome);
    return found && found->hash != loaded ? std::optional(found->hash) : std::nullopt;
}

} // namespace

ConfigSync::ConfigSync(const QString& server, ConfigInstaller configInstaller, std::unique_ptr<HttpClient> client,
                       std::unique_ptr<SerialQueue> queue)
    : baseURLString(configFolderURL(server))
    , installer(std::move(configInstaller))
    , http(std::move(client))
    , workQueue(std::move(queue)) {
    pollTimer->setInterval(pollInterval);
    pollTimer->setTimerType(Qt::VeryCoarseTimer); // to the second; a coarse one may be half a minute off
    installer.restoreInterruptedSwap();
}

void ConfigSync::syncAsync(QObject* receiver, const Completion& onComplete) {
    struct Outcome {
        ConfigSyncResult result;
        std::optional<QString> hash; // of what was prepared
        std::function<void()> prepared;
    };

    const auto outcome = std::make_shared<Outcome>();
    workQueue->submit(
        [this, outcome, server = Server{baseURLString, timeout}, prepare = prepareUpdate, loaded = loadedHash] {
            if (isSyncing) {
                outcome->result.outcome = ConfigSyncResult::SkippedBusy{};
                return;
            }
            isSyncing = true;
            outcome->result = syncIfNeeded(server);
            isSyncing = false;
            // Before anything else is on the queue, so that it is this sync's files that are looked at.
            outcome->hash = hashToLoad(outcome->result, loaded);
            if (prepare && outcome->hash) {
                outcome->prepared = prepare();
            }
        },
        receiver,
        [this, outcome, onComplete] {
            if (!outcome->prepared) {
                onComplete(outcome->result);
                return;
            }
            loadedHash = outcome->hash;
            outcome->prepared();
            const QPointer<ConfigSync> self(this); // whoever is told may end it
            onComplete(outcome->result);
            if (self) {
                workQueue->submit([prepared = std::move(outcome->prepared)] {}, nullptr, [] {});
            }
        });
}

void ConfigSync::startPeriodicSync(QObject* receiver, const Completion& onComplete, bool immediate) {
    stopPeriodicSync();
    if (immediate) {
        syncAsync(receiver, onComplete);
    }
    connect(pollTimer, &QTimer::timeout, receiver, [this, receiver, onComplete] { syncAsync(receiver, onComplete); });
    pollTimer->start();
}

void ConfigSync::stopPeriodicSync() {
    pollTimer->stop();
    pollTimer->disconnect();
}

ConfigSyncResult ConfigSync::syncAtLaunch() {
    return syncIfNeeded({baseURLString, timeout});
}

ConfigSyncResult ConfigSync::syncIfNeeded(const Server& server) {
    const std::optional<QString> hash = localHash();
    const auto fetched = fetchManifest(*http, server.baseURL, server.silence());
    if (!fetched) {
        return fallBack(hash, fetched.error());
    }
    const QString& offered = fetched->manifest.hash;
    if (hash == offered && installer.config().hasUsableLocalConfig()) {
        return {ConfigSyncResult::UpToDate{offered}};
    }
    const auto installed = downloadAndInstall(server, *fetched);
    if (!installed) {
        return fallBack(hash, installed.error());
    }
    switch (*installed) {
    case ConfigInstaller::Installation::done:
        return {ConfigSyncResult::Updated{offered}};
    case ConfigInstaller::Installation::busy:
        return {ConfigSyncResult::SkippedBusy{}};
    }
    Q_UNREACHABLE();
}

ConfigSyncResult ConfigSync::fallBack(const std::optional<QString>& hash, const ConfigSyncError& error) const {
    if (installer.config().hasUsableLocalConfig()) {
        return {ConfigSyncResult::SkippedOffline{hash, error.localizedDescription()}};
    }
    return {ConfigSyncResult::Failed{error.localizedDescription()}};
}

std::expected<ConfigInstaller::Installation, ConfigSyncError>
ConfigSync::downloadAndInstall(const Server& server, const FetchedManifest& fetched) {
    const RemoteManifest& manifest = fetched.manifest;
    const auto bundle =
        getFromConfigServer(*http, server.baseURL + u'/' + manifest.bundleName(), server.silence(), maximumBundleBytes);
    if (!bundle) {
        return std::unexpected(bundle.error());
    }
    const QString expected = manifest.bundleSha256.value_or(QString());
    if (!expected.isEmpty()) {
        if (QString got = sha256Hex(*bundle); got != expected) {
            return failure(ConfigSyncError::HashMismatch{expected, std::move(got)});
        }
    }
    return installer.install(manifest, fetched.raw, *bundle);
}

std::chrono::milliseconds ConfigSync::Server::silence() const {
    return std::chrono::milliseconds(std::llround(timeout * 1000));
}

} // namespace pelloran
