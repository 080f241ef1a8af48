#include "desktop/MenuText.h"
#include "desktop/PanelTest.h"
#include "support/Printing.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>

// The item in the status area and its menu, by real clicks and keys.
namespace pelloran {
namespace {

using testing::Letters;
using testing::PanelTest;
using testing::until;
using testing::wordsIn;

// The lines of the menu and of its language submenu.
enum Entry { toggleOverlay, refresh, checkConfig, checkAppUpdate, language, quit, entryCount };

enum LanguageEntry { system, chinese, english, languageCount };

class StatusMenu : public PanelTest {
protected:
    void SetUp() override {
        PanelTest::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) {
            startWindowManager();
        }
    }

    void startPanelWithTray() {
        startTray();
        if (!IsSkipped() && !HasFatalFailure()) {
            startPanel();
            ASSERT_TRUE(until([this] { return trayIcon() != XCB_WINDOW_NONE; })) << "no icon in the tray";
        }
    }

    // Somewhere inside of a window of the tray's.
    xcb_window_t trayIcon() {
        for (const xcb_window_t outer : client->children(client->root())) {
            if (!client->text(outer, "WM_CLASS").startsWith("pelloran")) {
                if (const auto icon = iconInside(outer, 4); icon != XCB_WINDOW_NONE) {
                    return icon;
                }
            }
        }
        return XCB_WINDOW_NONE;
    }

    xcb_window_t iconInside(xcb_window_t window, int depth) {
        for (const xcb_window_t inner : client->children(window)) {
            if (client->text(inner, "WM_CLASS").startsWith("pelloran") && client->isViewable(inner)) {
                return inner;
            }
            if (depth > 0) {
                if (const auto icon = iconInside(inner, depth - 1); icon != XCB_WINDOW_NONE) {
                    return icon;
                }
            }
        }
        return XCB_WINDOW_NONE;
    }

    QImage picture(xcb_window_t window) { return client->screenshot(client->bounds(window)); }

    // The topmost window of the program, once it has that many lines of text.
    xcb_window_t topmost(std::size_t popupCount, int lineCount) {
        const auto complete = [&] {
            const auto open = popups();
            return open.size() == popupCount && std::ssize(testing::textLines(picture(open.front()))) == lineCount;
        };
        EXPECT_TRUE(until(complete)) << popups().size() << " windows";
        return complete() ? popups().front() : xcb_window_t{XCB_WINDOW_NONE};
    }

    xcb_window_t openMenu(QPoint at, int button) {
        hand.click(at, button);
        return topmost(1, entryCount);
    }

    // Not twice in the same place: a quick test would make it a double click.
    xcb_window_t openTrayMenu() {
        aside = -aside;
        return openMenu(client->bounds(trayIcon()).center() + aside, 1);
    }

    xcb_window_t openLanguages(xcb_window_t menu) {
        click(menu, language);
        return topmost(2, languageCount);
    }

    void click(xcb_window_t menu, int entry) {
        const auto lines = testing::textLines(picture(menu));
        ASSERT_LT(entry, std::ssize(lines));
        hand.click(client->bounds(menu).topLeft() + QPoint(40, lines[static_cast<std::size_t>(entry)].center().y()));
    }

    void expectWords(xcb_window_t window, int entry, Letters letters, const QString& expected) {
        const QImage shown = picture(window);
        const auto lines = testing::textLines(shown);
        ASSERT_LT(entry, std::ssize(lines));
        const QString read = wordsIn(shown, lines[static_cast<std::size_t>(entry)], letters);
        EXPECT_GE(testing::likeness(read, expected), 0.6) << "read: " << read.toStdString();
    }

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

    void closeMenu() {
        while (!popups().empty()) {
            const auto open = popups().size();
            hand.key("Escape");
            ASSERT_TRUE(until([&] { return popups().size() < open; })) << "the menu stays";
        }
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

    void expectSnapshotWith(const QString& part) {
        EXPECT_TRUE(pelloran.waitFor([&part](const QJsonObject& snapshot) {
            return snapshot[QStringLiteral("message")].toString().contains(part);
        }));
    }

private:
    QPoint aside{6, 0};
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
    QFile stored(home.path() + QStringLiteral("/config/Pelloran/Pelloran.ini"));
    const auto isStored = [&stored](const char* line) {
        const bool open = stored.open(QIODevice::ReadOnly);
        const bool found = open && stored.readAll().split('\n').contains(line);
        stored.close();
        return found;
    };
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
    EXPECT_TRUE(until([this] { return trayIcon() != XCB_WINDOW_NONE; })) << "it is not taken";
    click(openTrayMenu(), quit);
    expectEnd(0);
}

} // namespace
} // namespace pelloran
