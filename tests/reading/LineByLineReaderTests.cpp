#include "platform/TextReader.h"

#include "PaintedText.h"
#include "support/Printing.h"
#include "support/SharedData.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>

namespace pelloran {

namespace {

QString lettersOf(const QString& text) {
    QString letters;
    for (const QChar character : text.toLower()) {
        if (character.isLetter()) {
            letters.append(character);
        }
    }
    return letters;
}

std::shared_ptr<const KnownNames> known(const QStringList& names) {
    auto result = std::make_shared<KnownNames>();
    result->normalize = lettersOf;
    for (const QString& name : names) {
        result->normalized.insert(lettersOf(name));
    }
    return result;
}

const QRectF cardBand(0.08, 0.28, 0.64, 0.5);
const QStringList offers{QStringLiteral("TITLE"), QStringLiteral("LIFE"), QStringLiteral("HILT")};

// Three names of bars where cards have them.
QImage paintedPick(int width, int height) {
    QImage image = testing::wood(width, height);
    const double unit = height / 1080.0;
    const int middles[] = {446, 767, 1097};
    for (int i = 0; i < 3; ++i) {
        testing::paintWord(image, QPoint(int(middles[i] * unit), int(450 * unit)), offers[i], int(30 * unit));
    }
    return image;
}

QStringList textsOf(const std::vector<OCRToken>& tokens) {
    QStringList texts;
    for (const OCRToken& token : tokens) {
        texts.append(token.text);
    }
    return texts;
}

class TextReaderTest : public ::testing::Test {
protected:
    void SetUp() override {
        auto made = TextReader::create();
        ASSERT_TRUE(made) << made.error().reason.toStdString();
        reader = std::move(*made);
    }

    std::unique_ptr<TextReader> reader;
};

TEST_F(TextReaderTest, ReadsNamesAtEverySizeOfTheWindow) {
    for (const QSize size : {QSize(1280, 720), QSize(1920, 1080), QSize(2560, 1440), QSize(3840, 2160)}) {
        SCOPED_TRACE(size.height());
        reader->forget();
        const auto tokens = reader->read(paintedPick(size.width(), size.height()), {cardBand, {}, known(offers)});
        EXPECT_EQ(textsOf(tokens), offers);
        const double middles[] = {446 / 1920.0, 767 / 1920.0, 1097 / 1920.0};
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            EXPECT_NEAR(tokens[i].midX, middles[i], 0.01);
            EXPECT_NEAR(tokens[i].midY, 450 / 1080.0, 0.01);
            EXPECT_NEAR(tokens[i].height, 30 / 1080.0, 0.006);
            EXPECT_GT(tokens[i].confidence, 0);
            EXPECT_LE(tokens[i].confidence, 1);
        }
    }
}

TEST_F(TextReaderTest, ReadsChineseNamesWithoutBeingToldTheScript) {
    const QStringList names{QStringLiteral("王日"), QStringLiteral("田王"), QStringLiteral("日田")};
    QImage image = testing::wood(1920, 1080);
    for (int i = 0; i < 3; ++i) {
        testing::paintWord(image, QPoint(446 + 325 * i, 450), names[i], 36);
    }
    EXPECT_EQ(textsOf(reader->read(image, {cardBand, {}, known(names)})), names) << "cold";
    EXPECT_EQ(textsOf(reader->read(image, {cardBand, {}, known(names)})), names) << "warm";
    EXPECT_EQ(textsOf(reader->read(paintedPick(1920, 1080), {cardBand, {}, known(offers)})), offers)
        << "after the client's language was changed";
}

TEST_F(TextReaderTest, ReadsGoldenNamesOfClasses) {
    QImage image = testing::wood(1920, 1080);
    for (int i = 0; i < 3; ++i) {
        testing::paintWord(image, QPoint(520 + 420 * i, 575), offers[i], 32, QColor(252, 209, 68));
    }
    const QRectF heroBand(0.08, 0.3, 0.84, 0.55);
    EXPECT_EQ(textsOf(reader->read(image, {heroBand, Lettering::whiteOrGolden, known(offers)})), offers);
    EXPECT_TRUE(reader->read(image, {heroBand, Lettering::white, known(offers)}).empty())
        << "else nothing is shown by this";
}

TEST_F(TextReaderTest, ReadsWithoutKnowingTheNames) {
    QStringList texts = textsOf(reader->read(paintedPick(1920, 1080), {cardBand, {}, nullptr}));
    QStringList expected = offers;
    texts.sort();
    expected.sort();
    EXPECT_EQ(texts, expected);
}

TEST_F(TextReaderTest, AKnownWordOfTheRulesHidesNoMisreadName) {
    struct Row {
        QStringList names;
        QStringList expected;
        const char* why;
    };

    const Row table[] = {
        {{QStringLiteral("Titles"), QStringLiteral("Lifes"), QStringLiteral("Hilts"), QStringLiteral("Felt")},
         {QStringLiteral("FELT"), QStringLiteral("HILT"), QStringLiteral("LIFE"), QStringLiteral("TITLE")},
         "three names a letter away, a known word below them"},
        {{QStringLiteral("Title"), QStringLiteral("Lifes"), QStringLiteral("Hilts"), QStringLiteral("Felt")},
         {QStringLiteral("HILT"), QStringLiteral("LIFE"), QStringLiteral("TITLE")},
         "one name right, which tells the row"},
        {offers + QStringList{QStringLiteral("Felt")},
         {QStringLiteral("HILT"), QStringLiteral("LIFE"), QStringLiteral("TITLE")},
         "all names right, nothing else matters"},
    };
    QImage image = paintedPick(1920, 1080);
    testing::paintWord(image, QPoint(767, 600), QStringLiteral("FELT"), 22);
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        reader->forget();
        QStringList texts = textsOf(reader->read(image, {cardBand, {}, known(row.names)}));
        texts.sort();
        EXPECT_EQ(texts, row.expected);
    }
}

TEST_F(TextReaderTest, ALineIsOneToken) {
    // Unknown names are read several times, not always alike.
    QImage image = testing::wood(1920, 1080);
    for (const int middle : {446, 767, 1097}) {
        testing::paintLetters(image, QRect(middle - 60, 440, 120, 26));
    }
    const auto tokens = reader->read(image, {cardBand, {}, known(offers)});
    ASSERT_EQ(tokens.size(), 3U);
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            EXPECT_GT(std::abs(tokens[i].midX - tokens[k].midX), 0.1);
        }
    }
}

TEST_F(TextReaderTest, LeavesOutWhatLiesOutsideTheBand) {
    const QRectF below(0.08, 0.5, 0.64, 0.28);
    EXPECT_TRUE(reader->read(paintedPick(1920, 1080), {below, {}, nullptr}).empty());
    const QRectF leftOnly(0, 0, 0.3, 1);
    EXPECT_EQ(textsOf(reader->read(paintedPick(1920, 1080), {leftOnly, {}, nullptr})), QStringList{offers[0]});
}

TEST_F(TextReaderTest, FormatsAndStridesDoNotMatter) {
    const QImage image = paintedPick(1280, 720);
    const ReadingHints hints{cardBand, {}, known(offers)};
    const auto expected = reader->read(image, hints);
    ASSERT_EQ(expected.size(), 3U);
    for (const QImage::Format format : {QImage::Format_ARGB32, QImage::Format_RGB888, QImage::Format_RGBA8888,
                                        QImage::Format_RGBA64, QImage::Format_Grayscale8}) {
        SCOPED_TRACE(format);
        EXPECT_EQ(textsOf(reader->read(image.convertToFormat(format), hints)), offers);
    }
    QImage larger(1300, 740, QImage::Format_RGB32);
    larger.fill(Qt::white);
    for (int y = 0; y < 720; ++y) {
        std::copy_n(image.constScanLine(y), 1280 * 4, larger.scanLine(y + 7) + 3 * 4);
    }
    const QImage window(larger.constScanLine(7) + 3 * 4, 1280, 720, larger.bytesPerLine(), QImage::Format_RGB32);
    EXPECT_EQ(reader->read(window, hints), expected);
}

TEST_F(TextReaderTest, OddImagesHaveNoLines) {
    struct Row {
        QSize size;
        QImage::Format format;
        const char* why;
    };

    const Row table[] = {
        {QSize(0, 0), QImage::Format_RGB32, "null"},
        {QSize(1, 1), QImage::Format_RGB32, "a single pixel"},
        {QSize(1, 3000), QImage::Format_RGB32, "a column"},
        {QSize(16384, 1), QImage::Format_RGB32, "a row"},
        {QSize(16384, 1080), QImage::Format_RGB32, "sixteen thousand pixels wide"},
        {QSize(9000, 9000), QImage::Format_Grayscale8, "large"},
        {QSize(333, 777), QImage::Format_Mono, "one bit a pixel"},
        {QSize(640, 480), QImage::Format_Indexed8, "colours by number, without a table"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        QImage image(row.size, row.format);
        image.fill(1);
        EXPECT_TRUE(reader->read(image, {}).empty());
        EXPECT_TRUE(reader->read(image, {cardBand, Lettering::whiteOrGolden, known(offers)}).empty());
    }
}

TEST_F(TextReaderTest, OddBandsAreNoHarm) {
    const QImage image = paintedPick(1280, 720);
    for (const QRectF band : {QRectF(), QRectF(2, 2, 1, 1), QRectF(0.5, 0.5, 0, 0), QRectF(-3, -3, 9, 9)}) {
        const auto tokens = reader->read(image, {band, {}, nullptr});
        EXPECT_EQ(tokens.size(), band.width() > 8 ? 3U : 0U);
    }
}

TEST_F(TextReaderTest, AnEntryWithoutLettersMakesNoNameOfNumbers) {
    auto names = std::make_shared<KnownNames>();
    names->normalize = [](const QString& text) { return text == QStringLiteral("LIFE") ? text : QString(); };
    names->normalized = {QString(), QStringLiteral("LIFE")};
    QImage image = testing::wood(1920, 1080);
    for (int i = 0; i < 3; ++i) {
        testing::paintWord(image, QPoint(446 + 325 * i, 400), QStringLiteral("TITLE"), 34); // nothing to normalize
        testing::paintWord(image, QPoint(446 + 325 * i, 560), QStringLiteral("LIFE"), 26);
    }
    const QStringList texts = textsOf(reader->read(image, {cardBand, {}, names}));
    EXPECT_EQ(texts.count(QStringLiteral("LIFE")), 3) << texts.join(QStringLiteral(", ")).toStdString();
}

TEST_F(TextReaderTest, BringsLinesToTheirSizeItself) {
    EXPECT_TRUE(reader->scalesLinesItself());
}

TEST_F(TextReaderTest, SameImageSameTokens) {
    const QImage image = paintedPick(1280, 720);
    const ReadingHints hints{cardBand, {}, known(offers)};
    const auto cold = reader->read(image, hints);
    EXPECT_EQ(reader->read(image, hints), cold) << "warm";
    reader->forget();
    EXPECT_EQ(reader->read(image, hints), cold) << "cold again";
}

struct Slot {
    QString name;
    QRectF box;
};

struct Screen {
    QString file;
    bool hero = false;
    bool chinese = false;
    std::vector<Slot> slotList;
};

std::vector<Screen> screens() {
    std::vector<Screen> result;
    const QDir folder(testing::sharedData(QStringLiteral("screens")));
    for (const QString& file : folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        QFile truth(folder.filePath(file));
        if (!truth.open(QIODevice::ReadOnly)) {
            continue;
        }
        const QJsonObject object = QJsonDocument::fromJson(truth.readAll()).object();
        Screen screen;
        screen.file = folder.filePath(file.chopped(5) + QStringLiteral(".png"));
        screen.hero = object[QStringLiteral("phase")].toString() == QStringLiteral("heroPick");
        screen.chinese = object[QStringLiteral("lang")].toString() == QStringLiteral("zh");
        for (const QJsonValue& value : object[QStringLiteral("slots")].toObject()) {
            const QJsonArray box = value[QStringLiteral("box")].toArray();
            screen.slotList.push_back(
                {value[QStringLiteral("name")].toString(),
                 QRectF(QPointF(box[0].toDouble(), box[1].toDouble()), QPointF(box[2].toDouble(), box[3].toDouble()))});
        }
        result.push_back(screen);
    }
    return result;
}

int commonLetters(const QString& a, const QString& b) {
    std::vector<int> row(std::size_t(b.size()) + 1);
    for (const QChar letter : a) {
        int diagonal = 0;
        for (int i = 0; i < b.size(); ++i) {
            const int above = row[std::size_t(i) + 1];
            row[std::size_t(i) + 1] = letter == b[i] ? diagonal + 1 : std::max(row[std::size_t(i)], above);
            diagonal = above;
        }
    }
    return row.back();
}

// The largest part of the slot's name that some token within the slot has, in order.
double bestShare(const std::vector<OCRToken>& tokens, const Slot& slot) {
    double best = 0;
    const QString name = lettersOf(slot.name);
    for (const OCRToken& token : tokens) {
        if (slot.box.adjusted(-0.02, -0.02, 0.02, 0.02).contains(QPointF(token.midX, token.midY))) {
            best = std::max(best, double(commonLetters(lettersOf(token.text), name)) / double(name.size()));
        }
    }
    return best;
}

TEST_F(TextReaderTest, ReadsTheSharedScreens) {
    SKIP_WITHOUT_SHARED_DATA("screens");
    SKIP_WITHOUT_SHARED_DATA("cards.json");
    QFile cards(testing::sharedData(QStringLiteral("cards.json")));
    ASSERT_TRUE(cards.open(QIODevice::ReadOnly));
    QStringList cardNames;
    for (const QJsonValue& card : QJsonDocument::fromJson(cards.readAll()).array()) {
        cardNames << card[QStringLiteral("name_en")].toString() << card[QStringLiteral("name_zh")].toString();
    }
    QStringList classNames;
    for (const char* name :
         {"死亡骑士", "恶魔猎手", "德鲁伊", "猎人",         "法师",         "圣骑士", "牧师",   "潜行者",
          "萨满祭司", "术士",     "战士",   "Death Knight", "Demon Hunter", "Druid",  "Hunter", "Mage",
          "Paladin",  "Priest",   "Rogue",  "Shaman",       "Warlock",      "Warrior"}) {
        classNames << QString::fromUtf8(name);
    }

    int chineseSlots = 0;
    int chineseClose = 0;
    QStringList missed;
    for (const Screen& screen : screens()) {
        SCOPED_TRACE(screen.file.toStdString());
        const QImage image(screen.file);
        ASSERT_FALSE(image.isNull());
        const ReadingHints hints =
            screen.hero
                ? ReadingHints{QRectF(0.08, 0.3, 0.84, 0.55), Lettering::whiteOrGolden, known(classNames)}
                : ReadingHints{cardBand, Lettering::white, known(cardNames)};
        reader->forget();
        const auto tokens = reader->read(image, hints);
        for (const Slot& slot : screen.slotList) {
            const double share = bestShare(tokens, slot);
            if (screen.chinese) {
                ++chineseSlots;
                chineseClose += share >= 0.75;
                if (share < 0.75) {
                    missed << slot.name << textsOf(tokens);
                }
            } else {
                EXPECT_EQ(share, 1) << slot.name.toStdString();
            }
        }
    }
    EXPECT_EQ(chineseSlots, 18);
    EXPECT_GE(chineseClose, 15) << missed.join(QStringLiteral(", ")).toStdString();
}

} // namespace

} // namespace pelloran
