#include "platform/x11/ServerConnector.h"

#include "platform/x11/XcbConnection.h"

#include <QByteArray>
#include <QDeadlineTimer>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <utility>

namespace pelloran::x11 {

namespace {

using namespace std::chrono_literals;

constexpr int inAMoment = 20'000; // milliseconds, for what should be there at once

// A socket that takes connections as an X server does, and says only what it is told to.
class StubbornServer {
public:
    // Of a display that nobody has: the first number at which its name is free. No file holds such a name.
    StubbornServer()
        : listening(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        bool bound = false;
        for (int number = 30'000; !bound && number < 31'000; ++number) {
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            const QByteArray name = QByteArray("\0/tmp/.X11-unix/X", 17) + QByteArray::number(number);
            std::memcpy(address.sun_path, name.constData(), std::size_t(name.size()));
            const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + std::size_t(name.size()));
            bound = bind(listening, reinterpret_cast<const sockaddr*>(&address), length) == 0;
            display = ':' + QByteArray::number(number);
        }
        EXPECT_TRUE(bound);
        EXPECT_EQ(listen(listening, 8), 0);
    }

    ~StubbornServer() {
        hangUp();
        close(listening);
    }

    StubbornServer(const StubbornServer&) = delete;
    StubbornServer& operator=(const StubbornServer&) = delete;

    const QByteArray& name() const { return display; }

    // Whether somebody connects within that time; says nothing to them yet.
    bool takesConnection(int milliseconds) {
        pollfd waiting{listening, POLLIN, 0};
        if (poll(&waiting, 1, milliseconds) != 1) {
            return false;
        }
        hangUp();
        talking = accept(listening, nullptr, nullptr);
        return talking >= 0;
    }

    // The first words of a server with one screen, of which nothing is said.
    void welcome() {
        std::array<char, 80> words{};
        words[0] = 1;  // welcome
        words[2] = 11; // version of the protocol
        words[6] = 18; // length of what follows, in units of four bytes
        words[16] = 1; // a mask of numbers to give out, which must not be 0
        words[27] = 1; // length of a request at most, in units of 256 times four bytes
        words[28] = 1; // screens
        EXPECT_EQ(write(talking, words.data(), words.size()), ssize_t(words.size()));
    }

    void hangUp() {
        if (talking >= 0) {
            close(talking);
            talking = -1;
        }
    }

    // After all that the other side had sent.
    bool isHungUpOn() const {
        const QDeadlineTimer deadline(inAMoment);
        std::array<char, 256> bytes{};
        while (!deadline.hasExpired()) {
            pollfd waiting{talking, POLLIN, 0};
            if (poll(&waiting, 1, int(deadline.remainingTime())) == 1 &&
                read(talking, bytes.data(), bytes.size()) <= 0) {
                return true;
            }
        }
        return false;
    }

private:
    int listening;
    QByteArray display;
    int talking = -1;
};

class ServerConnectorTest : public ::testing::Test {
protected:
    ServerConnectorTest() { qputenv("DISPLAY", server->name()); }

    ~ServerConnectorTest() override { qunsetenv("DISPLAY"); }

    std::optional<NoConnection> failure() {
        const auto opened = connector->connect();
        return opened ? std::nullopt : std::optional(opened.error());
    }

    // Once the thread has had its time.
    std::optional<NoConnection> lastFailure() {
        const QDeadlineTimer deadline(inAMoment);
        std::optional<NoConnection> last;
        do {
            last = failure();
        } while (last == NoConnection::silent && !deadline.hasExpired());
        return last;
    }

    std::optional<StubbornServer> server{std::in_place};
    std::optional<ServerConnector> connector{Patience{.usual = 50ms, .whileStalled = 1ms}};
};

TEST_F(ServerConnectorTest, GivesUpOnASilentServerAndWaitsOnForTheSameAttempt) {
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(failure(), NoConnection::silent);
    }
    EXPECT_TRUE(server->takesConnection(inAMoment));
    EXPECT_FALSE(server->takesConnection(0)) << "attempts pile up";
}

TEST_F(ServerConnectorTest, TakesAnAnswerThatComesLate) {
    EXPECT_EQ(failure(), NoConnection::silent);
    ASSERT_TRUE(server->takesConnection(inAMoment));
    server->welcome();
    EXPECT_EQ(lastFailure(), std::nullopt);
    EXPECT_TRUE(server->isHungUpOn()) << "the connection was given out, and let go of";
    EXPECT_EQ(failure(), NoConnection::silent);
    EXPECT_TRUE(server->takesConnection(inAMoment)) << "the next is another one";
}

TEST_F(ServerConnectorTest, TriesAnewWhenTheServerHasHungUp) {
    EXPECT_EQ(failure(), NoConnection::silent);
    ASSERT_TRUE(server->takesConnection(inAMoment));
    server->hangUp();
    EXPECT_EQ(lastFailure(), NoConnection::unreachable);
    EXPECT_EQ(failure(), NoConnection::silent);
    EXPECT_TRUE(server->takesConnection(inAMoment));
}

TEST_F(ServerConnectorTest, AnAttemptThatNobodyWaitsForHangsUp) {
    EXPECT_EQ(failure(), NoConnection::silent);
    ASSERT_TRUE(server->takesConnection(inAMoment));
    connector.reset();
    server->welcome();
    EXPECT_TRUE(server->isHungUpOn());
}

TEST_F(ServerConnectorTest, AnotherDisplayIsAnotherAttempt) {
    EXPECT_EQ(failure(), NoConnection::silent);
    ASSERT_TRUE(server->takesConnection(inAMoment));
    StubbornServer other;
    qputenv("DISPLAY", other.name());
    EXPECT_EQ(failure(), NoConnection::silent);
    EXPECT_TRUE(other.takesConnection(inAMoment));
    server->welcome();
    EXPECT_TRUE(server->isHungUpOn());
}

TEST_F(ServerConnectorTest, AServerThatFailsAfterItsFirstWordsIsKnownForWhatItDoes) {
    struct Case {
        const char* why;
        bool hangsUp;
        NoConnection expected;
    };

    for (const auto& c :
         {Case{"it falls silent", false, NoConnection::silent}, Case{"it hangs up", true, NoConnection::unreachable}}) {
        SCOPED_TRACE(c.why);
        connector.emplace(Patience{.usual = 50ms, .whileStalled = std::chrono::milliseconds(inAMoment)});
        EXPECT_EQ(failure(), NoConnection::silent);
        ASSERT_TRUE(server->takesConnection(inAMoment));
        server->welcome();
        if (c.hangsUp) {
            server->hangUp();
        }
        const auto opened = XcbConnection::open(*connector);
        ASSERT_FALSE(opened);
        EXPECT_EQ(opened.error(), c.expected);
        EXPECT_TRUE(c.hangsUp || server->isHungUpOn()) << "the connection is kept";
    }
}

TEST_F(ServerConnectorTest, KnowsAtOnceWhereThereIsNoServer) {
    connector.emplace(Patience{.usual = std::chrono::milliseconds(inAMoment), .whileStalled = 1ms});
    server.reset();
    EXPECT_EQ(failure(), NoConnection::unreachable) << "nobody listens any more";
    qputenv("DISPLAY", "no display");
    EXPECT_EQ(failure(), NoConnection::unreachable);
    qunsetenv("DISPLAY");
    EXPECT_EQ(failure(), NoConnection::unreachable);
}

} // namespace

} // namespace pelloran::x11
