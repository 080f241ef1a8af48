#include "platform/x11/PanelClock.h"

#include <QCoreApplication>
#include <QTest>

#include <gtest/gtest.h>

#include <vector>

namespace pelloran::x11 {

namespace {

using namespace std::chrono_literals;

TEST(EventLoopClock, RingsOnceWhenItIsTime) {
    struct Case {
        const char* why;
        std::chrono::milliseconds after;
    };

    for (const Case& c : {Case{"at once", 0ms}, Case{"long due", -1h}, Case{"in a moment", 20ms}}) {
        SCOPED_TRACE(c.why);
        EventLoopClock clock;
        std::vector<PanelClock::TimePoint> rung;
        clock.alarm = [&] {
            EXPECT_FALSE(clock.hasAlarm()) << "it may be set again now";
            rung.push_back(clock.now());
        };
        const auto due = clock.now() + c.after;
        clock.setAlarm(due);
        EXPECT_TRUE(clock.hasAlarm());
        EXPECT_TRUE(rung.empty()) << "only from the event loop";
        ASSERT_TRUE(QTest::qWaitFor([&] { return !rung.empty(); }, 10'000));
        EXPECT_GE(rung.front(), due);
        QCoreApplication::processEvents();
        EXPECT_EQ(rung.size(), 1U);
    }
}

TEST(EventLoopClock, RingsForTheLastAlarmOnly) {
    EventLoopClock clock;
    int rung = 0;
    clock.alarm = [&] { ++rung; };
    clock.setAlarm(clock.now());
    clock.setAlarm(clock.now() + 1h);
    QCoreApplication::processEvents();
    EXPECT_EQ(rung, 0);
    EXPECT_TRUE(clock.hasAlarm());
    clock.setAlarm(clock.now());
    clock.clearAlarm();
    EXPECT_FALSE(clock.hasAlarm());
    QCoreApplication::processEvents();
    EXPECT_EQ(rung, 0);
}

} // namespace

} // namespace pelloran::x11
