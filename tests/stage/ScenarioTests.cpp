#include "tools/stage/Scenario.h"

#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

namespace pelloran::stage {

namespace {

const QByteArray heroPick = R"({"kind": "heroPick", "offers": ["MAGE", "ROGUE", "DRUID"]})";
const QByteArray chooseMage = R"({"kind": "chooseHero", "choice": "MAGE"})";
const QByteArray cardPick = R"({"kind": "cardPick", "offers": ["CS2_029", "CS2_024", "CS2_023"]})";
const QByteArray chooseFireball = R"({"kind": "choose", "choice": "CS2_029"})";
const QByteArray end = R"({"kind": "end"})";

QByteArray scenarioOf(const QByteArrayList& steps) {
    return R"({"steps": [)" + steps.join(", ") + "]}";
}

} // namespace

TEST(Scenario, ReadsADraftFromTheMenuToTheDeck) {
    const auto scenario = Scenario::parse(
        R"({"name": "short", "about": "one pick", "language": "zh", "steps": [{"kind": "idle", "seconds": 0.5}, )" +
        QByteArrayList{heroPick, chooseMage, cardPick, chooseFireball, end}.join(", ") + "]}");
    ASSERT_TRUE(scenario.has_value()) << scenario.error().toStdString();
    EXPECT_EQ(scenario->name, QStringLiteral("short"));
    EXPECT_EQ(scenario->language, Language::chinese);
    ASSERT_EQ(scenario->steps.size(), 6U);
    EXPECT_EQ(scenario->steps[0].duration, std::chrono::milliseconds(500));
    EXPECT_EQ(scenario->steps[1].heroes[2].key, QStringLiteral("DRUID"));
    EXPECT_EQ(scenario->steps[2].chosen, 0);
    EXPECT_EQ(scenario->steps[3].cards[1].name.english, QStringLiteral("Frostbolt"));
    EXPECT_EQ(scenario->steps[4].cards, scenario->steps[3].cards) << "the offers stay on screen while one is taken";
    EXPECT_EQ(scenario->steps[4].chosen, 0);
}

TEST(Scenario, SaysWhatIsWrong) {
    struct Row {
        const char* why;
        QByteArray json;
        const char* mentioned;
    };

    const Row rows[] = {
        {"not JSON", "{\"steps\": [", "not JSON"},
        {"empty", "", "not JSON"},
        {"an array", "[]", "JSON object"},
        {"no steps", "{}", "at least one step"},
        {"steps of the wrong type", R"({"steps": "idle"})", "at least one step"},
        {"no step in it", R"({"steps": []})", "at least one step"},
        {"a language nobody speaks", R"({"language": "de", "steps": [{"kind": "idle"}]})", "\"en\" or \"zh\""},
        {"a look it never had", R"({"look": "newest", "steps": [{"kind": "idle"}]})", "\"old\" or \"new\""},
        {"a look that is no text", R"({"look": 2024, "steps": [{"kind": "idle"}]})", "\"old\" or \"new\""},
        {"a misspelt key", R"({"step": [], "steps": [{"kind": "idle"}]})", "\"step\" has no meaning"},
        {"a misspelt key in a step", scenarioOf({R"({"kind": "idle", "second": 3})"}), "step 0: \"second\""},
        {"a step that is none", scenarioOf({"3"}), "step 0: must be an object"},
        {"an unknown kind", scenarioOf({R"({"kind": "wait"})"}), "\"wait\" is no kind"},
        {"no time at all", scenarioOf({R"({"kind": "idle", "seconds": 0})"}), "above 0"},
        {"time as a text", scenarioOf({R"({"kind": "idle", "seconds": "3"})"}), "above 0"},
        {"more than an hour", scenarioOf({R"({"kind": "idle", "seconds": 3601})"}), "3600"},
        {"two heroes", scenarioOf({R"({"kind": "heroPick", "offers": ["MAGE", "ROGUE"]})"}), "three classes"},
        {"a class twice", scenarioOf({R"({"kind": "heroPick", "offers": ["MAGE", "MAGE", "ROGUE"]})"}), "twice"},
        {"a class in lower case", scenarioOf({R"({"kind": "heroPick", "offers": ["mage", "ROGUE", "DRUID"]})"}),
         "no class \"mage\""},
        {"a hero not on offer", scenarioOf({heroPick, R"({"kind": "chooseHero", "choice": "PRIEST"})"}), "step 1"},
        {"a hero out of nothing", scenarioOf({chooseMage}), "right after heroPick"},
        {"cards before a hero", scenarioOf({heroPick, cardPick}), "after chooseHero"},
        {"cards after a look only", scenarioOf({heroPick, R"({"kind": "lookAtHero", "choice": "MAGE"})", cardPick}),
         "after chooseHero"},
        {"two cards", scenarioOf({heroPick, chooseMage, R"({"kind": "cardPick", "offers": ["CS2_029", "CS2_024"]})"}),
         "three cards"},
        {"an unknown card",
         scenarioOf({heroPick, chooseMage, R"({"kind": "cardPick", "offers": ["CS2_029", "CS2_024", "NO_1"]})"}),
         "no card \"NO_1\""},
        {"a card of one's own without a name",
         scenarioOf(
             {heroPick, chooseMage, R"({"kind": "cardPick", "offers": ["CS2_029", "CS2_024", {"card_id": "X"}]})"}),
         "\"name_en\""},
        {"a pick without an offer", scenarioOf({heroPick, chooseMage, chooseFireball}), "right after cardPick"},
        {"a card not on offer",
         scenarioOf({heroPick, chooseMage, cardPick, R"({"kind": "choose", "choice": "CS2_022"})"}),
         "one of the three offers"},
        {"no picks to skip", scenarioOf({heroPick, chooseMage, R"({"kind": "skipAhead"})"}), "1 to 60"},
        {"the end before a hero", scenarioOf({heroPick, end}), "without a hero"},
        {"cards after the end", scenarioOf({heroPick, chooseMage, end, cardPick}), "before end"},
        {"a redraft of nothing", scenarioOf({heroPick, chooseMage, R"({"kind": "redraft"})"}), "complete deck"},
        {"a draft in a draft", scenarioOf({heroPick, chooseMage, heroPick}), "under way"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const auto scenario = Scenario::parse(row.json);
        ASSERT_FALSE(scenario.has_value());
        EXPECT_TRUE(scenario.error().contains(QString::fromUtf8(row.mentioned))) << scenario.error().toStdString();
    }
}

TEST(Scenario, ChoosesTheLook) {
    EXPECT_EQ(Scenario::parse(scenarioOf({R"({"kind": "idle"})"}))->look, Look::felt)
        << "today's, when nothing is said";
    EXPECT_EQ(Scenario::parse(R"({"look": "old", "steps": [{"kind": "idle"}]})")->look, Look::parchment);
    EXPECT_EQ(Scenario::parse(R"({"look": "new", "steps": [{"kind": "idle"}]})")->look, Look::felt);
}

TEST(Scenario, TakesCardsThatAreNotInTheSampleData) {
    const auto scenario = Scenario::parse(
        scenarioOf({heroPick, chooseMage,
                    R"({"kind": "cardPick", "offers": ["CS2_029", {"card_id": "X_1", "name_en": "Own Card", "cost": 7},
             {"card_id": "X_2", "name_zh": "自己的牌", "type": "MINION", "attack": 2, "health": 3,
              "golden": true}]})",
                    R"({"kind": "choose", "choice": "X_2"})"}));
    ASSERT_TRUE(scenario.has_value()) << scenario.error().toStdString();
    const std::vector<Card>& offers = scenario->steps[2].cards;
    EXPECT_EQ(offers[1].cost, 7);
    EXPECT_EQ(offers[1].name.in(Language::chinese), QStringLiteral("Own Card"))
        << "the only name serves both languages";
    EXPECT_EQ(offers[2].health, 3);
    EXPECT_TRUE(offers[2].golden);
    EXPECT_FALSE(offers[1].golden);
    EXPECT_EQ(scenario->steps[3].chosen, 2);
}

TEST(Scenario, LoadsByNameAndByPath) {
    ASSERT_TRUE(Scenario::shippedNames().contains(QStringLiteral("demo")));
    EXPECT_GE(Scenario::shippedNames().size(), 2);

    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("mine.json"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(scenarioOf({R"({"kind": "idle"})"}));
    file.close();
    const auto own = Scenario::load(path);
    ASSERT_TRUE(own.has_value()) << own.error().toStdString();
    EXPECT_EQ(own->name, QStringLiteral("mine")) << "a scenario without a name is called after its file";

    const auto missing = Scenario::load(folder.filePath(QStringLiteral("no.json")));
    ASSERT_FALSE(missing.has_value());
    EXPECT_TRUE(missing.error().contains(QStringLiteral("demo-zh"))) << "the error lists what there is";
}

// Names of two to fourteen letters are all that can be told apart on the screen; a demo offers no others.
TEST(Scenario, ShippedOnesOfferReadableNamesAndWholeDecks) {
    for (const QString& name : Scenario::shippedNames()) {
        SCOPED_TRACE(name.toStdString());
        const auto scenario = Scenario::load(name);
        ASSERT_TRUE(scenario.has_value()) << scenario.error().toStdString();
        EXPECT_EQ(scenario->name, name);
        EXPECT_FALSE(scenario->about.isEmpty());
        const auto letters = [&](const Name& text) {
            return std::ranges::count_if(text.in(scenario->language), [](QChar c) { return c.isLetter(); });
        };
        for (const Step& step : scenario->steps) {
            for (const HeroClass& hero : step.heroes) {
                EXPECT_LT(letters(hero.name), 11) << hero.key.toStdString();
            }
            for (const Card& card : step.cards) {
                if (step.kind == StepKind::cardPick) {
                    EXPECT_GE(letters(card.name), 2) << card.id.toStdString();
                    EXPECT_LE(letters(card.name), 14) << card.id.toStdString();
                }
            }
        }
        const Situation last = situationAt(*scenario, scenario->steps.size() - 1);
        EXPECT_TRUE(last.deckComplete);
        EXPECT_EQ(last.deck.size(), static_cast<std::size_t>(deckSize));
    }
}

TEST(Situation, GathersWhatHasHappened) {
    const auto scenario = Scenario::parse(
        scenarioOf({heroPick, chooseMage, cardPick, chooseFireball, R"({"kind": "idle"})",
                    R"({"kind": "skipAhead", "picks": ["CS2_022", "CS2_022"]})", end, R"({"kind": "redraft"})",
                    R"({"kind": "cardPick", "offers": ["CS2_032", "CS2_024", "CS2_023"]})", end, heroPick}));
    ASSERT_TRUE(scenario.has_value()) << scenario.error().toStdString();
    EXPECT_FALSE(situationAt(*scenario, 0).hero.has_value());
    EXPECT_EQ(situationAt(*scenario, 1).hero->key, QStringLiteral("MAGE"));
    EXPECT_TRUE(situationAt(*scenario, 2).deck.empty());
    EXPECT_EQ(situationAt(*scenario, 4).deck.size(), 1U) << "a break in the main menu loses nothing";
    EXPECT_EQ(situationAt(*scenario, 5).deck.size(), 3U);
    EXPECT_TRUE(situationAt(*scenario, 6).deckComplete);
    EXPECT_FALSE(situationAt(*scenario, 7).deckComplete);
    EXPECT_TRUE(situationAt(*scenario, 8).redrafting);
    EXPECT_TRUE(situationAt(*scenario, 10).deck.empty()) << "a new draft begins with nothing";
    EXPECT_FALSE(situationAt(*scenario, 10).hero.has_value());
}

TEST(Situation, ARedraftReplacesTheOldestCards) {
    QByteArrayList thirty;
    for (int i = 0; i < deckSize; ++i) {
        thirty.append(i == 0 ? "\"CS2_022\"" : "\"CS2_023\"");
    }
    const auto scenario = Scenario::parse(
        scenarioOf({heroPick, chooseMage, R"({"kind": "skipAhead", "picks": [)" + thirty.join(",") + "]}", end,
                    R"({"kind": "redraft"})", cardPick, chooseFireball, end}));
    ASSERT_TRUE(scenario.has_value()) << scenario.error().toStdString();
    EXPECT_EQ(situationAt(*scenario, 6).deck.size(), 31U);
    const Situation last = situationAt(*scenario, 7);
    ASSERT_EQ(last.deck.size(), 30U);
    EXPECT_EQ(last.deck.front().id, QStringLiteral("CS2_023"));
    EXPECT_EQ(last.deck.back().id, QStringLiteral("CS2_029"));
}

} // namespace pelloran::stage
