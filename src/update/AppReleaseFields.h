#pragma once

#include "json/StrictJson.h"
#include "update/AppReleaseInfo.h"

#include <tuple>

// What latest.json calls the fields of a release, for those who decode or print it.
namespace pelloran::strict_json {

using Qt::StringLiterals::operator""_L1;

template <>
inline constexpr std::tuple fields<AppReleaseInfo>{
    Field{"name"_L1, &AppReleaseInfo::name},        Field{"version"_L1, &AppReleaseInfo::version},
    Field{"build"_L1, &AppReleaseInfo::build},      Field{"min_macos"_L1, &AppReleaseInfo::minMacos},
    Field{"arch"_L1, &AppReleaseInfo::arch},        Field{"dmg"_L1, &AppReleaseInfo::dmg},
    Field{"zip"_L1, &AppReleaseInfo::zip},          Field{"base_url"_L1, &AppReleaseInfo::baseURL},
    Field{"notes"_L1, &AppReleaseInfo::notes},      Field{"notes_zh"_L1, &AppReleaseInfo::notesZh},
    Field{"notes_en"_L1, &AppReleaseInfo::notesEn}, Field{"published_at"_L1, &AppReleaseInfo::publishedAt},
    Field{"force"_L1, &AppReleaseInfo::force},
};

} // namespace pelloran::strict_json
