#include "app/OneShotCommands.h"

#include "app/DataErrorText.h"
#include "app/Json.h"
#include "app/LogsDir.h"
#include "app/Servers.h"
#include "data/WinrateStore.h"
#include "draft/LogWatcher.h"
#include "platform/ApplicationFiles.h"
#include "platform/Log.h"
#include "platform/TextReader.h"
#include "platform/UserDefaults.h"
#include "publish/Publisher.h"
#include "recognition/CardRecognizer.h"
#include "sync/ConfigSync.h"
#include "update/AppUpdateChecker.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QImageReader>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <variant>

namespace pelloran {

namespace {

// A window of 16k by 9k pixels still fits.
constexpr int maximumImageMegabytes = 1024;

void print(const QByteArray& text) {
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

// Of all threads of the program.
double processCpuMilliseconds() {
    timespec spent{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &spent);
    return static_cast<double>(spent.tv_sec) * 1e3 + static_cast<double>(spent.tv_nsec) / 1e6;
}

bool load(WinrateStore& store) {
    const auto loaded = store.loadFromBundle();
    if (!loaded) {
        log(describe(loaded.error()));
    }
    return loaded.has_value();
}

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

QJsonObject recognizeOne(const QImage& image, DraftPhase phase, const CardRecognizer& recognizer, TextReader& reader) {
    const bool heroes = phase == DraftPhase::heroPick;
    const double cpuBefore = processCpuMilliseconds();
    QElapsedTimer wall;
    wall.start();
    const std::vector<OCRToken> tokens =
        CardRecognizer::ocrTokens(image, reader, heroes ? recognizer.heroHints() : recognizer.cardHints());
    const std::vector<SlotMatch> matches =
        heroes ? recognizer.recognizeHeroes(tokens) : recognizer.recognizeCards(tokens);
    return {
        {QStringLiteral("milliseconds"), static_cast<double>(wall.nsecsElapsed()) / 1e6},
        {QStringLiteral("cpuMilliseconds"), processCpuMilliseconds() - cpuBefore},
        {QStringLiteral("slots"), json::array(matches)},
        {QStringLiteral("tokens"), json::array(tokens)},
    };
}

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

struct UpdateAnswer {
    const QString& downloadBase;

    QJsonObject operator()(const AppUpdateCheckResult::UpToDate& result) const {
        return {{QStringLiteral("result"), QStringLiteral("upToDate")},
                {QStringLiteral("local"), result.local},
                {QStringLiteral("remote"), result.remote}};
    }

    QJsonObject operator()(const AppUpdateCheckResult::Available& result) const {
        return offer(QStringLiteral("available"), result.local, result.release);
    }

    QJsonObject operator()(const AppUpdateCheckResult::SkippedVersion& result) const {
        return offer(QStringLiteral("skippedVersion"), result.local, result.release);
    }

    QJsonObject operator()(const AppUpdateCheckResult::Offline& result) const {
        return {{QStringLiteral("result"), QStringLiteral("offline")}, {QStringLiteral("reason"), result.reason}};
    }

    QJsonObject operator()(const AppUpdateCheckResult::Failed& result) const {
        return {{QStringLiteral("result"), QStringLiteral("failed")}, {QStringLiteral("message"), result.message}};
    }

private:
    QJsonObject offer(const QString& name, const QString& local, const AppReleaseInfo& release) const {
        const auto download = release.preferredDownloadURL(downloadBase);
        const QJsonObject all{
            {QStringLiteral("name"), json::optional(release.name)},
            {QStringLiteral("version"), release.version},
            {QStringLiteral("build"), json::optional(release.build)},
            {QStringLiteral("minMacos"), json::optional(release.minMacos)},
            {QStringLiteral("arch"),
             release.arch ? QJsonArray::fromStringList(*release.arch) : QJsonValue(QJsonValue::Null)},
            {QStringLiteral("dmg"), json::optional(release.dmg)},
            {QStringLiteral("zip"), json::optional(release.zip)},
            {QStringLiteral("baseURL"), json::optional(release.baseURL)},
            {QStringLiteral("notes"), json::optional(release.notes)},
            {QStringLiteral("notesZh"), json::optional(release.notesZh)},
            {QStringLiteral("notesEn"), json::optional(release.notesEn)},
            {QStringLiteral("publishedAt"), json::optional(release.publishedAt)},
            {QStringLiteral("force"), json::optional(release.force)},
            {QStringLiteral("download"),
             download ? QJsonValue(download->toString(QUrl::FullyEncoded)) : QJsonValue(QJsonValue::Null)},
        };
        return {{QStringLiteral("result"), name}, {QStringLiteral("local"), local}, {QStringLiteral("release"), all}};
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

int run(const CheckUpdateOnce& command) {
    const auto defaults = UserDefaults::create();
    const UpdateService service(command.updateServer, *defaults);
    const AppUpdateCheckResult result = service.checker().checkNow();
    QJsonObject answer = std::visit(UpdateAnswer{service.checker().downloadBaseURLString()}, result.outcome);
    answer.insert(QStringLiteral("hasUpdate"), result.hasUpdate());
    answer.insert(QStringLiteral("userMessage"), result.userMessage());
    print(json::line(answer));
    const bool current = std::holds_alternative<AppUpdateCheckResult::UpToDate>(result.outcome);
    return current || result.hasUpdate() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int run(const PublishData& command) {
    const auto published = publish(command.source, command.target, command.cardTable);
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

int run(const PrintText& command) {
    print(command.text.toUtf8());
    return EXIT_SUCCESS;
}

int run(const PrintDraftState& command) {
    print(json::line(json::toJson(LogWatcher(logsDirToRead(command.logsDir)).poll())));
    return EXIT_SUCCESS;
}

int run(const PrintLogsDir&) {
    const auto folder = foundLogsDir();
    if (!folder) {
        log(QStringLiteral("no log folder of the game found; --logs-dir names one that lies elsewhere"));
        return EXIT_FAILURE;
    }
    print(folder->toUtf8() + '\n');
    return EXIT_SUCCESS;
}

int run(const RecognizeImages& command) {
    const auto files = ApplicationFiles::create();
    WinrateStore store(*files);
    if (!load(store)) {
        return EXIT_FAILURE;
    }
    auto reader = TextReader::create();
    if (!reader) {
        log(reader.error().reason);
        return EXIT_FAILURE;
    }
    const CardRecognizer recognizer(store);
    QImageReader::setAllocationLimit(maximumImageMegabytes);
    int result = EXIT_SUCCESS;
    for (const QString& path : command.images) {
        QJsonObject answer;
        QImageReader file;
        if (QFileInfo(path).isFile()) { // opening a pipe would wait for its writer
            file.setFileName(path);
        }
        const QImage image = file.fileName().isEmpty() ? QImage() : file.read();
        if (image.isNull()) {
            answer.insert(QStringLiteral("error"),
                          file.fileName().isEmpty() ? QStringLiteral("no such file") : file.errorString());
            result = EXIT_FAILURE;
        } else {
            if (!command.ticks) {
                (*reader)->forget();
            }
            answer = recognizeOne(image, command.phase, recognizer, **reader);
        }
        answer.insert(QStringLiteral("image"), path);
        answer.insert(QStringLiteral("phase"), json::phaseName(command.phase));
        print(json::line(answer));
    }
    return result;
}

int run(const MatchTexts& command) {
    const auto files = ApplicationFiles::create();
    WinrateStore store(*files);
    if (!load(store)) {
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
