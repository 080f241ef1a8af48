#include "sync/RemoteManifest.h"

#include "json/StrictJson.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace pelloran {

using strict_json::Field;

template <>
constexpr std::tuple strict_json::fields<RemoteManifest>{
    Field{"version"_L1, &RemoteManifest::version},      Field{"hash"_L1, &RemoteManifest::hash},
    Field{"bundle"_L1, &RemoteManifest::bundle},        Field{"bundle_sha256"_L1, &RemoteManifest::bundleSha256},
    Field{"updated_at"_L1, &RemoteManifest::updatedAt}, Field{"file_count"_L1, &RemoteManifest::fileCount},
    Field{"files"_L1, &RemoteManifest::files},
};

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
