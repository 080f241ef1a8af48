#pragma once

#include "json/StrictJson.h"
#include "sync/RemoteManifest.h"

#include <tuple>

// What manifest.json calls the fields of a manifest.
namespace pelloran::strict_json {

using Qt::StringLiterals::operator""_L1;

template <>
inline constexpr std::tuple fields<RemoteManifest>{
    Field{"version"_L1, &RemoteManifest::version},      Field{"hash"_L1, &RemoteManifest::hash},
    Field{"bundle"_L1, &RemoteManifest::bundle},        Field{"bundle_sha256"_L1, &RemoteManifest::bundleSha256},
    Field{"updated_at"_L1, &RemoteManifest::updatedAt}, Field{"file_count"_L1, &RemoteManifest::fileCount},
    Field{"files"_L1, &RemoteManifest::files},
};

} // namespace pelloran::strict_json
