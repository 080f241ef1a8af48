#include "reading/LineByLineReader.h"
#include "reading/PlacedCards.h"
#include "reading/PlacedHeroes.h"
#include "tests/fakes/FakeLineReader.h"
#include "tests/reading/PaintedCharacters.h"
#include "tests/reading/WordsByWidth.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

// Chinese names on painted screens, from pixels to tokens.
namespace pelloran {

namespace {

using testing::FakeLineReader;
using testing::HeroGround;
using testing::paintedChineseCards;
using testing::wordsByWidth;
using Offers = ReadingHints::Offers;
using Names = std::array<QString, 3>;

QString text(const char* each) {
    return QString::fromUtf8(each);
}

const QStringList latin{QStringLiteral("Amber Wolf"), QStringLiteral("Copper Kettle"), QStringLiteral("Quiet Orchard")};
const QStringList chinese{text("王日山人"),     text("石田木"),     text("大天中口火"),  text("目下十人"),
                          text("三山二川"),     text("火山口"),     text("上山，下川"),  text("工人木"),
                          text("石田木火山川"), text("入土士本日"), text("月下石人中大")};
const Names first{chinese[0], chinese[1], chinese[2]};
const Names second{chinese[3], chinese[4], chinese[8]};
constexpr std::array sizes{QSize(1024, 768), QSize(1280, 720), QSize(1920, 1080), QSize(2560, 1440)};
const QSize usual(1280, 720);

Lexicon lexiconOf(const QStringList& names, Lexicon::Tolerance tolerance = Lexicon::forCards) {
    std::vector<KnownName> list;
    for (const QString& name : names) {
        list.push_back({name, {}});
    }
    return {std::move(list), tolerance};
}

QStringList textsOf(const std::vector<OCRToken>& tokens) {
    QStringList texts;
    for (const OCRToken& token : tokens) {
        texts.append(token.text);
    }
    return texts;
}

QStringList listOf(const Names& names) {
    return {names.begin(), names.end()};
}

class ChineseReadingTest : public ::testing::Test {
protected:
    ReadText readCards(const QImage& image, const QStringList& names = chinese) {
        ReadingTools tools{lines, &reader};
        return textOf(PlacedCards(image).read(Script::chinese, tools, lexiconOf(names)), image.size());
    }

    ReadText readHeroes(const QImage& image, const QStringList& names) {
        ReadingTools tools{lines, &reader};
        return textOf(readHeroesAtPlaces(image, Script::chinese, tools, lexiconOf(names, Lexicon::forClasses)),
                      image.size());
    }

    FakeLineReader::Told told;
    FakeLineReader lines{told};
    ChineseLineReader reader{*testing::paintedModel()};
};

TEST_F(ChineseReadingTest, NamesOnRibbonsAreOffered) {
    for (const QSize& size : sizes) {
        for (const Names& names : {first, second}) {
            for (const double base : nameCurves[0].bases) {
                for (const double pitch : {1.1, 1.3}) {
                    SCOPED_TRACE(::testing::Message() << size.width() << ", " << listOf(names).join(u'|').toStdString()
                                                      << ", " << base << ", " << pitch);
                    const ReadText read =
                        readCards(paintedChineseCards(size, names, frameOf(size), base, {.pitch = pitch}));
                    EXPECT_EQ(textsOf(read.tokens), listOf(names));
                    ASSERT_TRUE(read.columns);
                    const double aspect = frameOf(size).height / size.width();
                    for (std::size_t i = 0; i < 3; ++i) {
                        EXPECT_NEAR((*read.columns)[i], 0.5 + cardCentres[i] * aspect, 0.001);
                        if (i < read.tokens.size()) {
                            EXPECT_NEAR(read.tokens[i].midX, 0.5 + cardCentres[i] * aspect, 0.005);
                            EXPECT_NEAR(read.tokens[i].midY * size.height(),
                                        frameOf(size).pixelY(base - testing::characterHeight / 2),
                                        0.01 * size.height());
                            EXPECT_GT(read.tokens[i].confidence, 0.5F);
                        }
                    }
                }
            }
        }
    }
    EXPECT_EQ(told.readings, 0U) << "nobody else is asked";
}

TEST_F(ChineseReadingTest, WhatOfThreeNamesIsOffered) {
    struct Row {
        Names names;
        QStringList tokens;
        const char* why;
    };

    const Row table[] = {
        {first, listOf(first), "three known ones"},
        {{first[0], text("火川目王"), first[2]}, {first[0], first[2]}, "the middle one is missing from the data"},
        {{text("火川目王"), first[1], first[2]}, {first[1], first[2]}, "the first one is"},
        {{first[0], first[1], text("王日山大")}, {first[0], first[1]}, "a character away from a known name"},
        {{first[0], first[1], text("王目山人")}, {first[0], first[1]}, "by one that looks much alike"},
        {{first[0], first[1], QString()}, {first[0], first[1]}, "nothing printed in the third place"},
        {{first[0], text("火川目王"), text("口口中田")}, {first[0]}, "one, beside names that are printed clearly"},
        {{first[0], QString(), QString()}, {}, "one on its own is a keyword, or a row of a list"},
        {{text("川口王"), text("火川目王"), text("口口中田")}, {}, "none is known"},
        {{first[0], first[0], first[0]}, {first[0], first[0], first[0]}, "the same name three times"},
    };
    for (const QSize& size : {usual, QSize(1920, 1080)}) {
        for (const Row& row : table) {
            SCOPED_TRACE(row.why);
            SCOPED_TRACE(size.width());
            const ReadText read = readCards(paintedChineseCards(size, row.names));
            EXPECT_EQ(textsOf(read.tokens), row.tokens);
            ASSERT_EQ(read.columns.has_value(), !row.tokens.isEmpty());
            for (const OCRToken& token : read.tokens) {
                const auto place = std::ranges::find_if(
                    *read.columns, [&](double middle) { return std::abs(middle - token.midX) < 0.02; });
                ASSERT_NE(place, read.columns->end());
                EXPECT_EQ(row.names[std::size_t(place - read.columns->begin())], token.text) << "at its own place";
            }
        }
    }
}

TEST_F(ChineseReadingTest, FindsNamesInAPictureThatIsElsewhere) {
    struct Row {
        GameFrame frame;
        const char* why;
    };

    const Row table[] = {
        {{1080, 990, 0}, "moved to the right"},
        {{1080, 960, 12}, "and down"},
        {{1120, 950, 0}, "larger"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const ReadText read = readCards(paintedChineseCards(QSize(1920, 1080), first, row.frame));
        EXPECT_EQ(textsOf(read.tokens), listOf(first));
        ASSERT_TRUE(read.columns);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR((*read.columns)[i], row.frame.pixelX(cardCentres[i]) / 1920, 0.02);
        }
    }
}

TEST_F(ChineseReadingTest, WhatIsNoTextIsNoName) {
    QImage stripes(usual, QImage::Format_RGB32);
    for (int y = 0; y < stripes.height(); ++y) {
        for (int x = 0; x < stripes.width(); ++x) {
            stripes.setPixel(x, y, (x / 5 + y / 7) % 2 ? qRgb(200, 195, 190) : qRgb(30, 25, 20));
        }
    }
    QImage hand = testing::emptyScreen(usual);
    QPainter painter(&hand);
    painter.setBrush(QColor(205, 200, 195));
    painter.setPen(QPen(Qt::black, 3));
    for (const double centre : cardCentres) {
        const QPointF tip(frameOf(usual).pixelX(centre) - 30, 0.365 * usual.height());
        painter.drawPolygon(QPolygonF{tip, tip + QPointF(14, -6), tip + QPointF(60, 4), tip + QPointF(64, 30),
                                      tip + QPointF(30, 34), tip + QPointF(6, 16)});
    }
    painter.end();

    struct Row {
        QImage image;
        const char* why;
    };

    const Row table[] = {
        {testing::noise(usual, 3), "noise"},
        {testing::noise(QSize(640, 480), 4), "a little noise"},
        {stripes, "stripes"},
        {hand, "hands"},
        {testing::emptyScreen(usual), "nothing"},
        {paintedChineseCards(usual, {}), "empty ribbons"},
        {testing::noise(QSize(1, 2000), 5), "a column"},
        {testing::noise(QSize(3000, 2), 6), "two rows"},
        {testing::paintedCards(usual, wordsByWidth), "Latin words"},
    };
    const QStringList classes{text("石人"), text("木火士"), text("王日山人")};
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        EXPECT_TRUE(readCards(row.image).tokens.empty());
        EXPECT_TRUE(readHeroes(row.image, classes).tokens.empty());
    }
}

TEST_F(ChineseReadingTest, ClassesBelowHeroesAreOffered) {
    const QStringList classes{text("田目"), text("木日火"), text("王日木田"), text("王田"), text("目王田本")};

    struct Row {
        Names printed;
        QStringList tokens;
        const char* why;
    };

    const Row table[] = {
        {{classes[0], classes[1], classes[2]}, {classes[0], classes[1], classes[2]}, "of two, three and four"},
        {{classes[4], classes[3], classes[0]}, {classes[4], classes[3], classes[0]}, "others"},
        {{classes[4], text("日口月"), classes[0]}, {classes[4], classes[0]}, "two, and one that is no class"},
        {{text("日口月"), text("三川一"), classes[0]}, {}, "one on its own is none"},
        {{text("日口月"), text("三川一"), text("石日中")}, {}, "no class at all"},
    };
    for (const QSize& size : {usual, QSize(1920, 1080), QSize(1024, 768)}) {
        for (const HeroGround ground : {HeroGround::parchment, HeroGround::felt}) {
            for (const auto& centres : heroCentres) {
                for (const Row& row : table) {
                    SCOPED_TRACE(row.why);
                    SCOPED_TRACE(::testing::Message()
                                 << size.width() << (ground == HeroGround::felt ? ", felt" : ", parchment"));
                    const QImage image =
                        testing::paintedChineseHeroes(size, ground, centres, row.printed, text("田中大川目石王"));
                    const ReadText read = readHeroes(image, classes);
                    EXPECT_EQ(textsOf(read.tokens), row.tokens);
                    ASSERT_EQ(read.columns.has_value(), !row.tokens.isEmpty());
                    for (std::size_t i = 0; read.columns && i < 3; ++i) {
                        EXPECT_NEAR((*read.columns)[i], 0.5 + centres[i] * frameOf(size).height / size.width(), 0.001);
                    }
                }
            }
        }
    }
    EXPECT_EQ(told.readings, 0U);
}

// A reader of either script, of a client in either language.
class EitherScriptTest : public ::testing::Test {
protected:
    EitherScriptTest() {
        told.answer = [this](const QImage& picture) {
            return isLatin ? testing::WordScript({{{latin[0]}, {latin[1]}, {latin[2]}}})(picture)
                           : LineReading{QStringLiteral("EHIE"), 0.3F};
        };
    }

    ReadText read(const QImage& image, bool ofLatin) {
        isLatin = ofLatin;
        told.readings = 0;
        return reader.read(image, hints);
    }

    QStringList readEnglish(const Names& words = wordsByWidth) {
        return textsOf(read(testing::paintedCards(usual, words), true).tokens);
    }

    QStringList readChinese(const Names& names) {
        return textsOf(read(paintedChineseCards(usual, names), false).tokens);
    }

    bool isLatin = true;
    FakeLineReader::Told told;
    LineByLineReader reader{std::make_unique<FakeLineReader>(told),
                            std::make_unique<ChineseLineReader>(*testing::paintedModel())};
    ReadingHints hints{QRectF(0.08, 0.28, 0.64, 0.5), Offers::cards, std::nullopt,
                       std::make_shared<const Lexicon>(lexiconOf(latin + chinese))};
};

TEST_F(EitherScriptTest, TheClientsLanguageMayChangeAtAnyLook) {
    const Names otherWords{wordsByWidth[2], wordsByWidth[0], wordsByWidth[1]};
    const QStringList otherNames{latin[2], latin[0], latin[1]};
    EXPECT_EQ(readChinese(first), listOf(first)) << "the first look";
    EXPECT_EQ(readChinese(second), listOf(second)) << "again";
    EXPECT_EQ(readEnglish(), latin) << "changed";
    EXPECT_EQ(readEnglish(otherWords), otherNames) << "still";
    EXPECT_EQ(readChinese(first), listOf(first)) << "and back";
    EXPECT_EQ(readEnglish(), latin) << "after one look";
    EXPECT_EQ(readChinese(second), listOf(second));
    reader.forget();
    EXPECT_EQ(readEnglish(otherWords), otherNames) << "forgotten";
    reader.forget();
    EXPECT_EQ(readChinese(first), listOf(first));
}

TEST_F(EitherScriptTest, TheScriptThatIsToldIsReadAlone) {
    hints.script = Script::chinese;
    EXPECT_EQ(readChinese(first), listOf(first));
    EXPECT_EQ(readEnglish(), QStringList());
    EXPECT_EQ(told.readings, 0U) << "no Latin letters";
    hints.script = Script::latin;
    EXPECT_EQ(readEnglish(), latin);
    EXPECT_EQ(readChinese(first), QStringList());
}

TEST_F(EitherScriptTest, RemembersTheScriptUntilToldToForget) {
    ASSERT_EQ(readChinese(first), listOf(first));
    ASSERT_EQ(readChinese(second), listOf(second));
    EXPECT_EQ(told.readings, 0U) << "nothing is tried in vain";
    // Of an English client the lines are tried as Latin at once.
    ASSERT_EQ(readEnglish(), latin);
    ASSERT_EQ(readEnglish({wordsByWidth[2], wordsByWidth[0], wordsByWidth[1]}),
              (QStringList{latin[2], latin[0], latin[1]}));
    EXPECT_EQ(told.readings, 3U);
}

TEST_F(EitherScriptTest, WithoutAModelLatinLettersAreRead) {
    LineByLineReader alone(std::make_unique<FakeLineReader>(told), nullptr);
    isLatin = true;
    EXPECT_EQ(textsOf(alone.read(testing::paintedCards(usual, wordsByWidth), hints).tokens), latin);
    isLatin = false;
    for (const auto& script : {std::optional<Script>(), std::optional(Script::chinese), std::optional(Script::latin)}) {
        hints.script = script;
        EXPECT_TRUE(alone.read(paintedChineseCards(usual, first), hints).tokens.empty());
        alone.forget();
    }
    hints.script.reset();
    isLatin = true;
    EXPECT_EQ(textsOf(alone.read(testing::paintedCards(usual, wordsByWidth), hints).tokens), latin) << "and after it";
}

TEST_F(EitherScriptTest, OfASmallWindowItTellsOnceAndOnlyWhereChineseIsRead) {
    const QSize small(1280, 690);
    const QString missing = text("火川目王"); // from the data
    const auto look = [&](const QSize& size, const Names& printed) {
        isLatin = false;
        return textsOf(reader.read(paintedChineseCards(size, printed), hints).tokens);
    };

    struct Row {
        const char* why;
        std::function<void()> looks;
        qsizetype lines;
    };

    const Row table[] = {
        {"all three names are read", [&] { EXPECT_EQ(look(small, first), listOf(first)); }, 0},
        {"an empty board", [&] { EXPECT_EQ(look(small, {}), QStringList()); }, 0},
        {"one of three is missing",
         [&] {
             EXPECT_FALSE(look(small, {first[0], missing, first[2]}).isEmpty());
             EXPECT_FALSE(look(small, {missing, first[1], first[2]}).isEmpty());
         },
         1},
        {"one is, in a window that is large enough",
         [&] { EXPECT_FALSE(look(usual, {first[0], missing, first[2]}).isEmpty()); }, 0},
        {"Chinese is asked for, and none is known",
         [&] {
             hints.script = Script::chinese;
             EXPECT_EQ(look(small, {missing, missing, missing}), QStringList());
         },
         1},
        {"a client that was Chinese is English now, and its names settle late",
         [&] {
             ASSERT_EQ(look(usual, first), listOf(first));
             const QString strange = QStringLiteral("Wvqx");
             testing::WordScript late({{{strange, latin[0]}, {strange, latin[1]}, {strange, latin[2]}}});
             told.answer = std::ref(late);
             EXPECT_EQ(textsOf(reader.read(testing::paintedCards(small, wordsByWidth), hints).tokens), latin);
             told.answer = {};
         },
         0},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        reader = LineByLineReader(std::make_unique<FakeLineReader>(told),
                                  std::make_unique<ChineseLineReader>(*testing::paintedModel()));
        hints.script.reset();
        const testing::CollectedLog logged;
        row.looks();
        const QStringList lines = logged.lines();
        ASSERT_EQ(lines.size(), row.lines) << lines.join(u'\n').toStdString();
        if (!lines.isEmpty()) {
            EXPECT_EQ(lines[0], QStringLiteral("the game's picture is 690 pixels high; Chinese names are read surely "
                                               "from 700 on"));
        }
    }
}

TEST_F(EitherScriptTest, AMissingNameIsNotOfferedByAnotherWayToRead) {
    struct Row {
        QString missing;
        const char* why;
    };

    const Row table[] = {
        {text("火川目王"), "like no known name"},
        {text("王日山大"), "a character away from one"},
        {text("王日大人"), "another character away"},
        {text("石田木火山大"), "one of six"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        reader.forget();
        const Names printed{chinese[3], row.missing, chinese[4]};
        EXPECT_EQ(readChinese(printed), (QStringList{chinese[3], chinese[4]}));
    }
}

TEST_F(EitherScriptTest, NamesAnywhereAreTheKnownOnesAndNoOthers) {
    struct Row {
        Names names;
        QStringList tokens;
        const char* why;
    };

    const Row table[] = {
        {first, listOf(first), "three known ones"},
        {{text("王日山大"), first[1], first[2]}, {first[1], first[2]}, "one is a character away from a known name"},
        {{chinese[3], text("石田木火山大"), first[1]}, {chinese[3], first[1]}, "one of six is"},
        {{chinese[3], text("火川目王"), first[1]}, {chinese[3], first[1]}, "one is like no known name"},
    };
    isLatin = false;
    for (const Row& row : table) {
        for (const double level : {0.40, 0.42}) {
            SCOPED_TRACE(row.why);
            SCOPED_TRACE(level);
            const GameFrame frame = frameOf(QSize(1920, 1080));
            QImage image = testing::emptyScreen(QSize(1920, 1080));
            QPainter painter(&image);
            for (std::size_t i = 0; i < 3; ++i) {
                testing::paintCharactersAlong(painter, frame, testing::straight(), cardCentres[i] + 0.05, level,
                                              row.names[i], {}, {}, 0.028);
            }
            painter.end();
            reader.forget();
            EXPECT_EQ(textsOf(reader.read(image, hints).tokens), row.tokens);
        }
    }
}

QImage grainy(QImage image, unsigned seed) {
    std::mt19937 random(seed);
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int more = int(random() % 7) - 3;
            const auto lit = [&](int value) { return std::clamp(value + more, 0, 255); };
            row[x] = qRgb(lit(qRed(row[x])), lit(qGreen(row[x])), lit(qBlue(row[x])));
        }
    }
    return image;
}

TEST_F(EitherScriptTest, ASteadyRowIsNotReadAgain) {
    const QImage image = paintedChineseCards(usual, first);
    const ReadText once = read(image, false);
    ASSERT_EQ(textsOf(once.tokens), listOf(first));
    EXPECT_EQ(read(image, false), once);
    // Whoever reads it anew is a little more or less sure of it.
    const QImage grain = grainy(image, 5);
    LineByLineReader fresh(std::make_unique<FakeLineReader>(told),
                           std::make_unique<ChineseLineReader>(*testing::paintedModel()));
    const ReadText anew = fresh.read(grain, hints);
    ASSERT_EQ(textsOf(anew.tokens), listOf(first));
    ASSERT_NE(anew, once) << "else nothing is shown";
    EXPECT_EQ(read(grain, false), once);
    reader.forget();
    EXPECT_EQ(read(grain, false), anew);
}

TEST_F(EitherScriptTest, OfASteadyRowOnlyWhatChangedIsRead) {
    const ReadText once = read(paintedChineseCards(usual, first), false);
    ASSERT_EQ(once.tokens.size(), 3U);
    Names changed = first;
    for (std::size_t slot = 0; slot < 3; ++slot) {
        SCOPED_TRACE(slot);
        changed[slot] = second[slot];
        const ReadText next = read(grainy(paintedChineseCards(usual, changed), unsigned(slot)), false);
        EXPECT_EQ(textsOf(next.tokens), listOf(changed));
        for (std::size_t i = slot + 1; i < next.tokens.size(); ++i) {
            EXPECT_EQ(next.tokens[i], once.tokens[i]) << "as it was read before";
        }
    }
    // From one language to the other, one name after the other, as while cards are turned.
    EXPECT_EQ(readEnglish(), latin);
    EXPECT_EQ(readChinese(changed), listOf(changed));
}

} // namespace

} // namespace pelloran
