#include "tests/program/ProgramTest.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <gtest/gtest.h>

#include <iterator>
#include <map>

// What the program says of a machine, and what it mends.
namespace pelloran {
namespace {

using testing::ProgramOutput;
using testing::ScriptedServer;

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

} // namespace
} // namespace pelloran
