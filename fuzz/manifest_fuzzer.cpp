// Any bytes as a configuration server's manifest. What decodes has a hash to compare, and says the same when it is
// written down and read again; what does not tells why.

#include "fuzz/Require.h"
#include "sync/RemoteManifest.h"

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
        require(RemoteManifest::fromJson(manifest->toJson()) == *manifest);
    }
    return 0;
}
