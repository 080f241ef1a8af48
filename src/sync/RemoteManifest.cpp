#include "sync/RemoteManifest.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

bool decodeInto(QString& text, const QJsonValue& value) {
    text = value.toString();
    return value.isString();
}

bool decodeInto(qint64& number, const QJsonValue& value) {
    // toInteger answers with its default for whatever is no whole number of 64 bits.
    number = value.toInteger(0);
    return value.isDouble() && number == value.toInteger(1);
}

bool decodeInto(QMap<QString, QString>& texts, const QJsonValue& value) {
    const QJsonObject object = value.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (!decodeInto(texts[entry.key()], entry.value())) {
            return false;
        }
    }
    return value.isObject();
}

template <typename Value>
bool decodeInto(std::optional<Value>& field, const QJsonValue& value) {
    return value.isUndefined() || value.isNull() || decodeInto(field.emplace(), value);
}

std::unexpected<ConfigSyncError> undecodable(const QString& description) {
    return std::unexpected(ConfigSyncError{ConfigSyncError::Platform{description}});
}

} // namespace

std::expected<RemoteManifest, ConfigSyncError> RemoteManifest::fromJson(const QByteArray& json) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        return undecodable(error.errorString() + u" at byte "_s + QString::number(error.offset));
    }
    if (!document.isObject()) {
        return undecodable(u"the manifest is not an object"_s);
    }
    const QJsonObject object = document.object();
    RemoteManifest manifest;
    QString mistyped;
    const auto decode = [&](auto& field, QLatin1StringView key, QLatin1StringView wanted) {
        if (mistyped.isEmpty() && !decodeInto(field, object.value(key))) {
            mistyped = key + " is not "_L1 + wanted;
        }
    };
    decode(manifest.version, "version"_L1, "a whole number"_L1);
    decode(manifest.hash, "hash"_L1, "a text"_L1);
    decode(manifest.bundle, "bundle"_L1, "a text"_L1);
    decode(manifest.bundleSha256, "bundle_sha256"_L1, "a text"_L1);
    decode(manifest.updatedAt, "updated_at"_L1, "a text"_L1);
    decode(manifest.fileCount, "file_count"_L1, "a whole number"_L1);
    decode(manifest.files, "files"_L1, "an object of texts"_L1);
    if (!mistyped.isEmpty()) {
        return undecodable(mistyped);
    }
    if (manifest.hash.isEmpty()) {
        return std::unexpected(ConfigSyncError{ConfigSyncError::InvalidManifest{}});
    }
    return manifest;
}

} // namespace pelloran
