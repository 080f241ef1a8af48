#pragma once

#include "tests/desktop/MenuText.h"
#include "tests/desktop/PanelTest.h"

namespace pelloran::testing {

// The desktop program under a window manager, with its item in the status area and its menu.
class StatusMenuTest : public PanelTest {
protected:
    // The lines of the menu and of its language submenu.
    enum Entry { toggleOverlay, refresh, checkConfig, checkAppUpdate, language, quit, entryCount };

    enum LanguageEntry { system, chinese, english, languageCount };

    void SetUp() override;

    void startPanelWithTray(const QStringList& arguments = {});

    // The program's window in the tray; none when it is not there.
    xcb_window_t trayIcon();

    // Until the icon is in a tray that has just come, and a click on it opens the menu, which is closed again: such a
    // tray moves its icons about for a moment, and a click meanwhile reaches none.
    void waitForIconInNewTray();

    QImage picture(xcb_window_t window) { return client->screenshot(client->bounds(window)); }

    // The topmost window of the program, once it has that many lines of text.
    xcb_window_t topmost(std::size_t popupCount, int lineCount);

    xcb_window_t openMenu(QPoint at, int button);
    xcb_window_t openTrayMenu();
    xcb_window_t openLanguages(xcb_window_t menu);

    void click(xcb_window_t menu, int entry);
    void closeMenu();

    void expectWords(xcb_window_t window, int entry, Letters letters, const QString& expected);
    void expectSnapshotWith(const QString& part);

private:
    xcb_window_t iconInside(xcb_window_t window, int depth);

    QPoint aside{6, 0};
};

} // namespace pelloran::testing
