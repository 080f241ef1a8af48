#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/commands/Recognition.h"
#include "app/Json.h"
#include "data/WinrateStore.h"
#include "platform/ApplicationFiles.h"

#include <cstdlib>

namespace pelloran {

namespace {

QJsonValue toJson(const std::optional<CardMatch>& match) {
    if (!match) {
        return QJsonValue::Null;
    }
    return QJsonObject{
        {QStringLiteral("cardId"), match->cardId},
        {QStringLiteral("score"), match->score},
        {QStringLiteral("text"), match->text},
    };
}

QJsonValue toJson(const std::optional<ClassMatch>& match) {
    if (!match) {
        return QJsonValue::Null;
    }
    return QJsonObject{
        {QStringLiteral("key"), match->key},
        {QStringLiteral("score"), match->score},
        {QStringLiteral("text"), match->text},
    };
}

} // namespace

int run(const MatchTexts& command) {
    const auto files = ApplicationFiles::create();
    WinrateStore store(*files);
    if (!loadOrLog(store)) {
        return EXIT_FAILURE;
    }
    for (const QString& text : command.texts) {
        print(json::line({
            {QStringLiteral("text"), text},
            {QStringLiteral("match"),
             command.classes ? toJson(store.matchClass({text})) : toJson(store.matchName({text}))},
        }));
    }
    return EXIT_SUCCESS;
}

} // namespace pelloran
