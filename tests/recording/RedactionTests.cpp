#include "recording/Redaction.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran::recording {
namespace {

TEST(Redaction, TakesOutWhoPlaysAndWhereTheyLive) {
    const Owner owner{QStringLiteral("/home/mira"), QStringLiteral("mira")};

    struct Case {
        const char* why;
        const char* text;
        const char* kept;
    };

    const Case cases[] = {
        {"nothing to take out", "D 1 SetDraftMode - DRAFTING", "D 1 SetDraftMode - DRAFTING"},
        {"a battle tag", "Client chooses: Player#21345 (CS2_029)", "Client chooses: <player> (CS2_029)"},
        {"a battle tag in other letters", "玩家一#51234 chose", "<player> chose"},
        {"a number after a hash is none without a name", "pick #12345", "pick #12345"},
        {"a list of cards numbers them", "card#7 of 30", "card#7 of 30"},
        {"the home folder", "read /home/mira/games/x", "read ~/games/x"},
        {"another's home folder", "read /home/jo/x and /Users/jo/y", "read /home/<user>/x and /Users/<user>/y"},
        {"a folder of Windows", "C:\\Users\\Jo Ann\\x", "C:\\Users\\<user>\\x"},
        {"a folder within a Wine prefix", "drive_c/users/jo/AppData", "drive_c/users/<user>/AppData"},
        {"the account by its name", "hello mira, go", "hello <user>, go"},
        {"no part of a word", "admiral miracle", "admiral miracle"},
        {"nothing", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(redacted(QString::fromUtf8(c.text), owner), QString::fromUtf8(c.kept));
    }
}

TEST(Redaction, LeavesTheLogsTheirWords) {
    // Whoever is called so would otherwise not be followed when their recording is gone through.
    for (const char* account : {"draft", "Draft", "Hero", "ar", ""}) {
        SCOPED_TRACE(account);
        const QString line = QStringLiteral("Draft Deck ID: 7, Hero Card = HERO_08 ar");
        EXPECT_EQ(redacted(line, {QString(), QString::fromLatin1(account)}), line);
    }
}

TEST(Redaction, KeepsLinesOfTheDraftAlone) {
    for (const char* line :
         {"currMode=DRAFT", "SetDraftMode - DRAFTING", "DraftManager.OnBegin", "Got new draft deck: Draft",
          "OnChosen(): hero=X", "Hero Card = HERO_08", "Client chooses: X (Y)", "Draft deck contains card X"}) {
        EXPECT_TRUE(concernsDraft(line)) << line;
    }
    for (const char* line : {"", "Friend Mira#1234 is online", "Gameplay.Start", "currmode"}) {
        EXPECT_FALSE(concernsDraft(line)) << line;
    }
}

} // namespace
} // namespace pelloran::recording
