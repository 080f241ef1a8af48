// Any bytes as the description of a release. What decodes, and nothing else, is what a plain look at the parsed file
// says; it has to be comparable and lead somewhere or nowhere.

#include "fuzz/PlainJson.h"
#include "fuzz/Require.h"
#include "update/AppReleaseFields.h"
#include "update/AppReleaseInfo.h"
#include "update/Versions.h"

#include <cstdint>
#include <optional>

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace pelloran;
    using fuzzing::require;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto release = AppReleaseInfo::decode(bytes);
    require(fuzzing::isRight(release ? std::optional(*release) : std::nullopt, bytes));
    if (!release) {
        require(!release.error().description.isEmpty());
        return 0;
    }
    const QString reference = QStringLiteral("1.2.3");
    const auto order = compareVersions(release->version, reference);
    require((0 <=> order) == compareVersions(reference, release->version));
    require(compareVersions(release->version, release->version + QStringLiteral(".0")) == 0);
    const auto url = release->preferredDownloadURL(QStringLiteral("https://updates.invalid/download"));
    require(!url || (url->isValid() && !url->isEmpty()));
    return 0;
}
