#pragma once

#include "platform/PanelWindow.h"
#include "tests/contracts/BackEnd.h"

#include <QGuiApplication>
#include <QTest>
#include <QWindow>

#include <memory>

namespace pelloran::testing {

class PanelWindowContract : public ::testing::TestWithParam<BackEnd<std::unique_ptr<PanelWindow>>> {
protected:
    void SetUp() override {
        window.setFlags(panel->windowFlags());
        window.setGeometry(100, 100, 360, 420);
    }

    // As whoever has a panel does.
    void attach() {
        window.create();
        panel->attach(window);
    }

    QWindow window; // outlives the panel
    const std::unique_ptr<PanelWindow> panel = GetParam().make();
};

TEST_P(PanelWindowContract, ItsWindowNeverWantsTheKeyboard) {
    EXPECT_TRUE(panel->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
    EXPECT_EQ(panel->windowFlags(), panel->windowFlags()) << "whenever it is asked";
    attach();
    window.show();
    panel->raise();
    QCoreApplication::processEvents();
    if (QGuiApplication::platformName() != QStringLiteral("offscreen")) { // which gives it to whatever is raised
        EXPECT_NE(QGuiApplication::focusWindow(), &window);
    }
}

TEST_P(PanelWindowContract, MayBeAskedForAnythingBeforeItHasAWindow) {
    panel->raise();
    panel->blurBehind(14);
    EXPECT_EQ(panel->isComposited(), panel->isComposited());
    attach();
    panel->raise();
    EXPECT_FALSE(window.isVisible());
}

TEST_P(PanelWindowContract, NeitherAttachingNorRaisingShowsAWindow) {
    attach();
    EXPECT_FALSE(window.isVisible());
    panel->raise();
    EXPECT_FALSE(window.isVisible());
    window.show();
    panel->raise();
    EXPECT_TRUE(window.isVisible());
    window.hide();
    panel->raise();
    EXPECT_FALSE(window.isVisible());
}

TEST_P(PanelWindowContract, BlursBehindAnyCornersOfAnySize) {
    attach();
    window.show();
    for (const double radius : {0.0, 0.5, 14.0, 10'000.0}) {
        panel->blurBehind(radius);
        window.resize(200, 100);
        panel->blurBehind(radius);
    }
    EXPECT_TRUE(window.isVisible());
}

TEST_P(PanelWindowContract, TellsNoChangeWhereNothingChanges) {
    int told = 0;
    panel->compositingChanged = [&] { ++told; };
    const bool composited = panel->isComposited();
    attach();
    window.show();
    panel->raise();
    panel->blurBehind(14);
    QCoreApplication::processEvents();
    EXPECT_EQ(panel->isComposited(), composited);
    EXPECT_EQ(told, 0);
}

TEST_P(PanelWindowContract, EndsBeforeItsWindow) {
    auto other = GetParam().make();
    QWindow shown;
    shown.setFlags(other->windowFlags());
    shown.create();
    other->attach(shown);
    shown.show();
    other->raise();
    other.reset();
    shown.hide();
    shown.show();
    EXPECT_TRUE(shown.isVisible());
}

} // namespace pelloran::testing
