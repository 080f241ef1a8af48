#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/commands/Recognition.h"
#include "app/evaluation/Totals.h"
#include "app/Json.h"
#include "base/Log.h"
#include "data/DataErrorText.h"
#include "data/DataFiles.h"
#include "platform/ApplicationFiles.h"
#include "reading/BoxedText.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cstdlib>
#include <expected>
#include <memory>
#include <utility>

namespace pelloran {

namespace {

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
    const auto image = readImage(picture);
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

} // namespace

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

} // namespace pelloran
