#include "platform/qt-network/NewSockets.h"

#include <QNetworkProxy>
#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace pelloran {
namespace {

constexpr int patience = 20'000; // milliseconds

// Both ends of a connection, as this process has them.
struct Connection {
    explicit Connection(QTcpServer& server) {
        near.setProxy(QNetworkProxy::NoProxy);
        near.connectToHost(server.serverAddress(), server.serverPort());
        EXPECT_TRUE(near.waitForConnected(patience));
        EXPECT_TRUE(server.hasPendingConnections() || server.waitForNewConnection(patience));
        far.reset(server.nextPendingConnection());
    }

    // To the near end.
    void send(qsizetype bytes) {
        far->write(QByteArray(bytes, 'x'));
        EXPECT_TRUE(far->waitForBytesWritten(patience));
        while (near.bytesAvailable() < bytes) {
            ASSERT_TRUE(near.waitForReadyRead(patience));
        }
    }

    QTcpSocket near;
    std::unique_ptr<QTcpSocket> far;
};

TEST(NewSockets, AreCountedAndEndedWithoutThoseOfBefore) {
    QTcpServer server;
    server.setProxy(QNetworkProxy::NoProxy);
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    Connection before(server);
    const NewSockets sockets;
    before.send(2000);
    EXPECT_EQ(sockets.mostReceived(), 0) << "it was there";
    Connection later(server);
    later.send(1000);
    EXPECT_EQ(sockets.mostReceived(), 1000);
    sockets.end();
    EXPECT_TRUE(later.near.waitForDisconnected(patience)) << "from outside";
    before.send(3000);
    EXPECT_EQ(before.near.state(), QAbstractSocket::ConnectedState);
    sockets.end(); // of nothing more
}

TEST(NewSockets, AreToldApart) {
    struct Case {
        const char* why;
        SocketKey one;
        SocketKey other;
        bool same;
    };

    const std::string here = "127.0.0.1:1";
    const std::string there = "127.0.0.1:2";
    const Case cases[] = {
        {"numbers tell", SocketKey::of(7, 5, here), SocketKey::of(8, 5, here), false},
        {"a socket of two descriptors is one", SocketKey::of(7, 5, here), SocketKey::of(7, 6, here), true},
        {"it has got an address meanwhile", SocketKey::of(7, 5, ""), SocketKey::of(7, 5, here), true},
        {"no numbers, another descriptor", SocketKey::of(0, 5, here), SocketKey::of(0, 6, here), false},
        {"the descriptor of one that was closed", SocketKey::of(0, 5, here), SocketKey::of(0, 5, there), false},
        {"the same all the while", SocketKey::of(0, 5, here), SocketKey::of(0, 5, here), true},
        {"a number and none", SocketKey::of(7, 5, here), SocketKey::of(0, 5, here), false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.one == c.other, c.same) << c.why;
    }
}

TEST(NewSockets, AreLookedForAmongSoManyDescriptors) {
    struct Case {
        const char* why;
        long limit;
        int looksAt;
    };

    const Case cases[] = {
        {"all of a few", 256, 256},
        {"no more than a program of ours has", 1'048'576, 1024},
        {"as many as it likes", -1, 1024},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(NewSockets::looksAt(c.limit), c.looksAt) << c.why;
    }
}

} // namespace
} // namespace pelloran
