#pragma once

#include "tests/desktop/Desktop.h"
#include "tests/desktop/Hand.h"
#include "tests/desktop/Picture.h"

namespace pelloran::testing {

// The desktop program with its panel, used and seen from outside.
class PanelTest : public DesktopTest {
protected:
    void SetUp() override;
    void TearDown() override;

    // Starts the program and waits until its panel stands there and draws.
    void startPanel(const QStringList& arguments = {});
    // Starts the game in full screen, and waits until it has the keyboard.
    void startGame(const QStringList& playing = {QStringLiteral("--scenario"), QStringLiteral("demo")});
    // The game goes on to the next offer, and the program has read all three of it.
    void playToPick(const QString& kind);

    // Of the program, on the screen: none when it is hidden.
    xcb_window_t panel();

    QRect panelBounds() { return client->bounds(panel()); }

    QImage panelPicture() { return client->screenshot(panelBounds()); }

    // Where nothing but its background is, at the bottom.
    QPoint panelBackground();
    QPoint closeButton();
    void expectPanelSize(const std::function<bool(QSize)>& wanted);

    // The program's other windows on the screen, the topmost first: menus and alerts.
    std::vector<xcb_window_t> popups();
    xcb_window_t gameWindow();
    bool gameHasKeyboard();

    // A second start of the program, to its end.
    ProgramOutput startAgain(const QStringList& arguments = {});

    // The program ends by itself with that code.
    void expectEnd(int exitCode);

    // A line of the file with the user's choices.
    bool isStored(const QByteArray& line);

    // Lines of the log that a test expects beyond those of every start.
    QList<QByteArray> expectedLog;
    Hand hand{environment};

private:
    std::vector<xcb_window_t> windowsOnRoot();
};

} // namespace pelloran::testing
