#include "update/AppReleaseInfo.h"

#include "base/StrictURL.h"
#include "update/AppReleaseFields.h"

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

QString withoutSlashesAtTheEnds(QStringView path) {
    while (path.startsWith(u'/')) {
        path = path.sliced(1);
    }
    while (path.endsWith(u'/')) {
        path.chop(1);
    }
    return path.toString();
}

} // namespace

std::expected<AppReleaseInfo, AppReleaseInfo::DecodeError> AppReleaseInfo::decode(const QByteArray& json) {
    const auto parsed = strict_json::parse(json);
    if (!parsed) {
        return std::unexpected(DecodeError{parsed.error().description});
    }
    auto release = strict_json::decode<AppReleaseInfo>(*parsed);
    if (!release) {
        const strict_json::Mismatch& found = release.error();
        return std::unexpected(
            DecodeError{found.missing ? found.place + u" is missing"_s : strict_json::describe(found, u"the file"_s)});
    }
    return std::move(*release);
}

std::optional<QUrl> AppReleaseInfo::absoluteURL(const std::optional<QString>& path, const QString& downloadBase) const {
    if (!path || path->isEmpty()) {
        return std::nullopt;
    }
    if (path->startsWith("http://"_L1) || path->startsWith("https://"_L1)) {
        return strictURL(*path);
    }
    return strictURL(withoutSlashesAtTheEnds(baseURL.value_or(downloadBase)) + u'/' + *path);
}

std::optional<QUrl> AppReleaseInfo::preferredDownloadURL(const QString& downloadBase) const {
    const std::optional<QUrl> image = dmgURL(downloadBase);
    return image ? image : zipURL(downloadBase);
}

} // namespace pelloran
