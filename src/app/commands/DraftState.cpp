#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/Json.h"
#include "draft/logs/LogsDir.h"
#include "draft/logs/LogWatcher.h"
#include "model/DraftModel.h"
#include "platform/WindowServer.h"
#include "recognition/ScreenReader.h"

#include <cstdlib>
#include <optional>

namespace pelloran {

int run(const PrintDraftState& command) {
    const DraftState state = LogWatcher(logsDirToRead(command.logsDir)).poll();
    print(json::line(json::toJson(state)));
    if (state.inDraft) {
        // For what it logs where the game cannot be seen.
        static_cast<void>(ScreenReader(WindowServer::create, {}).look(AppConfig().windowOwnerHint, std::nullopt));
    }
    return EXIT_SUCCESS;
}

} // namespace pelloran
