#include "tests/program/ProgramTest.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QTest>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <csignal>

// The loop without a panel.
namespace pelloran {
namespace {

using testing::ProgramOutput;

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

} // namespace
} // namespace pelloran
