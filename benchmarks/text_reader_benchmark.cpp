#include "benchmarks/ReadingBenchmark.h"
#include "platform/ApplicationFiles.h"
#include "platform/TextReader.h"
#include "reading/NamePlaces.h"

#include <QCoreApplication>
#include <QPainter>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// What one look at a pick costs, in CPU time of all threads; the steps of it are in the sources beside this one. Real
// screens are brought to the sizes that are measured, and for Chinese lettering cards of that client are set onto one.
namespace pelloran {

namespace {

using namespace benchmarks;

const QRectF heroBand(0.08, 0.3, 0.84, 0.55);

std::shared_ptr<const Lexicon> classNames() {
    static const auto names = [] {
        std::vector<KnownName> list;
        for (const char* name :
             {"死亡骑士", "恶魔猎手", "德鲁伊", "猎人",         "法师",         "圣骑士", "牧师",   "潜行者",
              "萨满祭司", "术士",     "战士",   "Death Knight", "Demon Hunter", "Druid",  "Hunter", "Mage",
              "Paladin",  "Priest",   "Rogue",  "Shaman",       "Warlock",      "Warrior"}) {
            list.push_back({QString::fromUtf8(name), {}});
        }
        return std::make_shared<const Lexicon>(std::move(list), Lexicon::forClasses);
    }();
    return names;
}

ReadingHints hintsFor(const char* name) {
    return QByteArray(name).startsWith("hero")
               ? ReadingHints{heroBand, ReadingHints::Offers::heroes, std::nullopt, classNames()}
               : ReadingHints{cardBand, ReadingHints::Offers::cards, std::nullopt, cardNames()};
}

auto createReader() {
    return TextReader::create(*ApplicationFiles::create());
}

void makeReader(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(createReader());
    }
}

void readAll(benchmark::State& state, const QImage& image, const ReadingHints& hints, bool cold) {
    if (image.isNull()) {
        return; // which has been said
    }
    const auto reader = createReader();
    if (!reader) {
        state.SkipWithError("no language data");
        return;
    }
    if (hints.names) {
        hints.names->contains({}); // the index is made at the first question
    }
    std::size_t names = 0;
    for (auto _ : state) {
        if (cold) {
            (*reader)->forget();
        }
        names = (*reader)->read(image, hints).tokens.size();
    }
    state.SetLabel(std::to_string(names) + " names");
}

void readScreen(benchmark::State& state, const char* name, bool cold) {
    readAll(state, screen(state, name), hintsFor(name), cold);
}

void readRealScreen(benchmark::State& state, const char* name, int height) {
    readAll(state, realScreen(state, name, height), hintsFor(name), true);
}

// Looks at one pick after the other, the first before measuring.
void readTicks(benchmark::State& state, const std::vector<QImage>& images, const ReadingHints& hints) {
    if (std::ranges::any_of(images, &QImage::isNull)) {
        return; // which has been said
    }
    const auto reader = createReader();
    if (!reader) {
        state.SkipWithError("no language data");
        return;
    }
    if ((*reader)->read(images.front(), hints).tokens.size() != 3) {
        state.SkipWithError("not all three names were read");
        return;
    }
    std::size_t next = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize((*reader)->read(images[next % images.size()], hints));
        ++next;
    }
}

// While nothing changes.
void steadyTick(benchmark::State& state, const char* name, int height) {
    readTicks(state, {realScreen(state, name, height)}, hintsFor(name));
}

// The left card of the one screen comes and goes in the other.
void oneChangedName(benchmark::State& state, const char* name, const char* other, int height) {
    const QImage image = realScreen(state, name, height);
    const QImage card = realScreen(state, other, height);
    QImage changed = image;
    if (!image.isNull() && !card.isNull()) {
        const GameFrame frame = frameOf(image.size());
        const QRect left(0, 0, int(frame.pixelX((cardCentres[0] + cardCentres[1]) / 2)), image.height());
        QPainter(&changed).drawImage(left, card, left);
    }
    readTicks(state, {image, changed}, hintsFor(name));
}

// Three names in the Chinese client's lettering. What script they are in is found out, or told.
void readChineseScreen(benchmark::State& state, int height, std::optional<Script> script) {
    ReadingHints hints = hintsFor("card");
    hints.script = script;
    readAll(state, chineseScreen(state, height), hints, true);
}

// A look after another at a pick with a card that the names do not have yet.
void missingChineseName(benchmark::State& state, int height) {
    std::vector<KnownName> names = cardNames()->names();
    names.pop_back(); // the third face's
    ReadingHints hints = hintsFor("card");
    hints.names = std::make_shared<const Lexicon>(std::move(names), Lexicon::forCards);
    readAll(state, chineseScreen(state, height), hints, false);
}

void steadyChineseTick(benchmark::State& state, int height) {
    readTicks(state, {chineseScreen(state, height)}, hintsFor("card"));
}

// The second card comes and goes in the place of the first.
void oneChangedChineseName(benchmark::State& state, int height) {
    const QImage image = chineseScreen(state, height);
    QImage changed = image;
    if (!image.isNull()) {
        setFace(changed, 0, chineseFaces[1]);
    }
    readTicks(state, {image, changed}, hintsFor("card"));
}

BENCHMARK(makeReader)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
PELLORAN_STAGE(readScreen, card_en_0_cold, "card_en_1920x1080_0", true);
PELLORAN_STAGE(readScreen, card_en_0_warm, "card_en_1920x1080_0", false);
PELLORAN_STAGE(readScreen, card_en_1_cold, "card_en_1920x1080_1", true);
PELLORAN_STAGE(readScreen, card_zh_0_cold, "card_zh_1920x1080_0", true);
PELLORAN_STAGE(readScreen, card_zh_0_warm, "card_zh_1920x1080_0", false);
PELLORAN_STAGE(readScreen, card_zh_1_cold, "card_zh_1920x1080_1", true);
PELLORAN_STAGE(readScreen, hero_en_0_cold, "hero_en_1920x1080_0", true);
PELLORAN_STAGE(readScreen, hero_en_1_cold, "hero_en_1920x1080_1", true);
PELLORAN_STAGE(readScreen, hero_zh_0_cold, "hero_zh_1920x1080_0", true);
PELLORAN_STAGE(readScreen, hero_zh_1_cold, "hero_zh_1920x1080_1", true);
PELLORAN_STAGE(readRealScreen, card_1080, "card-16x9-a", 1080);
PELLORAN_STAGE(readRealScreen, card_2160, "card-16x9-a", 2160);
PELLORAN_STAGE(readRealScreen, card_c_1080, "card-16x9-c", 1080);
PELLORAN_STAGE(steadyTick, card_1080, "card-16x9-a", 1080);
PELLORAN_STAGE(steadyTick, card_2160, "card-16x9-a", 2160);
PELLORAN_STAGE(steadyTick, hero_1080, "hero-16x9-a", 1080);
PELLORAN_STAGE(oneChangedName, card_1080, "card-16x9-a", "card-16x9-b", 1080);
PELLORAN_STAGE(readChineseScreen, 720, 720, std::nullopt);
PELLORAN_STAGE(readChineseScreen, 1080, 1080, std::nullopt);
PELLORAN_STAGE(readChineseScreen, told_1080, 1080, Script::chinese);
PELLORAN_STAGE(readChineseScreen, 2160, 2160, std::nullopt);
PELLORAN_STAGE(steadyChineseTick, 1080, 1080);
PELLORAN_STAGE(steadyChineseTick, 2160, 2160);
PELLORAN_STAGE(oneChangedChineseName, 1080, 1080);
PELLORAN_STAGE(missingChineseName, 1080, 1080);
PELLORAN_STAGE(readRealScreen, redraft_1437, "redraft-new-b", 1437);
PELLORAN_STAGE(readRealScreen, hero_1080, "hero-16x9-a", 1080);
PELLORAN_STAGE(readRealScreen, hero_2160, "hero-16x9-a", 2160);
PELLORAN_STAGE(readRealScreen, mulligan_1080, "none-mulligan-3", 1080);
PELLORAN_STAGE(readRealScreen, decks_1080, "none-decks", 1080);

} // namespace

} // namespace pelloran

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv); // knows where the program's files are
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
