#pragma once

namespace pelloran::testing {

// From here on this program, and what it starts, has the fonts that scripts/setup installs and no others: what a test
// reads off a screen or measures does not depend on what else the machine has. Before the application is made. Does
// nothing where fonts are not found by fontconfig.
void useTestFonts();

} // namespace pelloran::testing
