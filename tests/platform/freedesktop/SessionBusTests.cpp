#include "platform/freedesktop/SessionBus.h"

#include "tests/platform/freedesktop/FakePortal.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/OtherProcess.h"
#include "tests/support/Printing.h"
#include "tests/support/SilentSocket.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace pelloran::testing {

namespace {

using namespace std::chrono_literals;
using freedesktop::avoidSilentSessionBus;
using freedesktop::isSilentBus;

constexpr auto brief = 50ms;
constexpr auto ample = 20s; // for what answers

// As they were, at the end.
class Variables {
public:
    ~Variables() {
        restore("DBUS_SESSION_BUS_ADDRESS", address);
        restore("XDG_RUNTIME_DIR", folder);
    }

private:
    static void restore(const char* name, const QByteArray& value) {
        value.isNull() ? qunsetenv(name) : qputenv(name, value);
    }

    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
};

class SessionBusTest : public ::testing::Test {
protected:
    QString path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }

    QByteArray at(const char* name) const { return "unix:path=" + QFile::encodeName(path(name)); }

    const QTemporaryDir folder;
};

TEST_F(SessionBusTest, KnowsASilentBusByAnyOfItsAddresses) {
    const SilentSocket silent(path("bus"));
    const SilentSocket odd(path("odd, bus"));
    const QString hidden = QChar(0) + path("hidden");
    const SilentSocket withoutFile(hidden);

    struct Row {
        const char* why;
        QByteArray addresses;
        bool isSilent;
    };

    const Row rows[] = {
        {"as sessions have it", at("bus"), true},
        {"with its mark", at("bus") + ",guid=0123456789abcdef", true},
        {"the mark first", "unix:guid=0123456789abcdef,path=" + QFile::encodeName(path("bus")), true},
        {"the first is not there", at("nobody") + ';' + at("bus"), true},
        {"the first is of a kind that is not tried", "tcp:host=127.0.0.1,port=1;" + at("bus"), true},
        {"a path that has to be escaped", "unix:path=" + QFile::encodeName(path("odd%2c%20bus")), true},
        {"a name without a file", "unix:abstract=" + QFile::encodeName(path("hidden")), true},
        {"nobody is there", at("nobody"), false},
        {"no address", "", false},
        {"none at all, as it is said", "disabled:", false},
        {"to be started", "autolaunch:", false},
        {"a path that no socket can have", "unix:path=/" + QByteArray(200, 'x'), false},
        {"no path", "unix:path=", false},
        {"nothing behind the kind", "unix:", false},
        {"no value", "unix:path", false},
        {"nonsense", ";;=,;:unix=;", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(isSilentBus(row.addresses, brief), row.isSilent);
    }
}

TEST_F(SessionBusTest, ABusThatLetsNobodyInAnyMoreIsSilent) {
    const SilentSocket full(path("bus"), 0);
    bool isFull = false;
    for (int i = 0; i < 5 && !isFull; ++i) {
        QElapsedTimer time;
        time.start();
        isFull = isSilentBus(at("bus"), brief) && time.elapsed() < brief.count();
    }
    EXPECT_TRUE(isFull) << "there is room for ever more";
}

TEST_F(SessionBusTest, AnyAnswerIsOne) {
    struct Row {
        const char* why;
        QByteArray answer;
    };

    for (const Row& row : {Row{"it agrees", "OK 0123456789abcdef\r\n"}, Row{"it declines", "REJECTED EXTERNAL\r\n"},
                           Row{"it hangs up", ""}}) {
        SCOPED_TRACE(row.why);
        SilentSocket bus(path("bus"));
        QByteArray greeting(100, ' ');
        std::thread other([&] {
            const int taken = bus.take();
            greeting.truncate(::read(taken, greeting.data(), static_cast<std::size_t>(greeting.size())));
            EXPECT_EQ(::write(taken, row.answer.constData(), static_cast<std::size_t>(row.answer.size())),
                      row.answer.size());
            ::close(taken);
        });
        EXPECT_FALSE(isSilentBus(at("bus"), ample));
        other.join();
        EXPECT_EQ(greeting, QByteArray("\0AUTH EXTERNAL ", 15) + QByteArray::number(::getuid()).toHex() + "\r\n");
        QFile::remove(path("bus"));
    }
}

// The bus library would wait for the answer to its first message as long as for the greeting.
TEST_F(SessionBusTest, OneThatGreetsHasToAnswerTheFirstMessageToo) {
    const QByteArray first("BEGIN\r\n"
                           "l\1\0\1\0\0\0\0\1\0\0\0\x6d\0\0\0"
                           "\1\1o\0\x15\0\0\0/org/freedesktop/DBus\0\0\0"
                           "\2\1s\0\x14\0\0\0org.freedesktop.DBus\0\0\0\0"
                           "\3\1s\0\5\0\0\0Hello\0\0\0"
                           "\6\1s\0\x14\0\0\0org.freedesktop.DBus\0\0\0\0",
                           135);

    struct Row {
        const char* why;
        QByteArray answer;
        std::chrono::milliseconds patience;
        bool isSilent;
    };

    for (const Row& row :
         {Row{"it says its first words", "l\2\1\1", ample, false}, Row{"it falls silent", "", brief, true}}) {
        SCOPED_TRACE(row.why);
        SilentSocket bus(path("bus"));
        QByteArray heard;
        std::thread other([&] {
            const int taken = bus.take();
            const auto hear = [&] {
                char bytes[1'000];
                const ssize_t count = ::read(taken, bytes, sizeof bytes);
                heard.append(bytes, std::max<ssize_t>(count, 0));
                return count > 0;
            };
            (void)hear();
            heard.clear();
            EXPECT_EQ(::write(taken, "OK 0123456789abcdef\r\n", 21), 21);
            while (heard.size() < first.size() && hear()) {
            }
            EXPECT_EQ(::write(taken, row.answer.constData(), static_cast<std::size_t>(row.answer.size())),
                      row.answer.size());
            while (hear()) { // until it hangs up
            }
            ::close(taken);
        });
        EXPECT_EQ(isSilentBus(at("bus"), row.patience), row.isSilent);
        other.join();
        EXPECT_TRUE(row.isSilent || heard == first) << heard.toHex().toStdString();
        QFile::remove(path("bus"));
    }
}

TEST_F(SessionBusTest, ARealBusIsSilentOnlyWhileItIsStopped) {
    if (!PrivateBus::isInstalled()) {
        GTEST_SKIP() << "needs dbus-daemon, which is not installed";
    }
    const auto bus = PrivateBus::start();
    ASSERT_TRUE(bus) << "dbus-daemon does not start";
    const QByteArray address = bus->address().toLatin1();
    EXPECT_FALSE(isSilentBus(address, ample));
    {
        const Suspended hangs(bus->processId());
        EXPECT_TRUE(isSilentBus(address, brief));
    }
    EXPECT_FALSE(isSilentBus(address, ample));
}

TEST_F(SessionBusTest, OnlyASilentOneIsAvoided) {
    const Variables variables;
    const SilentSocket silent(path("silent"));
    const SilentSocket usual(path("bus"));
    const QByteArray runtimeFolder = QFile::encodeName(folder.path());

    struct Row {
        const char* why;
        QByteArray address;
        QByteArray runtimeFolder;
        QByteArray then;
    };

    const Row rows[] = {
        {"named and silent", at("silent"), {}, "disabled:"},
        {"silent in the usual place", {}, runtimeFolder, "disabled:"},
        {"what is named counts", at("nobody"), runtimeFolder, at("nobody")},
        {"none in the usual place", {}, runtimeFolder + "/none", {}},
        {"none anywhere", {}, {}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        qputenv("DBUS_SESSION_BUS_ADDRESS", row.address);
        qputenv("XDG_RUNTIME_DIR", row.runtimeFolder);
        const CollectedLog told;
        avoidSilentSessionBus(brief);
        EXPECT_EQ(qgetenv("DBUS_SESSION_BUS_ADDRESS"), row.then);
        EXPECT_EQ(told.lines().size(), row.then == "disabled:" ? 1 : 0);
    }
}

} // namespace

} // namespace pelloran::testing
