#include "tests/support/OtherProcess.h"
#include "tests/support/Printing.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/SilentSocket.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>
#include <vector>

// The program while something around it hangs or goes wrong.
namespace pelloran {
namespace {

using testing::Suspended;

constexpr int patience = 20'000; // milliseconds

// What an end may take. It has to be under two seconds; a busy machine with a sanitizer gets more, and what is made to
// hang here does so for ever.
constexpr int promptly = 6'000;

class FaultTest : public ::testing::Test {
protected:
    FaultTest() {
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
        QObject::connect(&process, &QProcess::readyReadStandardError, &process,
                         [this] { diagnostics += process.readAllStandardError(); });
        QObject::connect(&process, &QProcess::readyReadStandardOutput, &process,
                         [this] { lines += static_cast<int>(process.readAllStandardOutput().count('\n')); });
    }

    ~FaultTest() override {
        process.kill();
        process.waitForFinished(patience);
    }

    void start(const QStringList& arguments) {
        process.setProcessEnvironment(environment);
        process.start(testing::programToTest("PELLORAN_TEST_PROGRAM", PELLORAN_PROGRAM),
                      QStringList{QStringLiteral("--logs-dir"), home.path() + QStringLiteral("/logs")} + arguments);
    }

    bool says(const char* words) {
        return QTest::qWaitFor([&] { return diagnostics.contains(words); }, patience);
    }

    bool prints(int more) {
        return QTest::qWaitFor([this, wanted = lines + more] { return lines >= wanted; }, patience);
    }

    void expectPromptEnd() {
        ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
        EXPECT_TRUE(QTest::qWaitFor([this] { return process.state() == QProcess::NotRunning; }, promptly));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0);
    }

    void loadFirst(const char* part) { environment.insert(QStringLiteral("LD_PRELOAD"), QString::fromUtf8(part)); }

    QTemporaryDir home;
    QProcessEnvironment environment = testing::cleanEnvironment(home.path());
    QProcess process;
    QByteArray diagnostics;
    int lines = 0; // of snapshots
};

TEST_F(FaultTest, EndsAtOnceWhileTheServersNamesAreLookedUp) {
    loadFirst(PELLORAN_HANGING_RESOLVER);
    start({QStringLiteral("--update-server"), QStringLiteral("http://updates.invalid"),
           QStringLiteral("--config-server"), QStringLiteral("http://files.invalid")});
    ASSERT_TRUE(says("looking up updates.invalid") && says("looking up files.invalid") && says("boot cards="))
        << diagnostics.toStdString();
    expectPromptEnd();
    EXPECT_FALSE(diagnostics.contains("config sync: ")) << "nothing has come of it";
}

// It takes as long as a sync has patience.
TEST_F(FaultTest, ASyncGivesUpWhereNoNameServerAnswers) {
    loadFirst(PELLORAN_HANGING_RESOLVER);
    start({QStringLiteral("--snapshots"), QStringLiteral("--config-server"), QStringLiteral("http://files.invalid")});
    ASSERT_TRUE(says("looking up files.invalid") && says("boot cards=")) << diagnostics.toStdString();
    EXPECT_TRUE(prints(2)) << "the panel waits for it";
    EXPECT_FALSE(diagnostics.contains("config sync: ")) << "it has not waited at all";
    EXPECT_TRUE(says("config sync: Config sync failed; using local/bundled data: The request timed out."))
        << diagnostics.toStdString();
    EXPECT_TRUE(prints(1));
    expectPromptEnd();
}

TEST_F(FaultTest, StartsWithoutASessionBusThatHangs) {
    const QString path = home.filePath(QStringLiteral("bus"));
    const testing::SilentSocket silent(path);
    start({QStringLiteral("--snapshots")});
    EXPECT_TRUE(says("the session bus does not answer"));
    EXPECT_TRUE(says("boot cards="));
    EXPECT_TRUE(prints(1));
    expectPromptEnd();
}

// What is opened next would get the number of a missing stream, and every line meant for that.
TEST_F(FaultTest, StartedWithoutStandardStreamsItWritesIntoNothingElse) {
    struct Case {
        const char* why;
        std::vector<int> missing;
    };

    const Case cases[] = {
        {"nothing to be read", {STDIN_FILENO}},
        {"nowhere for snapshots", {STDOUT_FILENO}},
        {"nowhere for the log", {STDERR_FILENO}},
        {"as some starters of desktops have it: snapshots went into the lock, and the log hung the event loop",
         {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        process.setChildProcessModifier([&c] {
            for (const int stream : c.missing) {
                ::close(stream);
            }
        });
        // It is what shows that a program is there which has nothing to say it on.
        const QString recording = home.filePath(QStringLiteral("recording%1").arg(&c - cases));
        start({QStringLiteral("--snapshots"), QStringLiteral("--record"), recording});
        ASSERT_TRUE(QTest::qWaitFor([&] { return QFile::exists(recording); }, patience));
        for (const int stream : c.missing) {
            const QString number = QStringLiteral("/proc/%1/fd/%2").arg(process.processId()).arg(stream);
            EXPECT_EQ(QFile::symLinkTarget(number), QProcess::nullDevice()) << stream;
        }
        expectPromptEnd();
    }
}

TEST_F(FaultTest, ACommandWithoutStandardOutputFails) {
    process.setChildProcessModifier([] { ::close(STDOUT_FILENO); });
    process.setProcessEnvironment(environment);
    process.start(testing::programToTest("PELLORAN_TEST_PROGRAM", PELLORAN_PROGRAM),
                  {QStringLiteral("match"), QStringLiteral("Fireball")});
    EXPECT_TRUE(says("standard output could not be written")) << diagnostics.toStdString();
    EXPECT_TRUE(QTest::qWaitFor([this] { return process.state() == QProcess::NotRunning; }, patience));
    EXPECT_EQ(process.exitCode(), 1);
}

// Whoever ends a session may send several kinds in one go, and a second one is not to break into the end.
TEST_F(FaultTest, SignalsInOneGoAreOneWishToEnd) {
    start({QStringLiteral("--snapshots")});
    ASSERT_TRUE(says("boot cards=") && prints(1));
    const auto id = static_cast<pid_t>(process.processId());
    ::kill(id, SIGHUP);
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < 400 && QFile::exists(QStringLiteral("/proc/%1/exe").arg(id))) {
        ::kill(id, SIGTERM);
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    EXPECT_TRUE(QTest::qWaitFor([this] { return process.state() == QProcess::NotRunning; }, promptly));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
}

// A timer that was due many times meanwhile is due once.
TEST_F(FaultTest, GoesOnAtItsPaceAfterItWasSuspended) {
    start({QStringLiteral("--no-panel")});
    ASSERT_TRUE(prints(1));
    {
        const Suspended asleep(process.processId());
        QTest::qWait(2'900); // more than three times what lies between two looks
    }
    const int before = lines;
    QTest::qWait(400);
    EXPECT_LE(lines - before, 2) << "it makes up for what it missed";
    EXPECT_TRUE(prints(1)) << "it does not go on";
}

TEST_F(FaultTest, TheClockOnTheWallIsNoneOfItsBusiness) {
    const QString file = home.filePath(QStringLiteral("clock"));
    const auto set = [&file](const QByteArray& seconds) {
        QFile written(file + u'~');
        ASSERT_TRUE(written.open(QIODevice::WriteOnly));
        written.write(seconds);
        written.close();
        ASSERT_EQ(::rename(QFile::encodeName(file + u'~').constData(), QFile::encodeName(file).constData()), 0);
    };
    loadFirst(PELLORAN_JUMPING_CLOCK);
    environment.insert(QStringLiteral("PELLORAN_TEST_CLOCK"), file);
    set("0");
    start({QStringLiteral("--no-panel")});
    ASSERT_TRUE(prints(1));
    for (const char* seconds : {"86400", "-86400"}) {
        SCOPED_TRACE(seconds);
        QElapsedTimer time;
        time.start();
        set(seconds);
        EXPECT_TRUE(prints(2)) << "it waits for the clock";
        EXPECT_GT(time.elapsed(), 700) << "it hurries after the clock"; // 900 between two
    }
    expectPromptEnd();
}

} // namespace
} // namespace pelloran
