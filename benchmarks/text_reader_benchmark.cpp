#include "reading/LineCropper.h"
#include "reading/LineDetector.h"
#include "platform/LineReader.h"
#include "platform/TextReader.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

// What one look at a pick costs, stage by stage, in CPU time of all threads. The pictures lie beside some checkouts
// only; without them everything is skipped.
namespace pelloran {

namespace {

const QRectF cardBand(0.08, 0.28, 0.64, 0.5);
const QRectF heroBand(0.08, 0.3, 0.84, 0.55);

QString shared(const QString& relative) {
    return QStringLiteral(PELLORAN_TEST_DATA "/") + relative;
}

QString lettersOf(const QString& text) {
    QString letters;
    for (const QChar character : text.toLower()) {
        if (character.isLetter()) {
            letters.append(character);
        }
    }
    return letters;
}

std::shared_ptr<const KnownNames> cardNames() {
    static const auto names = [] {
        auto result = std::make_shared<KnownNames>();
        result->normalize = lettersOf;
        QFile cards(shared(QStringLiteral("cards.json")));
        if (cards.open(QIODevice::ReadOnly)) {
            for (const QJsonValue& card : QJsonDocument::fromJson(cards.readAll()).array()) {
                result->normalized.insert(lettersOf(card[QStringLiteral("name_en")].toString()));
                result->normalized.insert(lettersOf(card[QStringLiteral("name_zh")].toString()));
            }
        }
        return result;
    }();
    return names;
}

std::shared_ptr<const KnownNames> classNames() {
    static const auto names = [] {
        auto result = std::make_shared<KnownNames>();
        result->normalize = lettersOf;
        for (const char* name :
             {"死亡骑士", "恶魔猎手", "德鲁伊", "猎人",         "法师",         "圣骑士", "牧师",   "潜行者",
              "萨满祭司", "术士",     "战士",   "Death Knight", "Demon Hunter", "Druid",  "Hunter", "Mage",
              "Paladin",  "Priest",   "Rogue",  "Shaman",       "Warlock",      "Warrior"}) {
            result->normalized.insert(lettersOf(QString::fromUtf8(name)));
        }
        return result;
    }();
    return names;
}

QImage screen(benchmark::State& state, const char* name) {
    QImage image(shared(QStringLiteral("screens/%1.png").arg(QString::fromUtf8(name))));
    if (image.isNull()) {
        state.SkipWithError("needs the shared screens, which are not beside this checkout");
    }
    return image.convertToFormat(QImage::Format_RGB32);
}

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
    return {part(plane, around), boxes.front().area.translated(-around.topLeft())};
}

void clean(benchmark::State& state, const char* name) {
    const auto [plane, box] = bestLine(screen(state, name));
    for (auto _ : state) {
        benchmark::DoNotOptimize(cleanLine(plane, box, 1, {}));
    }
}

void readLine(benchmark::State& state, const char* name, Script script) {
    const auto [plane, box] = bestLine(screen(state, name));
    const auto line = cleanLine(plane, box, 1, {});
    const auto reader = LineReader::create();
    if (!line || !reader) {
        state.SkipWithError("no line or no language data");
        return;
    }
    const std::vector<LineReader::Work> work{{picture(*line, pictureShape(script)), script}};
    for (auto _ : state) {
        benchmark::DoNotOptimize((*reader)->read(work));
    }
}

void load(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(LineReader::create());
    }
}

void readScreen(benchmark::State& state, const char* name, bool cold) {
    const QImage image = screen(state, name);
    const auto reader = TextReader::create();
    if (!reader) {
        state.SkipWithError("no language data");
        return;
    }
    const bool hero = QByteArray(name).startsWith("hero");
    const ReadingHints hints = hero ? ReadingHints{heroBand, Lettering::whiteOrGolden, classNames()}
                                    : ReadingHints{cardBand, Lettering::white, cardNames()};
    for (auto _ : state) {
        if (cold) {
            (*reader)->forget();
        }
        benchmark::DoNotOptimize((*reader)->read(image, hints));
    }
}

#define PELLORAN_STAGE(function, ...)                                                                                  \
    BENCHMARK_CAPTURE(function, __VA_ARGS__)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()

PELLORAN_STAGE(lightnessOfBand, en, "card_en_1920x1080_0");
PELLORAN_STAGE(detect, en, "card_en_1920x1080_0");
PELLORAN_STAGE(detect, zh, "card_zh_1920x1080_0");
PELLORAN_STAGE(clean, en, "card_en_1920x1080_0");
PELLORAN_STAGE(clean, zh, "card_zh_1920x1080_0");
PELLORAN_STAGE(readLine, en, "card_en_1920x1080_0", Script::latin);
PELLORAN_STAGE(readLine, zh, "card_zh_1920x1080_0", Script::chinese);
BENCHMARK(load)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
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

} // namespace

} // namespace pelloran

BENCHMARK_MAIN();
