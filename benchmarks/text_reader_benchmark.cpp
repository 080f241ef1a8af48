#include "platform/ApplicationFiles.h"
#include "platform/LineReader.h"
#include "platform/TextReader.h"
#include "reading/chinese/CharacterCells.h"
#include "reading/chinese/CharacterFeature.h"
#include "reading/chinese/CharacterShape.h"
#include "reading/chinese/ChineseInk.h"
#include "reading/chinese/ChineseLineReader.h"
#include "reading/chinese/ChineseLines.h"
#include "reading/chinese/ChineseNames.h"
#include "reading/LineCropper.h"
#include "reading/LineDetector.h"
#include "reading/RibbonLines.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

// What one look at a pick costs, stage by stage, in CPU time of all threads. The pictures lie beside some checkouts
// only; what needs one that is missing is skipped. Those of real screens are brought to the sizes that are measured,
// and for Chinese lettering cards of that client are set onto one.
namespace pelloran {

namespace {

const QRectF cardBand(0.08, 0.28, 0.64, 0.5);
const QRectF heroBand(0.08, 0.3, 0.84, 0.55);

QString shared(const QString& relative) {
    return QStringLiteral(PELLORAN_TEST_DATA "/") + relative;
}

struct ChineseFace {
    const char* file;
    const char* name;
};

constexpr std::array chineseFaces{ChineseFace{"zh-1", "酒馆旋风"}, ChineseFace{"zh-2", "刷新畸体"},
                                  ChineseFace{"zh-3", "寒光潜水鱼人"}};

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
        // They are of another mode of the game.
        for (const ChineseFace& face : chineseFaces) {
            list.push_back({QString::fromUtf8(face.name), {}});
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

ReadingHints hintsFor(const char* name) {
    return QByteArray(name).startsWith("hero")
               ? ReadingHints{heroBand, ReadingHints::Offers::heroes, std::nullopt, classNames()}
               : ReadingHints{cardBand, ReadingHints::Offers::cards, std::nullopt, cardNames()};
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

auto createReader() {
    return TextReader::create(*ApplicationFiles::create());
}

void makeReader(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(createReader());
    }
}

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

// The part of the window in which the reader looks for names of cards.
QRect partWithNames(const QSize& window) {
    const GameFrame frame = frameOf(window);
    return QRectF(QPointF(frame.pixelX(-0.60), frame.pixelY(0.30)), QPointF(frame.pixelX(0.26), frame.pixelY(0.48)))
        .toAlignedRect()
        .intersected(QRect(QPoint(), window));
}

void lightnessOfNames(benchmark::State& state, const char* name, int height, Lettering lettering) {
    const QImage image = realScreen(state, name, height);
    const QRect area = partWithNames(image.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(lightness(image, area, lettering));
    }
}

// Sets a card of the Chinese client onto one of an English screen.
bool setFace(QImage& screen, std::size_t slot, const ChineseFace& face) {
    const QImage image(shared(QStringLiteral("real/faces/%1.png").arg(QString::fromUtf8(face.file))));
    // Measured on the faces: the middle of their names' baselines, and how tall a window with such cards is.
    constexpr QPointF middle(122, 198);
    constexpr double windowHeight = 810;
    constexpr double base = 0.3913; // of a minion's name
    const GameFrame frame = frameOf(screen.size());
    const double scale = frame.height / windowHeight;
    QPainter painter(&screen);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.translate(frame.pixelX(cardCentres[slot]), frame.pixelY(base));
    painter.scale(scale, scale);
    painter.drawImage(-middle, image);
    return !image.isNull();
}

QImage chineseScreen(benchmark::State& state, int height) {
    QImage image = realScreen(state, "card-16x9-a", height);
    for (std::size_t slot = 0; slot < chineseFaces.size() && !image.isNull(); ++slot) {
        if (!setFace(image, slot, chineseFaces[slot])) {
            state.SkipWithError("needs the shared card faces, which are not beside this checkout");
            image = {};
        }
    }
    return image;
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

#define PELLORAN_STAGE(function, ...)                                                                                  \
    BENCHMARK_CAPTURE(function, __VA_ARGS__)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()

#define PELLORAN_STEP(function, ...)                                                                                   \
    BENCHMARK_CAPTURE(function, __VA_ARGS__)->Unit(benchmark::kMicrosecond)->MeasureProcessCPUTime()

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
BENCHMARK(loadNetwork)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
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
