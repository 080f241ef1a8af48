#include "tests/support/Printing.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/SharedData.h"
#include "tests/support/TarWriter.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QTest>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <iterator>
#include <map>

// The program as its users start it, without a display, or with one that nobody sees.
namespace pelloran {
namespace {

using testing::ProgramOutput;
using testing::ScriptedServer;

const QString program = testing::programToTest("PELLORAN_TEST_PROGRAM", PELLORAN_PROGRAM);

class ProgramTest : public ::testing::Test {
protected:
    ProgramOutput run(const QStringList& arguments) const {
        return testing::runProgram(program, arguments, environment);
    }

    QString path(const char* name) const { return home.path() + u'/' + QString::fromUtf8(name); }

    QString write(const char* name, const QByteArray& bytes) const {
        const QString target = path(name);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(target).path()));
        QFile file(target);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return target;
    }

    static ScriptedServer::Script ok(const QByteArray& body) { return ScriptedServer::answer("200 OK", {}, body); }

    ProgramOutput sync(const ScriptedServer& server) const {
        return run({QStringLiteral("sync"), QStringLiteral("--config-server"), server.base()});
    }

    ProgramOutput checkUpdate(const ScriptedServer& server) const {
        return run({QStringLiteral("check-update"), QStringLiteral("--update-server"), server.base()});
    }

    // What the program calls itself.
    QString version() const {
        return QString::fromUtf8(run({QStringLiteral("--version")}).standardOutput)
            .section(u'\n', 0, 0)
            .section(u' ', 1);
    }

    QTemporaryDir home;
    QProcessEnvironment environment = testing::cleanEnvironment(home.path());
};

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

// What `doctor --json` said of each check, by its name.
std::map<QString, QJsonObject> byCheck(const ProgramOutput& output) {
    std::map<QString, QJsonObject> checks;
    for (const QJsonObject& line : output.lines()) {
        const QString check = line[QStringLiteral("check")].toString();
        EXPECT_FALSE(checks.contains(check)) << check.toStdString() << " twice";
        checks[check] = line;
    }
    return checks;
}

QString stateOf(const std::map<QString, QJsonObject>& checks, const char* check) {
    const auto found = checks.find(QString::fromUtf8(check));
    return found == checks.end() ? QStringLiteral("missing") : found->second[QStringLiteral("state")].toString();
}

TEST_F(ProgramTest, ExaminesAMachineWithoutADisplayAndChangesNothing) {
    const QString logs = QStringLiteral(".wine/drive_c/Program Files (x86)/Hearthstone/Logs/Hearthstone_1/");
    write((logs + QStringLiteral("Arena.log")).toUtf8().constData(), "");
    write((logs + QStringLiteral("LoadingScreen.log")).toUtf8().constData(), "");
    ASSERT_TRUE(QDir().mkpath(path(".wine/drive_c/users/ann")));
    ScriptedServer server;
    server.on("/pelloran/latest/manifest.json", ok(R"({"hash": "feedbeefcafe"})"));
    server.on("/download/latest.json", ok(R"({"version": "999.1"})"));
    const auto contents = [this] {
        QStringList all;
        QDirIterator entries(home.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            all.append(entries.next());
        }
        all.sort();
        return all;
    };
    const QStringList before = contents();
    const QStringList question{QStringLiteral("doctor"),          QStringLiteral("--json"),
                               QStringLiteral("--config-server"), server.base(),
                               QStringLiteral("--update-server"), server.base()};
    const ProgramOutput answer = run(question);
    EXPECT_EQ(answer.exitCode, 1);
    const auto checks = byCheck(answer);

    struct Case {
        const char* check;
        const char* state;
        const char* says;
    };

    const Case cases[] = {
        {"log folder", "ok", "session Hearthstone_1"},
        {"log.config", "problem", "is not there"},
        {"game's window", "problem", "No window of another program can be seen"},
        {"text reader", "ok", "read as \"Fireball\""},
        {"data files", "note", "invented samples"},
        {"names", "ok", "can be matched"},
        {"display", "problem", "$DISPLAY"},
        {"fonts", "note", "without a display"},
        {"compositor", "note", "without a display"},
        {"status area", "note", "without a display"},
        {"single instance", "ok", "does not run"},
        {"configuration server", "ok", "feedbeef"},
        {"update server", "note", "999.1"},
        {"folders", "ok", "data/Pelloran/config"},
    };
    EXPECT_EQ(checks.size(), std::size(cases));
    for (const Case& c : cases) {
        EXPECT_EQ(stateOf(checks, c.check), QString::fromUtf8(c.state)) << c.check;
        const auto found = checks.find(QString::fromUtf8(c.check));
        ASSERT_NE(found, checks.end()) << c.check;
        const QString what = found->second[QStringLiteral("what")].toString();
        EXPECT_TRUE(what.contains(QString::fromUtf8(c.says))) << c.check << ": " << what.toStdString();
    }
    EXPECT_EQ(server.requests().size(), 2U) << "one for each server";
    EXPECT_EQ(contents(), before);
}

TEST_F(ProgramTest, ExaminesAChineseMachineInEnglishToo) {
    environment.insert(QStringLiteral("LANG"), QStringLiteral("zh_CN.UTF-8"));
    write("data/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json", "{}");
    const ScriptedServer server; // knows no page
    const auto checks = byCheck(
        run({QStringLiteral("doctor"), QStringLiteral("--json"), QStringLiteral("--config-server"), server.base()}));
    for (const auto& [check, says] :
         {std::pair("configuration server", "HTTP 404"), std::pair("data files", "no card")}) {
        const auto found = checks.find(QString::fromUtf8(check));
        ASSERT_NE(found, checks.end()) << check;
        const QString what = found->second[QStringLiteral("what")].toString();
        EXPECT_TRUE(what.contains(QString::fromUtf8(says))) << what.toStdString();
        EXPECT_TRUE(std::ranges::none_of(what, [](QChar each) { return each.script() == QChar::Script_Han; }))
            << what.toStdString();
    }
}

TEST_F(ProgramTest, CompletesTheGamesLogConfigWhenAsked) {
    ASSERT_TRUE(QDir().mkpath(path(".wine/drive_c/Program Files (x86)/Hearthstone/Logs")));
    const QByteArray before = "[Power]\r\nLogLevel=1\r\n";
    const QString config = write(".wine/drive_c/users/ann/AppData/Local/Blizzard/Hearthstone/log.config", before);
    const QStringList question{QStringLiteral("doctor"), QStringLiteral("--offline"), QStringLiteral("--fix")};
    const ProgramOutput fixed = run(question);
    EXPECT_TRUE(fixed.standardOutput.contains("note     log.config: ")) << fixed.standardOutput.toStdString();
    EXPECT_TRUE(fixed.standardOutput.contains("Restart the game.")) << fixed.standardOutput.toStdString();
    const auto read = [](const QString& name) {
        QFile file(name);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    };
    EXPECT_TRUE(read(config).startsWith(before + "\r\n[Arena]\r\nLogLevel=1\r\n"));
    EXPECT_EQ(read(config + QStringLiteral(".bak")), before);
    const ProgramOutput again = run(question);
    EXPECT_TRUE(again.standardOutput.contains("ok       log.config: ")) << again.standardOutput.toStdString();
    EXPECT_FALSE(QFileInfo::exists(config + QStringLiteral(".bak2")));
}

TEST_F(ProgramTest, ExaminesTheRestWhereQtCannotStart) {
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("nonsense"));
    const ProgramOutput answer = run({QStringLiteral("doctor"), QStringLiteral("--json"), QStringLiteral("--offline")});
    EXPECT_EQ(answer.exitCode, 1);
    const auto checks = byCheck(answer);
    EXPECT_EQ(stateOf(checks, "display"), QStringLiteral("problem"));
    EXPECT_TRUE(
        checks.at(QStringLiteral("display"))[QStringLiteral("what")].toString().contains(QStringLiteral("nonsense")));
    EXPECT_EQ(stateOf(checks, "text reader"), QStringLiteral("ok"));
    EXPECT_EQ(stateOf(checks, "folders"), QStringLiteral("ok")) << "what comes after it";
}

// A port of this machine that nobody listens on.
const QString nobody = QStringLiteral("http://127.0.0.1:1");

TEST_F(ProgramTest, TellsThatASyncFailed) {
    const ProgramOutput answer = run({QStringLiteral("sync"), QStringLiteral("--config-server"), nobody});
    EXPECT_EQ(answer.exitCode, 1);
    const auto lines = answer.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0][QStringLiteral("result")].toString(), QStringLiteral("failed"));
    EXPECT_FALSE(lines[0][QStringLiteral("message")].toString().isEmpty());
    EXPECT_EQ(lines[0][QStringLiteral("userMessage")].toString(),
              QStringLiteral("Config sync failed; using local/bundled data: ") +
                  lines[0][QStringLiteral("message")].toString());
}

TEST_F(ProgramTest, BringsTheDataFilesUpToDate) {
    testing::TarWriter writer;
    writer.add({.name = "winrates/all_classes_LAST_7_DAYS.json",
                .content = R"({"cards": [{"card_id": "NEW", "name_en": "New Card"}]})"});
    const QByteArray bundle = writer.gzipped();
    const QByteArray digest = QCryptographicHash::hash(bundle, QCryptographicHash::Sha256).toHex();
    ScriptedServer server;
    server.on("/pelloran/latest/manifest.json",
              ok(R"({"hash": "feedbeefcafe", "bundle": "b.tar.gz", "bundle_sha256": ")" + digest + R"("})"));
    server.on("/pelloran/latest/b.tar.gz", ok(bundle));

    const ProgramOutput first = sync(server);
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_EQ(first.standardError, "");
    EXPECT_EQ(first.lines(), (std::vector<QJsonObject>{
                                 {{QStringLiteral("result"), QStringLiteral("updated")},
                                  {QStringLiteral("hash"), QStringLiteral("feedbeefcafe")},
                                  {QStringLiteral("userMessage"), QStringLiteral("Config updated (feedbeef…)")}}}));
    EXPECT_TRUE(QFileInfo::exists(path("data/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json")));
    EXPECT_EQ(server.requests().size(), 2U);

    const ProgramOutput second = sync(server);
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_EQ(second.lines(), (std::vector<QJsonObject>{{{QStringLiteral("result"), QStringLiteral("upToDate")},
                                                         {QStringLiteral("hash"), QStringLiteral("feedbeefcafe")},
                                                         {QStringLiteral("userMessage"),
                                                          QStringLiteral("Config is up to date (feedbeef…)")}}}));
    EXPECT_EQ(server.requests().size(), 3U) << "one small request while nothing has changed";

    const auto match = run({QStringLiteral("match"), QStringLiteral("New Card")}).lines();
    ASSERT_EQ(match.size(), 1U);
    EXPECT_EQ(match[0][QStringLiteral("match")][QStringLiteral("cardId")].toString(), QStringLiteral("NEW"));

    server.on("/pelloran/latest/manifest.json", ScriptedServer::answer("503 Service Unavailable", {}, ""));
    const ProgramOutput third = sync(server);
    EXPECT_EQ(third.exitCode, 1);
    EXPECT_EQ(third.lines(),
              (std::vector<QJsonObject>{{{QStringLiteral("result"), QStringLiteral("skippedOffline")},
                                         {QStringLiteral("localHash"), QStringLiteral("feedbeefcafe")},
                                         {QStringLiteral("reason"), QStringLiteral("Config server HTTP 503")},
                                         {QStringLiteral("userMessage"),
                                          QStringLiteral("Offline, using local config: Config server HTTP 503")}}}));
}

TEST_F(ProgramTest, TellsWhetherThereIsAnUpdate) {
    const QString local = version();
    const auto result = [](const ProgramOutput& answer) {
        const auto lines = answer.lines();
        EXPECT_EQ(answer.standardError, "");
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? QJsonObject() : lines.front();
    };
    ScriptedServer server;
    const QByteArray latest = "/download/latest.json";

    server.on(latest, ok(R"({"version": "999.1", "dmg": "pkg/a b.dmg", "zip": "pkg/a.zip", "force": false,
                             "arch": ["x86_64"], "build": 7, "notes": ""})"));
    const QJsonObject release{
        {QStringLiteral("name"), QJsonValue::Null},
        {QStringLiteral("version"), QStringLiteral("999.1")},
        {QStringLiteral("build"), 7},
        {QStringLiteral("minMacos"), QJsonValue::Null},
        {QStringLiteral("arch"), QJsonArray{QStringLiteral("x86_64")}},
        {QStringLiteral("dmg"), QStringLiteral("pkg/a b.dmg")},
        {QStringLiteral("zip"), QStringLiteral("pkg/a.zip")},
        {QStringLiteral("baseURL"), QJsonValue::Null},
        {QStringLiteral("notes"), QString()},
        {QStringLiteral("notesZh"), QJsonValue::Null},
        {QStringLiteral("notesEn"), QJsonValue::Null},
        {QStringLiteral("publishedAt"), QJsonValue::Null},
        {QStringLiteral("force"), false},
        {QStringLiteral("download"), QString(server.base() + QStringLiteral("/download/pkg/a.zip"))},
    };
    ProgramOutput answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(result(answer),
              (QJsonObject{{QStringLiteral("result"), QStringLiteral("available")},
                           {QStringLiteral("local"), local},
                           {QStringLiteral("release"), release},
                           {QStringLiteral("hasUpdate"), true},
                           {QStringLiteral("userMessage"),
                            QStringLiteral("You have %1; latest is 999.1.\nDownload the update now?").arg(local)}}));

    write("config/Pelloran/Pelloran.ini", "[General]\npelloran.skippedAppVersion=999.1.0\n");
    answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(result(answer),
              (QJsonObject{
                  {QStringLiteral("result"), QStringLiteral("skippedVersion")},
                  {QStringLiteral("local"), local},
                  {QStringLiteral("release"), release},
                  {QStringLiteral("hasUpdate"), true},
                  {QStringLiteral("userMessage"),
                   QStringLiteral("You skipped version 999.1.\nLocal %1. Use the menu to check again.").arg(local)}}));

    server.on(latest, ok(R"({"version": " 0.0.1 "})"));
    answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(
        result(answer),
        (QJsonObject{{QStringLiteral("result"), QStringLiteral("upToDate")},
                     {QStringLiteral("local"), local},
                     {QStringLiteral("remote"), QStringLiteral("0.0.1")},
                     {QStringLiteral("hasUpdate"), false},
                     {QStringLiteral("userMessage"),
                      QStringLiteral("You’re already on the latest version.\nLocal %1 · Remote 0.0.1").arg(local)}}));
    QFile choices(path("config/Pelloran/Pelloran.ini"));
    ASSERT_TRUE(choices.open(QIODevice::ReadOnly));
    EXPECT_FALSE(choices.readAll().contains("skippedAppVersion")) << "another version was skipped";

    server.on(latest, ScriptedServer::answer("404 Not Found", {}, "<html>"));
    answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 1);
    EXPECT_EQ(result(answer),
              (QJsonObject{{QStringLiteral("result"), QStringLiteral("offline")},
                           {QStringLiteral("reason"), QStringLiteral("Update server HTTP 404")},
                           {QStringLiteral("hasUpdate"), false},
                           {QStringLiteral("userMessage"),
                            QStringLiteral("Could not reach the update server: Update server HTTP 404")}}));
    EXPECT_EQ(server.requests().size(), 4U);
}

TEST_F(ProgramTest, TellsThatNobodyKnowsOfAnUpdate) {
    const ProgramOutput answer = run({QStringLiteral("check-update"), QStringLiteral("--update-server"), nobody});
    EXPECT_EQ(answer.exitCode, 1);
    const auto lines = answer.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0][QStringLiteral("result")].toString(), QStringLiteral("offline"));
    EXPECT_FALSE(lines[0][QStringLiteral("hasUpdate")].toBool(true));
}

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

TEST_F(ProgramTest, PublishesFromTheFirstTickAndEndsWhenTold) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(program, {QStringLiteral("--no-panel"), QStringLiteral("--logs-dir"), path("logs"),
                                QStringLiteral("--language"), QStringLiteral("zh")});
        ASSERT_TRUE(QTest::qWaitFor([&] { return process.canReadLine(); }, 20'000));
        const QJsonObject snapshot = QJsonDocument::fromJson(process.readLine()).object();
        EXPECT_EQ(snapshot[QStringLiteral("message")].toString(), QStringLiteral("等待进入竞技场选卡界面…"));
        EXPECT_EQ(snapshot[QStringLiteral("title")].toString(), QStringLiteral("Pelloran · 竞技场"));
        EXPECT_EQ(snapshot[QStringLiteral("phase")].toString(), QStringLiteral("idle"));
        ::kill(static_cast<pid_t>(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(20'000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0);
        const QByteArray diagnostics = process.readAllStandardError();
        EXPECT_TRUE(diagnostics.contains("invented")) << "sample figures are announced";
        EXPECT_TRUE(diagnostics.contains("[Pelloran] boot cards=")) << diagnostics.toStdString();
    }
}

TEST_F(ProgramTest, TellsHowALaterLogFolderIsFound) {
    for (const bool isNamed : {false, true}) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(program, QStringList{QStringLiteral("--no-panel")} +
                                   (isNamed ? QStringList{QStringLiteral("--logs-dir"), path("logs")} : QStringList()));
        ASSERT_TRUE(QTest::qWaitFor([&] { return process.canReadLine(); }, 20'000));
        ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
        ASSERT_TRUE(process.waitForFinished(20'000));
        const QByteArray diagnostics = process.readAllStandardError();
        EXPECT_TRUE(diagnostics.contains("waiting for one at")) << diagnostics.toStdString();
        EXPECT_EQ(diagnostics.contains("started again"), !isNamed) << diagnostics.toStdString();
    }
}

TEST_F(ProgramTest, BeginsWithTheFilesThatACutOffUpdateLeft) {
    const QString cardFile = write("data/Pelloran/config.bak/winrates/all_classes_LAST_7_DAYS.json",
                                   R"({"cards": [{"card_id": "OWN", "name_en": "Own Card"}]})");
    QDir(path("data/Pelloran/config")).removeRecursively();
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, {QStringLiteral("--no-panel"), QStringLiteral("--logs-dir"), path("logs")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return process.canReadLine(); }, 20'000));
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(20'000));
    const QByteArray diagnostics = process.readAllStandardError();
    EXPECT_TRUE(diagnostics.contains("the previous files are back in place")) << diagnostics.toStdString();
    EXPECT_FALSE(diagnostics.contains("invented")) << "not the sample figures: " << diagnostics.toStdString();
    EXPECT_FALSE(QFileInfo::exists(cardFile));
}

TEST_F(ProgramTest, TellsOfTheMissingWindowWithoutADisplay) {
    write("logs/Hearthstone_1/Arena.log", "D 1 SetDraftMode - DRAFTING\n");
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, {QStringLiteral("--no-panel"), QStringLiteral("--logs-dir"), path("logs")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return process.canReadLine(); }, 20'000));
    const QJsonObject snapshot = QJsonDocument::fromJson(process.readLine()).object();
    EXPECT_EQ(snapshot[QStringLiteral("message")].toString(),
              QStringLiteral("In Arena, but Hearthstone window not found"));
    EXPECT_TRUE(snapshot[QStringLiteral("inDraft")].toBool());
    process.terminate();
    EXPECT_TRUE(process.waitForFinished(20'000));
    EXPECT_TRUE(process.readAllStandardError().contains("no X display can be reached"));
}

TEST_F(ProgramTest, NamesTheWayToRunWithoutADisplay) {
    const ProgramOutput answer = run({QStringLiteral("--snapshots")});
    EXPECT_EQ(answer.exitCode, 1);
    EXPECT_EQ(answer.standardOutput, "");
    EXPECT_TRUE(answer.standardError.contains("--no-panel")) << answer.standardError.toStdString();
    EXPECT_TRUE(answer.standardError.startsWith("[Pelloran] "));
    EXPECT_EQ(answer.standardError.count('\n'), 1);
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

#ifdef Q_OS_LINUX
TEST_F(ProgramTest, GoesOnWhenItCanOpenFilesAgain) {
    write("logs/Hearthstone_1/Arena.log", "D 1 SetDraftMode - DRAFTING\n");
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, {QStringLiteral("--no-panel"), QStringLiteral("--logs-dir"), path("logs")});
    const auto nextIsInDraft = [&process](bool inDraft) {
        return QTest::qWaitFor(
            [&] {
                return process.canReadLine() &&
                       QJsonDocument::fromJson(process.readLine())[QStringLiteral("inDraft")].toBool() == inDraft;
            },
            20'000);
    };
    ASSERT_TRUE(nextIsInDraft(true));
    const auto id = static_cast<pid_t>(process.processId());
    rlimit before{};
    ASSERT_EQ(::prlimit(id, RLIMIT_NOFILE, nullptr, &before), 0);
    rlimit none{0, before.rlim_max};
    while (QFileInfo(QStringLiteral("/proc/%1/fd/%2").arg(id).arg(none.rlim_cur)).isSymLink()) {
        ++none.rlim_cur;
    }
    ASSERT_EQ(::prlimit(id, RLIMIT_NOFILE, &none, nullptr), 0);
    for (int ticks = 0; ticks < 2; ++ticks) {
        ASSERT_TRUE(nextIsInDraft(false));
    }
    ASSERT_EQ(::prlimit(id, RLIMIT_NOFILE, &before, nullptr), 0);
    EXPECT_TRUE(nextIsInDraft(true));
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(20'000));
    EXPECT_EQ(process.exitCode(), 0);
    const QByteArray diagnostics = process.readAllStandardError();
    EXPECT_EQ(diagnostics.count("Too many open files"), 1) << diagnostics.toStdString();
}
#endif

TEST_F(ProgramTest, NamesAClassFileThatItPassesOver) {
    const QString file = write("data/Pelloran/config/class_winrates.json", "none");
    const ProgramOutput answer = run({QStringLiteral("match"), QStringLiteral("Fireball")});
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_TRUE(answer.standardError.contains(file.toUtf8())) << answer.standardError.toStdString();
}

TEST_F(ProgramTest, OutlivesTheReaderOfItsLines) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setChildProcessModifier([&ends] {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
    });
    process.start(program, {QStringLiteral("--no-panel"), QStringLiteral("--logs-dir"), path("logs")});
    ASSERT_TRUE(process.waitForStarted());
    ::close(ends[1]);
    char first = 0;
    EXPECT_EQ(::read(ends[0], &first, 1), 1);
    EXPECT_EQ(first, '{');
    ::close(ends[0]);
    EXPECT_FALSE(process.waitForFinished(2'500)) << "two more ticks have met the closed pipe";
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(20'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
}

// With a panel, on Qt's display for tests.
class PanelProgramTest : public ProgramTest {
protected:
    PanelProgramTest() {
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
    }

    // Until the log says `line`.
    bool start(QProcess& process, const char* line, const QStringList& arguments = {}) {
        process.setProcessEnvironment(environment);
        process.start(program, QStringList{QStringLiteral("--logs-dir"), path("logs")} + arguments);
        QByteArray diagnostics;
        const bool said = QTest::qWaitFor(
            [&] {
                diagnostics += process.readAllStandardError();
                return diagnostics.contains(line);
            },
            20'000);
        EXPECT_TRUE(said) << diagnostics.toStdString();
        return said;
    }

    static int endedBy(QProcess& process, int signal) {
        ::kill(static_cast<pid_t>(process.processId()), signal);
        EXPECT_TRUE(process.waitForFinished(20'000));
        return process.exitCode();
    }
};

TEST_F(PanelProgramTest, RunsUntilItIsTold) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        QProcess process;
        ASSERT_TRUE(start(process, "boot cards="));
        EXPECT_EQ(endedBy(process, signal), 0);
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.readAllStandardOutput(), "") << "nobody asked for lines";
    }
}

TEST_F(PanelProgramTest, PrintsSnapshotsWhenAsked) {
    QProcess process;
    ASSERT_TRUE(start(process, "boot cards=", {QStringLiteral("--snapshots")}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return process.canReadLine(); }, 20'000));
    EXPECT_EQ(QJsonDocument::fromJson(process.readLine()).object()[QStringLiteral("phase")].toString(),
              QStringLiteral("idle"));
    EXPECT_EQ(endedBy(process, SIGTERM), 0);
}

TEST_F(PanelProgramTest, RunsOnceForAUserAndADisplay) {
    QProcess first;
    ASSERT_TRUE(start(first, "boot cards="));
    const ProgramOutput second = run({});
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_TRUE(second.standardError.contains("running already")) << second.standardError.toStdString();
    const ProgramOutput recording = run({QStringLiteral("--record"), path("recording")});
    EXPECT_TRUE(recording.standardError.contains("--record keeps nothing; end the running program first"))
        << "who waits for a recording: " << recording.standardError.toStdString();
    EXPECT_EQ(run({QStringLiteral("match"), QStringLiteral("Fireball")}).exitCode, 0) << "commands are exempt";

    ::kill(static_cast<pid_t>(first.processId()), SIGSTOP);
    const ProgramOutput third = run({});
    EXPECT_EQ(third.exitCode, 1) << "the first does not answer";
    EXPECT_TRUE(third.standardError.contains("does not answer")) << third.standardError.toStdString();
    ::kill(static_cast<pid_t>(first.processId()), SIGCONT);
    // Until it answers it may still lie stopped, and whichever thread wakes first gets the next signal; the thread
    // sanitizer hands on what reaches a thread inside of Qt only when that one comes back from there.
    EXPECT_EQ(run({}).exitCode, 0) << "it goes on";
    EXPECT_EQ(endedBy(first, SIGTERM), 0);
}

TEST_F(PanelProgramTest, StartsAgainAfterACrash) {
    QProcess first;
    ASSERT_TRUE(start(first, "boot cards="));
    ::kill(static_cast<pid_t>(first.processId()), SIGKILL);
    ASSERT_TRUE(first.waitForFinished(20'000));
    QProcess second;
    ASSERT_TRUE(start(second, "boot cards="));
    EXPECT_EQ(endedBy(second, SIGTERM), 0);
}

TEST_F(PanelProgramTest, EndsWithAFailureWhenTheDataCannotBeLoaded) {
    write("data/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    QProcess process;
    ASSERT_TRUE(start(process, "Failed to load win-rate data: "));
    EXPECT_FALSE(process.waitForFinished(300)) << "the alert waits for its answer";
    EXPECT_EQ(endedBy(process, SIGTERM), 1);
}

TEST_F(PanelProgramTest, EndsInOrderWhileAnUpdateIsOffered) {
    ScriptedServer server;
    server.on("/download/latest.json", ok(R"({"version": "999.1", "zip": "a.zip"})"));
    QProcess process;
    ASSERT_TRUE(start(
        process, "boot cards=", {QStringLiteral("--snapshots"), QStringLiteral("--update-server"), server.base()}));
    ASSERT_TRUE(QTest::qWaitFor([&server] { return server.requests().size() == 1; }, 20'000));
    // The alert comes between two ticks, and they go on.
    process.readAllStandardOutput();
    QByteArray snapshots;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            snapshots += process.readAllStandardOutput();
            return snapshots.count('\n') >= 3;
        },
        20'000));
    EXPECT_EQ(endedBy(process, SIGTERM), 0);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    const QByteArray diagnostics = process.readAllStandardError();
    EXPECT_TRUE(diagnostics.contains("app update: ignored for this launch (remote=999.1)"))
        << diagnostics.toStdString();
    EXPECT_FALSE(QFileInfo::exists(path("config/Pelloran/Pelloran.ini"))) << "nothing was chosen";
}

TEST_F(PanelProgramTest, EndsAtOnceWhileItsServersAreSilent) {
    ScriptedServer server;
    const auto silence = [](QTcpSocket&) {};
    server.on("/download/latest.json", silence);
    server.on("/pelloran/latest/manifest.json", silence);
    QProcess process;
    ASSERT_TRUE(
        start(process, "boot cards=",
              {QStringLiteral("--update-server"), server.base(), QStringLiteral("--config-server"), server.base()}));
    ASSERT_TRUE(QTest::qWaitFor([&server] { return server.requests().size() == 2; }, 20'000));
    QElapsedTimer time;
    time.start();
    EXPECT_EQ(endedBy(process, SIGTERM), 0);
    EXPECT_LT(time.elapsed(), 8'000) << "sooner than the servers are given up";
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_FALSE(process.readAllStandardError().contains("config sync: "));
}

TEST_F(PanelProgramTest, NamesAFontToInstallWhereNoneCoversChinese) {
    environment.insert(QStringLiteral("FONTCONFIG_FILE"),
                       write("fonts.conf", "<?xml version=\"1.0\"?><fontconfig></fontconfig>"));
    QProcess process;
    ASSERT_TRUE(start(process, "fonts-noto-cjk"));
    EXPECT_EQ(endedBy(process, SIGTERM), 0);
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
