#include "benchmarks/ReadingBenchmark.h"
#include "platform/LineReader.h"
#include "reading/LineCropper.h"
#include "reading/LineDetector.h"
#include "reading/RibbonLines.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <optional>
#include <utility>
#include <vector>

// The stages of reading Latin letters, and of making a known name of them.
namespace pelloran {

namespace {

using namespace benchmarks;

QRect bandOf(const QImage& image) {
    return QRectF(cardBand.x() * image.width(), cardBand.y() * image.height(), cardBand.width() * image.width(),
                  cardBand.height() * image.height())
        .toRect();
}

void lightnessOfBand(benchmark::State& state, const char* name) {
    const QImage image = screen(state, name);
    for (auto _ : state) {
        benchmark::DoNotOptimize(lightness(image, bandOf(image), Lettering::white));
    }
}

void detect(benchmark::State& state, const char* name) {
    const QImage image = screen(state, name);
    const Plane plane = lightness(image, bandOf(image), Lettering::white);
    for (auto _ : state) {
        benchmark::DoNotOptimize(detectLines(plane, image.height() / 1080.0));
    }
}

// The most promising line, with its surroundings.
std::pair<Plane, QRect> bestLine(const QImage& image) {
    const Plane plane = lightness(image, bandOf(image), Lettering::white);
    const auto boxes = detectLines(plane, image.height() / 1080.0);
    if (boxes.empty()) {
        return {};
    }
    const QRect around = boxes.front().area.adjusted(-9, -9, 9, 9) & QRect(0, 0, plane.width, plane.height);
    return {cropped(plane, around), boxes.front().area.translated(-around.topLeft())};
}

void clean(benchmark::State& state, const char* name) {
    const auto [plane, box] = bestLine(screen(state, name));
    for (auto _ : state) {
        benchmark::DoNotOptimize(cleanLine(plane, box, 1, {}));
    }
}

void readLine(benchmark::State& state, const char* name) {
    const auto [plane, box] = bestLine(screen(state, name));
    const auto line = cleanLine(plane, box, 1, {});
    const auto reader = LineReader::create();
    if (!line || !reader) {
        state.SkipWithError("no line or no language data");
        return;
    }
    const std::vector<QImage> pictures{imageOf(pictureOf(*line, {36, 0.16}))};
    for (auto _ : state) {
        benchmark::DoNotOptimize((*reader)->read(pictures));
    }
}

void loadNetwork(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(LineReader::create());
    }
}

// As the reader does it: in pictures that are not too fine.
void findRibbons(benchmark::State& state, const char* name, int height) {
    const QImage image = realScreen(state, name, height);
    const Plane whole = lightness(image, image.rect(), Lettering::white);
    const int halvings = height > 1500 ? 1 : 0;
    const Plane plane = shrunk(whole, halvings);
    const GameFrame frame = frameOf(image.size()).seenFrom({}, halvings ? 0.5 : 1);
    for (auto _ : state) {
        for (const double centre : cardCentres) {
            benchmark::DoNotOptimize(findRibbonLines(plane, frame, centre));
        }
    }
}

// The picture of the first card's name, as the network gets it.
std::optional<QImage> namePicture(const QImage& image) {
    const Plane plane = lightness(image, image.rect(), Lettering::white);
    const GameFrame frame = frameOf(image.size());
    const auto lines = findRibbonLines(plane, frame, cardCentres[0]);
    const auto picture = lines.empty() ? std::nullopt : pictureOf(lines[0], plane, frame, {});
    return picture ? std::optional(imageOf(*picture)) : std::nullopt;
}

void pictureOfName(benchmark::State& state, const char* name, int height) {
    const QImage image = realScreen(state, name, height);
    const Plane plane = lightness(image, image.rect(), Lettering::white);
    const GameFrame frame = frameOf(image.size());
    const auto lines = findRibbonLines(plane, frame, cardCentres[0]);
    if (lines.empty()) {
        if (!image.isNull()) {
            state.SkipWithError("no name was found");
        }
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(pictureOf(lines[0], plane, frame, {}));
    }
}

void readName(benchmark::State& state, const char* name, int height) {
    const QImage image = realScreen(state, name, height);
    if (image.isNull()) {
        return;
    }
    const auto picture = namePicture(image);
    const auto reader = LineReader::create();
    if (!picture || !reader) {
        state.SkipWithError("no name was found, or no language data");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize((*reader)->read({*picture}));
    }
}

void lightnessOfNames(benchmark::State& state, const char* name, int height, Lettering lettering) {
    const QImage image = realScreen(state, name, height);
    const QRect area = partWithNames(image.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(lightness(image, area, lettering));
    }
}

enum class Mistakes { none, few, all };

void settle(benchmark::State& state, Mistakes mistakes) {
    QFile cards(sharedFile("cards.json"));
    if (!cards.open(QIODevice::ReadOnly)) {
        state.SkipWithError("needs the shared cards, which are not beside this checkout");
        return;
    }
    QString line;
    for (const auto& card : QJsonDocument::fromJson(cards.readAll()).array()) {
        line = card[QStringLiteral("name_en")].toString();
        if (line.size() > 16) {
            break;
        }
    }
    if (mistakes == Mistakes::few) {
        line[3] = u'x';
        line[line.size() - 2] = u'q';
    } else if (mistakes == Mistakes::all) {
        line = QStringLiteral("Nothing of the Sort");
    }
    const auto names = cardNames();
    names->contains(line); // the index is made at the first question
    for (auto _ : state) {
        benchmark::DoNotOptimize(names->settle(line, NameKind::minion));
    }
}

PELLORAN_STAGE(findRibbons, 1080, "card-16x9-a", 1080);
PELLORAN_STAGE(findRibbons, 2160, "card-16x9-a", 2160);
PELLORAN_STAGE(pictureOfName, 1080, "card-16x9-a", 1080);
PELLORAN_STAGE(pictureOfName, 2160, "card-16x9-a", 2160);
PELLORAN_STAGE(readName, 1080, "card-16x9-a", 1080);
BENCHMARK_CAPTURE(settle, exact, Mistakes::none)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(settle, misread, Mistakes::few)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(settle, unknown, Mistakes::all)->Unit(benchmark::kMicrosecond);
PELLORAN_STAGE(lightnessOfBand, en, "card_en_1920x1080_0");
PELLORAN_STAGE(detect, en, "card_en_1920x1080_0");
PELLORAN_STAGE(detect, zh, "card_zh_1920x1080_0");
PELLORAN_STAGE(clean, en, "card_en_1920x1080_0");
PELLORAN_STAGE(clean, zh, "card_zh_1920x1080_0");
PELLORAN_STAGE(readLine, en, "card_en_1920x1080_0");
PELLORAN_STAGE(lightnessOfNames, white_1080, "card-16x9-a", 1080, Lettering::white);
PELLORAN_STAGE(lightnessOfNames, grey_1080, "card-16x9-a", 1080, Lettering::grey);
PELLORAN_STAGE(lightnessOfNames, grey_2160, "card-16x9-a", 2160, Lettering::grey);
BENCHMARK(loadNetwork)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

} // namespace

} // namespace pelloran
