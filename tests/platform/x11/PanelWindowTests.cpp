#include "platform/PanelWindow.h"

#include "platform/GuiSession.h"

#include <QGuiApplication>
#include <QWindow>

#include <gtest/gtest.h>

namespace pelloran {

namespace {

TEST(PanelWindow, BypassesTheWindowManagerAndNeverTakesTheKeyboard) {
    const Qt::WindowFlags flags = PanelWindow::create()->windowFlags();
    for (const Qt::WindowType flag : {Qt::BypassWindowManagerHint, Qt::FramelessWindowHint, Qt::WindowStaysOnTopHint,
                                      Qt::WindowDoesNotAcceptFocus}) {
        EXPECT_TRUE(flags.testFlag(flag)) << flag;
    }
    EXPECT_EQ(flags & Qt::WindowType_Mask, Qt::Tool);
}

TEST(PanelWindow, WithoutAnXServerOnlyItsCornersMatter) {
    ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("offscreen"));
    QWindow window;
    const auto panel = PanelWindow::create();
    bool told = false;
    panel->compositingChanged = [&] { told = true; };
    EXPECT_TRUE(panel->isComposited());
    panel->raise();
    panel->blurBehind(14);
    panel->attach(window);
    window.resize(360, 420);
    window.show();
    panel->raise();
    panel->blurBehind(14);
    EXPECT_TRUE(panel->isComposited());
    EXPECT_TRUE(window.isVisible());
    EXPECT_FALSE(told);
}

TEST(GuiSession, AnotherPlatformThanX11NeedsNoServer) {
    for (const char* platform : {"offscreen", "minimal:option", "wayland;xcb"}) {
        SCOPED_TRACE(platform);
        qputenv("QT_QPA_PLATFORM", platform);
        qunsetenv("DISPLAY");
        EXPECT_TRUE(GuiSession::prepare());
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), platform);
    }
}

} // namespace

} // namespace pelloran
