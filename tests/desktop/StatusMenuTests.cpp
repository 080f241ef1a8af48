#include "tests/desktop/StatusMenuTest.h"
#include "tests/support/Printing.h"

#include <QElapsedTimer>

#include <algorithm>

// The item in the status area and its menu, by real clicks and keys.
namespace pelloran {
namespace {

using testing::Letters;
using testing::StatusMenuTest;
using testing::until;

class StatusMenu : public StatusMenuTest {
protected:
    // The one line whose mark has most of it filled.
    int markedLine(xcb_window_t menu) {
        const QImage shown = picture(menu);
        const QRgb background = testing::backgroundOf(shown);
        std::vector<int> inks;
        for (const QRect& line : testing::textLines(shown)) {
            int ink = 0;
            for (int y = line.top(); y <= line.bottom(); ++y) {
                for (int x = line.left(); x < 22; ++x) {
                    ink += std::abs(qGray(shown.pixel(x, y)) - qGray(background));
                }
            }
            inks.push_back(ink);
        }
        return static_cast<int>(std::ranges::max_element(inks) - inks.begin());
    }

    // Snapshots come at their own pace, too: what `refreshNow` does must bring one sooner than that.
    void expectSnapshotAtOnce(const std::function<void()>& prepare, const std::function<void()>& refreshNow) {
        constexpr int tries = 8; // a busy machine may be late
        constexpr qint64 soon = 500;
        for (int i = 0; i < tries; ++i) {
            prepare();
            ASSERT_TRUE(pelloran.printsAnother());
            QElapsedTimer sinceLast;
            sinceLast.start();
            refreshNow();
            ASSERT_TRUE(pelloran.waitFor([](const QJsonObject&) { return true; }));
            if (sinceLast.elapsed() < soon) {
                return;
            }
        }
        ADD_FAILURE() << "no snapshot at once";
    }
};

TEST_F(StatusMenu, HasAnIconThatOpensItWithEitherButton) {
    startPanelWithTray();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    const auto size = [this] {
        const QImage shown = picture(trayIcon());
        return testing::inkOf(shown, shown.pixel(0, 0)).size();
    };
    EXPECT_TRUE(until([&] { return size().width() >= 12 && size().height() >= 12; }));
    EXPECT_LE(size().width(), 18);
    EXPECT_LE(size().height(), 18);
    for (const int button : {1, 3}) {
        const auto menu = openMenu(client->bounds(trayIcon()).center(), button);
        EXPECT_TRUE(client->bounds(client->root()).contains(client->bounds(menu)));
        expectWords(menu, quit, Letters::english, QStringLiteral("Quit Pelloran"));
        closeMenu();
    }
}

TEST_F(StatusMenu, DoesWhatItsEntriesSay) {
    startPanelWithTray();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    const QRect before = panelBounds();
    click(openTrayMenu(), toggleOverlay);
    EXPECT_TRUE(until([this] { return panel() == XCB_WINDOW_NONE; }));
    EXPECT_TRUE(pelloran.printsAnother()) << "it does not go on";
    click(openTrayMenu(), toggleOverlay);
    EXPECT_TRUE(until([&] { return panel() != XCB_WINDOW_NONE && panelBounds() == before; }));

    xcb_window_t menu = XCB_WINDOW_NONE;
    expectSnapshotAtOnce([&] { menu = openTrayMenu(); }, [&] { click(menu, refresh); });

    click(openTrayMenu(), checkConfig);
    EXPECT_TRUE(until([this] { return popups().empty(); }));
    EXPECT_TRUE(pelloran.printsAnother()) << "it does not go on";

    click(openTrayMenu(), checkAppUpdate);
    EXPECT_TRUE(until([this] { return popups().size() == 1; })) << "the answer is an alert";
    hand.key("Return");
    EXPECT_TRUE(until([this] { return popups().empty(); }));

    click(openTrayMenu(), quit);
    expectEnd(0);
}

TEST_F(StatusMenu, ObeysItsKeysWhileItIsOpen) {
    startPanelWithTray();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    openTrayMenu();
    hand.key("ctrl+o");
    EXPECT_TRUE(until([this] { return panel() == XCB_WINDOW_NONE && popups().empty(); }));
    openTrayMenu();
    hand.key("ctrl+o");
    EXPECT_TRUE(until([this] { return panel() != XCB_WINDOW_NONE && popups().empty(); }));
    expectSnapshotAtOnce([this] { openTrayMenu(); }, [this] { hand.key("ctrl+r"); });
    openTrayMenu();
    hand.key("ctrl+q");
    expectEnd(0);
}

TEST_F(StatusMenu, SwitchesTheLanguageAndBack) {
    startPanelWithTray();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    auto languages = openLanguages(openTrayMenu());
    EXPECT_EQ(markedLine(languages), system);
    click(languages, chinese);
    expectSnapshotWith(QStringLiteral("等待"));
    EXPECT_TRUE(until([&] { return isStored("pelloran.language=zh"); }));

    auto menu = openTrayMenu();
    expectWords(menu, toggleOverlay, Letters::chinese, QStringLiteral("显示/隐藏悬浮窗"));
    languages = openLanguages(menu);
    EXPECT_EQ(markedLine(languages), chinese);
    closeMenu();

    const QPoint icon = client->bounds(trayIcon()).center();
    hand.moveTo(icon + QPoint(1, 1));
    const auto tip = topmost(1, 1);
    expectWords(tip, 0, Letters::chinese, QStringLiteral("炉石传说助手"));
    hand.moveTo({900, 700});
    EXPECT_TRUE(until([this] { return popups().empty(); })) << "the tool tip stays";

    click(openLanguages(openTrayMenu()), english);
    expectSnapshotWith(QStringLiteral("Waiting"));
    EXPECT_TRUE(until([&] { return isStored("pelloran.language=en"); }));
    menu = openTrayMenu();
    expectWords(menu, toggleOverlay, Letters::english, QStringLiteral("Show/Hide Overlay"));
    EXPECT_EQ(markedLine(openLanguages(menu)), english);
    closeMenu();
}

TEST_F(StatusMenu, OpensOnThePanelAndTakesATrayThatComesLater) {
    startPanel();
    const auto menu = openMenu(panelBackground(), 3);
    expectWords(menu, toggleOverlay, Letters::english, QStringLiteral("Show/Hide Overlay"));
    click(openLanguages(menu), english);
    EXPECT_TRUE(until([this] { return popups().empty(); }));

    startTray();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    waitForIconInNewTray();
    click(openTrayMenu(), quit);
    expectEnd(0);
}

} // namespace
} // namespace pelloran
