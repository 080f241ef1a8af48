#include "overlay/OverlayPanel/views/GeometryDriver.h"

#include "overlay/OverlayPanel/views/FloatingPanel.h"
#include "tests/support/ManualAnimationTime.h"
#include "tests/support/PanelDrag.h"

#include <gtest/gtest.h>

namespace pelloran {

namespace {

using testing::turnEventLoop;
using enum GeometryDriver::Phase;
using Phases = std::vector<GeometryDriver::Phase>;

class GeometryDriverTest : public ::testing::Test {
protected:
    GeometryDriverTest() {
        driver->onTick = [this](GeometryDriver::Phase phase) { ticks.push_back(phase); };
    }

    // What the next turn of the event loop brings.
    Phases ticksOfNextTurn() {
        ticks.clear();
        turnEventLoop();
        return std::exchange(ticks, {});
    }

    std::unique_ptr<FloatingPanel> panel = std::make_unique<FloatingPanel>(Qt::Window);
    std::unique_ptr<GeometryDriver> driver = std::make_unique<GeometryDriver>(*panel);
    Phases ticks;
};

} // namespace

TEST_F(GeometryDriverTest, MergesWhatComesInOneTurn) {
    struct Request {
        GeometryDriver::Phase phase;
        bool force;
    };

    const struct {
        const char* why;
        std::vector<Request> requests;
        GeometryDriver::Phase expected;
    } rows[] = {
        {"one", {{live, false}}, live},
        {"the other", {{settle, false}}, settle},
        {"a burst", {{live, false}, {live, false}, {live, false}}, live},
        {"the end of a drag", {{live, false}, {settle, true}}, settle},
        {"settle wins", {{live, false}, {settle, false}}, settle},
        {"and is not lost again", {{settle, false}, {live, false}}, settle},
        {"unless by force", {{settle, false}, {live, true}}, live},
        {"the first by force", {{settle, true}, {live, false}}, settle},
        {"settle wins over a forced live", {{live, true}, {settle, false}}, settle},
        {"the last by force", {{live, true}, {settle, true}, {live, true}}, live},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        for (const Request& request : row.requests) {
            driver->enqueue(request.phase, request.force);
        }
        EXPECT_TRUE(ticks.empty()) << "not before the turn ends";
        EXPECT_EQ(ticksOfNextTurn(), Phases{row.expected});
        EXPECT_EQ(ticksOfNextTurn(), Phases{}) << "once";
    }
}

TEST_F(GeometryDriverTest, TellsTheUsersResizingFromTheProgrammes) {
    Q_EMIT panel->didResize();
    EXPECT_EQ(ticksOfNextTurn(), Phases{settle});

    Q_EMIT panel->willStartLiveResize();
    EXPECT_EQ(ticksOfNextTurn(), Phases{}) << "nothing has changed yet";
    Q_EMIT panel->didResize();
    Q_EMIT panel->didResize();
    EXPECT_EQ(ticksOfNextTurn(), Phases{live});
    Q_EMIT panel->didResize();
    EXPECT_EQ(ticksOfNextTurn(), Phases{live});

    Q_EMIT panel->didResize();
    Q_EMIT panel->didEndLiveResize();
    EXPECT_EQ(ticksOfNextTurn(), Phases{settle}) << "even though a live one was on its way";
    Q_EMIT panel->didResize();
    EXPECT_EQ(ticksOfNextTurn(), Phases{settle});
}

TEST_F(GeometryDriverTest, AsksThePanelWhenItMissedTheBeginningOfTheDrag) {
    panel->show();
    turnEventLoop();
    testing::PanelDrag drag(*panel, {359, 200});
    GeometryDriver late(*panel);
    late.onTick = [this](GeometryDriver::Phase phase) { ticks.push_back(phase); };
    driver.reset();
    drag.moveBy({20, 0});
    EXPECT_EQ(ticksOfNextTurn(), Phases{live});
    drag.release();
    EXPECT_EQ(ticksOfNextTurn(), Phases{settle});
}

TEST_F(GeometryDriverTest, GivesOneTickPerTurnInADrag) {
    panel->show();
    turnEventLoop();
    testing::PanelDrag drag(*panel, {359, 200});
    EXPECT_EQ(ticksOfNextTurn(), Phases{});
    for (int turn = 1; turn <= 30; ++turn) {
        for (int move = 1; move <= 10; ++move) {
            drag.moveBy({turn * 10.0 + move, 0});
        }
        EXPECT_EQ(ticksOfNextTurn(), Phases{live});
    }
    EXPECT_EQ(panel->width(), 360 + 310);
    drag.release();
    EXPECT_EQ(ticksOfNextTurn(), Phases{settle});
}

TEST_F(GeometryDriverTest, MayBeAskedAgainFromATick) {
    int count = 0;
    driver->onTick = [&](GeometryDriver::Phase) {
        if (++count < 3) {
            driver->enqueue(settle, false);
        }
    };
    driver->enqueue(settle, false);
    turnEventLoop();
    turnEventLoop();
    EXPECT_EQ(count, 3);
}

TEST_F(GeometryDriverTest, IsSilentAfterItsEnd) {
    driver->enqueue(settle, true);
    driver.reset();
    turnEventLoop();
    EXPECT_EQ(ticks, Phases{});
    Q_EMIT panel->didResize();
    turnEventLoop();
    EXPECT_EQ(ticks, Phases{});
}

TEST_F(GeometryDriverTest, OutlivesThePanel) {
    Q_EMIT panel->willStartLiveResize();
    panel.reset();
    turnEventLoop();
    driver->enqueue(live, false);
    EXPECT_EQ(ticksOfNextTurn(), Phases{live});
}

TEST_F(GeometryDriverTest, NeedsNobodyToTell) {
    driver->onTick = {};
    driver->enqueue(settle, true);
    turnEventLoop();
    driver->onTick = [this](GeometryDriver::Phase phase) { ticks.push_back(phase); };
    EXPECT_EQ(ticksOfNextTurn(), Phases{}) << "that one has gone by";
}

} // namespace pelloran
