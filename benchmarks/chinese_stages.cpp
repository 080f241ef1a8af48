#include "benchmarks/ReadingBenchmark.h"
#include "platform/ApplicationFiles.h"
#include "reading/chinese/CharacterCells.h"
#include "reading/chinese/CharacterFeature.h"
#include "reading/chinese/CharacterShape.h"
#include "reading/chinese/ChineseInk.h"
#include "reading/chinese/ChineseLineReader.h"
#include "reading/chinese/ChineseLines.h"
#include "reading/chinese/ChineseNames.h"
#include "reading/RibbonLines.h"

#include <QFile>

#include <optional>
#include <string>
#include <vector>

// The stages of reading Chinese characters.
namespace pelloran {

namespace {

using namespace benchmarks;

// Of the program's files, which lie beside this one's.
QByteArray modelFile() {
    const auto path = ApplicationFiles::create()->resource(QStringLiteral("chinese"), QStringLiteral("model"),
                                                           QStringLiteral("characters"));
    QFile file(path.value_or(QString()));
    return path && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::shared_ptr<const CharacterModel> characterModel(benchmark::State& state) {
    static const std::shared_ptr<const CharacterModel> model = [] {
        auto parsed = CharacterModel::parse(modelFile());
        return parsed ? std::make_shared<const CharacterModel>(*std::move(parsed)) : nullptr;
    }();
    if (!model) {
        state.SkipWithError("the model of Chinese characters is missing from the program's files");
    }
    return model;
}

void parseModel(benchmark::State& state) {
    const QByteArray bytes = modelFile();
    if (!CharacterModel::parse(bytes)) {
        state.SkipWithError("the model of Chinese characters is missing from the program's files");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(CharacterModel::parse(bytes));
    }
}

// The first name on such a screen, on its way through the stages.
struct ChineseLine {
    ChineseLine(benchmark::State& state, int height)
        : image(chineseScreen(state, height))
        , area(partWithNames(image.size()))
        , grey(lightness(image, area, Lettering::grey))
        , frame(frameOf(image.size()).seenFrom(area.topLeft(), 1)) {
        if (image.isNull()) {
            return; // which has been said
        }
        lines = findRibbonLines(grey, frame, cardCentres[0], {}, chineseOnRibbons);
        const auto line = lines.empty() ? std::nullopt : trimmedLine(ink(), seen());
        if (!line) {
            state.SkipWithError("no Chinese name was found");
            return;
        }
        trimmed = *line;
        const std::vector<float> widths(std::size_t(QString::fromUtf8(chineseFaces[0].name).size()), 1.0F);
        cells = CharacterCutter(trimmed).cells(widths);
        shape = shapeOf(trimmed, firstCell());
        if (!shape) {
            state.SkipWithError("no character in the first cell");
        }
    }

    // Lengths as the reader has them for such lines.
    RibbonStrip strip() const { return stripOf(lines.front(), grey, frame, chineseCut); }

    Extent seen() const {
        const RibbonStrip made = strip();
        return {made.left, made.right};
    }

    Plane ink() const { return inkOf(strip().plane, seen()); }

    QRect firstCell() const { return {cells[0].left, 0, cells[0].right - cells[0].left, trimmed.height}; }

    bool isFit() const { return shape.has_value(); }

    QImage image;
    QRect area;
    Plane grey;
    GameFrame frame;
    std::vector<RibbonLine> lines;
    Plane trimmed;
    std::vector<CharacterCell> cells;
    std::optional<CharacterShape> shape;
};

void findChineseRibbons(benchmark::State& state, int height) {
    const ChineseLine line(state, height);
    const int halvings = height > 1500 ? 1 : 0;
    const Plane plane = shrunk(line.grey, halvings);
    const GameFrame frame = line.frame.seenFrom({}, halvings ? 0.5 : 1);
    for (auto _ : state) {
        for (const double centre : cardCentres) {
            benchmark::DoNotOptimize(findRibbonLines(plane, frame, centre, {}, chineseOnRibbons));
        }
    }
}

void countStrokes(benchmark::State& state, int height) {
    const ChineseLine line(state, height);
    for (auto _ : state) {
        benchmark::DoNotOptimize(strokesOn(line.lines.front(), line.grey, line.frame));
    }
}

void chineseStrip(benchmark::State& state, int height) {
    const ChineseLine line(state, height);
    for (auto _ : state) {
        benchmark::DoNotOptimize(line.strip());
    }
}

void chineseInk(benchmark::State& state, int height) {
    const ChineseLine line(state, height);
    const RibbonStrip strip = line.isFit() ? line.strip() : RibbonStrip();
    const Extent seen{strip.left, strip.right};
    for (auto _ : state) {
        benchmark::DoNotOptimize(trimmedLine(inkOf(strip.plane, seen), seen));
    }
}

void cutCells(benchmark::State& state, std::size_t count) {
    const ChineseLine line(state, 1080);
    const std::vector<float> widths(count, 1.0F);
    for (auto _ : state) {
        benchmark::DoNotOptimize(CharacterCutter(line.trimmed).cells(widths));
    }
}

void makeShape(benchmark::State& state) {
    const ChineseLine line(state, 1080);
    for (auto _ : state) {
        benchmark::DoNotOptimize(shapeOf(line.trimmed, line.firstCell()));
    }
}

void makeFeature(benchmark::State& state) {
    const ChineseLine line(state, 1080);
    for (auto _ : state) {
        benchmark::DoNotOptimize(featureOf(*line.shape));
    }
}

void projectFeature(benchmark::State& state) {
    const ChineseLine line(state, 1080);
    const auto model = characterModel(state);
    const CharacterFeature feature = line.isFit() ? featureOf(*line.shape) : CharacterFeature();
    for (auto _ : state) {
        benchmark::DoNotOptimize(model->project(feature));
    }
}

// A character and all those of the names.
struct CostsToFind {
    explicit CostsToFind(benchmark::State& state) {
        const ChineseLine line(state, 1080);
        const auto model = characterModel(state);
        if (line.isFit() && model) {
            projected = model->project(featureOf(*line.shape));
            names.emplace(*model, *cardNames());
            costs.resize(names->costs().size());
        }
    }

    std::vector<float> projected;
    std::optional<ChineseNames> names;
    std::vector<float> costs;
};

void costsOfAll(benchmark::State& state) {
    CostsToFind find(state);
    for (auto _ : state) {
        find.names->costs().costs(find.projected, find.costs);
        benchmark::ClobberMemory();
    }
    state.SetLabel(std::to_string(find.costs.size()) + " characters");
}

// Of one of them after the other, as names ask for it.
void costOfOne(benchmark::State& state) {
    const CostsToFind find(state);
    std::size_t next = 0;
    for (auto _ : state) {
        next = (next + 997) % find.costs.size();
        benchmark::DoNotOptimize(find.names->costs().cost(find.projected, next));
    }
}

void makeChineseNames(benchmark::State& state) {
    const auto model = characterModel(state);
    if (cardNames()->names().size() == chineseFaces.size()) {
        state.SkipWithError("needs the shared cards, which are not beside this checkout");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(ChineseNames(*model, *cardNames()));
    }
}

// One name, from the ribbon to the text.
void readChineseName(benchmark::State& state, int height) {
    const ChineseLine line(state, height);
    const auto model = characterModel(state);
    if (!line.isFit() || !model) {
        return; // which has been said
    }
    ChineseLineReader reader(*model);
    const auto read = [&] {
        return readRibbon(line.lines.front(), line.grey, line.frame, ChineseLooks::all, reader, *cardNames());
    };
    if (const auto reading = read(); !reading || reading->text != QString::fromUtf8(chineseFaces[0].name)) {
        state.SkipWithError("the name was not read");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(read());
    }
}

PELLORAN_STAGE(findChineseRibbons, 1080, 1080);
PELLORAN_STAGE(findChineseRibbons, 2160, 2160);
PELLORAN_STEP(countStrokes, 1080, 1080);
PELLORAN_STEP(chineseStrip, 1080, 1080);
PELLORAN_STEP(chineseStrip, 2160, 2160);
PELLORAN_STEP(chineseInk, 1080, 1080);
PELLORAN_STEP(cutCells, 4, 4);
PELLORAN_STEP(cutCells, 12, 12);
BENCHMARK(makeShape)->Unit(benchmark::kMicrosecond);
BENCHMARK(makeFeature)->Unit(benchmark::kMicrosecond);
BENCHMARK(projectFeature)->Unit(benchmark::kMicrosecond);
BENCHMARK(costsOfAll)->Unit(benchmark::kMicrosecond);
BENCHMARK(costOfOne)->Unit(benchmark::kNanosecond);
PELLORAN_STEP(readChineseName, 1080, 1080);
PELLORAN_STEP(readChineseName, 2160, 2160);
BENCHMARK(makeChineseNames)->Unit(benchmark::kMillisecond);
BENCHMARK(parseModel)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace pelloran
