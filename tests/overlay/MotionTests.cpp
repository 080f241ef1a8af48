#include "overlay/OverlayPanel/views/Motion.h"

#include "tests/fakes/FakeSystemSettings.h"
#include "tests/support/ManualAnimationTime.h"

#include <QWidget>

#include <gtest/gtest.h>

#include <cmath>

namespace pelloran {

namespace {

class MotionTest : public ::testing::Test {
protected:
    // Writes the progress of one animation into `steps`, and its completion into `completions`.
    void run(double seconds, const char* name = "test") {
        motion.run(
            seconds,
            [&](AnimationGroup& group) {
                group.animate(target, name, [this](double progress) { steps.push_back(progress); });
            },
            [this] { ++completions; });
    }

    testing::ManualAnimationTime time;
    testing::FakeSystemSettings settings;
    Motion motion{settings};
    QObject target;
    std::vector<double> steps;
    int completions = 0;
};

// Progress at time `x` of the curve through (0, 0), (0.22, 0.9), (0.28, 1) and (1, 1), found by halving.
double onTheCurve(double x) {
    const auto at = [](double t, double first, double second) {
        return 3 * (1 - t) * (1 - t) * t * first + 3 * (1 - t) * t * t * second + t * t * t;
    };
    double low = 0;
    double high = 1;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (at(middle, 0.22, 0.28) < x ? low : high) = middle;
    }
    return at(low, 0.9, 1.0);
}

} // namespace

TEST_F(MotionTest, TakesItsTimeAndEndsExactlyAtOne) {
    run(0.28);
    EXPECT_EQ(completions, 0);
    time.pass(272);
    EXPECT_EQ(completions, 0) << "not yet";
    ASSERT_GT(steps.size(), 10U);
    EXPECT_LT(steps.back(), 1);
    time.pass(16);
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(steps.back(), 1.0);
    for (std::size_t i = 1; i < steps.size(); ++i) {
        EXPECT_GE(steps[i], steps[i - 1]);
    }
    const std::size_t taken = steps.size();
    time.pass(200);
    EXPECT_EQ(steps.size(), taken) << "it is over";
    EXPECT_EQ(completions, 1);
}

TEST_F(MotionTest, FollowsTheTimingCurve) {
    run(0.32);
    for (int frame = 1; frame < 20; ++frame) {
        time.pass(16);
        ASSERT_FALSE(steps.empty());
        EXPECT_NEAR(steps.back(), onTheCurve(frame / 20.0), 0.002) << "at frame " << frame;
    }
}

TEST_F(MotionTest, IsInstantWithoutADuration) {
    for (const double seconds : {0.0, -1.0}) {
        run(seconds);
        EXPECT_EQ(steps, std::vector{1.0});
        EXPECT_EQ(completions, 1) << "before it returned";
        steps.clear();
        completions = 0;
    }
    EXPECT_TRUE(target.children().isEmpty());
}

TEST_F(MotionTest, IsInstantForWhoAsksForLessOfIt) {
    EXPECT_FALSE(motion.isReduced());
    settings.setReducesMotion(true);
    EXPECT_TRUE(motion.isReduced());
    run(0.28);
    EXPECT_EQ(steps, std::vector{1.0});
    EXPECT_EQ(completions, 1) << "completions still run";

    settings.setReducesMotion(false);
    run(0.28);
    EXPECT_EQ(completions, 1) << "it moves again";

    const Motion reduced(settings, MotionPreference::reduced);
    EXPECT_TRUE(reduced.isReduced()) << "whatever the system says";
    reduced.run(
        0.28, [&](AnimationGroup& group) { group.animate(target, "test", [](double) {}); }, [this] { ++completions; });
    EXPECT_EQ(completions, 3) << "the one that was taken over and the new one";
}

TEST_F(MotionTest, NeedsNoCompletion) {
    motion.run(0.1, [&](AnimationGroup& group) {
        group.animate(target, "test", [this](double progress) { steps.push_back(progress); });
    });
    time.pass(200);
    EXPECT_EQ(steps.back(), 1.0);
}

TEST_F(MotionTest, InstantMovesAtOnce) {
    Motion::instant([&](AnimationGroup& group) {
        group.animate(target, "test", [this](double progress) { steps.push_back(progress); });
        EXPECT_EQ(steps, std::vector{1.0});
    });
    time.pass(100);
    EXPECT_EQ(steps, std::vector{1.0});
}

TEST_F(MotionTest, CompletesWhenNothingMoves) {
    bool completed = false;
    motion.run(0.28, [](AnimationGroup&) {}, [&] { completed = true; });
    time.pass(0);
    EXPECT_TRUE(completed);
}

TEST_F(MotionTest, CompletesWhenTheLastHasEnded) {
    QObject other;
    std::vector<double> otherSteps;
    motion.run(
        0.16,
        [&](AnimationGroup& group) {
            group.animate(target, "one", [this](double progress) { steps.push_back(progress); });
            group.animate(other, "one", [&](double progress) { otherSteps.push_back(progress); });
        },
        [this] { ++completions; });
    time.pass(64);
    Motion::end(other, "one");
    EXPECT_LT(otherSteps.back(), 1) << "it ends where it is";
    EXPECT_EQ(completions, 0);
    const std::size_t taken = otherSteps.size();
    time.pass(200);
    EXPECT_EQ(otherSteps.size(), taken);
    EXPECT_EQ(steps.back(), 1.0);
    EXPECT_EQ(completions, 1);
}

TEST_F(MotionTest, OfTheSameNameTakesOver) {
    run(0.16);
    time.pass(64);
    const double reached = steps.back();
    EXPECT_GT(reached, 0);
    EXPECT_LT(reached, 1);
    std::vector<double> second;
    motion.run(0.16, [&](AnimationGroup& group) {
        group.animate(target, "test", [&](double progress) { second.push_back(progress); });
    });
    EXPECT_EQ(completions, 1) << "the first counts as complete";
    time.pass(200);
    EXPECT_EQ(steps.back(), reached) << "and stays where it was";
    EXPECT_EQ(second.back(), 1.0);
}

TEST_F(MotionTest, OfAnotherNameRunsBeside) {
    run(0.16, "one");
    run(0.16, "other");
    time.pass(64);
    EXPECT_EQ(completions, 0);
    time.pass(200);
    EXPECT_EQ(completions, 2);
}

TEST_F(MotionTest, InstantTakesOverAsWell) {
    run(0.16);
    time.pass(64);
    Motion::instant([&](AnimationGroup& group) { group.animate(target, "test", [](double) {}); });
    EXPECT_EQ(completions, 1);
    const std::size_t taken = steps.size();
    time.pass(200);
    EXPECT_EQ(steps.size(), taken);
}

TEST_F(MotionTest, EndsOnlyWhatRuns) {
    Motion::end(target, "test");
    run(0.16);
    Motion::end(target, "another name");
    EXPECT_EQ(completions, 0);
    Motion::end(target, "test");
    EXPECT_EQ(completions, 1);
    Motion::end(target, "test");
    EXPECT_EQ(completions, 1);
}

TEST_F(MotionTest, MayBeginAgainWhenItCompletes) {
    motion.run(
        0.1,
        [&](AnimationGroup& group) {
            group.animate(target, "test", [this](double progress) { steps.push_back(progress); });
        },
        [&] { run(0.1); });
    time.pass(112);
    EXPECT_EQ(completions, 0);
    time.pass(128);
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(steps.back(), 1.0);
}

TEST_F(MotionTest, GoesWithItsTargetAndDoesNotComplete) {
    const auto runOn = [&](QObject& doomed) {
        motion.run(
            0.16,
            [&](AnimationGroup& group) {
                group.animate(doomed, "test", [this](double progress) { steps.push_back(progress); });
            },
            [this] { ++completions; });
        time.pass(32);
    };
    auto object = std::make_unique<QObject>();
    runOn(*object);
    object.reset();
    time.pass(200);
    EXPECT_EQ(completions, 0);

    auto widget = std::make_unique<QWidget>();
    runOn(*widget);
    widget.reset();
    time.pass(200);
    EXPECT_EQ(completions, 0) << "a widget deletes its children while it still listens";
}

} // namespace pelloran
