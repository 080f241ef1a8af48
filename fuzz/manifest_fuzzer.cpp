// Any bytes as a configuration server's manifest. What decodes has a hash to compare, and says the same when it is
// written down and read again; what does not tells why.

#include "fuzz/Require.h"
#include "sync/RemoteManifest.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdint>

namespace {

using namespace pelloran;
using fuzzing::require;
using namespace Qt::StringLiterals;

// Half a character can be escaped in JSON, but not be written in UTF-8.
bool isWritable(const RemoteManifest& manifest) {
    bool writable = manifest.hash.isValidUtf16();
    for (const auto* text : {&manifest.bundle, &manifest.bundleSha256, &manifest.updatedAt}) {
        writable = writable && text->value_or(QString()).isValidUtf16();
    }
    const auto files = manifest.files.value_or(QMap<QString, QString>());
    for (auto file = files.begin(); file != files.end(); ++file) {
        writable = writable && file.key().isValidUtf16() && file.value().isValidUtf16();
    }
    return writable;
}

QByteArray written(const RemoteManifest& manifest) {
    QJsonObject object{{u"hash"_s, manifest.hash}};
    const auto insert = [&object](const QString& key, const auto& field) {
        if (field) {
            object.insert(key, *field);
        }
    };
    insert(u"version"_s, manifest.version);
    insert(u"bundle"_s, manifest.bundle);
    insert(u"bundle_sha256"_s, manifest.bundleSha256);
    insert(u"updated_at"_s, manifest.updatedAt);
    insert(u"file_count"_s, manifest.fileCount);
    if (manifest.files) {
        QJsonObject files;
        for (auto file = manifest.files->begin(); file != manifest.files->end(); ++file) {
            files.insert(file.key(), file.value());
        }
        object.insert(u"files"_s, files);
    }
    return QJsonDocument(object).toJson();
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto manifest = RemoteManifest::fromJson(bytes);
    if (!manifest) {
        const auto* platform = std::get_if<ConfigSyncError::Platform>(&manifest.error().reason);
        require(platform ? !platform->description.isEmpty()
                         : std::holds_alternative<ConfigSyncError::InvalidManifest>(manifest.error().reason));
        return 0;
    }
    require(!manifest->hash.isEmpty());
    require(manifest->bundle ? manifest->bundleName() == *manifest->bundle
                             : manifest->bundleName() == u"config.tar.gz"_s);
    if (isWritable(*manifest)) {
        require(RemoteManifest::fromJson(written(*manifest)) == *manifest);
    }
    return 0;
}
