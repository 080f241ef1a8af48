#include "tests/program/ProgramTest.h"
#include "tests/support/Printing.h"

#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

#include <csignal>

// The program with its panel, on a display that nobody sees.
namespace pelloran {
namespace {

using testing::ProgramOutput;
using testing::ScriptedServer;

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

} // namespace
} // namespace pelloran
