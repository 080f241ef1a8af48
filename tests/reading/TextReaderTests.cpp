#include "platform/TextReader.h"

#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/reading/PaintedCharacters.h"
#include "tests/reading/PaintedText.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/Printing.h"
#include "tests/support/SharedData.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

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

std::shared_ptr<const Lexicon> known(const QStringList& names, Lexicon::Tolerance tolerance = Lexicon::forCards) {
    std::vector<KnownName> list;
    for (const QString& name : names) {
        list.push_back({name, {}});
    }
    return std::make_shared<const Lexicon>(std::move(list), tolerance);
}

ReadingHints hintsFor(const QRectF& band, std::shared_ptr<const Lexicon> names,
                      ReadingHints::Offers offers = ReadingHints::Offers::cards) {
    return {band, offers, std::nullopt, std::move(names)};
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
        auto made = TextReader::create(testing::FakeApplicationFiles(QStringLiteral(PELLORAN_SOURCES)));
        ASSERT_TRUE(made) << made.error().reason.toStdString();
        reader = std::move(*made);
    }

    std::unique_ptr<TextReader> reader;
};

TEST_F(TextReaderTest, ReadsNamesAtEverySizeOfTheWindow) {
    for (const QSize size : {QSize(1280, 720), QSize(1920, 1080), QSize(2560, 1440), QSize(3840, 2160)}) {
        SCOPED_TRACE(size.height());
        reader->forget();
        const auto tokens =
            reader->read(paintedPick(size.width(), size.height()), hintsFor(cardBand, known(offers))).tokens;
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

TEST_F(TextReaderTest, ReadsWhatIsAskedForWhereItStandsAndInItsColours) {
    const QRectF heroBand(0.08, 0.3, 0.84, 0.55);

    struct Row {
        QColor letters;
        int middle;
        ReadingHints::Offers asked;
        bool areRead;
        const char* why;
    };

    const QColor gold(252, 209, 68);
    const int classes = 575;
    const int cards = 450;
    const Row table[] = {
        {gold, classes, ReadingHints::Offers::heroes, true, "classes may be golden"},
        {gold, cards, ReadingHints::Offers::cards, false, "names of cards are white"},
        {Qt::white, cards, ReadingHints::Offers::cards, true, "else nothing is shown by the row above"},
        {Qt::white, classes, ReadingHints::Offers::cards, false, "what stands below cards are choices in battle"},
        {Qt::white, classes, ReadingHints::Offers::heroes, true, "classes may be white"},
        {Qt::white, cards, ReadingHints::Offers::heroes, false, "what stands where cards have names is no class"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        reader->forget();
        QImage image = testing::wood(1920, 1080);
        for (int i = 0; i < 3; ++i) {
            testing::paintWord(image, QPoint(520 + 420 * i, row.middle), offers[i], 32, row.letters);
        }
        EXPECT_EQ(textsOf(reader->read(image, hintsFor(heroBand, known(offers), row.asked)).tokens),
                  row.areRead ? offers : QStringList());
    }
}

TEST_F(TextReaderTest, ReadsWithoutKnowingTheNames) {
    QStringList texts = textsOf(reader->read(paintedPick(1920, 1080), hintsFor(cardBand, nullptr)).tokens);
    QStringList expected = offers;
    texts.sort();
    expected.sort();
    EXPECT_EQ(texts, expected);
}

TEST_F(TextReaderTest, AKnownWordOfTheRulesIsNoOfferAndHidesNone) {
    struct Row {
        QStringList names;
        QStringList tokens;
        QStringList unsettled;
        const char* why;
    };

    const QStringList none;
    const QString felt = QStringLiteral("Felt");
    const Row table[] = {
        {{QStringLiteral("Titles"), QStringLiteral("Lifes"), QStringLiteral("Hilts"), felt},
         none,
         offers,
         "three names a letter away are none of those, nor is the known word below them"},
        {{QStringLiteral("TITLE"), QStringLiteral("Lifes"), QStringLiteral("Hilts"), felt},
         none,
         offers,
         "one name on its own is no offer"},
        {{QStringLiteral("TITLE"), QStringLiteral("Lifes"), QStringLiteral("HILT"), felt},
         {offers[0], offers[2]},
         {offers[1]},
         "two are, and the third is a card that the list lacks"},
        {offers + QStringList{felt}, offers, none, "all names right, nothing else matters"},
    };
    QImage image = paintedPick(1920, 1080);
    testing::paintWord(image, QPoint(767, 600), QStringLiteral("FELT"), 22);
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        reader->forget();
        const ReadText text = reader->read(image, hintsFor(cardBand, known(row.names)));
        EXPECT_EQ(textsOf(text.tokens), row.tokens);
        EXPECT_EQ(textsOf(text.unsettled), row.unsettled);
    }
}

TEST_F(TextReaderTest, ReadingsBecomeTheNamesTheySettleTo) {
    const QStringList names{QStringLiteral("Title!"), QStringLiteral("Life"), QStringLiteral("Hilt")};
    EXPECT_EQ(textsOf(reader->read(paintedPick(1920, 1080), hintsFor(cardBand, known(names))).tokens), names);
}

TEST_F(TextReaderTest, ALineIsReportedOnce) {
    // Unknown names are read several times, not always alike.
    QImage image = testing::wood(1920, 1080);
    for (const int middle : {446, 767, 1097}) {
        testing::paintLetters(image, QRect(middle - 60, 440, 120, 26));
    }
    const auto expectOneEach = [](const std::vector<OCRToken>& lines) {
        ASSERT_EQ(lines.size(), 3U);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            for (std::size_t k = 0; k < i; ++k) {
                EXPECT_GT(std::abs(lines[i].midX - lines[k].midX), 0.1);
            }
        }
    };
    const ReadText text = reader->read(image, hintsFor(cardBand, known(offers)));
    EXPECT_TRUE(text.tokens.empty());
    expectOneEach(text.unsettled);
    expectOneEach(reader->read(image, hintsFor(cardBand, nullptr)).tokens);
}

TEST_F(TextReaderTest, LeavesOutWhatLiesOutsideTheBand) {
    const QRectF below(0.08, 0.5, 0.64, 0.28);
    EXPECT_TRUE(reader->read(paintedPick(1920, 1080), hintsFor(below, nullptr)).tokens.empty());
    const QRectF leftOnly(0, 0, 0.3, 1);
    EXPECT_EQ(textsOf(reader->read(paintedPick(1920, 1080), hintsFor(leftOnly, nullptr)).tokens),
              QStringList{offers[0]});
}

TEST_F(TextReaderTest, FormatsAndStridesDoNotMatter) {
    const QImage image = paintedPick(1280, 720);
    const ReadingHints hints = hintsFor(cardBand, known(offers));
    const auto expected = reader->read(image, hints);
    ASSERT_EQ(expected.tokens.size(), 3U);
    for (const QImage::Format format : {QImage::Format_ARGB32, QImage::Format_RGB888, QImage::Format_RGBA8888,
                                        QImage::Format_RGBA64, QImage::Format_Grayscale8}) {
        SCOPED_TRACE(format);
        EXPECT_EQ(textsOf(reader->read(image.convertToFormat(format), hints).tokens), offers);
    }
    QImage larger(1300, 740, QImage::Format_RGB32);
    larger.fill(Qt::white);
    for (int y = 0; y < 720; ++y) {
        std::copy_n(image.constScanLine(y), qsizetype{1280} * 4, larger.scanLine(y + 7) + qsizetype{3} * 4);
    }
    const QImage window(larger.constScanLine(7) + qsizetype{3} * 4, 1280, 720, larger.bytesPerLine(),
                        QImage::Format_RGB32);
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
        EXPECT_TRUE(reader->read(image, {}).tokens.empty());
        for (const auto asked : {ReadingHints::Offers::cards, ReadingHints::Offers::heroes}) {
            EXPECT_EQ(reader->read(image, hintsFor(cardBand, known(offers), asked)), ReadText());
        }
    }
}

TEST_F(TextReaderTest, OddBandsAreNoHarm) {
    const QImage image = paintedPick(1280, 720);
    for (const QRectF band : {QRectF(), QRectF(2, 2, 1, 1), QRectF(0.5, 0.5, 0, 0), QRectF(-3, -3, 9, 9)}) {
        const auto tokens = reader->read(image, hintsFor(band, nullptr)).tokens;
        EXPECT_EQ(tokens.size(), band.width() > 8 ? 3U : 0U);
    }
}

// The program's files, with another model.
class ModelFileTest : public ::testing::Test {
protected:
    static QByteArray shippedModel() {
        QFile file(QStringLiteral(PELLORAN_SOURCES "/resources/characters/chinese.model"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    void write(const QByteArray& bytes) const {
        ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("resources/characters")));
        QFile file(folder.filePath(QStringLiteral("resources/characters/chinese.model")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    // What a reader made of the files makes of an English pick.
    QStringList englishReadings() const {
        const auto reader = TextReader::create(testing::FakeApplicationFiles(folder.path()));
        if (!reader) {
            ADD_FAILURE() << reader.error().reason.toStdString();
            return {};
        }
        return textsOf((*reader)->read(paintedPick(1280, 720), hintsFor(cardBand, known(offers))).tokens);
    }

    QTemporaryDir folder;
    testing::CollectedLog logged;
};

TEST_F(ModelFileTest, TheShippedModelIsTakenWithoutAWord) {
    write(shippedModel());
    EXPECT_EQ(englishReadings(), offers);
    EXPECT_TRUE(logged.lines().isEmpty()) << logged.lines().join(u'\n').toStdString();
}

TEST_F(ModelFileTest, WithoutAUsableModelEnglishIsReadAndTheLogSaysWhy) {
    const QByteArray whole = shippedModel();
    const auto flipped = [&](qsizetype place) {
        QByteArray bytes = whole;
        bytes[place] = char(bytes[place] ^ 0x10);
        return bytes;
    };
    const auto ofVersion = [&](char version) {
        QByteArray bytes = whole.chopped(32);
        bytes[8] = version;
        return bytes + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
    };

    struct Row {
        std::optional<QByteArray> file; // absent: none
        QString reason;
        const char* why;
    };

    const QString damaged = QStringLiteral("it is damaged: its checksum does not fit");
    const Row table[] = {
        {std::nullopt, QStringLiteral("characters/chinese.model is missing from the program's files"), "no file"},
        {QByteArray(), QStringLiteral("it is cut short: only 0 bytes"), "empty"},
        {whole.first(3), QStringLiteral("it is cut short: only 3 bytes"), "a few bytes"},
        {whole.chopped(1), QStringLiteral("it is cut short: %1 of %2 bytes").arg(whole.size() - 1).arg(whole.size()),
         "without the last byte"},
        {whole.first(whole.size() / 2),
         QStringLiteral("it is cut short: %1 of %2 bytes").arg(whole.size() / 2).arg(whole.size()), "half of it"},
        {whole + QByteArray(1, 'x'), QStringLiteral("1 bytes follow its end"), "and something more"},
        {ofVersion(2), QStringLiteral("its format is version 2, not 1"), "of a later version"},
        {flipped(whole.size() / 2), damaged, "a bit else, in the middle"},
        {flipped(whole.size() - 1), damaged, "a bit else, at the end"},
        {QByteArray("<html>Not Found</html>"), QStringLiteral("it is no model of characters"), "another file"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        logged.clear();
        if (row.file) {
            write(*row.file);
        }
        EXPECT_EQ(englishReadings(), offers);
        ASSERT_EQ(logged.lines().size(), 1);
        EXPECT_TRUE(logged.lines()[0].startsWith(QStringLiteral("Chinese names cannot be read: ")))
            << logged.lines()[0].toStdString();
        EXPECT_TRUE(logged.lines()[0].endsWith(row.reason)) << logged.lines()[0].toStdString();
    }
}

// Where Tesseract looks for its data, for as long as this lives or until the system's is back.
class DataFolder {
public:
    explicit DataFolder(const QString& path) { qputenv(variable, path.toLocal8Bit()); }

    ~DataFolder() { giveBack(); }

    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;

    void giveBack() const {
        if (before.isNull()) {
            qunsetenv(variable);
        } else {
            qputenv(variable, before);
        }
    }

private:
    static constexpr const char* variable = "TESSDATA_PREFIX";
    const QByteArray before = qgetenv(variable);
};

TEST_F(ModelFileTest, WithoutUsableLatinDataChineseIsReadAndInstallingItIsEnough) {
    write(testing::paintedModel()->serialized());
    const std::array<QString, 3> printed{QStringLiteral("王日山人"), QStringLiteral("石田木"),
                                         QStringLiteral("大天中口火")};
    const QImage chinese = testing::paintedChineseCards(QSize(1280, 720), printed);
    const QStringList chineseNames(printed.begin(), printed.end());
    const ReadingHints hints = hintsFor(cardBand, known(offers + chineseNames));

    struct Row {
        std::optional<QByteArray> file; // absent: none
        const char* why;
    };

    const Row table[] = {{std::nullopt, "no file"}, {QByteArray(), "an empty one"}};
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        logged.clear();
        const QTemporaryDir empty;
        if (row.file) {
            QFile file(empty.filePath(QStringLiteral("eng.traineddata")));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            ASSERT_EQ(file.write(*row.file), row.file->size());
        }
        const DataFolder data(empty.path());
        const auto reader = TextReader::create(testing::FakeApplicationFiles(folder.path()));
        ASSERT_TRUE(reader) << reader.error().reason.toStdString();
        EXPECT_EQ(textsOf((*reader)->read(chinese, hints).tokens), chineseNames);
        EXPECT_EQ(textsOf((*reader)->read(paintedPick(1280, 720), hints).tokens), QStringList());
        data.giveBack();
        EXPECT_EQ(textsOf((*reader)->read(paintedPick(1280, 720), hints).tokens), offers) << "at the next look";
        EXPECT_EQ(textsOf((*reader)->read(chinese, hints).tokens), chineseNames);
        ASSERT_EQ(logged.lines().size(), 1);
        EXPECT_TRUE(logged.lines()[0].contains(QStringLiteral("tesseract-ocr-eng"))) << logged.lines()[0].toStdString();
    }
}

TEST_F(ModelFileTest, WithoutEitherDataThereIsNoReader) {
    const DataFolder data(folder.path());
    const auto reader = TextReader::create(testing::FakeApplicationFiles(folder.path()));
    ASSERT_FALSE(reader);
    EXPECT_TRUE(reader.error().reason.contains(QStringLiteral("tesseract-ocr-eng")));
    EXPECT_TRUE(logged.lines().isEmpty()) << logged.lines().join(u'\n').toStdString();
}

TEST_F(TextReaderTest, BringsLinesToTheirSizeItself) {
    EXPECT_TRUE(reader->scalesLinesItself());
}

TEST_F(TextReaderTest, SameImageSameTokens) {
    const QImage image = paintedPick(1280, 720);
    const ReadingHints hints = hintsFor(cardBand, known(offers));
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
        for (const auto& value : object[QStringLiteral("slots")].toObject()) {
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
    for (const auto& card : QJsonDocument::fromJson(cards.readAll()).array()) {
        cardNames << card[QStringLiteral("name_en")].toString() << card[QStringLiteral("name_zh")].toString();
    }
    QStringList classNames;
    for (const char* name :
         {"死亡骑士", "恶魔猎手", "德鲁伊", "猎人",         "法师",         "圣骑士", "牧师",   "潜行者",
          "萨满祭司", "术士",     "战士",   "Death Knight", "Demon Hunter", "Druid",  "Hunter", "Mage",
          "Paladin",  "Priest",   "Rogue",  "Shaman",       "Warlock",      "Warrior"}) {
        classNames << QString::fromUtf8(name);
    }

    const auto knownCards = known(cardNames);
    const auto knownClasses = known(classNames, Lexicon::forClasses);

    int chineseSlots = 0;
    int chineseClose = 0;
    QStringList missed;
    for (const Screen& screen : screens()) {
        SCOPED_TRACE(screen.file.toStdString());
        const QImage image(screen.file);
        ASSERT_FALSE(image.isNull());
        const ReadingHints hints =
            screen.hero ? hintsFor(QRectF(0.08, 0.3, 0.84, 0.55), knownClasses, ReadingHints::Offers::heroes)
                        : hintsFor(cardBand, knownCards);
        reader->forget();
        const auto tokens = reader->read(image, hints).tokens;
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
    EXPECT_GE(chineseClose, 17) << missed.join(QStringLiteral(", ")).toStdString();
}

} // namespace

} // namespace pelloran
