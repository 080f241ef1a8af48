#pragma once

#include "sync/ConfigSyncError.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <expected>
#include <optional>

namespace pelloran {

// What a server may make us read into memory as a manifest. Real ones have a few hundred bytes.
constexpr qint64 maximumManifestBytes = qint64{1024} * 1024;

// What the configuration server offers.
struct RemoteManifest {
    std::optional<qint64> version;
    QString hash;                  // names the content; compared as it stands, never interpreted
    std::optional<QString> bundle; // file name, relative to the manifest's folder
    std::optional<QString> bundleSha256;
    // Not interpreted:
    std::optional<QString> updatedAt;
    std::optional<qint64> fileCount;
    std::optional<QMap<QString, QString>> files;

    // An absent `bundle` is "config.tar.gz"; an empty one is what it says.
    QString bundleName() const { return bundle.value_or(QStringLiteral("config.tar.gz")); }

    // Unknown keys are ignored; of the known ones, one of another type fails the whole. An optional one may be null.
    // Errors: the JSON parser's or the decoder's words; InvalidManifest for an empty hash.
    static std::expected<RemoteManifest, ConfigSyncError> fromJson(const QByteArray& json);

    // Lines for people too. fromJson() gives the same again.
    QByteArray toJson() const;

    bool operator==(const RemoteManifest&) const = default;
};

} // namespace pelloran
