#pragma once

#include "update/AppUpdateCheckResult.h"

#include <ostream>
#include <variant>

namespace pelloran {

// Found by GoogleTest beside the type.
inline void PrintTo(const AppUpdateCheckResult& result, std::ostream* out) {
    const auto print = [out](const char* name, const QString& first, const QString& second) {
        *out << name << '(' << first.toStdString() << ", " << second.toStdString() << ')';
    };
    using Result = AppUpdateCheckResult;
    if (const auto* upToDate = std::get_if<Result::UpToDate>(&result.outcome)) {
        print("upToDate", upToDate->local, upToDate->remote);
    } else if (const auto* available = std::get_if<Result::Available>(&result.outcome)) {
        print("available", available->local, available->release.version);
    } else if (const auto* skipped = std::get_if<Result::SkippedVersion>(&result.outcome)) {
        print("skippedVersion", skipped->local, skipped->release.version);
    } else if (const auto* offline = std::get_if<Result::Offline>(&result.outcome)) {
        print("offline", offline->reason, {});
    } else {
        print("failed", std::get<Result::Failed>(result.outcome).message, {});
    }
}

} // namespace pelloran
