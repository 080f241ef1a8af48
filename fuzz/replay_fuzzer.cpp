// Any files in a folder as a recording that somebody sent. It is gone through, or refused with a sentence; the folder
// is as it was afterwards, and a second time gives the same.

#include "app/Json.h"
#include "fuzz/Bytes.h"
#include "fuzz/Require.h"
#include "localisation/AppLanguage.h"
#include "recording/Format.h"
#include "recording/Replay.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/fakes/FakeTextReader.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <array>
#include <cstdint>
#include <utility>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;

// Data that a program can begin with.
constexpr const char* goodCards = R"({"cards":[{"card_id":"OWN_1","name_en":"Amber Wolf","name_zh":"琥珀之狼",
"deck_win_rate":51.5},{"card_id":"OWN_2","name_en":"Copper Kettle"},{"card_id":"OWN_3","name_en":"Quiet Orchard"}]})";
constexpr const char* goodClasses = R"({"classes":[{"player_class":"MAGE","name_zh":"法师","win_rate":50.5}]})";
constexpr const char* goodHeader =
    R"({"begins":true,"commit":"","format":1,"program":"1","qt":"6","strictLengths":false,"system":"any"})"
    "\n";

// What most lines of a recording are made of, so that bytes need not spell them.
constexpr std::array<const char*, 16> lines{
    R"({"at":1,"language":"en","logs":{"session":false},"shown":true})",
    R"({"at":2,"logs":{"session":true,"loadingScreen":{"anew":true,"lines":["D 1 currMode=DRAFT"]}},"shown":true})",
    R"({"at":3,"logs":{"session":true,"arena":{"anew":true,"lines":["D 1 SetDraftMode - DRAFTING"]}}})",
    R"({"at":4,"logs":{"session":true,"arena":{"lines":["D 1 OnChosen(): hero=HERO_08"]}}})",
    R"({"at":5,"logs":{"session":true,"arena":{"unfinished":"D 1 Client chooses: Amber Wo"}}})",
    R"({"at":6,"windows":{"all":[{"number":7,"named":true,"x":0,"y":0,"width":640,"height":480}]}})",
    R"({"at":7,"windows":{"onScreen":[{"number":7,"named":true,"x":0,"y":0,"width":640,"height":480}]}})",
    R"({"at":8,"image":{"width":40,"height":30},"reads":[{"picture":0,"bands":[{"x":4,"y":5,"width":20,"height":10}]}],"shown":true})",
    R"({"at":9,"image":{"width":40,"height":30},"reads":[{"same":true}],"shown":true,"snapshot":{"inDraft":true}})",
    R"({"at":10,"image":{"error":"gone"},"shown":true})",
    R"({"at":11,"image":{"width":40,"height":30},"reads":[{"given":true,"tokens":[{"text":"Amber Wolf","confidence":1,"midX":0.3,"midY":0.5,"width":0.1,"height":0.1}],"columns":[0.2,0.5,0.8]}],"shown":true})",
    R"({"at":12,"logs":{"session":true,"arena":{"missing":true},"loadingScreen":{}}})",
    R"({"at":13,"language":"zh","shown":true,"snapshot":{"cards":[],"inDraft":false,"phase":"idle","title":"x"}})",
    R"({"at":14,"image":{"width":640,"height":480},"reads":[{"given":true},{"given":true},{"same":true}]})",
    R"({"at":15,"logs":{"session":false},"shown":false})",
    R"({"at":16,"logs":{"session":true,"arena":{"anew":true}},"windows":{},"image":{"error":"denied"}})"};

QByteArray pngOf(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::gray);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    require(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "png"));
    return bytes;
}

QByteArray eventsFrom(Bytes& bytes) {
    QByteArray events = bytes.take() % 8 == 7 ? QByteArray() : QByteArray(goodHeader);
    for (int count = bytes.take() % 24; count > 0; --count) {
        const int which = bytes.take();
        QByteArray line = which < 224 ? QByteArray(lines[std::size_t(which) % lines.size()])
                                      : bytes.takeBytes(std::size_t(bytes.take()));
        if (which >= 128 && which < 224) {
            // Another number, letter or sign somewhere.
            const qsizetype at = bytes.take() % std::max<qsizetype>(1, line.size());
            line.replace(at, bytes.take() % 3, bytes.takeBytes(std::size_t(bytes.take()) % 4));
        }
        events += line + (which % 32 == 31 ? "" : "\n");
    }
    return events;
}

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

void writePart(const QString& recording, int number, Bytes& bytes) {
    static const QByteArray rightPicture = pngOf({20, 10});
    static const QByteArray otherPicture = pngOf({21, 10});
    const QString part = recording + u'/' + recording::partName(number);
    require(QDir().mkpath(part));
    const int how = bytes.take();
    const auto contents = [&](int kind, const QByteArray& good) {
        return kind < 3 ? good : bytes.takeBytes(std::size_t(bytes.take()));
    };
    if (how & 1) {
        write(part + u'/' + recording::pictureName(0), how & 2 ? otherPicture.left(1 + bytes.take()) : rightPicture);
    }
    if ((how & 12) != 12) {
        write(part + u'/' + recording::cardFile, contents(how / 4 % 4 == 2 ? 3 : 0, goodCards));
        write(part + u'/' + recording::classFile, contents(how / 16 % 4, goodClasses));
    }
    if ((how & 192) == 192) { // a link to elsewhere
        require(QFile::link(QStringLiteral("/dev/zero"), part + u'/' + recording::eventFile));
    } else {
        write(part + u'/' + recording::eventFile, eventsFrom(bytes));
    }
}

struct Told {
    std::expected<recording::Outcome, QString> outcome;
    std::vector<std::pair<QString, QJsonValue>> differences;
};

Told replayed(const QString& folder) {
    AppLanguage::overridePreference(AppLanguage::en); // as at the program's start: a recording may leave another behind
    const testing::FakeApplicationFiles files(QStringLiteral("/nowhere"));
    Told told;
    told.outcome = recording::replay(
        {.folder = folder,
         .makeTextReader = []() -> std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> {
             auto reader = std::make_unique<testing::FakeTextReader>();
             reader->tokens = {{QStringLiteral("Amber Wolf"), 1, 0.3, 0.5, 0.1, 0.1},
                               {QStringLiteral("Copper Kettle"), 1, 0.6, 0.5, 0.1, 0.1}};
             return reader;
         },
         .snapshotToJson = json::toJson,
         .files = files},
        [&](const recording::Difference& difference) {
            told.differences.emplace_back(difference.place, difference.replayed);
        });
    return told;
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const QTemporaryDir folder;
    require(folder.isValid());
    const int parts = 1 + bytes.take() % 2;
    int number = bytes.take() % 3;
    for (int i = 0; i < parts; ++i) {
        writePart(folder.path(), number, bytes);
        number += 1 + (bytes.take() & 1);
    }
    const auto filesOf = [&] { return QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot); };
    const QStringList before = filesOf();
    const Told once = replayed(folder.path());
    require(filesOf() == before);
    require(once.outcome || !once.outcome.error().isEmpty());
    if (once.outcome) {
        require(once.outcome->different <= once.outcome->compared && once.outcome->compared <= once.outcome->ticks);
        const Told again = replayed(folder.path());
        require(again.outcome && again.differences == once.differences);
    }
    return 0;
}
