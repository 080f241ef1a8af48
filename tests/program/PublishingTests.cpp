#include "tests/program/ProgramTest.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

// The operator's commands.
namespace pelloran {
namespace {

using testing::ProgramOutput;
using testing::ScriptedServer;

TEST_F(ProgramTest, PublishesAFolderOfData) {
    write("source/winrates/all_classes_LAST_7_DAYS.json", R"({"cards": [{"card_id": "A", "name_en": "a"}]})");
    const ProgramOutput answer = run({QStringLiteral("publish"), path("source"), path("www")});
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(answer.standardError,
              "[Pelloran] there is no class file: clients go on with the figures that came with them\n");
    const auto lines = answer.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0][QStringLiteral("folder")].toString(), path("www/pelloran/latest"));
    EXPECT_EQ(lines[0][QStringLiteral("hash")].toString().size(), 64);
    EXPECT_EQ(lines[0][QStringLiteral("fileCount")].toInt(), 1);
    EXPECT_TRUE(lines[0][QStringLiteral("changed")].toBool());
    EXPECT_TRUE(QFile::exists(path("www/pelloran/latest/manifest.json")));
    EXPECT_TRUE(QFile::exists(path("www/pelloran/latest/") + lines[0][QStringLiteral("bundle")].toString()));
}

TEST_F(ProgramTest, PublishesNothingThatItsOwnReaderRefuses) {
    QByteArray cards;
    for (int i = 0; i < 30; ++i) {
        cards += "A,x\n";
    }
    const QString table = write("cards.csv", "card_id,cost\n" + cards);
    write("source/winrates/all_classes_LAST_7_DAYS.json", "{");
    const ProgramOutput answer =
        run({QStringLiteral("publish"), path("source"), path("www"), QStringLiteral("--cards"), table});
    EXPECT_EQ(answer.exitCode, 1);
    EXPECT_EQ(answer.standardOutput, "");
    EXPECT_EQ(answer.standardError.count('\n'), 21) << "of a mistake in every line the first twenty are enough";
    EXPECT_TRUE(answer.standardError.contains("cards.csv: line 2, column cost: \"x\" is not a whole number\n"));
    EXPECT_TRUE(answer.standardError.endsWith("[Pelloran] and 10 more\n"));
    EXPECT_FALSE(QFile::exists(path("www")));
}

TEST_F(ProgramTest, PublishesATableThatHasOnlyFiguresWithTheNamesOfLists) {
    QDir(path("source")).mkpath(QStringLiteral("."));
    const QString table = write("cards.csv", "dbf_id,deck_win_rate\n11,51.5\n12,52.5\n");
    const QString names = write("enUS.json", R"([{"id": "OWN_1", "dbfId": 11, "name": "Tin Heron", "cost": 2}])");
    const QStringList words{QStringLiteral("publish"), path("source"), path("www"), QStringLiteral("--cards"), table,
                            QStringLiteral("--names"), names};
    const ProgramOutput answer = run(words);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_TRUE(
        answer.standardError.contains("cards.csv: in none of the lists of cards: line 3 (dbf_id 12, left out)\n"))
        << answer.standardError.toStdString();
    EXPECT_TRUE(QFile::exists(path("www/pelloran/latest/manifest.json")));
    write("enUS.json", R"([{"id": "OWN_1", "dbfId": "11"}])");
    const ProgramOutput broken = run(words);
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_EQ(broken.standardError, QByteArray("[Pelloran] ") + names.toUtf8() + ": [0].dbfId is not a whole number\n");
}

TEST_F(ProgramTest, DescribesAReleaseThatItThenOffers) {
    const QString image = write("Pelloran-999.1.dmg", "image");
    const QString notes = write("notes.txt", "New: everything.\n");
    ScriptedServer server;
    const QStringList words{QStringLiteral("release-info"),
                            QStringLiteral("--version"),
                            QStringLiteral("999.1"),
                            QStringLiteral("--dmg"),
                            image,
                            QStringLiteral("--notes-en"),
                            notes,
                            QStringLiteral("--update-server"),
                            server.base()};
    const ProgramOutput description = run(words);
    EXPECT_EQ(description.exitCode, 0);
    EXPECT_EQ(description.standardError, "");
    server.on("/download/latest.json", ok(description.standardOutput));
    const ProgramOutput answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 0);
    const QJsonObject offer = answer.lines().at(0);
    EXPECT_EQ(offer[QStringLiteral("result")].toString(), QStringLiteral("available"));
    const QJsonObject release = offer[QStringLiteral("release")].toObject();
    EXPECT_EQ(release[QStringLiteral("download")].toString(),
              server.base() + QStringLiteral("/download/Pelloran-999.1.dmg"));
    EXPECT_EQ(release[QStringLiteral("notesEn")].toString(), QStringLiteral("New: everything."));
}

TEST_F(ProgramTest, DescribesNoReleaseThatItWouldNotOffer) {
    const ProgramOutput answer = run({QStringLiteral("release-info"), QStringLiteral("--version"), QStringLiteral("v2"),
                                      QStringLiteral("--dmg"), path("none.dmg")});
    EXPECT_EQ(answer.exitCode, 1);
    EXPECT_EQ(answer.standardOutput, "");
    EXPECT_EQ(answer.standardError.count('\n'), 2) << answer.standardError.toStdString();
    EXPECT_TRUE(answer.standardError.contains("[Pelloran] \"v2\" is no version"));
    EXPECT_TRUE(answer.standardError.contains("none.dmg: no such file"));
}

} // namespace
} // namespace pelloran
