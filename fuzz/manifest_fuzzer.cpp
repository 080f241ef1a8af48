// Any bytes as a configuration server's manifest. What decodes, and nothing else, is what a plain look at the parsed
// file says; it has a hash to compare, and says the same when it is written down and read again. What does not tells
// why.

#include "fuzz/PlainJson.h"
#include "fuzz/Require.h"
#include "sync/RemoteManifest.h"
#include "sync/RemoteManifestFields.h"

#include <cstdint>
#include <optional>
#include <variant>

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace pelloran;
    using fuzzing::require;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto manifest = RemoteManifest::fromJson(bytes);
    if (!manifest) {
        const bool isWithoutHash = std::holds_alternative<ConfigSyncError::InvalidManifest>(manifest.error().reason);
        const auto* platform = std::get_if<ConfigSyncError::Platform>(&manifest.error().reason);
        require(isWithoutHash || (platform && !platform->description.isEmpty()));
        require(isWithoutHash ? QJsonDocument::fromJson(bytes).object().value(u"hash") == QString()
                              : fuzzing::isRight(std::optional<RemoteManifest>(), bytes));
        return 0;
    }
    require(fuzzing::isRight(std::optional(*manifest), bytes));
    require(!manifest->hash.isEmpty());
    require(manifest->bundleName() == manifest->bundle.value_or(QStringLiteral("config.tar.gz")));
    require(RemoteManifest::fromJson(manifest->toJson()) == *manifest || !fuzzing::survives(bytes));
    return 0;
}
