#include "update/AppUpdateCheckResult.h"

namespace pelloran {

bool AppUpdateCheckResult::hasUpdate() const {
    return std::holds_alternative<Available>(outcome) || std::holds_alternative<SkippedVersion>(outcome);
}

} // namespace pelloran
