#include "platform/BundleVersion.h"

namespace pelloran {

BundleVersion BundleVersion::ofProgram() {
    return {};
}

} // namespace pelloran
