#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/Json.h"
#include "app/ServerClients.h"
#include "platform/ApplicationFiles.h"
#include "sync/ConfigSync.h"

#include <cstdlib>
#include <variant>

namespace pelloran {

namespace {

// How each outcome is printed: the case's name and what it carries.
struct SyncAnswer {
    QJsonObject operator()(const ConfigSyncResult::UpToDate& result) const {
        return {{QStringLiteral("result"), QStringLiteral("upToDate")}, {QStringLiteral("hash"), result.hash}};
    }

    QJsonObject operator()(const ConfigSyncResult::Updated& result) const {
        return {{QStringLiteral("result"), QStringLiteral("updated")}, {QStringLiteral("hash"), result.hash}};
    }

    QJsonObject operator()(const ConfigSyncResult::SkippedOffline& result) const {
        return {{QStringLiteral("result"), QStringLiteral("skippedOffline")},
                {QStringLiteral("localHash"), json::optional(result.localHash)},
                {QStringLiteral("reason"), result.reason}};
    }

    QJsonObject operator()(const ConfigSyncResult::Failed& result) const {
        return {{QStringLiteral("result"), QStringLiteral("failed")}, {QStringLiteral("message"), result.message}};
    }

    QJsonObject operator()(const ConfigSyncResult::SkippedBusy&) const {
        return {{QStringLiteral("result"), QStringLiteral("skippedBusy")}};
    }
};

} // namespace

int run(const SyncOnce& command) {
    const auto files = ApplicationFiles::create();
    const ConfigSyncResult result = makeConfigSync(command.configServer, *files)->syncAtLaunch();
    QJsonObject answer = std::visit(SyncAnswer(), result.outcome);
    answer.insert(QStringLiteral("userMessage"), result.userMessage());
    print(json::line(answer));
    const bool current = std::holds_alternative<ConfigSyncResult::UpToDate>(result.outcome) ||
                         std::holds_alternative<ConfigSyncResult::Updated>(result.outcome);
    return current ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace pelloran
