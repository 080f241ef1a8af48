#include "update/AppReleaseInfo.h"

#include "json/StrictJson.h"
#include "update/StrictURL.h"

using namespace Qt::StringLiterals;

namespace pelloran {

using strict_json::Field;

template <>
constexpr std::tuple strict_json::fields<AppReleaseInfo>{
    Field{"name"_L1, &AppReleaseInfo::name},        Field{"version"_L1, &AppReleaseInfo::version},
    Field{"build"_L1, &AppReleaseInfo::build},      Field{"min_macos"_L1, &AppReleaseInfo::minMacos},
    Field{"arch"_L1, &AppReleaseInfo::arch},        Field{"dmg"_L1, &AppReleaseInfo::dmg},
    Field{"zip"_L1, &AppReleaseInfo::zip},          Field{"base_url"_L1, &AppReleaseInfo::baseURL},
    Field{"notes"_L1, &AppReleaseInfo::notes},      Field{"notes_zh"_L1, &AppReleaseInfo::notesZh},
    Field{"notes_en"_L1, &AppReleaseInfo::notesEn}, Field{"published_at"_L1, &AppReleaseInfo::publishedAt},
    Field{"force"_L1, &AppReleaseInfo::force},
};

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
