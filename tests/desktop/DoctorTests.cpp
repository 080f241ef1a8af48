#include "tests/desktop/Desktop.h"
#include "tests/support/Printing.h"
#include "tests/support/ScriptedServer.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>

// `pelloran doctor` on a desktop where the game is played.
namespace pelloran {
namespace {

using testing::ProgramOutput;
using testing::ScriptedServer;

class Doctor : public testing::DesktopTest {
protected:
    void SetUp() override {
        DesktopTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        startWindowManager();
        startCompositor();
        startTray();
        server.on("/pelloran/latest/manifest.json",
                  ScriptedServer::answer("200 OK", {}, R"({"hash": "feedbeefcafe"})"));
        server.on("/download/latest.json",
                  ScriptedServer::answer("200 OK", {}, R"({"version": ")" PELLORAN_VERSION R"("})"));
    }

    void write(const QString& name, const QByteArray& bytes) const {
        const QString path = home.path() + u'/' + name;
        QFile file(path);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
                    file.write(bytes) == bytes.size())
            << path.toStdString();
    }

    // A game under Wine that was told to log.
    void installGame() {
        logsDir = home.path() + QStringLiteral("/.wine/drive_c/Program Files (x86)/Hearthstone/Logs");
        ASSERT_TRUE(QDir().mkpath(logsDir));
        const QByteArray section =
            "LogLevel=1\r\nFilePrinting=true\r\nConsolePrinting=false\r\nScreenPrinting=false\r\nVerbose=true\r\n";
        write(QStringLiteral(".wine/drive_c/users/ann/AppData/Local/Blizzard/Hearthstone/log.config"),
              "[Arena]\r\n" + section + "[LoadingScreen]\r\n" + section);
    }

    // Today's figures, in place of those that ship.
    void installFigures() {
        const QByteArray now = QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toUtf8();
        write(QStringLiteral("data/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json"),
              R"({"fetched_at": ")" + now + R"(", "cards": [{"card_id": "CS2_029", "name_en": "Fireball"}]})");
        write(QStringLiteral("data/Pelloran/config/winrates/class_winrates.json"),
              R"({"classes": [{"player_class": "MAGE", "name_zh": "法师"}]})");
        write(QStringLiteral("data/Pelloran/config/.content_hash"), "feedbeefcafe");
    }

    ProgramOutput examine() const {
        return testing::runProgram(testing::pelloranProgram(),
                                   {QStringLiteral("doctor"), QStringLiteral("--json"),
                                    QStringLiteral("--config-server"), server.base(), QStringLiteral("--update-server"),
                                    server.base()},
                                   environment);
    }

    ScriptedServer server;
};

TEST_F(Doctor, FindsAllWellBesideTheGame) {
    installGame();
    installFigures();
    startStage({QStringLiteral("--scenario"), QStringLiteral("demo")});
    ASSERT_TRUE(stage.waitFor([](const QJsonObject&) { return true; })) << "the game does not come up";

    struct Case {
        const char* check;
        QString says;
    };

    const auto expect = [&](const QString& instance) {
        const Case cases[] = {
            {"log folder", logsDir + QStringLiteral(", session Hearthstone_")},
            {"log.config", QStringLiteral("log.config has both sections.")},
            {"game's window", QStringLiteral("1920x1080 pixels, found and captured in ")},
            {"text reader", QStringLiteral("\"火球术\" was read as \"火球术\" in ")},
            {"data files", QStringLiteral(": 1 cards, real figures, 1 classes.")},
            {"names", QStringLiteral("can be matched.")},
            {"display", QStringLiteral("1920x1080")},
            {"fonts", QStringLiteral("There is one that covers Chinese.")},
            {"compositor", QStringLiteral("One runs")},
            {"status area", QStringLiteral("There is one")},
            {"single instance", instance},
            {"configuration server", QStringLiteral("feedbeef")},
            {"update server", QStringLiteral(PELLORAN_VERSION)},
            {"folders", QStringLiteral("Can be written: ")},
        };
        const ProgramOutput output = examine();
        EXPECT_EQ(output.exitCode, 0) << output.standardError.toStdString();
        const std::vector<QJsonObject> lines = output.lines();
        ASSERT_EQ(lines.size(), std::size(cases)) << output.standardOutput.toStdString();
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::string line = QJsonDocument(lines[i]).toJson().toStdString();
            EXPECT_EQ(lines[i][QStringLiteral("check")].toString(), QString::fromUtf8(cases[i].check)) << line;
            EXPECT_EQ(lines[i][QStringLiteral("state")].toString(), QStringLiteral("ok")) << line;
            EXPECT_TRUE(lines[i][QStringLiteral("what")].toString().contains(cases[i].says)) << line;
        }
    };
    expect(QStringLiteral("Pelloran does not run."));

    startPelloran({QStringLiteral("--snapshots")});
    ASSERT_TRUE(pelloran.waitFor([](const QJsonObject&) { return true; }));
    expect(QStringLiteral("Pelloran runs as process %1 and answers.").arg(pelloran.process.processId()));
}

} // namespace
} // namespace pelloran
