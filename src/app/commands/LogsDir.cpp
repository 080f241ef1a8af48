#include "draft/logs/LogsDir.h"

#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "base/Log.h"

#include <cstdlib>

namespace pelloran {

int run(const PrintLogsDir&) {
    const auto folder = foundLogsDir();
    if (!folder) {
        log(QStringLiteral("no log folder of the game found; --logs-dir names one that lies elsewhere"));
        return EXIT_FAILURE;
    }
    print(folder->toUtf8() + '\n');
    return EXIT_SUCCESS;
}

} // namespace pelloran
