#include "platform/x11/RaiseSchedule.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace pelloran::x11 {

namespace {

using namespace std::chrono_literals;
using TimePoint = RaiseSchedule::TimePoint;

constexpr TimePoint start{1h};

TEST(RaiseSchedule, LooksOnlyAfterAChange) {
    RaiseSchedule schedule;
    EXPECT_FALSE(schedule.nextLook());
    schedule.changed(start);
    EXPECT_EQ(schedule.nextLook(), start);
    EXPECT_FALSE(schedule.looked(start, false));
    EXPECT_FALSE(schedule.nextLook());
}

TEST(RaiseSchedule, TheFirstTimeItIsObscuredItIsRaisedAtOnce) {
    RaiseSchedule schedule;
    schedule.changed(start);
    EXPECT_TRUE(schedule.looked(start, true));
    EXPECT_FALSE(schedule.nextLook());
}

TEST(RaiseSchedule, ManyChangesMakeOneLook) {
    RaiseSchedule schedule;
    schedule.changed(start);
    EXPECT_FALSE(schedule.looked(start, false));
    schedule.changed(start + 10ms);
    schedule.changed(start + 20ms);
    schedule.changed(start + 90ms);
    EXPECT_EQ(schedule.nextLook(), start + RaiseSchedule::betweenLooks);
    EXPECT_TRUE(schedule.looked(start + 100ms, true)) << "what changed last is what is looked at";
}

TEST(RaiseSchedule, ALookThatFoundNothingDelaysNoRaise) {
    RaiseSchedule schedule;
    schedule.changed(start);
    EXPECT_FALSE(schedule.looked(start, false));
    schedule.changed(start + 150ms);
    EXPECT_EQ(schedule.nextLook(), start + 150ms);
    EXPECT_TRUE(schedule.looked(start + 150ms, true));
}

TEST(RaiseSchedule, TooEarlyARaiseIsMadeUpFor) {
    RaiseSchedule schedule;
    schedule.changed(start);
    EXPECT_TRUE(schedule.looked(start, true));
    schedule.changed(start + 200ms);
    EXPECT_FALSE(schedule.looked(start + 200ms, true));
    EXPECT_EQ(schedule.nextLook(), start + 1s);
    EXPECT_TRUE(schedule.looked(start + 1s, true));
    EXPECT_FALSE(schedule.nextLook());
}

TEST(RaiseSchedule, ARaiseThatIsNoLongerNeededIsLeftOut) {
    RaiseSchedule schedule;
    schedule.changed(start);
    EXPECT_TRUE(schedule.looked(start, true));
    schedule.changed(start + 200ms);
    EXPECT_FALSE(schedule.looked(start + 200ms, true));
    schedule.changed(start + 500ms);
    EXPECT_EQ(schedule.nextLook(), start + 1s) << "the look that is due already covers it";
    EXPECT_FALSE(schedule.looked(start + 1s, false));
    EXPECT_FALSE(schedule.nextLook());
}

TEST(RaiseSchedule, AnOpponentThatAnswersEveryRaiseGetsOneASecond) {
    RaiseSchedule schedule;
    int raises = 0;
    schedule.changed(start);
    TimePoint now = start;
    while (now < start + 10s) {
        ASSERT_TRUE(schedule.nextLook());
        now = std::max(now, *schedule.nextLook());
        if (schedule.looked(now, true)) {
            ++raises;
        }
        now += 1ms;
        schedule.changed(now);
    }
    EXPECT_EQ(raises, 11);
}

TEST(RaiseSchedule, ARaiseThatWasAskedForCounts) {
    RaiseSchedule schedule;
    schedule.raised(start);
    schedule.changed(start + 100ms);
    EXPECT_FALSE(schedule.looked(start + 100ms, true));
    EXPECT_EQ(schedule.nextLook(), start + 1s);
}

} // namespace

} // namespace pelloran::x11
