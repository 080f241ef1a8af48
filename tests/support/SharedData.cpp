#include "tests/support/SharedData.h"

namespace pelloran::testing {

QString sharedData(const QString& relative) {
    return QStringLiteral(PELLORAN_TEST_DATA "/") + relative;
}

} // namespace pelloran::testing
