#pragma once

#include "sync/ConfigSyncError.h"
#include "sync/RemoteManifest.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <expected>

// What is asked of a configuration server. For a thread that may wait.
namespace pelloran {

class HttpClient;

// How long a server may say nothing, unless told otherwise.
constexpr std::chrono::seconds configServerPatience{12};

// The folder of the manifest and its bundle, on the server of this base URL.
QString configFolderURL(const QString& server);

// The body of the file at `url`; `silence` and `maximumBytes` as for checkedGet(). Errors: `BadURL`; `HttpStatus` for
// any but 200 to 299; `Platform` for what the network says, and for a longer body.
std::expected<QByteArray, ConfigSyncError> getFromConfigServer(HttpClient& http, const QString& url,
                                                               std::chrono::milliseconds silence, qint64 maximumBytes);

struct FetchedManifest {
    RemoteManifest manifest;
    QByteArray raw;
};

// One request, of the manifest in that folder. Errors: those above, and those of RemoteManifest::fromJson().
std::expected<FetchedManifest, ConfigSyncError> fetchManifest(HttpClient& http, const QString& folderURL,
                                                              std::chrono::milliseconds silence);

} // namespace pelloran
