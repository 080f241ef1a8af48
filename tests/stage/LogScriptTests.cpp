#include "tools/stage/LogScript.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran::stage {

namespace {

Scenario parsed(const QByteArray& steps) {
    auto scenario = Scenario::parse(R"({"steps": [)" + steps + "]}");
    if (!scenario) {
        ADD_FAILURE() << scenario.error().toStdString();
        return {};
    }
    return *scenario;
}

QStringList linesOf(LogFile file, const std::vector<LogLine>& lines) {
    QStringList texts;
    for (const LogLine& line : lines) {
        if (line.file == file) {
            texts.append(line.text);
        }
    }
    return texts;
}

// Plays all steps and returns what each writes to one of the files.
std::vector<QStringList> played(const Scenario& scenario, LogFile file, Language language = Language::english) {
    LogScript script(language, 9513370021);
    std::vector<QStringList> written{linesOf(file, script.start())};
    for (const Step& step : scenario.steps) {
        written.push_back(linesOf(file, script.begin(step)));
    }
    return written;
}

constexpr const char* thenHeroPick = R"({"kind": "heroPick", "offers": ["MAGE", "ROGUE", "DRUID"]},)";
constexpr const char* thenMage = R"({"kind": "chooseHero", "choice": "MAGE"},)";
constexpr const char* thenCardPick = R"({"kind": "cardPick", "offers": ["CS2_029", "CS2_024", "CS2_023"]},)";
constexpr const char* thenFireball = R"({"kind": "choose", "choice": "CS2_029"},)";

} // namespace

TEST(LogScript, StartsWithTheWayToTheMainMenu) {
    const QStringList lines = played({}, LogFile::loadingScreen).front();
    const QStringList expected{
        QStringLiteral("LoadingScreen.OnScenePreUnload() - prevMode=STARTUP nextMode=LOGIN m_phase=INVALID"),
        QStringLiteral("LoadingScreen.OnSceneUnloaded() - prevMode=STARTUP nextMode=LOGIN m_phase=INVALID"),
        QStringLiteral("LoadingScreen.OnSceneLoaded() - prevMode=STARTUP currMode=LOGIN"),
        QStringLiteral("LoadingScreen.OnSceneLoaded() - m_assetLoadStartTimestamp=7800725337780"),
        QStringLiteral("LoadingScreen.OnSceneLoaded() - END - INVALID != Phase.WAITING_FOR_SCENE_LOAD"),
        QStringLiteral("LoadingScreen.OnScenePreUnload() - prevMode=LOGIN nextMode=HUB m_phase=INVALID"),
        QStringLiteral("LoadingScreen.OnSceneUnloaded() - prevMode=LOGIN nextMode=HUB m_phase=INVALID"),
        QStringLiteral("LoadingScreen.OnSceneLoaded() - prevMode=LOGIN currMode=HUB"),
        QStringLiteral("LoadingScreen.OnSceneLoaded() - END - INVALID != Phase.WAITING_FOR_SCENE_LOAD"),
    };
    EXPECT_EQ(lines, expected);
    EXPECT_TRUE(played({}, LogFile::arena).front().isEmpty());
}

TEST(LogScript, TellsADraftAsTheGameDoes) {
    const QByteArray steps = QByteArray(R"({"kind": "idle"},)") + thenHeroPick +
                             R"({"kind": "lookAtHero", "choice": "ROGUE"},)" + thenMage + thenCardPick + thenFireball +
                             R"({"kind": "skipAhead", "picks": ["CS2_024", "CS2_024"]}, {"kind": "end"})";
    const std::vector<QStringList> written = played(parsed(steps), LogFile::arena, Language::chinese);

    struct Row {
        const char* why;
        QStringList expected;
    };

    const Row rows[] = {
        {"start", {}},
        {"the menu", {}},
        {"a new draft",
         {QStringLiteral("SetDraftMode - NO_ACTIVE_DRAFT"),
          QStringLiteral("DraftManager.OnBegin - Got new draft deck with ID: 9513370021"),
          QStringLiteral("SetDraftMode - DRAFTING")}},
        {"a click on a hero", {QStringLiteral("Client chooses: 瓦莉拉·萨古纳尔 (HERO_03)")}},
        {"a hero confirmed",
         {QStringLiteral("Client chooses: 吉安娜·普罗德摩尔 (HERO_08)"),
          QStringLiteral("DraftManager.OnChosen(): hero=HERO_08")}},
        {"offers are not logged", {}},
        {"a pick", {QStringLiteral("Client chooses: 火球术 (CS2_029)")}},
        {"many picks",
         {QStringLiteral("Client chooses: 寒冰箭 (CS2_024)"), QStringLiteral("Client chooses: 寒冰箭 (CS2_024)")}},
        {"the deck is complete", {QStringLiteral("SetDraftMode - ACTIVE_DRAFT_DECK")}},
    };
    ASSERT_EQ(written.size(), std::size(rows));
    for (std::size_t i = 0; i < written.size(); ++i) {
        SCOPED_TRACE(rows[i].why);
        EXPECT_EQ(written[i], rows[i].expected);
    }
}

TEST(LogScript, EntersTheDraftScreenOnlyWhenItIsNotThere) {
    const QByteArray steps = QByteArray(thenHeroPick) + thenMage + thenCardPick + thenFireball +
                             R"({"kind": "idle"},)" + R"({"kind": "idle"},)" + thenCardPick +
                             R"({"kind": "choose", "choice": "CS2_024"})";
    const std::vector<QStringList> scenes = played(parsed(steps), LogFile::loadingScreen);
    const QStringList sizes = [&] {
        QStringList counts;
        for (const QStringList& lines : scenes) {
            counts.append(QString::number(lines.size()));
        }
        return counts;
    }();
    EXPECT_EQ(sizes.join(u' '), QStringLiteral("9 4 0 0 0 4 0 4 0"));
    EXPECT_EQ(scenes[5][2], QStringLiteral("LoadingScreen.OnSceneLoaded() - prevMode=DRAFT currMode=HUB"));
    EXPECT_EQ(scenes[7][2], QStringLiteral("LoadingScreen.OnSceneLoaded() - prevMode=HUB currMode=DRAFT"));
}

TEST(LogScript, TellsTheDeckAgainWhenTheScreenIsEnteredAgain) {
    const QByteArray steps = QByteArray(thenHeroPick) + thenMage + thenCardPick + thenFireball +
                             R"({"kind": "idle"},)" + thenCardPick +
                             R"({"kind": "choose", "choice": "CS2_024"}, {"kind": "end"}, {"kind": "redraft"})";
    const std::vector<QStringList> written = played(parsed(steps), LogFile::arena);
    const QStringList again{
        QStringLiteral("DraftManager.OnChoicesAndContents - Draft Deck ID: 9513370021, Hero Card = HERO_08"),
        QStringLiteral("DraftManager.OnChoicesAndContents - Draft deck contains card CS2_029"),
        QStringLiteral("SetDraftMode - DRAFTING"),
    };
    EXPECT_EQ(written[6], again);
    const QStringList redraft{
        QStringLiteral("DraftManager.OnChoicesAndContents - Draft Deck ID: 9513370021, Hero Card = HERO_08"),
        QStringLiteral("DraftManager.OnChoicesAndContents - Draft deck contains card CS2_029"),
        QStringLiteral("DraftManager.OnChoicesAndContents - Draft deck contains card CS2_024"),
        QStringLiteral("SetDraftMode - REDRAFTING"),
    };
    EXPECT_EQ(written[9], redraft);
    const QStringList scenes = played(parsed(steps), LogFile::loadingScreen)[9];
    EXPECT_TRUE(scenes[2].endsWith(QStringLiteral("prevMode=DRAFT currMode=GAMEPLAY")));
    EXPECT_TRUE(scenes[6].endsWith(QStringLiteral("prevMode=GAMEPLAY currMode=DRAFT")));
}

TEST(LogScript, NumbersEveryDraftAnewAndForgetsTheOldDeck) {
    const QByteArray steps = QByteArray(thenHeroPick) + thenMage + thenCardPick + thenFireball + R"({"kind": "end"},)" +
                             thenHeroPick + thenMage + R"({"kind": "idle"},)" + thenCardPick +
                             R"({"kind": "choose", "choice": "CS2_023"})";
    const std::vector<QStringList> written = played(parsed(steps), LogFile::arena);
    EXPECT_TRUE(written[6][0].endsWith(QStringLiteral("ID: 9513370022"))) << written[6].join(u'\n').toStdString();
    const QStringList again{
        QStringLiteral("DraftManager.OnChoicesAndContents - Draft Deck ID: 9513370022, Hero Card = HERO_08"),
        QStringLiteral("SetDraftMode - DRAFTING"),
    };
    EXPECT_EQ(written[9], again);
}

} // namespace pelloran::stage
