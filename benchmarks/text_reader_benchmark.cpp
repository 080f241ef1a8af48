#include "platform/LineReader.h"
#include "platform/TextReader.h"
#include "reading/LineCropper.h"
#include "reading/LineDetector.h"
#include "reading/RibbonLines.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

// What one look at a pick costs, stage by stage, in CPU time of all threads. The pictures lie beside some checkouts
// only; what needs one that is missing is skipped. Those of real screens are brought to the sizes that are measured.
namespace pelloran {

namespace {

const QRectF cardBand(0.08, 0.28, 0.64, 0.5);
const QRectF heroBand(0.08, 0.3, 0.84, 0.55);

QString shared(const QString& relative) {
    return QStringLiteral(PELLORAN_TEST_DATA "/") + relative;
}

std::shared_ptr<const Lexicon> cardNames() {
    static const auto names = [] {
        std::vector<KnownName> list;
        QFile cards(shared(QStringLiteral("cards.json")));
        if (cards.open(QIODevice::ReadOnly)) {
            for (const QJsonValue& card : QJsonDocument::fromJson(cards.readAll()).array()) {
                list.push_back({card[QStringLiteral("name_en")].toString(), {}});
                list.push_back({card[QStringLiteral("name_zh")].toString(), {}});
            }
        }
        return std::make_shared<const Lexicon>(std::move(list), Lexicon::forCards);
    }();
    return names;
}

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

QImage screen(benchmark::State& state, const char* name) {
    QImage image(shared(QStringLiteral("screens/%1.png").arg(QString::fromUtf8(name))));
    if (image.isNull()) {
        state.SkipWithError("needs the shared screens, which are not beside this checkout");
    }
    return image.convertToFormat(QImage::Format_RGB32);
}

// A real screen, as it would be in a window of that height.
QImage realScreen(benchmark::State& state, const char* name, int height) {
    const QImage image(shared(QStringLiteral("real/screens/%1.png").arg(QString::fromUtf8(name))));
    if (image.isNull()) {
        state.SkipWithError("needs the shared real screens, which are not beside this checkout");
        return {};
    }
    const QImage scaled = height == image.height() ? image : image.scaledToHeight(height, Qt::SmoothTransformation);
    return scaled.convertToFormat(QImage::Format_RGB32);
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
    const PictureShape shape = script == Script::latin ? PictureShape{36, 0.16} : PictureShape{48, 0.22};
    const std::vector<LineReader::Work> work{{imageOf(picture(*line, shape)), script}};
    for (auto _ : state) {
        benchmark::DoNotOptimize((*reader)->read(work));
    }
}

void load(benchmark::State& state) {
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
        benchmark::DoNotOptimize((*reader)->read({{*picture, Script::latin}}));
    }
}

enum class Mistakes { none, few, all };

void settle(benchmark::State& state, Mistakes mistakes) {
    QFile cards(shared(QStringLiteral("cards.json")));
    if (!cards.open(QIODevice::ReadOnly)) {
        state.SkipWithError("needs the shared cards, which are not beside this checkout");
        return;
    }
    QString line;
    for (const QJsonValue& card : QJsonDocument::fromJson(cards.readAll()).array()) {
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

void readAll(benchmark::State& state, const QImage& image, const ReadingHints& hints, bool cold) {
    if (image.isNull()) {
        return; // which has been said
    }
    const auto reader = TextReader::create();
    if (!reader) {
        state.SkipWithError("no language data");
        return;
    }
    if (hints.names) {
        hints.names->contains({}); // the index is made at the first question
    }
    for (auto _ : state) {
        if (cold) {
            (*reader)->forget();
        }
        benchmark::DoNotOptimize((*reader)->read(image, hints));
    }
}

void readScreen(benchmark::State& state, const char* name, bool cold) {
    const bool hero = QByteArray(name).startsWith("hero");
    const ReadingHints hints = hero ? ReadingHints{heroBand, ReadingHints::Offers::heroes, std::nullopt, classNames()}
                                    : ReadingHints{cardBand, ReadingHints::Offers::cards, std::nullopt, cardNames()};
    readAll(state, screen(state, name), hints, cold);
}

void readRealScreen(benchmark::State& state, const char* name, int height) {
    const bool hero = QByteArray(name).startsWith("hero");
    const ReadingHints hints = hero ? ReadingHints{heroBand, ReadingHints::Offers::heroes, std::nullopt, classNames()}
                                    : ReadingHints{cardBand, ReadingHints::Offers::cards, std::nullopt, cardNames()};
    readAll(state, realScreen(state, name, height), hints, true);
}

#define PELLORAN_STAGE(function, ...)                                                                                  \
    BENCHMARK_CAPTURE(function, __VA_ARGS__)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()

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
PELLORAN_STAGE(readRealScreen, card_1080, "card-16x9-a", 1080);
PELLORAN_STAGE(readRealScreen, card_2160, "card-16x9-a", 2160);
PELLORAN_STAGE(readRealScreen, card_c_1080, "card-16x9-c", 1080);
PELLORAN_STAGE(readRealScreen, redraft_1437, "redraft-new-b", 1437);
PELLORAN_STAGE(readRealScreen, hero_1080, "hero-16x9-a", 1080);
PELLORAN_STAGE(readRealScreen, hero_2160, "hero-16x9-a", 2160);
PELLORAN_STAGE(readRealScreen, mulligan_1080, "none-mulligan-3", 1080);
PELLORAN_STAGE(readRealScreen, decks_1080, "none-decks", 1080);

} // namespace

} // namespace pelloran

BENCHMARK_MAIN();
