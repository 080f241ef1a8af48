#include "reading/HeroLines.h"
#include "reading/PlacedCards.h"
#include "reading/PlacedHeroes.h"
#include "tests/reading/PaintedScreen.h"
#include "tests/reading/WordsByWidth.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <random>

namespace pelloran {

namespace {

using testing::FakeLineReader;
using testing::HeroGround;
using testing::wordsByWidth;

const QString amber = QStringLiteral("Amber Wolf");
const QString copper = QStringLiteral("Copper Kettle");
const QString quiet = QStringLiteral("Quiet Orchard");
const QStringList known{
    amber, copper, quiet, QStringLiteral("Salt Merchant"), QStringLiteral("Lantern Moth"), QStringLiteral("Old Ferry")};
const QStringList nothing;

Lexicon lexiconOf(const QStringList& names, Lexicon::Tolerance tolerance = Lexicon::forCards) {
    std::vector<KnownName> list;
    for (const QString& name : names) {
        list.push_back({name, {}});
    }
    return {std::move(list), tolerance};
}

const QImage& cards() {
    static const QImage image = testing::paintedCards(QSize(1920, 1080), wordsByWidth);
    return image;
}

const QImage& heroes() {
    static const QImage image = testing::paintedHeroes(QSize(1920, 1080), HeroGround::felt, heroCentres[1],
                                                       wordsByWidth, QStringLiteral("Tuocnoe"));
    return image;
}

QStringList textsOf(const std::vector<OCRToken>& tokens) {
    QStringList texts;
    for (const OCRToken& token : tokens) {
        texts.append(token.text);
    }
    return texts;
}

struct Outcome {
    ReadText text;
    std::array<std::size_t, 3> counts{};
    std::size_t readings = 0;
};

using Readings = std::array<QStringList, 3>;

Outcome readCards(const Readings& readings, float confidence = 0.9F, const QImage& image = cards(),
                  const QStringList& names = known) {
    testing::WordScript answers(readings, confidence);
    FakeLineReader::Told told;
    told.answer = std::ref(answers);
    FakeLineReader lines(told);
    ReadingTools tools{lines};
    Outcome outcome;
    outcome.text = textOf(PlacedCards(image).read(Script::latin, tools, lexiconOf(names)), image.size());
    outcome.counts = answers.counts;
    outcome.readings = told.readings;
    for (const QImage& picture : told.seen) {
        EXPECT_EQ(picture.format(), QImage::Format_Grayscale8);
        EXPECT_FALSE(picture.isNull());
    }
    return outcome;
}

TEST(PlacedReadingTest, WhatOfThreeReadingsIsOffered) {
    struct Row {
        Readings readings;
        QStringList tokens;
        QStringList unsettled;
        const char* why;
    };

    const auto text = [](const char* each) { return QString::fromUtf8(each); };
    const QStringList babble{text("Wvqx"), text("Zzjgh"), text("Ppdvk"), text("Mmwq"), text("Ffgtb"), text("Yyhk")};
    const QString nettle = QStringLiteral("Copper Mettle");
    const QString kettie = QStringLiteral("Copper Kettie");
    const Row table[] = {
        {{{{amber}, {copper}, {quiet}}}, {amber, copper, quiet}, nothing, "three names"},
        {{{{QStringLiteral("AMBER-WOLF")}, {copper}, {quiet}}},
         {amber, copper, quiet},
         nothing,
         "a token has the name's own spelling"},
        {{{{amber}, {copper}, {}}}, {amber, copper}, nothing, "two are an offer, the third was not read at all"},
        {{{{amber}, babble, {quiet}}}, {amber, quiet}, {babble[0]}, "two are, the third is rubbish"},
        {{{{amber}, babble, {}}}, nothing, {amber, babble[0]}, "one on its own is none, but can be asked for"},
        {{{{amber}, {}, {}}}, nothing, {amber}, "one with nothing beside it"},
        {{{{}, {}, {}}}, nothing, nothing, "nothing was read"},
        {{{babble, babble, babble}}, nothing, {babble[0], babble[0], babble[0]}, "none is a name"},
        {{{{amber}, {text("New Card")}, {}}},
         {amber},
         {text("New Card")},
         "one, beside a line that is read alike twice: a card that the list lacks"},
        {{{{text("New Card")}, {text("Newer Card")}, {text("Newest Card")}}},
         nothing,
         {text("New Card"), text("Newer Card"), text("Newest Card")},
         "lines read alike, none of them known"},
        {{{{amber}, {text("Ox"), text("Ox")}, {}}}, nothing, {amber, text("Ox")}, "two letters are soon read alike"},
        {{{{amber}, {nettle, {}}, {quiet}}}, {amber, copper, quiet}, nothing, "a letter off, read once"},
        {{{{amber}, {nettle}, {quiet}}},
         {amber, quiet},
         {nettle},
         "the same letter off twice is what is printed: a card with almost this name"},
        {{{{amber}, {kettie}, {quiet}}},
         {amber, copper, quiet},
         nothing,
         "an i for an l twice is no proof: it is easily read so"},
        {{{{amber}, {babble[0], copper}, {quiet}}}, {amber, copper, quiet}, nothing, "read right at a second try"},
        {{{{amber}, {nettle, copper}, {quiet}}}, {amber, copper, quiet}, nothing, "nearer at a second try"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const ReadText read = readCards(row.readings).text;
        EXPECT_EQ(textsOf(read.tokens), row.tokens);
        EXPECT_EQ(textsOf(read.unsettled), row.unsettled);
        ASSERT_EQ(read.columns.has_value(), !row.tokens.isEmpty());
        for (std::size_t i = 0; read.columns && i < 3; ++i) {
            EXPECT_NEAR((*read.columns)[i], 0.5 + cardCentres[i] * 1080 / 1920, 0.001);
        }
    }
}

TEST(PlacedReadingTest, TokensStandWhereTheNamesDo) {
    const ReadText read = readCards({{{amber}, {copper}, {quiet}}}).text;
    ASSERT_EQ(read.tokens.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(read.tokens[i].midX, 0.5 + cardCentres[i] * 1080 / 1920, 0.003);
        EXPECT_NEAR(read.tokens[i].midY, nameCurves[0].bases[0] - 0.006, 0.006);
        EXPECT_NEAR(read.tokens[i].width, testing::BarLetters().widthOf(wordsByWidth[i]) * 1080 / 1920, 0.004);
        EXPECT_GT(read.tokens[i].height, 0.010);
        EXPECT_LT(read.tokens[i].height, 0.035);
        EXPECT_FLOAT_EQ(read.tokens[i].confidence, 0.9F);
    }
}

TEST(PlacedReadingTest, WhatIsReadExactlyIsNotReadAgain) {
    EXPECT_EQ(readCards({{{amber}, {copper}, {quiet}}}).readings, 3U);
    // With a name missing, the picture may be elsewhere: once there, and once where it should be.
    const Outcome oneMissing = readCards({{{amber}, {}, {quiet}}});
    EXPECT_LE(oneMissing.counts[0], 2U);
    EXPECT_GT(oneMissing.counts[1], 4U) << "else nothing is shown by the others";
    EXPECT_LE(oneMissing.counts[2], 2U);
    // Read alike twice, it is settled that it is unknown.
    const Outcome unknown = readCards({{{amber}, {QStringLiteral("New Card")}, {quiet}}});
    EXPECT_EQ(unknown.counts[1], 2U);
}

TEST(PlacedReadingTest, LinesThatAreHardlyReadAreNotTriedAgain) {
    const QStringList babble{QStringLiteral("Wvqx"), QStringLiteral("Zzjgh"), QStringLiteral("Ppdvk")};
    const Outcome outcome = readCards({{babble, babble, babble}}, 0.2F);
    EXPECT_LE(outcome.readings, 6U) << "once where they should be and once where they may be";
    EXPECT_GT(readCards({{babble, babble, babble}}, 0.7F).readings, 10U) << "else nothing is shown";
    EXPECT_TRUE(outcome.text.tokens.empty());
}

TEST(PlacedReadingTest, FindsNamesInAPictureThatIsElsewhere) {
    struct Row {
        GameFrame frame;
        const char* why;
    };

    const Row table[] = {
        {{1080, 990, 0}, "moved to the right"},
        {{1020, 960, 0}, "smaller"},
        {{1120, 950, 0}, "larger"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const QImage image = testing::paintedCards(QSize(1920, 1080), wordsByWidth, row.frame);
        const ReadText read = readCards({{{amber}, {copper}, {quiet}}}, 0.9F, image).text;
        EXPECT_EQ(textsOf(read.tokens), (QStringList{amber, copper, quiet}));
        ASSERT_TRUE(read.columns);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR((*read.columns)[i], row.frame.pixelX(cardCentres[i]) / 1920, 0.02)
                << "a small part of their distance";
        }
    }
}

TEST(PlacedReadingTest, NamesInShadeAreReadWhereTheyStand) {
    for (const int shade : {10, 20, 30, 35, 40, 45}) { // per cent of black over the two cards that are not being taken
        SCOPED_TRACE(shade);
        QImage image = cards();
        QPainter painter(&image);
        const GameFrame frame = frameOf(image.size());
        const double left = frame.pixelX((cardCentres[0] + cardCentres[1]) / 2);
        painter.fillRect(QRectF(left, 0, image.width() - left, image.height()), QColor(0, 0, 0, 255 * shade / 100));
        painter.end();
        const Outcome outcome = readCards({{{amber}, {copper}, {quiet}}}, 0.9F, image);
        EXPECT_EQ(textsOf(outcome.text.tokens), (QStringList{amber, copper, quiet}));
        EXPECT_EQ(outcome.readings, 3U) << "each once, at its place";
    }
}

TEST(PlacedReadingTest, NamesWhereChoicesInBattleStandAreNoOffer) {
    const QImage image = testing::paintedCards(QSize(1920, 1080), wordsByWidth, frameOf(QSize(1920, 1080)), 0.50);
    const Outcome outcome = readCards({{{amber}, {copper}, {quiet}}}, 0.9F, image);
    EXPECT_EQ(outcome.text, ReadText());
    EXPECT_EQ(outcome.readings, 0U);
}

ReadText readHeroes(const std::function<LineReading(const QImage&)>& answer, const QImage& image) {
    FakeLineReader::Told told;
    told.answer = answer;
    FakeLineReader lines(told);
    ReadingTools tools{lines};
    return textOf(readHeroesAtPlaces(image, Script::latin, tools, lexiconOf(known, Lexicon::forClasses)), image.size());
}

TEST(PlacedReadingTest, HeroesNeedTwoNames) {
    struct Row {
        std::array<QString, 3> readings; // of the classes
        QStringList tokens;
        const char* why;
    };

    const QString babble = QStringLiteral("Wvqx");
    const QString none;
    const Row table[] = {
        {{amber, copper, quiet}, {amber, copper, quiet}, "three"},
        {{babble, copper, quiet}, {copper, quiet}, "two"},
        {{none, copper, quiet}, {copper, quiet}, "two, and one that is not read"},
        {{babble, copper, babble}, {}, "one"},
        {{babble, QStringLiteral("New Class"), quiet}, {}, "one beside a line read alike twice: all classes are known"},
        {{babble, babble, babble}, {}, "none"},
    };
    const auto shapeOf = [](const QImage& picture) { return double(picture.width()) / picture.height(); };
    const QSize size(1920, 1080);
    for (const HeroGround ground : {HeroGround::felt, HeroGround::parchment}) {
        for (const auto& centres : heroCentres) {
            const QImage image = testing::paintedHeroes(size, ground, centres, wordsByWidth, QStringLiteral("Houno"));
            std::array<double, 3> shapes{};
            for (std::size_t i = 0; i < 3; ++i) {
                const auto lines = findHeroLines(image, frameOf(size), centres[i]);
                ASSERT_FALSE(lines.empty());
                shapes[i] = shapeOf(imageOf(pictureOf(lines[0], {})));
            }
            for (const Row& row : table) {
                SCOPED_TRACE(row.why);
                // A part of a class, where the heroes of the other screen would stand, is no class; nor is a hero's
                // name.
                std::size_t heroesSeen = 0;
                const ReadText read = readHeroes(
                    [&](const QImage& picture) {
                        for (std::size_t i = 0; i < 3; ++i) {
                            if (std::abs(shapeOf(picture) - shapes[i]) < 0.03 * shapes[i]) {
                                ++heroesSeen;
                                return LineReading{row.readings[i], 0.9F};
                            }
                        }
                        return LineReading{babble, 0.3F};
                    },
                    image);
                EXPECT_GE(heroesSeen, 3U);
                EXPECT_EQ(textsOf(read.tokens), row.tokens);
                ASSERT_EQ(read.columns.has_value(), !row.tokens.isEmpty());
                for (std::size_t i = 0; read.columns && i < 3; ++i) {
                    EXPECT_NEAR((*read.columns)[i], 0.5 + centres[i] * 1080 / 1920, 0.001);
                }
            }
        }
    }
}

// Names, names with a few letters changed, and rubbish, at any confidence.
class Babbler {
public:
    explicit Babbler(unsigned seed)
        : random(seed) {}

    LineReading operator()(const QImage&) {
        QString text = known[qsizetype(random() % std::size_t(known.size()))];
        const unsigned changes = random() % 4;
        for (unsigned i = 0; i < changes; ++i) {
            text[qsizetype(random() % std::size_t(text.size()))] = QChar(char16_t(u'!' + random() % 94));
        }
        if (random() % 5 == 0) {
            text.clear();
        }
        return {text, float(random() % 101) / 100};
    }

private:
    std::mt19937 random;
};

TEST(PlacedReadingTest, WhateverIsReadTokensAreNamesAndReadingEnds) {
    constexpr std::size_t cap = 24;
    const QImage moved = testing::paintedCards(QSize(1920, 1080), wordsByWidth, {1020, 960, 0});
    std::size_t tokens = 0;
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        const QImage images[] = {cards(), moved, heroes()};
        for (const QImage& image : images) {
            FakeLineReader::Told told;
            told.answer = Babbler(seed);
            FakeLineReader lines(told);
            ReadingTools tools{lines};
            const PlacedRow row =
                &image == &images[2]
                    ? readHeroesAtPlaces(image, Script::latin, tools, lexiconOf(known, Lexicon::forClasses))
                    : PlacedCards(image).read(Script::latin, tools, lexiconOf(known));
            const ReadText read = textOf(row, image.size());
            EXPECT_LE(told.readings, cap);
            EXPECT_EQ(tools.readingsLeft, cap - told.readings);
            EXPECT_LE(read.tokens.size() + read.unsettled.size(), 3U);
            for (const OCRToken& token : read.tokens) {
                EXPECT_TRUE(known.contains(token.text)) << token.text.toStdString();
            }
            tokens += read.tokens.size();
        }
    }
    EXPECT_GT(tokens, 40U) << "else nothing is shown";
}

TEST(PlacedReadingTest, ReadsNoMoreThanIsLeft) {
    for (const std::size_t left : {0U, 1U, 2U, 5U}) {
        for (const bool forHeroes : {false, true}) {
            SCOPED_TRACE(left);
            FakeLineReader::Told told;
            told.answer = Babbler(3);
            FakeLineReader lines(told);
            ReadingTools tools{lines, nullptr, left};
            forHeroes ? readHeroesAtPlaces(heroes(), Script::latin, tools, lexiconOf(known))
                      : PlacedCards(cards()).read(Script::latin, tools, lexiconOf(known));
            EXPECT_LE(told.readings, left);
        }
    }
}

} // namespace

} // namespace pelloran
