#include "tests/desktop/StatusMenuTest.h"

#include "tests/support/Printing.h"

namespace pelloran::testing {

void StatusMenuTest::SetUp() {
    PanelTest::SetUp();
    if (!IsSkipped() && !HasFatalFailure()) {
        startWindowManager();
    }
}

void StatusMenuTest::startPanelWithTray(const QStringList& arguments) {
    if (!client->hasOwner("_NET_SYSTEM_TRAY_S0")) {
        startTray();
    }
    if (!IsSkipped() && !HasFatalFailure()) {
        startPanel(arguments);
        ASSERT_TRUE(until([this] { return trayIcon() != XCB_WINDOW_NONE; })) << "no icon in the tray";
    }
}

xcb_window_t StatusMenuTest::trayIcon() {
    // Somewhere inside of a window of the tray's.
    for (const xcb_window_t outer : client->children(client->root())) {
        if (!client->text(outer, "WM_CLASS").startsWith("pelloran")) {
            if (const auto icon = iconInside(outer, 4); icon != XCB_WINDOW_NONE) {
                return icon;
            }
        }
    }
    return XCB_WINDOW_NONE;
}

void StatusMenuTest::waitForIconInNewTray() {
    ASSERT_TRUE(until([this] { return trayIcon() != XCB_WINDOW_NONE; })) << "no icon in the new tray";
    ASSERT_TRUE(until([this] {
        hand.click(client->bounds(trayIcon()).center());
        return until([this] { return !popups().empty(); }, 3'000);
    })) << "no click reaches it";
    closeMenu();
}

xcb_window_t StatusMenuTest::iconInside(xcb_window_t window, int depth) {
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

xcb_window_t StatusMenuTest::topmost(std::size_t popupCount, int lineCount) {
    const auto complete = [&] {
        const auto open = popups();
        return open.size() == popupCount && std::ssize(textLines(picture(open.front()))) == lineCount;
    };
    EXPECT_TRUE(until(complete)) << popups().size() << " windows";
    return complete() ? popups().front() : xcb_window_t{XCB_WINDOW_NONE};
}

xcb_window_t StatusMenuTest::openMenu(QPoint at, int button) {
    hand.click(at, button);
    return topmost(1, entryCount);
}

xcb_window_t StatusMenuTest::openTrayMenu() {
    // Not twice in the same place: a quick test would make it a double click.
    aside = -aside;
    return openMenu(client->bounds(trayIcon()).center() + aside, 1);
}

xcb_window_t StatusMenuTest::openLanguages(xcb_window_t menu) {
    click(menu, language);
    return topmost(2, languageCount);
}

void StatusMenuTest::click(xcb_window_t menu, int entry) {
    const auto lines = textLines(picture(menu));
    ASSERT_LT(entry, std::ssize(lines));
    hand.click(client->bounds(menu).topLeft() + QPoint(40, lines[static_cast<std::size_t>(entry)].center().y()));
}

void StatusMenuTest::closeMenu() {
    while (!popups().empty()) {
        const auto open = popups().size();
        hand.key("Escape");
        ASSERT_TRUE(until([&] { return popups().size() < open; })) << "the menu stays";
    }
}

void StatusMenuTest::expectWords(xcb_window_t window, int entry, Letters letters, const QString& expected) {
    const QImage shown = picture(window);
    const auto lines = textLines(shown);
    ASSERT_LT(entry, std::ssize(lines));
    const QString read = wordsIn(shown, lines[static_cast<std::size_t>(entry)], letters);
    EXPECT_GE(likeness(read, expected), 0.6) << "read: " << read.toStdString();
}

void StatusMenuTest::expectSnapshotWith(const QString& part) {
    EXPECT_TRUE(pelloran.waitFor([&part](const QJsonObject& snapshot) {
        return snapshot[QStringLiteral("message")].toString().contains(part);
    })) << "none has "
        << part.toStdString() << "; the last: " << pelloran.last[QStringLiteral("message")].toString().toStdString();
}

} // namespace pelloran::testing
