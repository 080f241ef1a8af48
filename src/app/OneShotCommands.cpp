#include "app/OneShotCommands.h"

#include "app/evaluation/Totals.h"
#include "app/Json.h"
#include "app/ServerClients.h"
#include "base/Log.h"
#include "data/DataErrorText.h"
#include "data/DataFiles.h"
#include "data/WinrateStore.h"
#include "draft/logs/LogsDir.h"
#include "draft/logs/LogWatcher.h"
#include "platform/ApplicationFiles.h"
#include "platform/TextReader.h"
#include "platform/UserDefaults.h"
#include "platform/WindowServer.h"
#include "publish/Publisher.h"
#include "reading/BoxedText.h"
#include "recognition/CardRecognizer.h"
#include "recognition/ScreenReader.h"
#include "sync/ConfigSync.h"
#include "update/AppReleaseFields.h"
#include "update/AppUpdateChecker.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImageReader>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <expected>
#include <memory>
#include <tuple>
#include <utility>
#include <variant>

namespace pelloran {

namespace {

// A window of 16k by 9k pixels still fits.
constexpr int maximumImageMegabytes = 1024;

void print(const QByteArray& text) {
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

void printLines(const QStringList& lines) {
    for (const QString& line : lines) {
        print(line.toUtf8() + '\n');
    }
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

// A text reader, with the data that its lines are matched against.
class Recognition {
public:
    // Absent where one of them cannot be had; the log says which.
    static std::unique_ptr<Recognition> create(NameLengths lengths) {
        std::unique_ptr<Recognition> made(new Recognition(lengths));
        if (!load(made->store)) {
            return nullptr;
        }
        auto reader = TextReader::create(*made->files);
        if (!reader) {
            log(reader.error().reason);
            return nullptr;
        }
        made->reader = *std::move(reader);
        QImageReader::setAllocationLimit(maximumImageMegabytes);
        return made;
    }

    // An error is for the user's eyes.
    static std::expected<QImage, QString> readImage(const QString& path) {
        if (!QFileInfo(path).isFile()) { // opening a pipe would wait for its writer
            return std::unexpected(QStringLiteral("no such file"));
        }
        QImageReader file(path);
        QImage image = file.read();
        if (image.isNull()) {
            return std::unexpected(file.errorString());
        }
        return image;
    }

    struct Look {
        ReadText text;
        evaluation::Look outcome;
    };

    Look look(const QImage& image, DraftPhase phase) {
        const bool heroes = phase == DraftPhase::heroPick;
        Look made;
        const double cpuBefore = processCpuMilliseconds();
        QElapsedTimer wall;
        wall.start();
        made.text = CardRecognizer::ocrTokens(image, *reader, heroes ? recognizer.heroHints() : recognizer.cardHints());
        made.outcome.matches = heroes ? recognizer.recognizeHeroes(made.text) : recognizer.recognizeCards(made.text);
        made.outcome.milliseconds = static_cast<double>(wall.nsecsElapsed()) / 1e6;
        made.outcome.cpuMilliseconds = processCpuMilliseconds() - cpuBefore;
        made.outcome.rules = phase;
        return made;
    }

    // So that the next image is as the first one.
    void forget() { reader->forget(); }

    const WinrateStore& winrates() const { return store; }

    // Null where there are none.
    std::shared_ptr<const Lexicon> cardNames() const { return recognizer.cardHints().names; }

private:
    explicit Recognition(NameLengths lengths)
        : recognizer(store, lengths) {}

    const std::unique_ptr<ApplicationFiles> files = ApplicationFiles::create();
    WinrateStore store{*files};
    const CardRecognizer recognizer;
    std::unique_ptr<TextReader> reader;
};

// A picture of a folder with the truth on it.
struct TruthFile {
    QString picture;
    evaluation::Truth truth;
    QImage image;
};

// Beside the truth file, or where it says. The error is a sentence.
std::expected<TruthFile, QString> readTruth(const QFileInfo& file) {
    const auto bytes = readDataFile(file.filePath());
    if (!bytes) {
        return std::unexpected(describe(bytes.error()));
    }
    const auto truth = evaluation::parseTruth(*bytes);
    if (!truth) {
        return std::unexpected(QStringLiteral("%1: %2").arg(file.filePath(), truth.error()));
    }
    QStringList names;
    if (truth->file) {
        names.append(*truth->file);
    } else {
        for (const char* ending : {".png", ".jpg", ".jpeg"}) {
            names.append(file.completeBaseName() + QString::fromLatin1(ending));
        }
    }
    const QDir folder = file.dir();
    const auto name = std::ranges::find_if(
        names, [&folder](const QString& each) { return QFileInfo(folder.filePath(each)).isFile(); });
    if (name == names.end()) {
        return std::unexpected(QStringLiteral("%1: its picture is not there").arg(file.filePath()));
    }
    const QString picture = folder.filePath(*name);
    const auto image = Recognition::readImage(picture);
    if (!image) {
        return std::unexpected(QStringLiteral("%1: %2").arg(picture, image.error()));
    }
    return TruthFile{picture, *truth, *image};
}

// What changes from look to look on one picture, such as which lines are read anew, has settled by then.
constexpr int repetitions = 2;

// Boxed texts are read where there is a reader for them.
evaluation::Picture evaluateOne(const TruthFile& file, bool ticks, Recognition& recognition,
                                const evaluation::Judge& judge, const evaluation::BoxReader& boxReader) {
    evaluation::Picture picture{file.picture, file.truth, {}, {}, {}};
    for (const DraftPhase rules : evaluation::rulesFor(file.truth)) {
        if (!ticks) {
            recognition.forget();
        }
        const evaluation::Look& first = picture.looks.emplace_back(recognition.look(file.image, rules).outcome);
        const std::vector<evaluation::Answer> answers = judge.judge(file.truth, first);
        picture.answers.insert(picture.answers.end(), answers.begin(), answers.end());
        for (int i = 0; ticks && i < repetitions; ++i) {
            picture.repeated.push_back(recognition.look(file.image, rules).outcome);
        }
    }
    if (boxReader) {
        picture.texts = judge.judgeTexts(file.truth, file.image, boxReader);
    }
    return picture;
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

// What our lines call a field of a file: "minMacos" for "min_macos", and "baseURL" for "base_url".
QString camelCase(QLatin1StringView key) {
    const QStringList words = QString(key).split(u'_');
    QString name = words.first();
    for (const QString& word : words.sliced(1)) {
        name += word == QStringLiteral("url") ? word.toUpper() : word.first(1).toUpper() + word.sliced(1);
    }
    return name;
}

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
        QJsonObject all{{QStringLiteral("download"),
                         download ? QJsonValue(download->toString(QUrl::FullyEncoded)) : QJsonValue(QJsonValue::Null)}};
        const auto insert = [&](const auto& field) {
            all.insert(camelCase(field.key), strict_json::encode(release.*field.member));
        };
        std::apply([&](const auto&... field) { (insert(field), ...); }, strict_json::fields<AppReleaseInfo>);
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
    const UpdateClient client(command.updateServer, *defaults);
    const AppUpdateCheckResult result = client.checker().checkNow();
    QJsonObject answer = std::visit(UpdateAnswer{client.checker().downloadBaseURLString()}, result.outcome);
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
    const DraftState state = LogWatcher(logsDirToRead(command.logsDir)).poll();
    print(json::line(json::toJson(state)));
    if (state.inDraft) {
        // For what it logs where the game cannot be seen.
        static_cast<void>(ScreenReader(WindowServer::create, {}).look(AppConfig().windowOwnerHint, std::nullopt));
    }
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
    const auto recognition = Recognition::create(nameLengths(command.strictLengths));
    if (!recognition) {
        return EXIT_FAILURE;
    }
    int result = EXIT_SUCCESS;
    for (const QString& path : command.images) {
        QJsonObject answer{{QStringLiteral("image"), path}, {QStringLiteral("phase"), json::phaseName(command.phase)}};
        if (const auto image = Recognition::readImage(path)) {
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

int run(const EvaluateFolders& command) {
    const auto recognition = Recognition::create(nameLengths(command.strictLengths));
    if (!recognition) {
        return EXIT_FAILURE;
    }
    const evaluation::Judge judge(recognition->winrates());
    std::unique_ptr<ChineseLineReader> chinese;
    evaluation::BoxReader boxReader;
    if (command.texts) {
        auto made = ChineseLineReader::create(*ApplicationFiles::create());
        if (!made) {
            log(made.error());
            return EXIT_FAILURE;
        }
        chinese = *std::move(made);
        boxReader = [&chinese, names = recognition->cardNames()](const QImage& window, const QRect& box) {
            return names ? readBoxedText(window, box, *chinese, *names) : std::nullopt;
        };
    }
    evaluation::Totals totals;
    int result = EXIT_SUCCESS;
    const auto fail = [&result](const QString& problem) {
        log(problem);
        result = EXIT_FAILURE;
    };
    for (const QString& path : command.folders) {
        const auto files = QDir(path).entryInfoList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
        if (files.isEmpty()) {
            fail(QStringLiteral("%1: no folder with truth files (*.json)").arg(path));
        }
        for (const QFileInfo& file : files) {
            const auto truth = readTruth(file);
            if (!truth) {
                fail(truth.error());
                continue;
            }
            const evaluation::Picture picture = evaluateOne(*truth, command.ticks, *recognition, judge, boxReader);
            totals.add(picture);
            if (command.json) {
                print(json::line(evaluation::toJson(picture)));
            } else {
                printLines(evaluation::remarks(picture));
            }
        }
    }
    const QString& data = recognition->winrates().cardsSourceDescription();
    if (command.json) {
        QJsonObject summary = totals.toJson();
        summary.insert(QStringLiteral("data"), data);
        print(json::line(summary));
    } else {
        print("data: " + data.toUtf8() + '\n');
        printLines(totals.table());
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
