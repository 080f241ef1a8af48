#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/Json.h"
#include "base/Log.h"
#include "publish/Publisher.h"

#include <algorithm>
#include <cstdlib>

namespace pelloran {

namespace {

// A table with one mistake may have it in every line.
void logEach(const QStringList& sentences) {
    constexpr qsizetype most = 20;
    for (const QString& sentence : sentences.first(std::min(most, sentences.size()))) {
        log(sentence);
    }
    if (sentences.size() > most) {
        log(QStringLiteral("and %1 more").arg(sentences.size() - most));
    }
}

} // namespace

int run(const PublishData& command) {
    const auto published = publish(command.source, command.target, command.cardTable, command.cardLists);
    if (!published) {
        logEach(published.error());
        return EXIT_FAILURE;
    }
    logEach(published->remarks);
    print(json::line({
        {QStringLiteral("folder"), published->folder},
        {QStringLiteral("hash"), published->hash},
        {QStringLiteral("bundle"), published->bundle},
        {QStringLiteral("bundleSha256"), published->bundleSha256},
        {QStringLiteral("bundleBytes"), published->bundleBytes},
        {QStringLiteral("manifestBytes"), published->manifestBytes},
        {QStringLiteral("fileCount"), published->fileCount},
        {QStringLiteral("updatedAt"), published->updatedAt},
        {QStringLiteral("changed"), published->changed},
    }));
    return EXIT_SUCCESS;
}

} // namespace pelloran
