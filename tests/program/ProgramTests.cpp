#include "tests/program/ProgramTest.h"
#include "tests/support/Printing.h"
#include "tests/support/SharedData.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

#include <iterator>

// The commands that answer a question and end, and what holds for all.
namespace pelloran {
namespace {

using testing::ProgramOutput;

TEST_F(ProgramTest, AnswersQuestionsAboutItselfOnStandardOutput) {
    for (const char* question : {"--help", "--version"}) {
        const ProgramOutput answer = run({QString::fromLatin1(question)});
        EXPECT_EQ(answer.exitCode, 0);
        EXPECT_TRUE(answer.standardOutput.contains("pelloran"));
        EXPECT_EQ(answer.standardError, "");
    }
}

TEST_F(ProgramTest, ExplainsUsageOnStandardError) {
    const ProgramOutput answer = run({QStringLiteral("--nonsense")});
    EXPECT_EQ(answer.exitCode, 2);
    EXPECT_EQ(answer.standardOutput, "");
    EXPECT_TRUE(answer.standardError.contains("Usage: pelloran"));
}

TEST_F(ProgramTest, PrintsTheDraftState) {
    write("logs/Hearthstone_1/Arena.log", "D 1 SetDraftMode - DRAFTING\r\nD 1 Client chooses: 吉安娜 (HERO_08)\r\n");
    const auto lines = run({QStringLiteral("draft-state"), QStringLiteral("--logs-dir"), path("logs")}).lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0][QStringLiteral("phase")].toString(), QStringLiteral("cardPick"));
    EXPECT_EQ(lines[0][QStringLiteral("lastChoiceName")].toString(), QStringLiteral("吉安娜"));
    EXPECT_EQ(lines[0][QStringLiteral("sessionDir")].toString(), path("logs/Hearthstone_1"));

    const auto none = run({QStringLiteral("draft-state"), QStringLiteral("--logs-dir"), path("nowhere")}).lines();
    ASSERT_EQ(none.size(), 1U);
    EXPECT_EQ(none[0][QStringLiteral("scene")].toString(), QStringLiteral("NO_SESSION"));
}

TEST_F(ProgramTest, FindsTheGamesLogFolderInAWinePrefix) {
    EXPECT_EQ(run({QStringLiteral("logs-dir")}).exitCode, 1);
    write(".wine/drive_c/Program Files (x86)/Hearthstone/Logs/Hearthstone_1/Arena.log",
          "D 1 SetDraftMode - DRAFTING\n");
    const ProgramOutput found = run({QStringLiteral("logs-dir")});
    EXPECT_EQ(found.exitCode, 0);
    EXPECT_EQ(found.standardOutput, (path(".wine/drive_c/Program Files (x86)/Hearthstone/Logs") + u'\n').toUtf8());
    EXPECT_TRUE(run({QStringLiteral("draft-state")}).lines().at(0)[QStringLiteral("inDraft")].toBool());
}

TEST_F(ProgramTest, MatchesTextsAgainstTheDataInUse) {
    write("data/Pelloran/config/all_classes_LAST_7_DAYS.json",
          R"({"cards": [{"card_id": "OWN", "name_en": "Own Card"}]})");
    write("data/Pelloran/config/class_winrates.json", R"({"classes": [{"player_class": "MAGE", "name_zh": "法师"}]})");
    const auto cards = run({QStringLiteral("match"), QStringLiteral("own card 3"), QStringLiteral("Fireball")}).lines();
    ASSERT_EQ(cards.size(), 2U);
    EXPECT_EQ(cards[0][QStringLiteral("match")].toObject(),
              (QJsonObject{{QStringLiteral("cardId"), QStringLiteral("OWN")},
                           {QStringLiteral("score"), 1.0},
                           {QStringLiteral("text"), QStringLiteral("own card 3")}}));
    EXPECT_EQ(cards[1][QStringLiteral("text")].toString(), QStringLiteral("Fireball"));
    EXPECT_TRUE(cards[1][QStringLiteral("match")].isNull());

    const auto classes = run({QStringLiteral("match"), QStringLiteral("--classes"), QStringLiteral("法师")}).lines();
    ASSERT_EQ(classes.size(), 1U);
    EXPECT_EQ(classes[0][QStringLiteral("match")][QStringLiteral("key")].toString(), QStringLiteral("MAGE"));
}

TEST_F(ProgramTest, SaysWhatIsWrongWithTheData) {
    struct Case {
        const char* why;
        const char* bytes;
        const char* mentions;
    };

    const Case cases[] = {
        {"no JSON", "cards", "illegal"},
        {"no rows", R"({"cards": []})", "all_classes_LAST_7_DAYS.json"},
        {"wrong types", R"({"cards": [{"card_id": 7}]})", "card_id"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        write("data/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json", c.bytes);
        for (const QStringList& arguments : {QStringList{QStringLiteral("match"), QStringLiteral("Fireball")},
                                             QStringList{QStringLiteral("--no-panel")}, QStringList{}}) {
            const ProgramOutput answer = run(arguments);
            EXPECT_EQ(answer.exitCode, 1);
            EXPECT_TRUE(answer.standardError.startsWith("[Pelloran] ")) << answer.standardError.toStdString();
            EXPECT_TRUE(answer.standardError.contains(c.mentions)) << answer.standardError.toStdString();
            EXPECT_TRUE(answer.standardError.contains("/winrates/all_classes_LAST_7_DAYS.json")) << "names the file";
        }
    }
}

TEST_F(ProgramTest, GoesOnAfterAnImageThatIsNone) {
    QImage(1, 1, QImage::Format_RGB32).save(path("dot.png"));
    QImage(16'000, 20, QImage::Format_RGB32).save(path("wide.png"));
    const QStringList images{write("text.png", "no image"), path("missing.png"), path("dot.png"), path("wide.png"),
                             write("cut.png", QByteArray::fromHex("89504e470d0a1a0a0000000d49484452"))};
    const ProgramOutput answer =
        run(QStringList{QStringLiteral("recognize"), QStringLiteral("--phase"), QStringLiteral("cardPick")} + images);
    EXPECT_EQ(answer.exitCode, 1);
    const auto lines = answer.lines();
    ASSERT_EQ(lines.size(), 5U);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i][QStringLiteral("image")].toString(), images[static_cast<qsizetype>(i)]);
        const bool readable = i == 2 || i == 3;
        EXPECT_EQ(lines[i].contains(QStringLiteral("error")), !readable);
        EXPECT_EQ(lines[i][QStringLiteral("slots")].toArray().size(), readable ? 3 : 0);
    }
    EXPECT_EQ(lines[2][QStringLiteral("slots")][0][QStringLiteral("method")].toString(),
              QStringLiteral("card-layout-empty"));
}

TEST_F(ProgramTest, EvaluatesPicturesBesideTheirTruth) {
    const QImage blank(640, 360, QImage::Format_RGB32);
    write("a/pick.json",
          R"({"phase": "cardPick", "language": "en", "names": ["Fireball", "No Such Card At All", ""]})");
    blank.save(path("a/pick.png"));
    write("a/none.json", R"({"phase": "none", "lang": "zh", "file": "elsewhere.jpeg"})");
    blank.save(path("a/elsewhere.jpeg"));
    write("b/broken.json", R"({"phase": "cardPick"})");
    write("b/cut.json", R"({"phase": "none", "language": "en"})");
    write("b/cut.jpg", "no picture");
    write("b/alone.json", R"({"phase": "none", "language": "en"})");

    const ProgramOutput good = run({QStringLiteral("evaluate"), path("a")});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.standardError, "");
    const QList<QByteArray> printed = good.standardOutput.trimmed().split('\n');
    ASSERT_EQ(printed.size(), 6) << good.standardOutput.toStdString();
    EXPECT_EQ(printed[0], "unread: " + path("a/pick.png").toUtf8() + " left: Fireball");
    EXPECT_TRUE(printed[1].startsWith("data: ") && printed[1].endsWith("/winrates/all_classes_LAST_7_DAYS.json"));
    EXPECT_TRUE(printed[2].startsWith("language "));
    EXPECT_TRUE(printed[5].startsWith("all "));

    write("c/shop.json", R"({"phase": "none", "language": "en", "texts": [
        {"box": [10, 20, 90, 40], "text": "Fireball", "ink": "light"}, {"box": [0, 0, 9, 9], "text": "No Such Card"}]})");
    blank.save(path("c/shop.png"));
    const auto without = run({QStringLiteral("evaluate"), QStringLiteral("--json"), path("c")}).lines();
    ASSERT_EQ(without.size(), 2U);
    EXPECT_EQ(without[0][QStringLiteral("texts")].toArray().size(), 0) << "not asked for";
    const auto withTexts =
        run({QStringLiteral("evaluate"), QStringLiteral("--json"), QStringLiteral("--texts"), path("c")}).lines();
    ASSERT_EQ(withTexts.size(), 2U);
    EXPECT_EQ(withTexts[0][QStringLiteral("texts")][0][QStringLiteral("verdict")].toString(), QStringLiteral("unread"));
    EXPECT_EQ(withTexts[0][QStringLiteral("texts")][1][QStringLiteral("verdict")].toString(),
              QStringLiteral("missing"));
    EXPECT_EQ(withTexts[1][QStringLiteral("texts")][QStringLiteral("boxes")].toInt(), 2);

    const ProgramOutput bad = run({QStringLiteral("evaluate"), QStringLiteral("--json"), path("b"), path("missing"),
                                   path("a"), QStringLiteral("--ticks")});
    EXPECT_EQ(bad.exitCode, 1);
    const QList<QByteArray> problems = bad.standardError.trimmed().split('\n');
    ASSERT_EQ(problems.size(), 4) << bad.standardError.toStdString();
    for (const auto& [line, mentioned] :
         {std::pair(0, "b/alone.json"), {1, "b/broken.json"}, {2, "b/cut.jpg"}, {3, "missing"}}) {
        EXPECT_TRUE(problems[line].contains(mentioned)) << problems[line].toStdString();
    }
    const auto lines = bad.lines();
    ASSERT_EQ(lines.size(), 3U) << "the others count all the same";
    EXPECT_EQ(lines[0][QStringLiteral("picture")].toString(), path("a/elsewhere.jpeg"));
    EXPECT_EQ(lines[1][QStringLiteral("repeatedCpuMilliseconds")].toArray().size(), 2);
    EXPECT_EQ(lines[2][QStringLiteral("totals")][QStringLiteral("unread")].toInt(), 1);
    EXPECT_EQ(lines[2][QStringLiteral("totals")][QStringLiteral("notInData")].toInt(), 1);
}

TEST_F(ProgramTest, ReadsNamesBeyondTheLimitsOfLengthUnlessAskedNotTo) {
    SKIP_WITHOUT_SHARED_DATA("screens/hero_en_1920x1080_1.png");
    const QString image = testing::sharedData(QStringLiteral("screens/hero_en_1920x1080_1.png"));
    const QStringList recognize{QStringLiteral("recognize"), QStringLiteral("--phase=heroPick"), image};
    const auto rightSlot = [this](const QStringList& arguments) {
        const auto lines = run(arguments).lines();
        return lines.empty() ? QJsonValue() : lines[0][QStringLiteral("slots")][2][QStringLiteral("cardId")];
    };
    EXPECT_EQ(rightSlot(recognize), QJsonValue(QStringLiteral("DEATHKNIGHT")));
    EXPECT_EQ(rightSlot(recognize + QStringList{QStringLiteral("--strict-lengths")}), QJsonValue(QJsonValue::Null));

    const ProgramOutput match =
        run({QStringLiteral("match"), QStringLiteral("--classes"), QStringLiteral("Death Knight")});
    ASSERT_EQ(match.lines().size(), 1U);
    EXPECT_TRUE(match.lines()[0][QStringLiteral("match")].isNull()) << "the rules alone";
}

TEST_F(ProgramTest, NamesThePackageThatReadingLacks) {
    environment.insert(QStringLiteral("TESSDATA_PREFIX"), home.path());
    const ProgramOutput answer =
        run({QStringLiteral("recognize"), QStringLiteral("--phase=heroPick"), QStringLiteral("x.png")});
    EXPECT_EQ(answer.exitCode, 1);
    EXPECT_TRUE(answer.standardError.contains("tesseract-ocr-")) << answer.standardError.toStdString();
    for (const QByteArray& line : answer.standardError.trimmed().split('\n')) {
        EXPECT_TRUE(line.startsWith("[Pelloran] ")) << line.toStdString();
    }
}

TEST_F(ProgramTest, FailsWhereItsAnswerCannotBeWritten) {
    if (!QFileInfo::exists(QStringLiteral("/dev/full"))) {
        GTEST_SKIP() << "needs /dev/full";
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(QStringLiteral("/dev/full"));
    process.start(program, {QStringLiteral("match"), QStringLiteral("Fireball")});
    ASSERT_TRUE(process.waitForFinished(20'000));
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(process.readAllStandardError().contains("could not be written"));
}

TEST_F(ProgramTest, NamesAClassFileThatItPassesOver) {
    const QString file = write("data/Pelloran/config/class_winrates.json", "none");
    const ProgramOutput answer = run({QStringLiteral("match"), QStringLiteral("Fireball")});
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_TRUE(answer.standardError.contains(file.toUtf8())) << answer.standardError.toStdString();
}

TEST_F(ProgramTest, ReadsTheStoredDraftsAsTheyWere) {
    SKIP_WITHOUT_SHARED_DATA("logs");
    const QDir cases(testing::sharedData(QStringLiteral("logs")));
    const QStringList names = cases.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_FALSE(names.isEmpty());
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        QFile file(cases.filePath(name + QStringLiteral("/expected.json")));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QJsonObject expected = QJsonDocument::fromJson(file.readAll()).object()[QStringLiteral("expected")].toObject();
        if (const QString session = expected[QStringLiteral("sessionDir")].toString(); !session.isEmpty()) {
            expected[QStringLiteral("sessionDir")] = QString(cases.filePath(name) + u'/' + session);
        }
        const auto lines =
            run({QStringLiteral("draft-state"), QStringLiteral("--logs-dir"), cases.filePath(name)}).lines();
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0], expected);
    }
}

} // namespace
} // namespace pelloran
