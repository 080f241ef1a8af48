#include "sync/RemoteManifest.h"

#include "sync/RemoteManifestFields.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

std::unexpected<ConfigSyncError> undecodable(const QString& description) {
    return std::unexpected(ConfigSyncError{ConfigSyncError::Platform{description}});
}

} // namespace

std::expected<RemoteManifest, ConfigSyncError> RemoteManifest::fromJson(const QByteArray& json) {
    const auto parsed = strict_json::parse(json);
    if (!parsed) {
        return undecodable(parsed.error().description);
    }
    auto manifest = strict_json::decode<RemoteManifest>(*parsed);
    if (!manifest) {
        return undecodable(strict_json::describe(manifest.error(), u"the manifest"_s));
    }
    if (manifest->hash.isEmpty()) {
        return std::unexpected(ConfigSyncError{ConfigSyncError::InvalidManifest{}});
    }
    return std::move(*manifest);
}

QByteArray RemoteManifest::toJson() const {
    return QJsonDocument(strict_json::encode(*this)).toJson(QJsonDocument::Indented);
}

} // namespace pelloran
