#include "recording/Replay.h"

#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/Json.h"
#include "base/Log.h"
#include "platform/ApplicationFiles.h"
#include "platform/TextReader.h"

#include <cstdlib>

namespace pelloran {

namespace {

QJsonObject toJson(const recording::Difference& difference) {
    QJsonObject line{{QStringLiteral("part"), difference.part}, {QStringLiteral("line"), difference.line}};
    switch (difference.kind) {
    case recording::Difference::Kind::shown:
        line.insert(QStringLiteral("shown"), difference.place);
        break;
    case recording::Difference::Kind::read:
        line.insert(QStringLiteral("read"), true);
        break;
    }
    // A value that is not there is told from one that is null by its absence.
    if (!difference.recorded.isUndefined()) {
        line.insert(QStringLiteral("recorded"), difference.recorded);
    }
    if (!difference.replayed.isUndefined()) {
        line.insert(QStringLiteral("replayed"), difference.replayed);
    }
    return line;
}

} // namespace

int run(const ReplayRecording& command) {
    const auto files = ApplicationFiles::create();
    const auto outcome =
        recording::replay({.folder = command.folder,
                           .makeTextReader = [&files] { return TextReader::create(*files); },
                           .snapshotToJson = json::toJson,
                           .files = *files},
                          [](const recording::Difference& difference) { print(json::line(toJson(difference))); });
    if (!outcome) {
        log(outcome.error());
        return EXIT_FAILURE;
    }
    print(json::line({{QStringLiteral("parts"), outcome->parts},
                      {QStringLiteral("ticks"), outcome->ticks},
                      {QStringLiteral("compared"), outcome->compared},
                      {QStringLiteral("different"), outcome->different},
                      {QStringLiteral("readOtherwise"), outcome->readOtherwise},
                      {QStringLiteral("cutOff"), outcome->cutOff}}));
    return outcome->isEqual() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace pelloran
