#include "reading/LineByLineReader.h"

#include "tests/reading/PaintedScreen.h"
#include "tests/reading/PaintedText.h"
#include "tests/reading/WordsByWidth.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace pelloran {

namespace {

using testing::FakeLineReader;
using testing::wordsByWidth;

const QStringList names{QStringLiteral("Amber Wolf"), QStringLiteral("Copper Kettle"), QStringLiteral("Quiet Orchard")};
const QRectF cardBand(0.08, 0.28, 0.64, 0.5);
// In one look: at the places in either script, and everywhere.
constexpr std::size_t cap = std::size_t{3} * 24;

std::shared_ptr<const Lexicon> lexiconOf(const QStringList& texts) {
    std::vector<KnownName> list;
    for (const QString& text : texts) {
        list.push_back({text, {}});
    }
    return std::make_shared<const Lexicon>(std::move(list), Lexicon::forCards);
}

QStringList textsOf(const std::vector<OCRToken>& tokens) {
    QStringList texts;
    for (const OCRToken& token : tokens) {
        texts.append(token.text);
    }
    return texts;
}

class LineByLineReaderTest : public ::testing::Test {
protected:
    void clear() {
        told.seen.clear();
        told.readings = 0;
    }

    FakeLineReader::Told told;
    LineByLineReader reader{std::make_unique<FakeLineReader>(told), nullptr};
};

// Where the game's screens have no names, so that they are read wherever they stand.
QImage elsewhere(const std::array<QString, 3>& words, int height = 30) {
    QImage image = testing::wood(1920, 1080);
    for (int i = 0; i < 3; ++i) {
        testing::paintWord(image, QPoint(446 + 325 * i, 450), words[std::size_t(i)], height);
    }
    return image;
}

const std::array<QString, 3> latinWords{QStringLiteral("TITLE"), QStringLiteral("LIFE"), QStringLiteral("HILTEEL")};

TEST_F(LineByLineReaderTest, ReadsNothingWhereNothingCanCome) {
    told.answer = [](const QImage&) { return LineReading{names[0], 0.9F}; };
    const QImage image = testing::paintedCards(QSize(1920, 1080), wordsByWidth);

    struct Row {
        QImage image;
        std::shared_ptr<const Lexicon> known;
        const char* why;
    };

    const Row table[] = {
        {QImage(), lexiconOf(names), "no image"},
        {QImage(), nullptr, "no image and no names"},
        {image, std::make_shared<const Lexicon>(), "a lexicon without names: no reading could be one"},
        {image, lexiconOf({QStringLiteral("!?"), QString()}), "entries of which nothing is left are no names"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        for (const auto asked : {ReadingHints::Offers::cards, ReadingHints::Offers::heroes}) {
            EXPECT_EQ(reader.read(row.image, {cardBand, asked, std::nullopt, row.known}), ReadText());
        }
    }
    EXPECT_EQ(told.readings, 0U);
}

TEST_F(LineByLineReaderTest, NamesAtTheirPlacesAreReadNowhereElse) {
    testing::WordScript script({{{names[0]}, {names[1]}, {names[2]}}});
    told.answer = std::ref(script);
    const QImage image = testing::paintedCards(QSize(1920, 1080), wordsByWidth);
    const ReadText read = reader.read(image, {cardBand, ReadingHints::Offers::cards, std::nullopt, lexiconOf(names)});
    EXPECT_EQ(textsOf(read.tokens), names);
    EXPECT_EQ(told.readings, 3U);
}

// By the width of the words that stand elsewhere, and of one of four letters.
LineReading readingOf(const QImage& picture, const std::array<QString, 3>& texts) {
    const double shape = double(picture.width()) / picture.height();
    return {shape < 2.9 ? texts[1] : shape < 3.8 ? texts[0] : texts[2], 0.9F};
}

TEST_F(LineByLineReaderTest, AnywhereCardsNeedARowOfTwoAndClassesOneOfThree) {
    struct Row {
        ReadingHints::Offers asked;
        std::array<QString, 3> words;
        QStringList tokens;
        const char* why;
    };

    constexpr auto cards = ReadingHints::Offers::cards;
    constexpr auto heroes = ReadingHints::Offers::heroes;
    const QString none;
    const Row table[] = {
        {cards, latinWords, names, "three cards"},
        {cards, {latinWords[0], latinWords[1], none}, {names[0], names[1]}, "two: the third may be hidden"},
        {cards, {latinWords[0], none, none}, {}, "one is a keyword or a button"},
        {heroes, latinWords, names, "three classes"},
        {heroes, {latinWords[0], latinWords[1], none}, {}, "two: all classes are known, so these are something else"},
    };
    const std::array<QString, 3> texts{names[0], names[1], names[2]};
    told.answer = [&](const QImage& picture) { return readingOf(picture, texts); };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        reader.forget();
        QImage image = testing::wood(1920, 1080);
        for (int i = 0; i < 3; ++i) {
            if (!row.words[std::size_t(i)].isEmpty()) {
                testing::paintWord(image, QPoint(446 + 325 * i, row.asked == cards ? 450 : 575),
                                   row.words[std::size_t(i)], 30);
            }
        }
        EXPECT_EQ(textsOf(reader.read(image, {cardBand, row.asked, std::nullopt, lexiconOf(names)}).tokens),
                  row.tokens);
    }
}

// Strokes so far apart that the search takes none of them for a line.
TEST_F(LineByLineReaderTest, AThirdNameIsLookedForWhereTwoOthersSayThatItIs) {
    for (std::size_t sparse = 0; sparse < 3; ++sparse) {
        SCOPED_TRACE(sparse);
        reader.forget();
        QImage image = testing::wood(1920, 1080);
        std::array<QString, 3> texts{names[0], names[1], names[2]};
        std::vector<QString> words{latinWords[0], latinWords[2]};
        for (std::size_t i = 0; i < 3; ++i) {
            const QPoint middle(446 + 325 * int(i), 450);
            if (i == sparse) {
                for (const int off : {-36, 0, 36}) {
                    testing::paintWord(image, middle + QPoint(off, 0), QStringLiteral("I"), 30);
                }
                texts[1] = names[qsizetype(i)];
            } else {
                testing::paintWord(image, middle, words.front(), 30);
                texts[words.size() == 2 ? 0 : 2] = names[qsizetype(i)];
                words.erase(words.begin());
            }
        }
        told.answer = [&](const QImage& picture) { return readingOf(picture, texts); };
        const ReadText read =
            reader.read(image, {cardBand, ReadingHints::Offers::cards, std::nullopt, lexiconOf(names)});
        EXPECT_EQ(textsOf(read.tokens), names);
        EXPECT_TRUE(read.columns);
    }
}

TEST_F(LineByLineReaderTest, WithoutNamesEveryLineIsAToken) {
    told.answer = [](const QImage&) { return LineReading{QStringLiteral("Whatever"), 0.9F}; };
    QImage image = elsewhere(latinWords);
    testing::paintWord(image, QPoint(800, 700), QStringLiteral("FELT"), 22);
    const ReadText read = reader.read(image, {});
    EXPECT_EQ(read.tokens.size(), 4U);
    EXPECT_TRUE(read.unsettled.empty());
    EXPECT_FALSE(read.columns);
}

TEST_F(LineByLineReaderTest, AnEntryWithoutLettersMakesNoNameOfNumbers) {
    told.answer = [](const QImage&) { return LineReading{QStringLiteral("3/4"), 0.9F}; };
    const auto known = lexiconOf({QStringLiteral("!?"), names[0]});
    EXPECT_TRUE(reader.read(elsewhere(latinWords), {cardBand, {}, std::nullopt, known}).tokens.empty());
    EXPECT_GT(told.readings, 0U) << "else nothing is shown";
}

QImage plain(const QSize& size, QColor color) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

QImage hundredLines() {
    QImage image = testing::wood(1920, 1080);
    for (int row = 0; row < 20; ++row) {
        for (int column = 0; column < 5; ++column) {
            testing::paintWord(image, QPoint(200 + 380 * column, 30 + 53 * row), latinWords[std::size_t(row % 3)], 22);
        }
    }
    return image;
}

TEST_F(LineByLineReaderTest, WhateverTheImageReadingEnds) {
    struct Row {
        QImage image;
        const char* why;
    };

    const Row table[] = {
        {plain(QSize(1920, 1080), Qt::black), "black"},
        {plain(QSize(1920, 1080), Qt::white), "white"},
        {plain(QSize(1920, 1080), QColor(200, 175, 135)), "parchment everywhere"},
        {plain(QSize(1, 1), Qt::white), "a single pixel"},
        {plain(QSize(1, 2000), Qt::white), "a column"},
        {plain(QSize(2, 2), QColor(60, 5, 3)), "four pixels of felt"},
        {plain(QSize(5000, 40), Qt::white), "a strip"},
        {testing::noise(QSize(1280, 720), 11), "noise"},
        {testing::noise(QSize(5000, 40), 12), "a strip of noise"},
        {testing::noise(QSize(1, 2000), 13), "a column of noise"},
        {testing::noise(QSize(97, 61), 14), "a little noise"},
        {hundredLines(), "a hundred lines of text"},
        {testing::paintedCards(QSize(1920, 1080), wordsByWidth), "a pick"},
        {testing::paintedHeroes(QSize(1920, 1080), testing::HeroGround::felt, heroCentres[0], wordsByWidth,
                                QStringLiteral("Hou")),
         "heroes"},
    };

    const LineReading answers[] = {{{}, 0}, {QStringLiteral("Wvqx"), 0.9F}, {names[0], 0.9F}, {names[1], 0.1F}};
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        for (const LineReading& answer : answers) {
            told.answer = [&answer](const QImage&) { return answer; };
            for (const auto asked : {ReadingHints::Offers::cards, ReadingHints::Offers::heroes}) {
                for (const auto& known : {lexiconOf(names), std::shared_ptr<const Lexicon>()}) {
                    clear();
                    reader.forget();
                    const ReadText read = reader.read(row.image, {QRectF(0, 0, 1, 1), asked, std::nullopt, known});
                    EXPECT_LE(told.readings, cap);
                    for (const QImage& picture : told.seen) {
                        ASSERT_EQ(picture.format(), QImage::Format_Grayscale8);
                        ASSERT_FALSE(picture.isNull());
                    }
                    for (const OCRToken& token : read.tokens) {
                        EXPECT_TRUE(!known || names.contains(token.text)) << token.text.toStdString();
                        EXPECT_FALSE(token.text.isEmpty());
                    }
                }
            }
        }
    }
}

TEST_F(LineByLineReaderTest, TakesEveryFormat) {
    const QImage image = testing::paintedCards(QSize(1280, 720), wordsByWidth);
    for (int format = QImage::Format_Mono; format < QImage::NImageFormats; ++format) {
        SCOPED_TRACE(format);
        testing::WordScript script({{{names[0]}, {names[1]}, {names[2]}}});
        told.answer = std::ref(script);
        const QImage converted = image.convertToFormat(QImage::Format(format));
        const ReadText read = reader.read(converted, {cardBand, {}, std::nullopt, lexiconOf(names)});
        reader.read(converted, {cardBand, ReadingHints::Offers::heroes, std::nullopt, lexiconOf(names)});
        const bool keepsColors = converted.depth() > 8 || format == QImage::Format_Grayscale8;
        if (keepsColors) {
            EXPECT_EQ(textsOf(read.tokens), names);
        }
    }
}

TEST_F(LineByLineReaderTest, AFailureOfTheLineReaderIsNoText) {
    // It may give fewer answers than it was asked for, when it is broken.
    class Broken final : public LineReader {
    public:
        std::vector<LineReading> read(const std::vector<QImage>&) override { return {}; }
    };

    LineByLineReader broken(std::make_unique<Broken>(), nullptr);
    for (const auto& known : {lexiconOf(names), std::shared_ptr<const Lexicon>()}) {
        for (const QImage& image : {elsewhere(latinWords), testing::paintedCards(QSize(1920, 1080), wordsByWidth)}) {
            EXPECT_EQ(broken.read(image, {cardBand, {}, std::nullopt, known}), ReadText());
        }
    }
}

TEST_F(LineByLineReaderTest, ScalesLinesItself) {
    EXPECT_TRUE(reader.scalesLinesItself());
}

} // namespace

} // namespace pelloran
