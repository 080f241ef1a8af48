#include "update/AppUpdateCheckResult.h"

namespace pelloran {

bool AppUpdateCheckResult::hasUpdate() const {
    return std::holds_alternative<Available>(value) || std::holds_alternative<SkippedVersion>(value);
}

} // namespace pelloran
