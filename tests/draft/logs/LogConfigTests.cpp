#include "draft/logs/LogConfig.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>

namespace pelloran {
namespace {

const QByteArray said = "LogLevel=1\nFilePrinting=true\nConsolePrinting=false\nScreenPrinting=false\nVerbose=true\n";
const QByteArray arena = "[Arena]\n" + said;
const QByteArray loading = "[LoadingScreen]\n" + said;

QByteArray withLineEnds(QByteArray text, const QByteArray& end) {
    return text.replace('\n', end);
}

QByteArray merged(const QByteArray& text) {
    const auto result = mergeLogConfig(text);
    EXPECT_TRUE(result);
    return result ? result->text : QByteArray();
}

TEST(LogConfig, CompletesTheTwoSectionsAndNothingElse) {
    struct Case {
        const char* why;
        QByteArray given;
        QByteArray expected;
    };

    const QByteArray power = "[Power]\nLogLevel=2\nVerbose=false\n";
    const Case cases[] = {
        {"nothing there yet", "", arena + "\n" + loading},
        {"all there", arena + "\n" + loading, arena + "\n" + loading},
        {"the other way round", loading + arena, loading + arena},
        {"sections of others come first", power, power + "\n" + arena + "\n" + loading},
        {"no line end at the end", "[Power]\nLogLevel=1", "[Power]\nLogLevel=1\n\n" + arena + "\n" + loading},
        {"line ends of Windows", withLineEnds(power, "\r\n"),
         withLineEnds(power + "\n" + arena + "\n" + loading, "\r\n")},
        {"line ends of long ago", withLineEnds(power, "\r"), withLineEnds(power + "\n" + arena + "\n" + loading, "\r")},
        {"a byte-order mark stays in front", "\xEF\xBB\xBF" + arena, "\xEF\xBB\xBF" + arena + "\n" + loading},
        {"a byte-order mark alone", "\xEF\xBB\xBF", "\xEF\xBB\xBF" + arena + "\n" + loading},
        {"what is missing follows what is said, ahead of the next section's comment",
         "[Arena]\nLogLevel=1\n\n; of power\n" + power + loading, arena + "\n; of power\n" + power + loading},
        {"an empty section at the end of the file", loading + "[Arena]", loading + arena},
        {"a section cut off in its last line", loading + "[Arena]\nLogLevel=0", loading + arena},
        {"other values",
         "[Arena]\nLogLevel=3\nFilePrinting=false\nConsolePrinting=true\nScreenPrinting=true\n"
         "Verbose=0\n" +
             loading,
         arena + loading},
        {"no value",
         "[Arena]\nLogLevel=\nFilePrinting=true\nConsolePrinting=false\nScreenPrinting=false\n"
         "Verbose=true\n" +
             loading,
         arena + loading},
        {"white space and capital letters of values are fine",
         "  [Arena]  \n LogLevel = 1\nFilePrinting\t= True \nConsolePrinting=False\nScreenPrinting= false\n"
         "Verbose=TRUE\n" +
             loading,
         "  [Arena]  \n LogLevel = 1\nFilePrinting\t= True \nConsolePrinting=False\nScreenPrinting= false\n"
         "Verbose=TRUE\n" +
             loading},
        {"other spellings of sections and keys",
         "[ARENA]\nloglevel=1\nfileprinting = true\nConsolePrinting=false\nScreenPrinting=false\nVerbose=true\n"
         "[ loadingscreen ]\n" +
             said,
         arena + loading},
        {"sections that are there twice, of which the game may take either",
         "[Arena]\nFilePrinting=false\n[Power]\n[Arena]\n" + said + loading,
         "[Arena]\nFilePrinting=true\nLogLevel=1\nConsolePrinting=false\nScreenPrinting=false\nVerbose=true\n[Power]"
         "\n" +
             arena + loading},
        {"a key that is there twice", arena + "FilePrinting=false\n" + loading,
         arena + "FilePrinting=true\n" + loading},
        {"comments stay, and in lines of their own",
         "; mine\n[Arena] ; picks\n# level\nLogLevel=2 ; too much\nFilePrinting=true # yes\nConsolePrinting=false\n"
         "ScreenPrinting=false\nVerbose=true // all\n;Verbose=false\n" +
             loading,
         "; mine\n[Arena]\n; picks\n# level\n; too much\nLogLevel=1\n# yes\nFilePrinting=true\n"
         "ConsolePrinting=false\nScreenPrinting=false\n// all\nVerbose=true\n;Verbose=false\n" +
             loading},
        {"a section in a comment is none", ";[Arena]\n;LogLevel=1\n" + loading,
         ";[Arena]\n;LogLevel=1\n" + loading + "\n" + arena},
        {"keys of ours that nobody knows stay", arena + "Filter=x\nrubbish\n" + loading,
         arena + "Filter=x\nrubbish\n" + loading},
        {"the name is only a part of another", "[ArenaMode]\nFilePrinting=false\n[Arena]junk\n" + loading,
         "[ArenaMode]\nFilePrinting=false\n[Arena]junk\n" + loading + "\n" + arena},
        {"keys of others are theirs", "[Power]\nFilePrinting=false\n" + arena + loading,
         "[Power]\nFilePrinting=false\n" + arena + loading},
        {"keys ahead of all sections are nobody's", "FilePrinting=false\n" + arena + loading,
         "FilePrinting=false\n" + arena + loading},
        {"bytes of any encoding", "; caf\xE9 \xE7\x82\x89\xE7\x9F\xB3\n" + arena + "; \xFC\xFF\n" + loading + "; \x80",
         "; caf\xE9 \xE7\x82\x89\xE7\x9F\xB3\n" + arena + "; \xFC\xFF\n" + loading + "; \x80"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto result = mergeLogConfig(c.given);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->text, c.expected);
        EXPECT_EQ(result->changes.isEmpty(), c.given == c.expected);
        EXPECT_EQ(merged(c.expected), c.expected) << "merging twice";
    }
}

TEST(LogConfig, TellsEveryChange) {
    const auto result = mergeLogConfig("[arena]\nLogLevel=1\nFilePrinting = false ; off\nConsolePrinting=false\n"
                                       "ScreenPrinting=false\n");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->changes,
              (QStringList{QStringLiteral("[Arena] (was [arena])"),
                           QStringLiteral("[Arena] FilePrinting=true (was FilePrinting = false ; off)"),
                           QStringLiteral("[Arena] Verbose=true (was missing)"),
                           QStringLiteral("[LoadingScreen] (was missing)")}));
}

TEST(LogConfig, RefusesWhatCannotBeMergedByteByByte) {
    struct Case {
        const char* why;
        QByteArray given;
    };

    const Case cases[] = {
        {"16-bit characters, as Windows' editors save them", QByteArray("\xFF\xFE[\0A\0]\0", 8)},
        {"with the other byte first", QByteArray("\xFE\xFF\0[\0A\0]", 8)},
        {"without a mark", QByteArray("[\0A\0]\0", 6)},
        {"no text", QByteArray("\0", 1)},
    };
    for (const Case& c : cases) {
        EXPECT_FALSE(mergeLogConfig(c.given)) << c.why;
    }
}

// What lies outside of the two sections, by a reading of its own: line by line, at bytes alone.
QByteArray outside(const QByteArray& text) {
    const QByteArray mark = "\xEF\xBB\xBF";
    QByteArray kept = text.startsWith(mark) ? mark : QByteArray();
    bool ours = false;
    QByteArray line;
    const auto finish = [&] {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.startsWith('[') && trimmed.contains(']')) {
            const QByteArray name = trimmed.mid(1, trimmed.indexOf(']') - 1).trimmed().toLower();
            const QByteArray behind = trimmed.mid(trimmed.indexOf(']') + 1).trimmed();
            const bool plain =
                behind.isEmpty() || behind.startsWith(';') || behind.startsWith('#') || behind.startsWith("//");
            ours = plain && (name == "arena" || name == "loadingscreen");
        }
        if (!ours) {
            kept += line;
        }
        line.clear();
    };
    for (qsizetype i = kept.size(); i < text.size(); ++i) {
        line += text[i];
        const bool between = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if ((text[i] == '\n' || text[i] == '\r') && !between) {
            finish();
        }
    }
    finish();
    return kept;
}

TEST(LogConfig, KeepsEveryByteOfOthersAndChangesNothingTwice) {
    static constexpr const char* pieces[] = {
        "[Arena]",
        "[arena]",
        " [ARENA] ",
        "[LoadingScreen]",
        "[loadingscreen]",
        "[Power]",
        "[",
        "]",
        "LogLevel",
        "FilePrinting",
        "fileprinting",
        "Verbose",
        "ConsolePrinting",
        "ScreenPrinting",
        "=",
        "=",
        "=",
        "1",
        "true",
        "TRUE",
        "false",
        " ",
        "\t",
        ";",
        "#",
        "//",
        "/",
        "\n",
        "\n",
        "\n",
        "\r\n",
        "\r",
        "\xEF\xBB\xBF",
        "\xE9",
        "\xE7\x82\x89",
        "x",
    };
    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same texts in every run
    for (int round = 0; round < 20'000; ++round) {
        QByteArray text;
        for (auto left = random() % 40; left > 0; --left) {
            text += pieces[random() % std::size(pieces)];
        }
        SCOPED_TRACE(text.toPercentEncoding().toStdString());
        const QByteArray once = merged(text);
        ASSERT_EQ(merged(once), once);
        const QByteArray before = outside(text);
        const QByteArray after = outside(once);
        ASSERT_TRUE(after.startsWith(before));
        // Only where a section is added at the end may a line end have to come between.
        ASSERT_TRUE(after.mid(before.size()).trimmed().isEmpty());
        for (const char* section : {"[Arena]", "[LoadingScreen]"}) {
            ASSERT_TRUE(once.contains(section));
        }
    }
}

} // namespace
} // namespace pelloran
