#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/ServerClients.h"
#include "base/Log.h"
#include "publish/ReleaseDescription.h"

#include <cstdlib>

namespace pelloran {

int run(const DescribeRelease& command) {
    const auto description = releaseDescription(command.parts, downloadBase(command.updateServer));
    if (!description) {
        for (const QString& sentence : description.error()) {
            log(sentence);
        }
        return EXIT_FAILURE;
    }
    print(*description);
    return EXIT_SUCCESS;
}

} // namespace pelloran
