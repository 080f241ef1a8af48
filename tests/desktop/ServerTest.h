#pragma once

#include "tests/desktop/StatusMenuTest.h"
#include "tests/support/StaticServer.h"

namespace pelloran::testing {

// The desktop program with a tray and both its servers: one nginx, with nothing on it yet.
class ServerTest : public StatusMenuTest {
protected:
    void SetUp() override {
        StatusMenuTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        if (!StaticServer::isInstalled()) {
            GTEST_SKIP() << "needs nginx, which is not installed";
        }
        ASSERT_TRUE(server.start()) << server.errors().toStdString();
    }

    // Arguments that make the program ask the server.
    QStringList served() const {
        return {QStringLiteral("--config-server"), server.url(), QStringLiteral("--update-server"), server.url()};
    }

    void endPelloran() {
        pelloran.process.terminate();
        expectEnd(0);
    }

    StaticServer server;
};

} // namespace pelloran::testing
