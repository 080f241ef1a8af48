#include "app/desktop/SingleInstance.h"

#include "tests/support/CollectedLog.h"
#include "tests/support/NoDescriptors.h"
#include "tests/support/Printing.h"
#include "tests/support/QtThread.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace pelloran {
namespace {

using Outcome = SingleInstance::Outcome;
using namespace std::chrono_literals;

const QString name = QStringLiteral("pelloran-test");

class SingleInstanceTest : public ::testing::Test {
protected:
    // Another start, on a thread of its own, while this one's event loop runs.
    Outcome startBeside(std::chrono::milliseconds wait = SingleInstance::patience) const {
        std::atomic<bool> ended = false;
        Outcome outcome{};
        std::thread second([&] {
            outcome = SingleInstance(folder.path(), name).begin(wait);
            ended = true;
        });
        EXPECT_TRUE(QTest::qWaitFor([&ended] { return ended.load(); }, 20'000));
        second.join();
        return outcome;
    }

    QTemporaryDir folder;
};

TEST_F(SingleInstanceTest, LetsTheFirstComeForward) {
    SingleInstance first(folder.path(), name);
    int reopened = 0;
    QObject::connect(&first, &SingleInstance::reopenRequested, [&reopened] { ++reopened; });
    ASSERT_EQ(first.begin(), Outcome::first);
    EXPECT_EQ(startBeside(), Outcome::handedOver);
    EXPECT_EQ(reopened, 1);
    EXPECT_EQ(startBeside(), Outcome::handedOver);
    EXPECT_EQ(reopened, 2);
}

TEST_F(SingleInstanceTest, IsSeenWithoutBeingDisturbed) {
    const auto look = [this](std::chrono::milliseconds wait) {
        return SingleInstance(folder.path(), name).running(wait);
    };
    EXPECT_EQ(look(1ms), std::nullopt);
    EXPECT_EQ(SingleInstance({}, name).running(1ms), std::nullopt) << "where there is no folder for it";
    EXPECT_TRUE(QDir(folder.path()).isEmpty()) << "looking makes nothing";
    {
        SingleInstance first(folder.path(), name);
        int reopened = 0;
        QObject::connect(&first, &SingleInstance::reopenRequested, [&reopened] { ++reopened; });
        ASSERT_EQ(first.begin(), Outcome::first);
        EXPECT_EQ(look(150ms), (SingleInstance::Running{::getpid(), false})) << "its event loop stands still";
        std::optional<SingleInstance::Running> seen;
        std::atomic<bool> ended = false;
        std::thread beside([&] {
            seen = look(SingleInstance::patience);
            ended = true;
        });
        EXPECT_TRUE(QTest::qWaitFor([&ended] { return ended.load(); }, 20'000));
        beside.join();
        EXPECT_EQ(seen, (SingleInstance::Running{::getpid(), true}));
        EXPECT_EQ(reopened, 0) << "its panel stays where it is";
    }
    EXPECT_EQ(look(1ms), std::nullopt) << "it has ended";
    // What a crash leaves: the lock of a process that is gone. The largest number there can be is taken by none.
    const auto leave = [this](qint64 process) {
        QFile lock(folder.filePath(name + QStringLiteral(".lock")));
        ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
        lock.write(QByteArray::number(process) + "\npelloran\nhost\n");
    };
    leave(2147483647);
    EXPECT_EQ(look(1ms), std::nullopt);
    leave(::getpid());
    EXPECT_EQ(look(1ms), std::nullopt) << "another program has its number now, and is not to be ended";
}

TEST_F(SingleInstanceTest, CanBeReachedByItsUserOnly) {
    SingleInstance first(folder.path(), name);
    ASSERT_EQ(first.begin(), Outcome::first);
    struct stat found{};
    ASSERT_EQ(::stat(QFile::encodeName(folder.filePath(name + QStringLiteral(".socket"))).constData(), &found), 0);
    EXPECT_EQ(found.st_mode & (S_IRWXG | S_IRWXO), 0U);
}

TEST_F(SingleInstanceTest, DoesNotWaitForOneThatIsSilent) {
    SingleInstance first(folder.path(), name);
    ASSERT_EQ(first.begin(), Outcome::first);
    // The first's event loop stands still meanwhile.
    EXPECT_EQ(SingleInstance(folder.path(), name).begin(150ms), Outcome::firstSilent);

    QLockFile other(folder.filePath(QStringLiteral("other.lock")));
    ASSERT_TRUE(other.tryLock(0));
    EXPECT_EQ(SingleInstance(folder.path(), QStringLiteral("other")).begin(150ms), Outcome::firstSilent)
        << "it does not even listen";
}

TEST_F(SingleInstanceTest, TakesThePlaceOfOneThatHasEnded) {
    SingleInstance first(folder.path(), name);
    ASSERT_EQ(first.begin(), Outcome::first);
    first.end();
    EXPECT_EQ(SingleInstance(folder.path(), name).begin(), Outcome::first);
}

TEST_F(SingleInstanceTest, TakesOverASocketThatACrashLeft) {
    const QString path = folder.filePath(name + QStringLiteral(".socket"));
    QFile left(path);
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.close();
    SingleInstance first(folder.path(), name);
    EXPECT_EQ(first.begin(), Outcome::first);
    EXPECT_EQ(startBeside(), Outcome::handedOver);
}

TEST_F(SingleInstanceTest, HasOneWinnerOfARace) {
    constexpr int starts = 6;
    std::atomic<int> firsts = 0;
    std::atomic<int> handedOver = 0;
    std::atomic<int> reopened = 0;
    std::vector<std::unique_ptr<testing::QtThread>> threads; // of Qt's: the first listens on its own
    for (int i = 0; i < starts; ++i) {
        threads.push_back(std::make_unique<testing::QtThread>([&] {
            SingleInstance instance(folder.path(), name);
            QObject::connect(&instance, &SingleInstance::reopenRequested, [&reopened] { ++reopened; });
            switch (instance.begin(10s)) {
            case Outcome::first: {
                ++firsts;
                QEventLoop loop;
                const QDeadlineTimer deadline(15s);
                while (handedOver + firsts < starts && !deadline.hasExpired()) {
                    loop.processEvents(QEventLoop::AllEvents, 20);
                }
                break;
            }
            case Outcome::handedOver:
                ++handedOver;
                break;
            case Outcome::firstSilent:
            case Outcome::unavailable:
                break;
            }
        }));
        threads.back()->start();
    }
    for (const auto& thread : threads) {
        thread->join();
    }
    EXPECT_EQ(firsts, 1);
    EXPECT_EQ(handedOver, starts - 1);
    EXPECT_EQ(reopened, starts - 1);
}

TEST_F(SingleInstanceTest, IgnoresWhoSaysSomethingElse) {
    SingleInstance first(folder.path(), name);
    int reopened = 0;
    QObject::connect(&first, &SingleInstance::reopenRequested, [&reopened] { ++reopened; });
    ASSERT_EQ(first.begin(), Outcome::first);
    QLocalSocket stranger;
    stranger.connectToServer(folder.filePath(name + QStringLiteral(".socket")));
    ASSERT_TRUE(stranger.waitForConnected());
    stranger.write("GET / HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(QTest::qWaitFor([&] { return stranger.state() == QLocalSocket::UnconnectedState; }));
    EXPECT_EQ(reopened, 0);
    EXPECT_EQ(startBeside(), Outcome::handedOver) << "and still serves its own";
}

TEST_F(SingleInstanceTest, GoesOnWhereNothingCanBeWritten) {
    const testing::CollectedLog told;
    EXPECT_EQ(SingleInstance(folder.filePath(QStringLiteral("missing")), name).begin(), Outcome::unavailable);
    EXPECT_EQ(SingleInstance(QString(), name).begin(), Outcome::unavailable);
    const QString tooLong = QString(150, u'x'); // for the address of a socket, not for a file
    EXPECT_EQ(SingleInstance(folder.path(), tooLong).begin(), Outcome::unavailable);
    EXPECT_EQ(told.lines().size(), 3);
}

TEST_F(SingleInstanceTest, AnswersAgainAfterTooFewFilesCouldBeOpened) {
    SingleInstance first(folder.path(), name);
    first.checkInterval = 10ms;
    ASSERT_EQ(first.begin(), Outcome::first);
    const int asking = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_GE(asking, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = folder.filePath(name + QStringLiteral(".socket")).toLocal8Bit();
    ASSERT_LT(std::size_t(path.size()), sizeof(address.sun_path));
    std::ranges::copy(path, address.sun_path);
    {
        const testing::NoDescriptors none;
        ASSERT_EQ(::connect(asking, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
        // It is noticed that it cannot be let in, and again and again that nobody can.
        QTest::qWait(50);
    }
    ::close(asking);
    EXPECT_EQ(startBeside(), Outcome::handedOver);
}

TEST(InstanceName, IsThatOfTheDisplay) {
    struct Case {
        const char* why;
        const char* display;
        const char* same;
    };

    const Case equal[] = {
        {"the screen does not matter", ":0", ":0.0"},
        {"nor does the way there", ":1", "unix:1"},
        {"nor both", ":12", "unix:12.3"},
        {"a machine's name may hold a full stop", "host.lan:1", "host.lan:1.0"},
    };
    for (const Case& c : equal) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(instanceName(QString::fromLatin1(c.display)), instanceName(QString::fromLatin1(c.same)));
    }
    const Case different[] = {
        {"another display", ":0", ":1"}, {"another machine", ":0", "host:0"},        {"no display", ":0", ""},
        {"one digit more", ":1", ":10"}, {"signs are kept apart", "a_b:0", "a-b:0"},
    };
    for (const Case& c : different) {
        SCOPED_TRACE(c.why);
        EXPECT_NE(instanceName(QString::fromLatin1(c.display)), instanceName(QString::fromLatin1(c.same)));
    }
    EXPECT_FALSE(instanceName(QStringLiteral("/tmp/launch/org.x:0")).contains(u'/')) << "it becomes a file's name";
}

} // namespace
} // namespace pelloran
