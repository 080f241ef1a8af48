#include "recording/Redaction.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran::recording {
namespace {

TEST(Redaction, TakesOutWhoPlaysAndWhereTheyLive) {
    const Owner owner{{QStringLiteral("/home/mira"), QStringLiteral("/srv/Zoë K")},
                      {QStringLiteral("mira"), QStringLiteral("zoë.k"), QStringLiteral("ar"), QStringLiteral("O'Neil"),
                       QStringLiteral("小米拉")}};

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
        {"an account that a quotation mark does not end", "C:\\users\\O'Neil\\x, 'o'neil' and /home/O'Neil",
         "C:\\users\\<user>\\x, '<user>' and /home/<user>"},
        {"an account within another's folder", "/home/mira.old/x and C:\\users\\mira lane\\x",
         "/home/<user>/x and C:\\users\\<user>\\x"},
        {"an account among words that nothing parts", "玩家mira选择了 mira的套牌", "玩家<user>选择了 <user>的套牌"},
        {"an account of ideographs", "玩家小米拉选择了", "玩家<user>选择了"},
        {"an account in an address", "file=%2Fsrv%2Fmira%2Fx", "file=%2Fsrv%2F<user>%2Fx"},
        {"an account with a number is a battle tag", "Mira#12345", "<player>"},
        {"a battle tag whose accents stand apart", "Rene\u0301#12345", "<player>"},
        {"no part of a word", "admiral miracle", "admiral miracle"},
        {"an account in other letters", "Mira and ZOË.K", "<user> and <user>"},
        {"two letters are in every text", "ar", "ar"},
        {"another home folder, beyond ASCII and with a space", "read /srv/Zoë K/x", "read ~/x"},
        {"a home folder at the end", "read /srv/Zoë K", "read ~"},
        {"a home folder as Wine shows it", "Z:\\srv\\Zoë K\\x", "Z:~\\x"},
        {"another's as Wine shows it", "Z:\\home\\jo\\x", "Z:\\home\\<user>\\x"},
        {"no beginning of another folder's name", "/srv/Zoë Kraft/x and /home/mirabel/x",
         "/srv/Zoë Kraft/x and /home/<user>/x"},
        {"nothing", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(redacted(QString::fromUtf8(c.text), owner), QString::fromUtf8(c.kept));
    }
}

TEST(Redaction, IsOfWhoeverIsAskedAbout) {
    const QStringList homes{QStringLiteral("/home/mira")};
    const QStringList accounts{QStringLiteral("mira")};
    const QString text = QStringLiteral("/home/mira/x of mira and jo");

    struct Case {
        const char* why;
        Owner owner;
        const char* kept;
    };

    // What is kept of one must not be taken for the next.
    const Case cases[] = {
        {"both", {homes, accounts}, "~/x of <user> and jo"},
        {"their home alone", {homes, {}}, "~/x of mira and jo"},
        {"both again", {homes, accounts}, "~/x of <user> and jo"},
        {"another account", {homes, {QStringLiteral("jo"), QStringLiteral("and")}}, "~/x of mira <user> jo"},
        {"another home", {{QStringLiteral("/home/jo")}, accounts}, "/home/<user>/x of <user> and jo"},
        {"nobody", {}, "/home/<user>/x of mira and jo"},
        {"the first again", {homes, accounts}, "~/x of <user> and jo"},
        {"an account that is called as a folder was", {{}, homes}, "<user>/x of mira and jo"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(redacted(text, c.owner), QString::fromUtf8(c.kept));
    }
}

TEST(Redaction, KnowsWhoRunsIt) {
    const QByteArray home = qgetenv("HOME");
    const QByteArray user = qgetenv("USER");
    qputenv("HOME", "/srv/Zoë K");
    qputenv("USER", "zoek");
    const Owner owner = Owner::current();
    home.isNull() ? qunsetenv("HOME") : qputenv("HOME", home);
    user.isNull() ? qunsetenv("USER") : qputenv("USER", user);
    EXPECT_TRUE(owner.homes.contains(QStringLiteral("/srv/Zoë K")));
    EXPECT_TRUE(owner.accounts.contains(QStringLiteral("Zoë K")));
    EXPECT_TRUE(owner.accounts.contains(QStringLiteral("zoek")));
    EXPECT_FALSE(owner.homes.contains(QStringLiteral("/"))) << "it would be taken out of every path";
    EXPECT_FALSE(owner.accounts.contains(QString()));
}

TEST(Redaction, KeepsLinesOfTheDraftAlone) {
    for (const char* line :
         {"currMode=DRAFT", "SetDraftMode - DRAFTING", "DraftManager.OnBegin", "Got new draft deck with ID: 7",
          "OnChosen(): hero=X", "Hero Card = HERO_08", "Client chooses: X (Y)", "Draft deck contains card X"}) {
        EXPECT_TRUE(concernsDraft(line)) << line;
    }
    for (const char* line : {"", "Friend Mira#1234 is online", "Gameplay.Start", "currmode"}) {
        EXPECT_FALSE(concernsDraft(line)) << line;
    }
}

} // namespace
} // namespace pelloran::recording
