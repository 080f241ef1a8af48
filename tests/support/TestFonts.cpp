#include "tests/support/TestFonts.h"

#include <QtGlobal>

namespace pelloran::testing {

void useTestFonts() {
#ifdef PELLORAN_TEST_FONTS
    qputenv("FONTCONFIG_FILE", PELLORAN_TEST_FONTS);
#endif
}

} // namespace pelloran::testing
