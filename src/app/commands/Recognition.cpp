#include "app/commands/Recognition.h"

#include "base/Log.h"
#include "data/DataErrorText.h"
#include "platform/ApplicationFiles.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QImageReader>

#include <ctime>
#include <utility>

namespace pelloran {

namespace {

// A window of 16k by 9k pixels still fits.
constexpr int maximumImageMegabytes = 1024;

// Of all threads of the program.
double processCpuMilliseconds() {
    timespec spent{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &spent);
    return static_cast<double>(spent.tv_sec) * 1e3 + static_cast<double>(spent.tv_nsec) / 1e6;
}

} // namespace

bool loadOrLog(WinrateStore& store) {
    const auto loaded = store.loadFromBundle();
    if (!loaded) {
        log(describe(loaded.error()));
    }
    return loaded.has_value();
}

std::expected<QImage, QString> readImage(const QString& path) {
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

Recognition::Recognition(NameLengths lengths)
    : files(ApplicationFiles::create())
    , store(*files)
    , recognizer(store, lengths) {}

Recognition::~Recognition() = default;

std::unique_ptr<Recognition> Recognition::create(NameLengths lengths) {
    std::unique_ptr<Recognition> made(new Recognition(lengths));
    if (!loadOrLog(made->store)) {
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

Recognition::Look Recognition::look(const QImage& image, DraftPhase phase) {
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

} // namespace pelloran
