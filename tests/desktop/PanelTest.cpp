#include "tests/desktop/PanelTest.h"

#include "tests/support/Printing.h"

#include <QFile>
#include <QJsonArray>

#include <algorithm>

namespace pelloran::testing {

namespace {

const QByteArray everyStart[] = {"[Pelloran] the figures in use are invented samples", "[Pelloran] boot cards=",
                                 "[Pelloran] config sync: Config sync failed; "}; // no server is built in
const QByteArray noTray = "[Pelloran] this desktop has no status area";

constexpr QPoint aside(1910, 700); // where the pointer is in nobody's way

} // namespace

void PanelTest::SetUp() {
    DesktopTest::SetUp();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    needs(QStringLiteral("xdotool"));
    hand = Hand(environment);
}

void PanelTest::TearDown() {
    for (const QByteArray& line : pelloran.standardError.split('\n')) {
        const auto begins = [&line](const QByteArray& known) { return line.startsWith(known); };
        EXPECT_TRUE(line.isEmpty() || std::ranges::any_of(everyStart, begins) ||
                    std::ranges::any_of(expectedLog, begins))
            << "unexpected in the log: " << line.toStdString();
    }
}

void PanelTest::startPanel(const QStringList& arguments) {
    if (!client->hasOwner("_NET_SYSTEM_TRAY_S0")) {
        expectedLog.append(noTray);
    }
    hand.moveTo(aside);
    startPelloran(QStringList{QStringLiteral("--snapshots")} + arguments);
    ASSERT_TRUE(until([this] { return panel() != XCB_WINDOW_NONE; })) << "no panel";
    ASSERT_TRUE(pelloran.printsAnother());
    // It opens for tiles and shrinks to its message.
    expectPanelSize([](QSize size) { return size == QSize(360, 160); });
}

void PanelTest::startGame(const QStringList& playing) {
    startStage(QStringList{QStringLiteral("--full-screen")} + playing);
    ASSERT_TRUE(stage.waitFor([](const QJsonObject&) { return true; }));
    ASSERT_TRUE(until([this] { return gameHasKeyboard(); })) << "the game is not active";
    ASSERT_TRUE(until([this] { return client->bounds(gameWindow()) == QRect(0, 0, 1920, 1080); }));
}

void PanelTest::playToPick(const QString& kind) {
    playTo(kind);
    const auto offered = pelloran.waitFor([&kind](const QJsonObject& snapshot) {
        const QJsonArray cards = snapshot[QStringLiteral("cards")].toArray();
        return snapshot[QStringLiteral("phase")].toString() == kind && cards.size() == 3 &&
               std::ranges::all_of(cards,
                                   [](const QJsonValue& card) { return card[QStringLiteral("recognized")].toBool(); });
    });
    ASSERT_TRUE(offered) << "the offers are not read";
}

std::vector<xcb_window_t> PanelTest::windowsOnRoot() {
    std::vector<xcb_window_t> found;
    for (const xcb_window_t window : client->children(client->root())) {
        if (client->text(window, "WM_CLASS").startsWith("pelloran") && client->isViewable(window)) {
            found.insert(found.begin(), window);
        }
    }
    return found;
}

xcb_window_t PanelTest::panel() {
    for (const xcb_window_t window : windowsOnRoot()) {
        const auto types = client->numbers(window, "_NET_WM_WINDOW_TYPE");
        if (std::ranges::find(types, client->atom("_NET_WM_WINDOW_TYPE_UTILITY")) != types.end()) {
            return window;
        }
    }
    return XCB_WINDOW_NONE;
}

std::vector<xcb_window_t> PanelTest::popups() {
    std::vector<xcb_window_t> found = windowsOnRoot();
    std::erase(found, panel());
    return found;
}

QPoint PanelTest::panelBackground() {
    const QRect bounds = panelBounds();
    return {bounds.center().x(), bounds.bottom() - 9};
}

QPoint PanelTest::closeButton() {
    return panelBounds().topRight() + QPoint(-17, 17);
}

void PanelTest::expectPanelSize(const std::function<bool(QSize)>& wanted) {
    EXPECT_TRUE(until([&] { return wanted(panelBounds().size()); }))
        << "it is " << panelBounds().width() << " x " << panelBounds().height();
}

xcb_window_t PanelTest::gameWindow() {
    for (const xcb_window_t window : client->numbers(client->root(), "_NET_CLIENT_LIST")) {
        if (client->text(window, "WM_CLASS").contains("Hearthstone")) {
            return window;
        }
    }
    return XCB_WINDOW_NONE;
}

bool PanelTest::gameHasKeyboard() {
    const xcb_window_t game = gameWindow();
    return game != XCB_WINDOW_NONE && client->focus() == game &&
           client->numbers(client->root(), "_NET_ACTIVE_WINDOW") == std::vector<std::uint32_t>{game};
}

ProgramOutput PanelTest::startAgain(const QStringList& arguments) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(pelloranProgram(), arguments);
    EXPECT_TRUE(until([&] { return process.state() == QProcess::NotRunning; }));
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

bool PanelTest::isStored(const QByteArray& line) {
    QFile file(home.path() + QStringLiteral("/config/Pelloran/Pelloran.ini"));
    return file.open(QIODevice::ReadOnly) && file.readAll().split('\n').contains(line);
}

void PanelTest::expectEnd(int exitCode) {
    ASSERT_TRUE(until([this] { return pelloran.process.state() == QProcess::NotRunning; })) << "it goes on";
    EXPECT_EQ(pelloran.process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(pelloran.process.exitCode(), exitCode);
}

} // namespace pelloran::testing
