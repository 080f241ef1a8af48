#pragma once

#include "base/SerialQueue.h"
#include "platform/HttpClient.h"
#include "sync/ConfigInstaller.h"
#include "sync/ConfigSyncResult.h"
#include "sync/ManifestRequest.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace pelloran {

// Keeps the data files in step with a configuration server: one small request while nothing has changed, a download,
// verification and installation when its manifest names other content. Lives on the main thread; the work runs on a
// serial queue, one sync after the other. No failure leaves it, and none touches the files in use.
class ConfigSync : public QObject {
public:
    using Completion = std::function<void(const ConfigSyncResult&)>;

    static constexpr std::chrono::seconds pollInterval{600};

    // What a server may make us read into memory as a bundle. Real ones have less than a million bytes.
    static constexpr qint64 maximumBundleBytes = 64LL * 1024 * 1024;

    // `server` is the base URL, to which "/pelloran/latest" is added. An installation that an earlier run did not
    // survive is mended here, so load the data files afterwards. Destruction waits for a sync under way, which gives up
    // early then; but what prepareUpdate makes of files already installed is made to its end.
    ConfigSync(const QString& server, ConfigInstaller configInstaller, std::unique_ptr<HttpClient> client,
               std::unique_ptr<SerialQueue> queue);

    // The label of the queue it is meant to get.
    static QString queueName() { return QStringLiteral("com.local.pelloran.configsync"); }

    // What is made of new files and would hold up the main thread, such as decoding them. A sync of syncAsync calls it
    // on the queue's thread where it has installed some, or finds others up to date than those of `loadedHash`: another
    // process has installed them. What it returns runs on the main thread right before that sync's `onComplete`, and
    // not without it. Then it is destroyed on the queue's thread, with all that it holds; on the main thread where
    // `receiver` has gone or `onComplete` ends the sync. Holds for the syncs that are asked for from then on.
    std::function<std::function<void()>()> prepareUpdate;

    // Of the files that are loaded; absent: no sync's. Whoever loads them takes it from localHash() before that.
    // Follows by itself when what prepareUpdate returned has run.
    std::optional<QString> loadedHash;

    // One sync, and its result from the event loop unless `receiver` is gone by then.
    void syncAsync(QObject* receiver, const Completion& onComplete);

    // Anew each time: one sync every `pollInterval`, and one now if `immediate`.
    void startPeriodicSync(QObject* receiver, const Completion& onComplete, bool immediate = true);
    void stopPeriodicSync();

    // One sync on this thread, which waits. Not while the queue may be at one.
    ConfigSyncResult syncAtLaunch();

    // Of the installed files. See LocalConfig.
    std::optional<QString> localHash() const { return installer.config().localHash(); }

    // What the next sync begins with. A server that says nothing for `timeout` seconds is given up.
    QString baseURLString;
    double timeout = configServerPatience.count();

private:
    struct Server {
        QString baseURL;
        double timeout;

        std::chrono::milliseconds silence() const;
    };

    ConfigSyncResult syncIfNeeded(const Server& server);
    ConfigSyncResult fallBack(const std::optional<QString>& hash, const ConfigSyncError& error) const;
    std::expected<ConfigInstaller::Installation, ConfigSyncError> downloadAndInstall(const Server& server,
                                                                                     const FetchedManifest& fetched);

    ConfigInstaller installer;
    std::unique_ptr<HttpClient> http;
    bool isSyncing = false;                     // only the queue's thread knows it
    QTimer* const pollTimer = new QTimer(this); // owned by this
    std::unique_ptr<SerialQueue> workQueue;     // last, so that it ends before what its work uses
};

} // namespace pelloran
