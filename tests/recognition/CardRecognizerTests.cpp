#include "recognition/CardRecognizer.h"

#include "tests/fakes/FakeTextReader.h"
#include "tests/support/Printing.h"
#include "tests/support/SampleStore.h"

#include <gtest/gtest.h>

namespace pelloran {

static void PrintTo(const SlotMatch& match, std::ostream* out) {
    *out << '{' << match.slot.rawValue().toStdString() << ": "
         << match.cardId.value_or(QStringLiteral("nothing")).toStdString() << ' ' << match.confidence << ' '
         << match.method.toStdString() << " \"" << match.ocrText.toStdString() << "\"}";
}

namespace {

using testing::SampleStore;

const QByteArray cardFile = R"({"player_class": "ALL", "time_range": "TEST", "cards": [
    {"card_id": "FIREBALL", "name_zh": "火球术", "name_en": "Fireball"},
    {"card_id": "FROSTBOLT", "name_zh": "寒冰箭", "name_en": "Frostbolt"},
    {"card_id": "YETI", "name_zh": "冰风雪人", "name_en": "Chillwind Yeti"},
    {"card_id": "POLYMORPH", "name_zh": "变形术", "name_en": "Polymorph"},
    {"card_id": "LONG", "name_zh": "很长", "name_en": "Abcdefghijklmno"},
    {"card_id": "LIMIT", "name_zh": "极限", "name_en": "Zbcdefghijklmn"},
    {"card_id": "SHORT", "name_zh": "法", "name_en": null}
]})";

const QByteArray classFile = R"({"classes": [
    {"player_class": "MAGE", "name_zh": "法师", "name_en": "Mage"},
    {"player_class": "DRUID", "name_zh": "德鲁伊", "name_en": "Druid"},
    {"player_class": "DEMONHUNTER", "name_zh": "恶魔猎手"},
    {"player_class": "ROGUE", "name_zh": "潜行者", "name_en": "Rogue"},
    {"player_class": "SHAMAN", "name_zh": "萨满祭司", "name_en": "Shaman"},
    {"player_class": "WARLOCK", "name_zh": "术士", "name_en": "Warlock"}
]})";

OCRToken token(const char* text, double midX, double midY = 0.5) {
    return {QString::fromUtf8(text), 0.9F, midX, midY, 0.1, 0.03};
}

ReadText lines(std::vector<OCRToken> tokens) {
    return {std::move(tokens), {}, {}};
}

QStringList idsBySlot(const std::vector<SlotMatch>& matches) {
    QStringList ids;
    for (const SlotMatch& match : matches) {
        ids.append(match.cardId.value_or(QStringLiteral("-")));
    }
    return ids;
}

QStringList words(const char* list) {
    return QString::fromUtf8(list).split(u' ');
}

class CardRecognizerTest : public ::testing::Test {
protected:
    SampleStore sample{cardFile, classFile};
    CardRecognizer recognizer{sample.store};
};

class HeroNamesTest : public ::testing::Test {
protected:
    // Mages and rogues share a hero, and a druid is called as a class is.
    SampleStore sample{cardFile, R"({"classes": [
        {"player_class": "MAGE", "name_zh": "法师", "name_en": "Mage", "hero_names": ["Ada Quillfeather", "艾达·羽笔",
         "The Guest"]},
        {"player_class": "ROGUE", "name_zh": "潜行者", "name_en": "Rogue", "hero_names": ["Bo Sly", "the guest", ""]},
        {"player_class": "DRUID", "name_zh": "德鲁伊", "name_en": "Druid", "hero_names": ["Rogue"]}
    ]})"};
    CardRecognizer recognizer{sample.store, NameLengths::limitedUnlessExact};
};

using AssignToSlots = ::testing::Test;

RecognitionCandidate candidate(const char* id, double midX, double score = 0.9, double midY = 0.5) {
    return {QString::fromUtf8(id), score, QString::fromUtf8(id), midX, midY};
}

std::vector<RecognitionCandidate> candidatesAt(std::initializer_list<double> positions) {
    std::vector<RecognitionCandidate> candidates;
    for (const double midX : positions) {
        candidates.push_back({QString(QChar(static_cast<char16_t>(u'a' + candidates.size()))), 0.9, {}, midX, 0.5});
    }
    return candidates;
}

TEST(AssignToSlots, PlacesByNumberAndPosition) {
    struct Case {
        const char* why;
        std::initializer_list<double> positions;
        const char* expected; // ids a, b, c ... in the order given, by slot
    };

    const Case cases[] = {
        {"nothing", {}, "- - -"},
        {"one, at the left", {0.33}, "a - -"},
        {"one, exactly a third is the middle", {1.0 / 3.0}, "- a -"},
        {"one, just below two thirds", {0.666}, "- a -"},
        {"one, exactly two thirds is the right", {2.0 / 3.0}, "- - a"},
        {"two, far apart", {0.2, 0.8}, "a - b"},
        {"two, left and middle", {0.44, 0.55}, "a b -"},
        {"two, middle and right", {0.45, 0.551}, "- a b"},
        {"two, both would be the middle", {0.50, 0.52}, "a - b"},
        {"two, given right to left", {0.8, 0.2}, "b - a"},
        {"two, both at the far left: the second falls to the middle", {0.1, 0.2}, "a b -"},
        {"two, both at the far right: the first falls to the middle", {0.8, 0.9}, "- a b"},
        {"three go by order, wherever they stand", {0.1, 0.12, 0.13}, "a b c"},
        {"equal positions keep their order", {0.5, 0.5, 0.5}, "a b c"},
        {"a fourth is ignored", {0.9, 0.1, 0.3, 0.5}, "b c d"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(idsBySlot(assignToSlots(candidatesAt(c.positions), QStringLiteral("p"))), words(c.expected));
    }
}

TEST(AssignToSlots, NamesTheMethodBySlot) {
    const auto empty = assignToSlots({}, QStringLiteral("card-layout"));
    ASSERT_EQ(empty.size(), 3U);
    for (const DraftSlot slot : DraftSlot::allCases()) {
        EXPECT_EQ(empty[slot], (SlotMatch{slot, std::nullopt, 0, QStringLiteral("card-layout-empty"), QString()}));
    }
    const auto one = assignToSlots({{QStringLiteral("X"), 0.95, QStringLiteral("as read"), 0.1, 0.5}},
                                   QStringLiteral("class-layout"));
    EXPECT_EQ(one[0], (SlotMatch{DraftSlot::left, QStringLiteral("X"), 0.95, QStringLiteral("class-layout"),
                                 QStringLiteral("as read")}));
    EXPECT_EQ(one[1], (SlotMatch{DraftSlot::middle, std::nullopt, 0, QStringLiteral("class-layout-miss"), QString()}));
    EXPECT_EQ(one[2], (SlotMatch{DraftSlot::right, std::nullopt, 0, QStringLiteral("class-layout-miss"), QString()}));
}

TEST(AssignToColumns, PlacesByTheNearestOffer) {
    const std::array columns{0.26, 0.41, 0.56};

    struct Case {
        const char* why;
        std::vector<RecognitionCandidate> candidates;
        const char* expected;
    };

    const Case cases[] = {
        {"all three, in any order", {candidate("c", 0.55), candidate("a", 0.27), candidate("b", 0.41)}, "a b c"},
        {"the left one missing: positions alone would take the middle one for it",
         {candidate("b", 0.41), candidate("c", 0.56)},
         "- b c"},
        {"the right one missing", {candidate("a", 0.26), candidate("b", 0.42)}, "a b -"},
        {"one alone, in the middle third of the window, but the right offer", {candidate("c", 0.56)}, "- - c"},
        {"two at one place: the better one", {candidate("a", 0.25, 0.9), candidate("x", 0.27, 0.95)}, "x - -"},
        {"equally good: the first", {candidate("a", 0.25, 0.9), candidate("x", 0.27, 0.9)}, "a - -"},
        {"further off than half the distance between offers", {candidate("x", 0.18)}, "- - -"},
        {"beside all of them", {candidate("x", 0.9)}, "- - -"},
        {"nothing", {}, "- - -"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(idsBySlot(assignToColumns(c.candidates, columns, QStringLiteral("prefix"))), words(c.expected));
    }
    EXPECT_EQ(assignToColumns({}, columns, QStringLiteral("prefix"))[0].method, QStringLiteral("prefix-empty"));
    EXPECT_EQ(assignToColumns({candidate("a", 0.26)}, columns, QStringLiteral("prefix"))[1].method,
              QStringLiteral("prefix-miss"));
}

TEST(PickThreeHorizontally, TakesTheBestOfEachThird) {
    struct Case {
        const char* why;
        std::vector<RecognitionCandidate> candidates;
        const char* expected;
    };

    const Case cases[] = {
        {"three stay, however close", {candidate("a", 0.1), candidate("b", 0.11), candidate("c", 0.12)}, "a b c"},
        {"columns 0 0 1 2: the better of the first two",
         {candidate("a", 0.10, 0.9), candidate("b", 0.12, 0.95), candidate("c", 0.40), candidate("d", 0.70)},
         "b c d"},
        {"equal scores: the leftmost",
         {candidate("a", 0.10), candidate("b", 0.12), candidate("c", 0.40), candidate("d", 0.70)},
         "a c d"},
        {"columns 0 0 2 2: a third is empty, so the first three",
         {candidate("a", 0.10), candidate("b", 0.15, 1.0), candidate("c", 0.50), candidate("d", 0.70, 1.0)},
         "a b c"},
        {"a third begins at 0.33 of the span",
         {candidate("a", 0.0), candidate("b", 0.33), candidate("c", 0.66), candidate("d", 1.0, 0.8)},
         "a b c"},
        {"all at one place: the span is at least a thousandth",
         {candidate("a", 0.5), candidate("b", 0.5, 1.0), candidate("c", 0.5), candidate("d", 0.5)},
         "a b c"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        QStringList ids;
        for (const RecognitionCandidate& picked : pickThreeHorizontally(c.candidates)) {
            ids.append(picked.id);
        }
        EXPECT_EQ(ids, words(c.expected));
    }
}

TEST(MergeHeroes, PrefersTheLowerOfEqualLines) {
    struct Case {
        const char* why;
        double firstScore, firstY, secondScore, secondY;
        bool secondWins;
    };

    const Case cases[] = {
        {"within the margin and lower", 0.90, 0.4, 0.91, 0.5, true},
        {"within the margin and higher up", 0.90, 0.5, 0.91, 0.4, false},
        {"slightly worse, but lower", 0.91, 0.4, 0.90, 0.5, true},
        {"clearly better, wherever it lies", 0.90, 0.5, 0.93, 0.4, true},
        {"clearly worse, wherever it lies", 0.93, 0.4, 0.90, 0.5, false},
        {"equal at the same height", 0.95, 0.5, 0.95, 0.5, false},
        {"the margin itself is within: better and lower", 0.0, 0.4, 0.02, 0.5, true},
        {"the margin itself is within: better and higher up", 0.0, 0.5, 0.02, 0.4, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto merged = mergeHeroes(
            {candidate("MAGE", 0.1, c.firstScore, c.firstY), candidate("MAGE", 0.2, c.secondScore, c.secondY)});
        ASSERT_EQ(merged.size(), 1U);
        EXPECT_EQ(merged[0].midX, c.secondWins ? 0.2 : 0.1);
    }
}

TEST(MergeCards, TakesTheHigherScoreOnly) {
    const auto merged = mergeCards({candidate("a", 0.1, 0.90, 0.3), candidate("b", 0.2, 0.9),
                                    candidate("a", 0.3, 0.90, 0.9), candidate("b", 0.4, 0.901)});
    ASSERT_EQ(merged.size(), 2U) << "order of first appearance";
    EXPECT_EQ(merged[0].midX, 0.1) << "an equal score stays with the first, also when the later lies lower";
    EXPECT_EQ(merged[1].midX, 0.4);
}

TEST_F(CardRecognizerTest, ReadsThreeCardsLeftToRight) {
    const auto matches = recognizer.recognizeCards(
        lines({token("寒冰箭", 0.4), token("Chillwind Yeti", 0.57), token("Fireball", 0.23)}));
    ASSERT_EQ(matches.size(), 3U);
    EXPECT_EQ(matches[0], (SlotMatch{DraftSlot::left, QStringLiteral("FIREBALL"), 1.0, QStringLiteral("card-layout"),
                                     QStringLiteral("Fireball")}));
    EXPECT_EQ(idsBySlot(matches), words("FIREBALL FROSTBOLT YETI"));
}

TEST_F(CardRecognizerTest, KeepsOnlyCardTokensThatCanBeNames) {
    struct Case {
        const char* why;
        OCRToken token;
        bool kept;
    };

    const Case cases[] = {
        {"in the band", token("Fireball", 0.2), true},
        {"top edge counts", token("Fireball", 0.2, 0.28), true},
        {"above the band", token("Fireball", 0.2, 0.2799), false},
        {"bottom edge counts", token("Fireball", 0.2, 0.78), true},
        {"below the band", token("Fireball", 0.2, 0.7801), false},
        {"left edge counts", token("Fireball", 0.08), true},
        {"left of the band", token("Fireball", 0.0799), false},
        {"right edge counts", token("Fireball", 0.72), true},
        {"in the deck list", token("Fireball", 0.7201), false},
        {"one character is too short", token("法", 0.2), false},
        {"two characters are enough", token("极限", 0.2), true},
        {"fourteen characters", token("Zbcdefghijklmn", 0.2), true},
        {"fifteen characters are too long", token("Abcdefghijklmno", 0.2), false},
        {"digits and spaces do not count as characters", token("Z bcdefghijklmn 12", 0.2), true},
        {"score just above the floor", token("Fireboll", 0.2), true}, // subsequence 7 of 8: 0.93
        {"score below the floor", token("Firebal1", 0.2), false},     // contained, 7 of 8: 0.83
        {"nothing like a name", token("Deal 6 damage", 0.2), false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(idsBySlot(recognizer.recognizeCards(lines({c.token}))) != words("- - -"), c.kept);
    }
}

TEST_F(CardRecognizerTest, LongLinesNeedToEqualANameInFull) {
    struct Case {
        const char* why;
        const char* text;
        const char* strict;    // what is in the left slot, lengths being limited
        const char* exactOnly; // or limited unless exact
    };

    const Case cases[] = {
        {"fourteen characters", "Zbcdefghijklmn", "LIMIT", "LIMIT"},
        {"fifteen characters", "Abcdefghijklmno", "-", "LONG"},
        {"whatever normalising takes away", "ABC defghi (jklmno) 15", "-", "LONG"},
        {"fifteen, with one letter read wrong: much like the name", "Abcdefghijklmnx", "-", "-"},
        {"sixteen, which hold the name", "Abcdefghijklmnox", "-", "-"},
        {"as long as names get", "Spirit of the Far Northern Kingdom", "-", "LONGEST"},
        {"a name in a sentence", "Gain Spirit of the Far Northern Kingdom", "-", "-"},
        {"a short one with one letter read wrong", "Fireboll", "FIREBALL", "FIREBALL"},
        {"one character stays too short, though it equals a name", "法", "-", "-"},
    };
    sample.write(QStringLiteral("all_classes_LAST_7_DAYS.json"),
                 QByteArray(cardFile).replace(
                     "\n]}", R"(,{"card_id": "LONGEST", "name_en": "Spirit of the Far Northern Kingdom"}]})"));
    sample.reload();
    const CardRecognizer exactOnly(sample.store, NameLengths::limitedUnlessExact);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const ReadText tokens = lines({token(c.text, 0.2)});
        EXPECT_EQ(idsBySlot(recognizer.recognizeCards(tokens)).first(), QString::fromUtf8(c.strict));
        EXPECT_EQ(idsBySlot(exactOnly.recognizeCards(tokens)).first(), QString::fromUtf8(c.exactOnly));
    }
}

TEST_F(CardRecognizerTest, LongClassesNeedToBeReadExactly) {
    struct Case {
        const char* why;
        const char* text;
        const char* strict;
        const char* exactOnly;
    };

    const Case cases[] = {
        {"within the limit", "Mage", "MAGE", "MAGE"},
        {"eleven letters", "DEMON HUNTER", "-", "DEMONHUNTER"},
        {"one of them read wrong", "DEMON HUNTEB", "-", "-"},
        {"a line that holds the name", "The Demon Hunter", "-", "-"},
    };
    const CardRecognizer exactOnly(sample.store, NameLengths::limitedUnlessExact);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const ReadText tokens = lines({token(c.text, 0.2)});
        EXPECT_EQ(idsBySlot(recognizer.recognizeHeroes(tokens)).first(), QString::fromUtf8(c.strict));
        EXPECT_EQ(idsBySlot(exactOnly.recognizeHeroes(tokens)).first(), QString::fromUtf8(c.exactOnly));
    }
}

TEST_F(CardRecognizerTest, KeepsOnlyHeroTokensInTheirBand) {
    struct Case {
        const char* why;
        OCRToken token;
        bool kept;
    };

    const Case cases[] = {
        {"top edge counts", token("Mage", 0.2, 0.3), true},
        {"above", token("Mage", 0.2, 0.2999), false},
        {"bottom edge counts", token("Mage", 0.2, 0.85), true},
        {"below", token("Mage", 0.2, 0.8501), false},
        {"left edge counts", token("Mage", 0.08), true},
        {"left of it", token("Mage", 0.0799), false},
        {"right edge counts", token("Mage", 0.92), true},
        {"right of it", token("Mage", 0.9201), false},
        {"an alias counts", token("萨满", 0.2), true},
        {"of whatever length", token("瞎", 0.2), true},
        {"a single character is no class", token("法", 0.2), false},
        {"contained, but too little alike", token("Magee", 0.2), false}, // 0.95 * 4 / 5
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(idsBySlot(recognizer.recognizeHeroes(lines({c.token}))) != words("- - -"), c.kept);
    }
}

TEST_F(CardRecognizerTest, IgnoresTheRightmostOfFourHeroes) {
    const auto matches = recognizer.recognizeHeroes(
        lines({token("Warlock", 0.9), token("Mage", 0.1), token("德鲁伊", 0.3), token("Rogue", 0.6)}));
    EXPECT_EQ(idsBySlot(matches), words("MAGE DRUID ROGUE"));
}

TEST_F(CardRecognizerTest, ThinsFourCardsToOnePerThird) {
    const auto matches = recognizer.recognizeCards(lines(
        {token("Fireboll", 0.10), token("Frostbolt", 0.12), token("Polymorph", 0.40), token("Chillwind Yeti", 0.70)}));
    EXPECT_EQ(idsBySlot(matches), words("FROSTBOLT POLYMORPH YETI"));
}

TEST_F(CardRecognizerTest, GivesEmptySlotsForAPictureWithoutNames) {
    for (const SlotMatch& match : recognizer.recognizeCards(lines({token("Fireball", 0.9)}))) {
        EXPECT_EQ(match.method, QStringLiteral("card-layout-empty"));
    }
    for (const SlotMatch& match : recognizer.recognizeHeroes(ReadText())) {
        EXPECT_EQ(match.method, QStringLiteral("class-layout-empty"));
    }
}

TEST_F(CardRecognizerTest, GoesByTheKnownPlacesUnlessPositionsAloneCount) {
    ReadText text = lines({token("Frostbolt", 0.41), token("Fireball", 0.56)});
    text.columns = {0.26, 0.41, 0.56};
    const CardRecognizer withPlaces(sample.store, NameLengths::limitedUnlessExact);
    EXPECT_EQ(idsBySlot(withPlaces.recognizeCards(text)), words("- FROSTBOLT FIREBALL"));
    EXPECT_EQ(idsBySlot(recognizer.recognizeCards(text)), words("FROSTBOLT - FIREBALL"));
    text.columns.reset();
    EXPECT_EQ(idsBySlot(withPlaces.recognizeCards(text)), words("FROSTBOLT - FIREBALL")) << "the reader does not know";

    ReadText heroes = lines({token("Mage", 0.41), token("Druid", 0.56)});
    heroes.columns = {0.26, 0.41, 0.56};
    EXPECT_EQ(idsBySlot(withPlaces.recognizeHeroes(heroes)), words("- MAGE DRUID"));
}

TEST_F(CardRecognizerTest, ReadsTheImageTwiceUnlessTheReaderScalesItself) {
    testing::FakeTextReader reader;
    reader.tokens = {token("Fireboll", 0.2), token("  ", 0.3), token(" Fireball\n", 0.2)};
    const QImage image(101, 51, QImage::Format_RGB32);

    EXPECT_EQ(CardRecognizer::ocrTokens(image, reader, {}).tokens.size(), 4U)
        << "blank lines are dropped from both passes";
    EXPECT_EQ(reader.sizes, (std::vector<QSize>{{101, 51}, {151, 76}})) << "whole pixels, cut off";

    reader.sizes.clear();
    reader.scales = true;
    const auto tokens = CardRecognizer::ocrTokens(image, reader, {}).tokens;
    EXPECT_EQ(reader.sizes, (std::vector<QSize>{{101, 51}}));
    ASSERT_EQ(tokens.size(), 2U);
    EXPECT_EQ(tokens[1].text, QStringLiteral("Fireball")) << "trimmed";

    reader.sizes.clear();
    EXPECT_EQ(CardRecognizer::ocrTokens(QImage(), reader, {}), ReadText());
    EXPECT_TRUE(reader.sizes.empty()) << "no picture, nothing to read";
}

TEST_F(CardRecognizerTest, ReadsAndMatchesInOne) {
    testing::FakeTextReader reader;
    reader.tokens = {token("Fireboll", 0.2), token("Mage", 0.5)};
    const QImage image(100, 50, QImage::Format_RGB32);
    EXPECT_EQ(idsBySlot(recognizer.recognizeCards(image, reader)), words("FIREBALL - -"));
    EXPECT_EQ(reader.lastHints.band, CardRecognizer::cardBand());
    EXPECT_EQ(idsBySlot(recognizer.recognizeHeroes(image, reader)), words("- MAGE -"));
    EXPECT_EQ(reader.lastHints.band, CardRecognizer::heroBand());
}

TEST_F(CardRecognizerTest, HintsCarryTheNamesInUseEvenAfterAReload) {
    const ReadingHints before = recognizer.cardHints();
    ASSERT_TRUE(before.names);
    EXPECT_TRUE(before.names->contains(QStringLiteral("FIREBALL (4)")));
    EXPECT_FALSE(before.names->contains(QStringLiteral("Fireba")));
    EXPECT_TRUE(recognizer.heroHints().names->contains(QStringLiteral("潜行者")));

    sample.write(QStringLiteral("all_classes_LAST_7_DAYS.json"),
                 R"({"cards": [{"card_id": "N", "name_en": "Newcomer"}]})");
    sample.reload();
    EXPECT_TRUE(before.names->contains(QStringLiteral("Fireball"))) << "a snapshot never changes";
    EXPECT_FALSE(recognizer.cardHints().names->contains(QStringLiteral("Fireball")));
    EXPECT_TRUE(recognizer.cardHints().names->contains(QStringLiteral("newcomer")));
}

TEST_F(HeroNamesTest, TellTheClassWhereNoLineDoes) {
    struct Case {
        const char* why;
        std::vector<OCRToken> tokens;
        const char* slots;
    };

    const Case cases[] = {
        {"heroes by name alone",
         {token("Ada Quillfeather", 0.2), token("Bo Sly", 0.5), token("DRUID", 0.8)},
         "MAGE ROGUE DRUID"},
        {"in any language, whatever stands between", {token("艾达 羽笔", 0.5)}, "- MAGE -"},
        {"in capitals", {token("ADA QUILLFEATHER", 0.5)}, "- MAGE -"},
        {"the class printed below counts", {token("Bo Sly", 0.2), token("Mage", 0.22, 0.53)}, "MAGE - -"},
        {"also where it was read first", {token("Mage", 0.22, 0.53), token("Bo Sly", 0.2)}, "MAGE - -"},
        {"the class printed in another column does not", {token("Bo Sly", 0.2), token("Mage", 0.8)}, "ROGUE - MAGE"},
        {"a class stands where it is printed, not where its hero is",
         {token("Ada Quillfeather", 0.2), token("Mage", 0.8)},
         "- - MAGE"},
        {"no part of a name", {token("Ada", 0.5), token("Quillfeather", 0.2)}, "- - -"},
        {"not a name that is nearly one", {token("Ada Quillfeathet", 0.5)}, "- - -"},
        {"a name that two classes have tells neither", {token("The Guest", 0.5)}, "- - -"},
        {"a hero called as a class is that class", {token("Rogue", 0.5)}, "- ROGUE -"},
        {"outside the band", {token("Bo Sly", 0.5, 0.9)}, "- - -"},
        {"nothing left of the line", {token("!?", 0.5)}, "- - -"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(idsBySlot(recognizer.recognizeHeroes(lines(c.tokens))), words(c.slots));
    }
    const auto match = recognizer.recognizeHeroes(lines({token("Bo Sly", 0.5)}))[DraftSlot::middle];
    EXPECT_EQ(match.confidence, 1.0);
    EXPECT_EQ(match.ocrText, QStringLiteral("Bo Sly"));
    EXPECT_EQ(match.method, QStringLiteral("class-layout"));
}

TEST_F(HeroNamesTest, ColumnsAreThePlacesWhereThoseAreKnown) {
    const ReadText text{
        {token("Bo Sly", 0.28), token("Mage", 0.34), token("Ada Quillfeather", 0.66)}, {}, std::array{0.31, 0.5, 0.69}};
    EXPECT_EQ(idsBySlot(recognizer.recognizeHeroes(text)), words("MAGE - -"))
        << "the line beside is the same hero's, and a class is offered once";
}

TEST_F(HeroNamesTest, LongOnesAreLeftOutWhereLengthsAreStrict) {
    const CardRecognizer strict{sample.store};
    EXPECT_EQ(idsBySlot(strict.recognizeHeroes(lines({token("Ada Quillfeather", 0.2), token("Bo Sly", 0.5)}))),
              words("- ROGUE -"));
}

TEST_F(HeroNamesTest, TheReaderKnowsThemButTakesNoOtherForOne) {
    const auto names = sample.store.classLexicon();
    EXPECT_EQ(names->settle(QStringLiteral("Ada Quilfeather")).value().text, QStringLiteral("Ada Quillfeather"));
    EXPECT_EQ(names->settle(QStringLiteral("Ada Quilfoaxhor")), std::nullopt)
        << "as for cards, of which some are missing";
    EXPECT_TRUE(names->isStrict(QStringLiteral("ada quillfeather")));
    EXPECT_FALSE(names->isStrict(QStringLiteral("Mage")));
    EXPECT_FALSE(names->isStrict(QStringLiteral("Rogue"))) << "a class first of all";
    EXPECT_FALSE(names->contains(QStringLiteral("The Guest"))) << "who could be either";
}

} // namespace
} // namespace pelloran
