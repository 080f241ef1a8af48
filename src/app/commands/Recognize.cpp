#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/commands/Recognition.h"
#include "app/Json.h"

#include <cstdlib>

namespace pelloran {

int run(const RecognizeImages& command) {
    const auto recognition = Recognition::create(nameLengths(command.strictLengths));
    if (!recognition) {
        return EXIT_FAILURE;
    }
    int result = EXIT_SUCCESS;
    for (const QString& path : command.images) {
        QJsonObject answer{{QStringLiteral("image"), path}, {QStringLiteral("phase"), json::phaseName(command.phase)}};
        if (const auto image = readImage(path)) {
            if (!command.ticks) {
                recognition->forget();
            }
            const Recognition::Look look = recognition->look(*image, command.phase);
            answer.insert(QStringLiteral("milliseconds"), look.outcome.milliseconds);
            answer.insert(QStringLiteral("cpuMilliseconds"), look.outcome.cpuMilliseconds);
            answer.insert(QStringLiteral("slots"), json::array(look.outcome.matches));
            answer.insert(QStringLiteral("tokens"), json::array(look.text.tokens));
            answer.insert(QStringLiteral("unsettled"), json::array(look.text.unsettled));
        } else {
            answer.insert(QStringLiteral("error"), image.error());
            result = EXIT_FAILURE;
        }
        print(json::line(answer));
    }
    return result;
}

} // namespace pelloran
