#include "app/commands/Commands.h"
#include "app/commands/Output.h"

#include <cstdlib>

namespace pelloran {

int run(const PrintText& command) {
    print(command.text.toUtf8());
    return EXIT_SUCCESS;
}

} // namespace pelloran
