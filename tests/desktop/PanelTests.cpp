#include "tests/desktop/PanelTest.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>

// The panel beside the simulated game: where it stands, how large it is, and that the game keeps the keyboard.
namespace pelloran {
namespace {

using testing::PanelTest;
using testing::tilesAcross;
using testing::tilesDown;
using testing::until;

const QColor gold = QColor::fromRgbF(0.95F, 0.78F, 0.35F);

bool isColumn(QSize size) {
    return size.height() == 600 && size.width() >= 300 && size.width() <= 420;
}

bool isRow(QSize size) {
    return size.width() >= 648 && size.height() >= 280 && size.height() <= 420;
}

// With a window manager.
class Panel : public PanelTest {
protected:
    void SetUp() override {
        PanelTest::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) {
            startWindowManager();
        }
    }

    void expectAboveGame() {
        EXPECT_TRUE(until([this] { return client->isAbove(panel(), gameWindow()); }));
        QRect title = panelBounds();
        title.setHeight(40);
        EXPECT_TRUE(until([&] { return testing::shows(client->screenshot(title), gold); }));
    }

    // Pulls at `handle` until the panel is `width` wide, and looks before the button is released.
    void dragTo(int width, QPoint handle, QPoint direction, const std::function<void()>& lookWhileHeld) {
        const int by = width - panelBounds().width();
        hand.pull(handle, handle + by * direction);
        EXPECT_TRUE(until([&] { return panelBounds().width() == width; })) << "it is " << panelBounds().width();
        EXPECT_TRUE(pelloran.printsAnother()); // a snapshot in the middle of the drag
        lookWhileHeld();
        hand.release();
    }

    void expectTurningBothWays(QPoint (*handle)(const QRect& bounds), QPoint direction) {
        startGame();
        startPanel();
        playToPick(QStringLiteral("cardPick"));
        expectPanelSize(isColumn);
        EXPECT_TRUE(until([this] { return tilesDown(panelPicture()) == 3; }));
        dragTo(620, handle(panelBounds()), direction, [this] {
            EXPECT_EQ(panelBounds().width(), 620);
            EXPECT_TRUE(until([this] { return tilesDown(panelPicture()) == 3; }));
            EXPECT_NE(tilesAcross(panelPicture()), 3);
        });
        expectPanelSize(isRow);
        EXPECT_TRUE(until([this] { return tilesAcross(panelPicture()) == 3; }));
        EXPECT_NE(tilesDown(panelPicture()), 3);
        dragTo(500, handle(panelBounds()), direction, [this] {
            EXPECT_EQ(panelBounds().width(), 500);
            EXPECT_NE(tilesDown(panelPicture()), 3);
        });
        expectPanelSize([](QSize size) { return size.width() <= 420 && size.height() >= 600; });
        EXPECT_TRUE(until([this] { return tilesDown(panelPicture()) == 3; }));
        EXPECT_NE(tilesAcross(panelPicture()), 3);
    }
};

TEST_F(Panel, FloatsAboveAFullScreenGameThatKeepsTheKeyboard) {
    startCompositor();
    if (IsSkipped()) {
        return;
    }
    startGame();
    client->watch(gameWindow());
    startPanel();
    expectAboveGame();
    EXPECT_TRUE(gameHasKeyboard()) << "after the start";

    hand.click(panelBackground());
    EXPECT_TRUE(pelloran.printsAnother());
    EXPECT_TRUE(gameHasKeyboard()) << "after a click";

    const QRect before = panelBounds();
    hand.pull(panelBackground(), panelBackground() + QPoint(120, -90));
    hand.release();
    EXPECT_TRUE(until([&] { return panelBounds() == before.translated(120, -90); }));
    expectAboveGame();
    EXPECT_TRUE(gameHasKeyboard()) << "after a drag";

    hand.click(panelBackground(), 3);
    ASSERT_TRUE(until([this] { return popups().size() == 1; })) << "no menu";
    EXPECT_TRUE(client->isAbove(popups().front(), panel()));
    hand.key("Escape");
    EXPECT_TRUE(until([this] { return popups().empty(); })) << "the menu stays";
    EXPECT_TRUE(gameHasKeyboard()) << "after its menu";

    hand.click(closeButton());
    EXPECT_TRUE(until([this] { return panel() == XCB_WINDOW_NONE; }));
    EXPECT_TRUE(gameHasKeyboard()) << "after it was hidden";

    EXPECT_EQ(startAgain().exitCode, 0);
    EXPECT_TRUE(until([this] { return panel() != XCB_WINDOW_NONE; }));
    EXPECT_TRUE(pelloran.printsAnother());
    expectAboveGame();
    EXPECT_TRUE(gameHasKeyboard()) << "after a second start";
    EXPECT_EQ(client->focusLosses(), 0);
}

TEST_F(Panel, TakesTheSizeOfWhatIsOffered) {
    startGame();
    startPanel();
    playToPick(QStringLiteral("heroPick"));
    expectPanelSize(isColumn);
    playToPick(QStringLiteral("cardPick"));
    expectPanelSize(isColumn);
    EXPECT_TRUE(until([this] { return tilesDown(panelPicture()) == 3; }));
    playTo(QStringLiteral("end"));
    expectPanelSize([](QSize size) { return size.height() == 160 && size.width() >= 320; });
}

TEST_F(Panel, TurnsWhenItsEdgeIsDraggedWideAndBack) {
    expectTurningBothWays([](const QRect& bounds) { return QPoint(bounds.right() - 2, bounds.center().y()); }, {1, 0});
}

TEST_F(Panel, TurnsWhenItsCornerIsDraggedWideAndBack) {
    expectTurningBothWays([](const QRect& bounds) { return bounds.topRight() + QPoint(-5, 6); }, {1, -1});
}

TEST_F(Panel, GoesThroughSizesInBetweenUnlessMotionIsReduced) {
    struct Case {
        const char* why;
        QStringList arguments;
        bool inOneStep;
    };

    const Case cases[] = {
        {"the size is animated", {}, false},
        {"reduced motion", {QStringLiteral("--reduce-motion")}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        startGame();
        startPanel(c.arguments);
        client->watch(panel());
        playToPick(QStringLiteral("heroPick"));
        expectPanelSize(isColumn);
        const std::vector<QSize> sizes = client->sizes();
        ASSERT_FALSE(sizes.empty());
        EXPECT_EQ(sizes.back(), QSize(360, 600));
        EXPECT_EQ(sizes.size() == 1, c.inOneStep) << sizes.size() << " sizes";
        pelloran.process.terminate();
        expectEnd(0);
        stage.write("quit\n");
        ASSERT_TRUE(until([this] { return stage.process.state() == QProcess::NotRunning; }));
    }
}

TEST_F(Panel, ComesBackOnASecondStartAndLeavesTheHeadlessProgramAlone) {
    startPanel();
    hand.click(closeButton());
    ASSERT_TRUE(until([this] { return panel() == XCB_WINDOW_NONE; }));
    const auto second = startAgain();
    EXPECT_EQ(second.exitCode, 0) << second.standardError.toStdString();
    EXPECT_TRUE(until([this] { return panel() != XCB_WINDOW_NONE; }));
    EXPECT_EQ(pelloran.process.state(), QProcess::Running);

    testing::LineProcess headless;
    headless.start(testing::pelloranProgram(), {QStringLiteral("--no-panel"), QStringLiteral("--logs-dir"), logsDir},
                   environment);
    EXPECT_TRUE(headless.printsAnother());
}

TEST_F(Panel, StandsWhereItWasPutAtTheNextStart) {
    const auto end = [this] {
        pelloran.process.terminate();
        expectEnd(0);
    };
    // What is seen has not been stored yet where the program lags behind the hand.
    const auto isRemembered = [this](const QByteArray& part) {
        return until([&] {
            QFile file(home.path() + QStringLiteral("/config/Pelloran/Pelloran.ini"));
            return file.open(QIODevice::ReadOnly) && file.readAll().replace('\\', "").contains(part);
        });
    };
    startPanel();
    const QRect first = panelBounds();
    hand.pull(panelBackground(), panelBackground() + QPoint(300, -200));
    hand.release();
    const QRect moved = first.translated(300, -200);
    EXPECT_TRUE(until([&] { return panelBounds() == moved; }));
    EXPECT_TRUE(isRemembered("\"x\":" + QByteArray::number(moved.x())));
    end();

    startPanel();
    EXPECT_EQ(panelBounds(), moved) << "the very place and size";
    hand.pull({panelBounds().right() - 2, panelBounds().center().y()}, {moved.right() + 98, moved.center().y()});
    hand.release();
    const QRect wide(moved.topLeft(), moved.size() + QSize(100, 0));
    EXPECT_TRUE(until([&] { return panelBounds() == wide; })) << panelBounds().width();
    hand.click(closeButton());
    ASSERT_TRUE(until([this] { return panel() == XCB_WINDOW_NONE; }));
    EXPECT_TRUE(isRemembered("\"shown\":false"));
    pelloran.process.kill(); // a run that does not come to its end
    ASSERT_TRUE(until([this] { return pelloran.process.state() == QProcess::NotRunning; }));

    startPelloran({QStringLiteral("--snapshots")});
    EXPECT_TRUE(pelloran.printsAnother());
    EXPECT_EQ(panel(), XCB_WINDOW_NONE) << "it was hidden";
    EXPECT_EQ(startAgain().exitCode, 0);
    ASSERT_TRUE(until([this] { return panel() != XCB_WINDOW_NONE; }));
    EXPECT_EQ(panelBounds(), wide);
    EXPECT_TRUE(startAgain({QStringLiteral("--reset-panel")}).standardError.contains("end the running program first"));
    EXPECT_EQ(panelBounds(), wide);
    end();

    startPanel({QStringLiteral("--reset-panel")});
    EXPECT_EQ(panelBounds(), first);
    end();
    startPanel();
    EXPECT_EQ(panelBounds(), first) << "forgotten for good";
}

TEST_F(Panel, EndsInOrderWhenItIsTerminated) {
    startPanel();
    pelloran.process.terminate();
    expectEnd(0);
    EXPECT_TRUE(until([this] { return panel() == XCB_WINDOW_NONE; }));
}

TEST_F(Panel, TellsOfMissingDataInAnAlertAndEnds) {
    // A program alone in its folder has no data. (An installed one knows no such folder, so this is the one that was
    // built.)
    const QString alone = home.path() + QStringLiteral("/alone");
    ASSERT_TRUE(QDir().mkpath(alone));
    const QString program = alone + QStringLiteral("/pelloran");
    ASSERT_TRUE(QFile::copy(QStringLiteral(PELLORAN_PROGRAM), program));
    pelloran.start(program, {QStringLiteral("--language"), QStringLiteral("en")}, environment);
    expectedLog = {"[Pelloran] "};
    ASSERT_TRUE(until([this] { return popups().size() == 1; })) << "no alert";
    const xcb_window_t alert = popups().front();
    EXPECT_TRUE(client->isAbove(alert, panel()));
    EXPECT_EQ(pelloran.process.state(), QProcess::Running);
    // Its only button is the lowest thing in it, at the right.
    ASSERT_TRUE(until([&] { return client->focus() == alert; })) << "an alert takes the keyboard";
    const QRect bounds = client->bounds(alert);
    EXPECT_TRUE(QRect(0, 0, 1920, 1080).contains(bounds));
    hand.click(bounds.bottomRight() - QPoint(40, 24));
    expectEnd(1);
    EXPECT_TRUE(pelloran.standardError.contains("[Pelloran] Failed to load win-rate data"))
        << pelloran.standardError.toStdString();
}

TEST_F(Panel, FollowsTheCompositor) {
    needs(QStringLiteral("picom"));
    if (IsSkipped()) {
        return;
    }
    // What lies behind is lighter than the panel.
    QImage white(500, 300, QImage::Format_RGB32);
    white.fill(Qt::white);
    client->setBackground(client->create({.bounds = {0, 780, 500, 300}, .overrideRedirect = true}), white);
    startPanel();
    const auto whole = [this] { return QRegion(QRect(QPoint(), panelBounds().size())); };
    const auto isCut = [&] {
        const QRegion shape = client->shape(panel());
        return !shape.contains(QPoint(0, 0)) && shape.contains(QPoint(180, 80)) && shape.boundingRect().width() == 360;
    };
    const auto background = [this] { return client->screenshot({panelBackground(), QSize(1, 1)}).pixel(0, 0); };

    EXPECT_TRUE(until(isCut));
    EXPECT_TRUE(until([&] { return background() == testing::sheetColor(); })) << "it is not opaque";

    startCompositor();
    EXPECT_TRUE(until([&] { return client->shape(panel()) == whole(); }));
    EXPECT_TRUE(until([&] { return qRed(background()) > qRed(testing::sheetColor()) + 3; }))
        << "nothing shines through";

    display->stopPrograms();
    EXPECT_TRUE(until(isCut));
    EXPECT_TRUE(until([&] { return background() == testing::sheetColor(); })) << "it stays translucent";
}

// Without a window manager.
class UnmanagedPanel : public PanelTest {};

TEST_F(UnmanagedPanel, IsShownDraggedAndHasItsMenu) {
    startPanel();
    const QRect before = panelBounds();
    EXPECT_EQ(before.topLeft(), QPoint(40, 1080 - 60 - 160));
    hand.pull(panelBackground(), panelBackground() + QPoint(200, -300));
    hand.release();
    EXPECT_TRUE(until([&] { return panelBounds() == before.translated(200, -300); }));
    hand.click(panelBackground(), 3);
    EXPECT_TRUE(until([this] { return popups().size() == 1; })) << "no menu";
    hand.key("Escape");
    EXPECT_TRUE(until([this] { return popups().empty(); })) << "the menu stays";
}

} // namespace
} // namespace pelloran
