#include "app/CommandLine.h"

#include "tests/support/Printing.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <set>

namespace pelloran {
namespace {

std::expected<Command, UsageError> parse(const char* words) {
    return parseCommandLine(QString::fromUtf8(words).split(u' ', Qt::SkipEmptyParts));
}

template <typename T>
T parsed(const char* words) {
    const auto command = parse(words);
    EXPECT_TRUE(command) << words << ": " << command.error().message.toStdString();
    EXPECT_TRUE(std::holds_alternative<T>(*command)) << words;
    return std::get<T>(*command);
}

TEST(CommandLine, ShowsThePanelByDefault) {
    const auto plain = parsed<RunLoop>("");
    EXPECT_EQ(plain.logsDir, std::nullopt);
    EXPECT_EQ(plain.windowOwner, std::nullopt);
    EXPECT_EQ(plain.language, std::nullopt);

    const auto full =
        parsed<RunLoop>("--no-panel --snapshots --logs-dir /games/Logs --window-owner=炉石传说 --language zh");
    EXPECT_EQ(full.logsDir, QStringLiteral("/games/Logs"));
    EXPECT_EQ(full.windowOwner, QStringLiteral("炉石传说"));
    EXPECT_EQ(full.language, AppLanguage::zh);
}

TEST(CommandLine, ChoosesWhatARunShows) {
    struct Case {
        const char* why;
        const char* words;
        bool panel;
        bool snapshots;
        bool reduceMotion;
    };

    const Case cases[] = {
        {"a plain start", "", true, false, false},
        {"lines beside the panel", "--snapshots", true, true, false},
        {"without a panel lines are all there is", "--no-panel", false, true, false},
        {"asking for both is no contradiction", "--no-panel --snapshots", false, true, false},
        {"a still panel", "--reduce-motion", true, false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto run = parsed<RunLoop>(c.words);
        EXPECT_EQ(run.panel, c.panel);
        EXPECT_EQ(run.snapshots, c.snapshots);
        EXPECT_EQ(run.reduceMotion, c.reduceMotion);
    }
}

TEST(CommandLine, TakesOtherServersThanTheBuiltInOnes) {
    EXPECT_EQ(parsed<RunLoop>("").configServer, std::nullopt);
    EXPECT_EQ(parsed<RunLoop>("").updateServer, std::nullopt);
    const auto run = parsed<RunLoop>("--config-server http://a --update-server=http://b");
    EXPECT_EQ(run.configServer, QStringLiteral("http://a"));
    EXPECT_EQ(run.updateServer, QStringLiteral("http://b"));
    EXPECT_EQ(parsed<SyncOnce>("sync --config-server http://a").configServer, QStringLiteral("http://a"));
    EXPECT_EQ(parsed<CheckUpdateOnce>("check-update").updateServer, std::nullopt);
    EXPECT_FALSE(parse("sync --update-server http://b")) << "not its server";
    EXPECT_FALSE(parse("check-update now"));
}

TEST(CommandLine, TakesTheCommandsThatShowOnePart) {
    EXPECT_EQ(parsed<PrintDraftState>("draft-state --logs-dir Logs").logsDir, QStringLiteral("Logs"));
    EXPECT_EQ(parsed<PrintDraftState>("draft-state").logsDir, std::nullopt);
    parsed<PrintLogsDir>("logs-dir");

    const auto heroes = parsed<RecognizeImages>("recognize --phase heroPick a.png b.png");
    EXPECT_EQ(heroes.phase, DraftPhase::heroPick);
    EXPECT_EQ(heroes.images, (QStringList{QStringLiteral("a.png"), QStringLiteral("b.png")}));
    EXPECT_FALSE(heroes.ticks);
    EXPECT_TRUE(parsed<RecognizeImages>("recognize a.png --ticks --phase=cardPick").ticks) << "options in any place";

    EXPECT_EQ(parsed<MatchTexts>("match Fireball").texts, QStringList{QStringLiteral("Fireball")});
    EXPECT_TRUE(parsed<MatchTexts>("match --classes Mage").classes);
    EXPECT_EQ(parsed<MatchTexts>("match -- --phase").texts, QStringList{QStringLiteral("--phase")})
        << "after -- everything is text";
}

TEST(CommandLine, TakesTheFoldersOfAnEvaluation) {
    const auto plain = parsed<EvaluateFolders>("evaluate screens more");
    EXPECT_EQ(plain.folders, (QStringList{QStringLiteral("screens"), QStringLiteral("more")}));
    EXPECT_FALSE(plain.ticks);
    EXPECT_FALSE(plain.json);
    EXPECT_FALSE(plain.texts);
    const auto full = parsed<EvaluateFolders>("evaluate --json screens --texts --ticks");
    EXPECT_TRUE(full.ticks);
    EXPECT_TRUE(full.texts);
    EXPECT_TRUE(full.json);
}

TEST(CommandLine, LimitsLengthsStrictlyWhenAsked) {
    EXPECT_FALSE(parsed<RunLoop>("").strictLengths);
    EXPECT_TRUE(parsed<RunLoop>("--no-panel --strict-lengths").strictLengths);
    EXPECT_FALSE(parsed<RecognizeImages>("recognize --phase cardPick a.png").strictLengths);
    EXPECT_TRUE(parsed<RecognizeImages>("recognize --strict-lengths --phase cardPick a.png").strictLengths);
    EXPECT_FALSE(parsed<EvaluateFolders>("evaluate screens").strictLengths);
    EXPECT_TRUE(parsed<EvaluateFolders>("evaluate screens --strict-lengths").strictLengths);
    EXPECT_EQ(parsed<MatchTexts>("match --strict-lengths Fireball").texts, QStringList{QStringLiteral("Fireball")})
        << "what it does anyway";
    EXPECT_FALSE(parse("draft-state --strict-lengths")) << "reads no names";
}

TEST(CommandLine, TakesWhatAnExaminationIsOf) {
    const auto plain = parsed<ExamineMachine>("doctor");
    EXPECT_FALSE(plain.fix);
    EXPECT_FALSE(plain.json);
    EXPECT_FALSE(plain.offline);
    EXPECT_FALSE(plain.strictLengths);
    EXPECT_EQ(plain.logsDir, std::nullopt);
    const auto full = parsed<ExamineMachine>("doctor --fix --json --offline --strict-lengths --logs-dir L "
                                             "--window-owner W --config-server http://a --update-server http://b");
    EXPECT_TRUE(full.fix);
    EXPECT_TRUE(full.json);
    EXPECT_TRUE(full.offline);
    EXPECT_TRUE(full.strictLengths);
    EXPECT_EQ(full.logsDir, QStringLiteral("L"));
    EXPECT_EQ(full.windowOwner, QStringLiteral("W"));
    EXPECT_EQ(full.configServer, QStringLiteral("http://a"));
    EXPECT_EQ(full.updateServer, QStringLiteral("http://b"));
    EXPECT_FALSE(parsed<ExamineDesktop>("doctor --desktop").json);
    EXPECT_TRUE(parsed<ExamineDesktop>("doctor --json --desktop").json);
    EXPECT_FALSE(parse("doctor --desktop --fix")) << "log.config is none of the desktop's";
    EXPECT_FALSE(parse("doctor me"));
}

TEST(CommandLine, ForgetsThePanelWhenTold) {
    EXPECT_FALSE(parsed<RunLoop>("").resetPanel);
    EXPECT_TRUE(parsed<RunLoop>("--reset-panel").resetPanel);
    EXPECT_FALSE(parse("sync --reset-panel")) << "has no panel";
    EXPECT_FALSE(parse("--no-panel --reset-panel")) << "nor has this, and it would forget nothing";
}

TEST(CommandLine, TakesTheFoldersOfAPublication) {
    const auto plain = parsed<PublishData>("publish data www");
    EXPECT_EQ(plain.source, QStringLiteral("data"));
    EXPECT_EQ(plain.target, QStringLiteral("www"));
    EXPECT_EQ(plain.cardTable, std::nullopt);
    EXPECT_EQ(parsed<PublishData>("publish data --cards cards.csv www").cardTable, QStringLiteral("cards.csv"));
    EXPECT_EQ(plain.cardLists, QStringList());
}

TEST(CommandLine, TakesListsOfCardsOneByOneOrAllAtOnce) {
    const QStringList two{QStringLiteral("enUS.json"), QStringLiteral("zhCN=b.json")};
    for (const char* line :
         {"publish data www --names enUS.json --names zhCN=b.json", "publish data www --names enUS.json zhCN=b.json",
          "publish --names=enUS.json data www zhCN=b.json", "publish --names enUS.json --names zhCN=b.json data www"}) {
        SCOPED_TRACE(line);
        const auto publication = parsed<PublishData>(line);
        EXPECT_EQ(publication.source, QStringLiteral("data"));
        EXPECT_EQ(publication.target, QStringLiteral("www"));
        EXPECT_EQ(publication.cardLists, two);
    }
}

TEST(CommandLine, TakesWhatIsSaidOfARelease) {
    const auto least = parsed<DescribeRelease>("release-info --version 1.4.2");
    EXPECT_EQ(least.parts.version, QStringLiteral("1.4.2"));
    EXPECT_EQ(least.parts.build, std::nullopt);
    EXPECT_EQ(least.parts.arch, std::nullopt);
    EXPECT_EQ(least.parts.dmgFile, std::nullopt);
    EXPECT_FALSE(least.parts.force);
    EXPECT_EQ(least.updateServer, std::nullopt);

    const auto full = parsed<DescribeRelease>(
        "release-info --version 2 --build 17 --name Pelloran --min-macos 13.4 --arch arm64 --arch x86_64 --dmg a.dmg "
        "--zip a.zip --base-url https://o.example --notes n --notes-zh z --notes-en e --published-at today --force "
        "--update-server https://u.example");
    EXPECT_EQ(full.parts.build, 17);
    EXPECT_EQ(full.parts.name, QStringLiteral("Pelloran"));
    EXPECT_EQ(full.parts.minMacos, QStringLiteral("13.4"));
    EXPECT_EQ(full.parts.arch, (QStringList{QStringLiteral("arm64"), QStringLiteral("x86_64")}));
    EXPECT_EQ(full.parts.dmgFile, QStringLiteral("a.dmg"));
    EXPECT_EQ(full.parts.zipFile, QStringLiteral("a.zip"));
    EXPECT_EQ(full.parts.baseURL, QStringLiteral("https://o.example"));
    EXPECT_EQ(full.parts.notesFile, QStringLiteral("n"));
    EXPECT_EQ(full.parts.notesZhFile, QStringLiteral("z"));
    EXPECT_EQ(full.parts.notesEnFile, QStringLiteral("e"));
    EXPECT_EQ(full.parts.publishedAt, QStringLiteral("today"));
    EXPECT_TRUE(full.parts.force);
    EXPECT_EQ(full.updateServer, QStringLiteral("https://u.example"));
}

TEST(CommandLine, ExplainsItself) {
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^pelloran [0-9.]+\n(commit [0-9a-f]{12}( and changes)?\n)?$"))
                    .match(parsed<PrintText>("--version").text)
                    .hasMatch());
    for (const char* words : {"--help", "-h", "recognize --help", "--snapshots --help"}) {
        EXPECT_TRUE(parsed<PrintText>(words).text.contains(QStringLiteral("Usage: pelloran"))) << words;
    }
    EXPECT_TRUE(parsed<PrintText>("recognize --help").text.contains(QStringLiteral("--phase")));
}

TEST(CommandLine, ExplainsOptionsOneBelowTheOther) {
    static const QRegularExpression entry(QStringLiteral("^  (-.*?  +)\\S"), QRegularExpression::MultilineOption);
    for (const char* words : {"--help", "publish --help", "release-info --help"}) {
        const QString text = parsed<PrintText>(words).text;
        std::set<qsizetype> columns;
        for (const auto& match : entry.globalMatch(text)) {
            columns.insert(match.capturedLength(1));
        }
        EXPECT_EQ(columns.size(), 1U) << text.toStdString();
    }
}

TEST(CommandLine, RefusesWhatDoesNotFit) {
    struct Case {
        const char* why;
        const char* words;
        const char* mentions;
    };

    const Case cases[] = {
        {"unknown option", "--fast", "fast"},
        {"unknown command", "recognise a.png", "recognise"},
        {"option without its value", "--logs-dir", "logs-dir"},
        {"value for a switch", "--snapshots=yes", "snapshots"},
        {"unknown language", "--language fr", "--language"},
        {"languages are written in lower case", "--language ZH", "--language"},
        {"argument for a command without any", "draft-state extra", "extra"},
        {"option of another command", "draft-state --phase heroPick", "phase"},
        {"no phase", "recognize a.png", "--phase"},
        {"a phase without offers", "recognize --phase idle a.png", "--phase"},
        {"no image", "recognize --phase heroPick", "image"},
        {"nothing to evaluate", "evaluate --ticks", "folder"},
        {"truth files tell their phase", "evaluate --phase cardPick screens", "phase"},
        {"no text", "match --classes", "text"},
        {"nowhere to publish", "publish data", "publish needs"},
        {"two places to publish", "publish data www more", "publish needs"},
        {"a list of cards and nowhere to publish", "publish data --names a.json", "publish needs"},
        {"of two lists before the folders the second would be one", "publish --names a.json b.json data www",
         "b.json stands where a folder should"},
        {"nor between the folders", "publish data --names a.json b.json www", "b.json stands where a folder should"},
        {"a list is nowhere to publish", "publish data --names a.json b.json", "b.json stands where a folder should"},
        {"a list with its language", "publish --names a.json zhCN=b data www", "zhCN=b stands where a folder should"},
        {"a release of no version", "release-info --dmg a.dmg", "--version"},
        {"a build that is no number", "release-info --version 1 --build 1a", "--build"},
        {"a build too large", "release-info --version 1 --build 9223372036854775808", "--build"},
        {"a file without its option", "release-info --version 1 a.dmg", "a.dmg"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto command = parse(c.words);
        ASSERT_FALSE(command);
        EXPECT_TRUE(command.error().message.contains(QString::fromUtf8(c.mentions)))
            << command.error().message.toStdString();
        EXPECT_TRUE(command.error().message.contains(QStringLiteral("Usage: pelloran")));
    }
}

} // namespace
} // namespace pelloran
