// A reader of whole windows, as the Mac has one, knows nothing of names and places: it gives every line there is,
// twice, and the rules have to find the offers among them.
#include "platform/macos/RecognisedText.h"
#include "recognition/CardRecognizer.h"
#include "tests/fakes/FakeTextReader.h"
#include "tests/support/SampleStore.h"

#include <gtest/gtest.h>

#include <string>

namespace pelloran {

namespace {

using macos::RecognisedLine;

const QByteArray cardFile = R"({"player_class": "ALL", "time_range": "TEST", "cards": [
    {"card_id": "FIREBALL", "name_zh": "火球术", "name_en": "Fireball"},
    {"card_id": "FROSTBOLT", "name_zh": "寒冰箭", "name_en": "Frostbolt"},
    {"card_id": "POLYMORPH", "name_zh": "变形术", "name_en": "Polymorph"}
]})";

const QByteArray classFile = R"({"classes": [
    {"player_class": "MAGE", "name_zh": "法师", "name_en": "Mage"},
    {"player_class": "DRUID", "name_zh": "德鲁伊", "name_en": "Druid"},
    {"player_class": "ROGUE", "name_zh": "潜行者", "name_en": "Rogue"}
]})";

// Centred at fractions of the window, `up` from its bottom.
RecognisedLine line(const char* text, double across, double up) {
    return {.text = QString::fromUtf8(text),
            .confidence = 0.5F,
            .x = across - 0.05,
            .y = up - 0.015,
            .width = 0.1,
            .height = 0.03};
}

TEST(WholeWindow, OffersAreFoundAmongAllLines) {
    struct Case {
        const char* why;
        bool heroes;
        std::vector<RecognisedLine> lines;
        std::string expected;
    };

    const Case cases[] = {
        {"three names, in no order",
         false,
         {line("Polymorph", 0.6, 0.5), line("Fireball", 0.2, 0.5), line("Frostbolt", 0.4, 0.5)},
         "FIREBALL FROSTBOLT POLYMORPH"},
        {"Chinese names",
         false,
         {line("火球术", 0.2, 0.5), line("寒冰箭", 0.4, 0.5), line(" 变形术\n", 0.6, 0.5)},
         "FIREBALL FROSTBOLT POLYMORPH"},
        {"the deck list beside them",
         false,
         {line("Fireball", 0.2, 0.5), line("Frostbolt", 0.4, 0.5), line("Polymorph", 0.85, 0.5)},
         "FIREBALL FROSTBOLT -"},
        {"the heading above and what is below, so up and down are not mistaken for each other",
         false,
         {line("Fireball", 0.2, 0.9), line("Frostbolt", 0.4, 0.6), line("Polymorph", 0.6, 0.1)},
         "- FROSTBOLT -"},
        {"rules text that names a card",
         false,
         {line("Fireball", 0.2, 0.5), line("Add a Fireball to your hand", 0.4, 0.4), line("Polymorph", 0.6, 0.5)},
         "FIREBALL - POLYMORPH"},
        {"the class stands below the hero's name, which may hold another",
         true,
         {line("Mage", 0.2, 0.5), line("Druid", 0.5, 0.5), line("Rogue", 0.8, 0.5), line("Rogue", 0.5, 0.6)},
         "MAGE DRUID ROGUE"},
        {"nothing", false, {}, "- - -"},
    };
    const testing::SampleStore sample(cardFile, classFile);
    const QImage window(1280, 748, QImage::Format_RGB32);
    for (const auto& c : cases) {
        for (const NameLengths lengths : {NameLengths::limited, NameLengths::limitedUnlessExact}) {
            SCOPED_TRACE(c.why);
            testing::FakeTextReader reader;
            reader.tokens = macos::tokensOf(c.lines);
            const CardRecognizer recognizer(sample.store, lengths);
            const auto matches =
                c.heroes ? recognizer.recognizeHeroes(window, reader) : recognizer.recognizeCards(window, reader);
            EXPECT_EQ(reader.sizes, (std::vector<QSize>{{1280, 748}, {1920, 1122}})) << "a second, enlarged look";
            QStringList ids;
            for (const SlotMatch& match : matches) {
                ids.append(match.cardId.value_or(QStringLiteral("-")));
            }
            EXPECT_EQ(ids.join(u' ').toStdString(), c.expected);
        }
    }
}

} // namespace

} // namespace pelloran
