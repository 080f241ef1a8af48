#include "sync/ManifestRequest.h"

#include "base/StrictURL.h"
#include "platform/CheckedGet.h"

#include <QUrl>

#include <utility>
#include <variant>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

struct Reason {
    decltype(ConfigSyncError::reason) operator()(UnwantedStatus status) const {
        return ConfigSyncError::HttpStatus{status.code};
    }

    decltype(ConfigSyncError::reason) operator()(const HttpClient::TransportError& error) const {
        return ConfigSyncError::Platform{error.description};
    }
};

} // namespace

QString configFolderURL(const QString& server) {
    return server + u"/pelloran/latest"_s;
}

std::expected<QByteArray, ConfigSyncError> getFromConfigServer(HttpClient& http, const QString& url,
                                                               std::chrono::milliseconds silence, qint64 maximumBytes) {
    const auto strict = strictURL(url);
    if (!strict) {
        return std::unexpected(ConfigSyncError{ConfigSyncError::BadURL{}});
    }
    auto body = checkedGet(http, *strict, {}, silence, maximumBytes);
    if (!body) {
        return std::unexpected(ConfigSyncError{std::visit(Reason(), body.error())});
    }
    return *std::move(body);
}

std::expected<FetchedManifest, ConfigSyncError> fetchManifest(HttpClient& http, const QString& folderURL,
                                                              std::chrono::milliseconds silence) {
    auto raw = getFromConfigServer(http, folderURL + u"/manifest.json"_s, silence, maximumManifestBytes);
    if (!raw) {
        return std::unexpected(raw.error());
    }
    auto manifest = RemoteManifest::fromJson(*raw);
    if (!manifest) {
        return std::unexpected(manifest.error());
    }
    return FetchedManifest{std::move(*manifest), std::move(*raw)};
}

} // namespace pelloran
