#include "platform/macos/WindowWatch.h"

#include "tests/support/Printing.h"

#include <QStringList>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace pelloran::macos {

namespace {

// Windows in memory.
class WindowWatchTest : public ::testing::Test {
protected:
    void follow() {
        watch = std::make_unique<WindowWatch>(*window);
        watch->came = [this] { told << QStringLiteral("came"); };
        watch->leaves = [this] {
            ASSERT_NE(watch->window(), nullptr);
            EXPECT_NE(watch->window()->handle(), nullptr) << "the native window is still there";
            told << QStringLiteral("leaves");
        };
    }

    void show() {
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }

    QStringList took() { return std::exchange(told, {}); }

    std::unique_ptr<QWindow> window = std::make_unique<QWindow>();
    std::unique_ptr<WindowWatch> watch;
    QStringList told;
};

const QStringList came{QStringLiteral("came")};
const QStringList leaves{QStringLiteral("leaves")};

TEST_F(WindowWatchTest, TellsOfEachTimeItComesOnScreenAndGoes) {
    window->create();
    follow();
    EXPECT_EQ(took(), QStringList()) << "it was there before";
    for (int round = 0; round < 2; ++round) {
        window->show();
        EXPECT_TRUE(QTest::qWaitFor([this] { return !told.isEmpty(); }));
        EXPECT_EQ(took(), came);
        window->hide();
        EXPECT_EQ(took(), leaves);
        QCoreApplication::processEvents(); // the window's being gone is told later
        EXPECT_EQ(took(), QStringList());
    }
}

TEST_F(WindowWatchTest, AChangeOfSizeIsNoComing) {
    window->create();
    follow();
    show();
    took();
    window->resize(300, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(window->size(), QSize(300, 200));
    EXPECT_EQ(took(), QStringList());
}

TEST_F(WindowWatchTest, TellsWhenTheWindowIsMadeAnew) {
    window->create();
    follow();
    show();
    took();
    window->destroy();
    const QStringList gone = took();
    EXPECT_TRUE(gone.contains(leaves.front()));
    EXPECT_FALSE(gone.contains(came.front()));
    EXPECT_NE(watch->window(), nullptr);
    window->create();
    EXPECT_EQ(took(), came);
}

TEST_F(WindowWatchTest, MayFollowAWindowThatHasNotBeenMade) {
    follow();
    window->create();
    EXPECT_EQ(took(), came);
}

TEST_F(WindowWatchTest, TheWindowMayGoFirst) {
    window->create();
    follow();
    show();
    took();
    window.reset();
    EXPECT_TRUE(told.contains(leaves.front()));
    EXPECT_EQ(watch->window(), nullptr);
    watch.reset();
}

TEST_F(WindowWatchTest, TellsNothingOnceItIsGoneItself) {
    window->create();
    follow();
    watch.reset();
    show();
    window.reset();
    EXPECT_EQ(told, QStringList());
}

TEST_F(WindowWatchTest, NeedsNoListener) {
    const WindowWatch unheard(*window);
    show();
    window->destroy();
    EXPECT_EQ(unheard.window(), window.get());
}

} // namespace

} // namespace pelloran::macos
