#include "platform/LocaleSystemSettings.h"

namespace pelloran {

std::unique_ptr<SystemSettings> SystemSettings::create() {
    return std::make_unique<LocaleSystemSettings>();
}

} // namespace pelloran
