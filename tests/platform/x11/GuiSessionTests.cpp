#include "platform/GuiSession.h"

#include "tests/platform/x11/X11Test.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran::testing {

namespace {

using GuiSessionTest = X11Test;

TEST(GuiSession, WithoutAServerNamesTheDisplay) {
    for (const char* platform : {"", "xcb", "xcb:option", "xcb;wayland"}) {
        SCOPED_TRACE(platform);
        qputenv("QT_QPA_PLATFORM", platform);
        qputenv("DISPLAY", ":64999");
        const auto outcome = GuiSession::prepare();
        ASSERT_FALSE(outcome);
        EXPECT_TRUE(outcome.error().contains(QStringLiteral("$DISPLAY (\":64999\")"))) << outcome.error().toStdString();
        qunsetenv("DISPLAY");
        const auto without = GuiSession::prepare();
        ASSERT_FALSE(without);
        EXPECT_TRUE(without.error().contains(QStringLiteral("$DISPLAY is not set"))) << without.error().toStdString();
    }
}

TEST_F(GuiSessionTest, ChoosesX11AndFindsTheServer) {
    qputenv("WAYLAND_DISPLAY", "wayland-0");
    qunsetenv("QT_QPA_PLATFORM");
    EXPECT_TRUE(GuiSession::prepare());
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), QByteArray("xcb"));
}

TEST_F(GuiSessionTest, LeavesTheUsersChoice) {
    qputenv("QT_QPA_PLATFORM", "xcb:option");
    EXPECT_TRUE(GuiSession::prepare());
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), QByteArray("xcb:option"));
}

} // namespace

} // namespace pelloran::testing
