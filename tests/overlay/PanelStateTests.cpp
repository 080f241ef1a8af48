#include "overlay/OverlayPanel/layout/PanelState.h"

#include "tests/overlay/RectPrinting.h"

#include <gtest/gtest.h>

#include <functional>

namespace pelloran {

namespace {

using namespace Qt::StringLiterals;

using Frame = PanelState::Frame;
using Arrangement = PanelState::Arrangement;
using Alteration = std::function<void(PanelState&)>;

constexpr UpwardRect wholeScreen{0, 0, 1920, 1080};

OverlaySnapshot tiles(int count) {
    OverlaySnapshot snapshot{u"title"_s, {}, {}, true, DraftPhase::cardPick};
    for (int index = 0; index < count; ++index) {
        snapshot.cards.push_back({QString::number(index), u"name"_s, {}, {}, true});
    }
    return snapshot;
}

OverlaySnapshot message() {
    return {u"title"_s, u"wait"_s, {}, false, DraftPhase::idle};
}

// The initial state with some of it changed.
PanelState changed(const Alteration& change) {
    PanelState state = initialPanelState();
    change(state);
    return state;
}

// Shows three tiles, with everything applied for this size.
PanelState showing(QSizeF content, Axis axis = Axis::vertical) {
    PanelState state = initialPanelState();
    snapshotArrived(state, tiles(3));
    const auto metrics = ResolvedMetrics::resolve(content, 3, axis);
    state.metrics = {metrics, metrics, metrics};
    return state;
}

const std::optional<QSizeF> noSize;

} // namespace

TEST(PanelStates, BeginWithNothingShownAndAllApplied) {
    const PanelState state = initialPanelState();
    const auto metrics = ResolvedMetrics::resolve({360, 420}, 0, Axis::vertical);
    EXPECT_EQ(state.lastSnapshot, std::nullopt);
    EXPECT_EQ(state.activeCardCount, 0);
    EXPECT_TRUE((state.metrics == PanelMetrics{metrics, metrics, metrics}));
    EXPECT_EQ(state.arrangement, Arrangement::settled);
    EXPECT_EQ(state.frame, Frame::resting);
    EXPECT_EQ(state.userResizedFrame, noSize);
}

TEST(PanelStates, RememberTheSnapshotAndCountItsTiles) {
    const struct {
        const char* why;
        std::vector<OverlaySnapshot> earlier;
        OverlaySnapshot next;
        SnapshotUpdate update;
        int shown;
    } rows[] = {
        {"the first tiles", {}, tiles(3), SnapshotUpdate::bindAppearing, 3},
        {"the first message", {}, message(), SnapshotUpdate::bindAll, 0},
        {"the same tiles", {tiles(3)}, tiles(3), SnapshotUpdate::rebind, 3},
        {"fewer tiles", {tiles(3)}, tiles(2), SnapshotUpdate::bindAll, 2},
        {"more tiles than there are places", {tiles(3)}, tiles(5), SnapshotUpdate::bindAll, 3},
        {"a message in place of tiles", {tiles(3)}, message(), SnapshotUpdate::bindAll, 0},
        {"the message once more", {message()}, message(), SnapshotUpdate::showMessage, 0},
        {"tiles after a message, which followed tiles",
         {tiles(3), message()},
         tiles(3),
         SnapshotUpdate::bindAppearing,
         3},
    };

    for (const auto& [why, earlier, next, update, shown] : rows) {
        SCOPED_TRACE(why);
        PanelState state = initialPanelState();
        for (const OverlaySnapshot& snapshot : earlier) {
            snapshotArrived(state, snapshot);
        }
        PanelState expected = state;
        EXPECT_EQ(snapshotArrived(state, next), update);
        expected.lastSnapshot = next;
        expected.activeCardCount = shown;
        EXPECT_TRUE(state == expected) << "and nothing else has changed";
    }
}

TEST(PanelStates, SuitTheFrameToTheTilesUnlessItIsHeld) {
    const struct {
        const char* why;
        UserHold hold;
        UpwardRect frame;
        FrameDecision expected;
    } rows[] = {
        {"too low for three", UserHold::nothing, {40, 60, 360, 420}, MoveFrame{{40, 60, 360, 600}, 1}},
        {"high enough", UserHold::nothing, {40, 60, 360, 600}, StopFrame()},
        {"to half a pixel", UserHold::nothing, {40, 60, 360, 599.5}, StopFrame()},
        {"over the edge of the screen", UserHold::nothing, {1700, 60, 360, 600}, MoveFrame{{1552, 60, 360, 600}, 1}},
        {"held by its background", UserHold::background, {40, 60, 360, 420}, LeaveFrame()},
        {"held by an edge", UserHold::edge, {40, 60, 360, 420}, LeaveFrame()},
        {"held, though it suits", UserHold::edge, {40, 60, 360, 600}, LeaveFrame()},
    };

    for (const auto& [why, hold, frame, expected] : rows) {
        SCOPED_TRACE(why);
        PanelState state = showing({360, 420});
        PanelState after = state;
        const bool moves = std::holds_alternative<MoveFrame>(expected);
        after.frame = moves ? Frame::moving : Frame::resting;
        after.frameMoves = moves ? 1 : 0;
        EXPECT_TRUE(frameSuited(state, frame, hold, wholeScreen) == expected);
        EXPECT_TRUE(state == after);
    }
}

TEST(PanelStates, SuitTheFrameToWhatTheUserMadeOfItAndToTheAxis) {
    const struct {
        const char* why;
        Alteration change;
        UpwardRect expected;
    } rows[] = {
        {"nothing shown yet", [](PanelState& state) { state.lastSnapshot = {}; }, {40, 60, 360, 160}},
        {"a message", [](PanelState& state) { snapshotArrived(state, message()); }, {40, 60, 360, 160}},
        {"the user's height", [](PanelState& state) { state.userResizedFrame = {400, 700}; }, {40, 60, 400, 700}},
        {"more tiles than are shown count as well",
         [](PanelState& state) { snapshotArrived(state, tiles(4)); },
         {40, 60, 360, 750}},
        {"side by side",
         [](PanelState& state) { state.metrics.current = state.metrics.current.along(Axis::horizontal); },
         {40, 60, 648, 280}},
    };

    for (const auto& [why, change, expected] : rows) {
        SCOPED_TRACE(why);
        PanelState state = showing({360, 420});
        change(state);
        const FrameDecision decision = frameSuited(state, {40, 60, 360, 420}, UserHold::nothing, wholeScreen);
        ASSERT_TRUE(std::holds_alternative<MoveFrame>(decision));
        EXPECT_EQ(std::get<MoveFrame>(decision).target, expected);
    }
}

TEST(PanelStates, KnowTheEndOfTheirLastMoveFromThatOfAnEarlierOne) {
    PanelState state = showing({360, 420});
    const UpwardRect low{40, 60, 360, 420};
    const auto first = std::get<MoveFrame>(frameSuited(state, low, UserHold::nothing, wholeScreen)).number;
    const auto second = std::get<MoveFrame>(frameSuited(state, low, UserHold::nothing, wholeScreen)).number;
    ASSERT_NE(first, second);
    frameMoveEnded(state, first);
    EXPECT_EQ(state.frame, Frame::moving) << "the second has taken over";
    frameMoveEnded(state, second);
    EXPECT_EQ(state.frame, Frame::resting);
    frameMoveEnded(state, second);
    EXPECT_EQ(state.frame, Frame::resting);
}

TEST(PanelStates, TakeASizeForTheUsersWhenItIs) {
    const auto moving = [](PanelState& state) { state.frame = Frame::moving; };
    const auto turning = [](PanelState& state) { state.arrangement = Arrangement::turning; };
    const auto resting = [](PanelState&) {};

    const struct {
        const char* why;
        Alteration change;
        UserHold hold;
        bool resized;        // as the window tells, at once
        GeometryPhase phase; // as measured
        bool measured;
    } rows[] = {
        {"an edge is dragged", resting, UserHold::edge, true, GeometryPhase::live, true},
        {"an edge is held when a snapshot asks", resting, UserHold::edge, true, GeometryPhase::settle, false},
        {"the edge has been let go since", resting, UserHold::nothing, false, GeometryPhase::live, true},
        {"the background is held", resting, UserHold::background, false, GeometryPhase::settle, false},
        {"nothing is held", resting, UserHold::nothing, false, GeometryPhase::settle, false},
        {"the program moves the frame", moving, UserHold::nothing, false, GeometryPhase::settle, false},
        {"the program moves it, whatever else is said", moving, UserHold::edge, false, GeometryPhase::live, false},
        {"while the axis turns nothing is measured", turning, UserHold::edge, true, GeometryPhase::live, false},
    };

    for (const auto& [why, change, hold, resized, phase, measured] : rows) {
        SCOPED_TRACE(why);
        const QSizeF size(500, 500);
        PanelState state = changed(change);
        panelResized(state, hold, size);
        PanelState expected = changed(change);
        expected.userResizedFrame = resized ? std::optional(size) : noSize;
        EXPECT_TRUE(state == expected);

        state = changed(change);
        panelMeasured(state, phase, hold, size, {360, 420});
        EXPECT_EQ(state.userResizedFrame, measured ? std::optional(size) : noSize);
    }
}

TEST(PanelStates, ApplyWhatWasMeasured) {
    enum Work { none, animated, turn, atOnce };

    const QSizeF narrow(360, 600);
    const QSizeF wide(700, 300);

    const struct {
        const char* why;
        PanelState before;
        GeometryPhase phase;
        UserHold hold;
        QSizeF content;
        Work work;
        Axis axis; // in force afterwards
    } rows[] = {
        {"as it was", showing(narrow), GeometryPhase::settle, UserHold::nothing, narrow, none, Axis::vertical},
        {"wider", showing(narrow), GeometryPhase::settle, UserHold::nothing, {500, 600}, animated, Axis::vertical},
        {"wide enough for a row", showing(narrow), GeometryPhase::settle, UserHold::nothing, wide, turn,
         Axis::horizontal},
        {"no longer", showing(wide), GeometryPhase::settle, UserHold::nothing, narrow, turn, Axis::vertical},
        {"moved by its background meanwhile", showing(narrow), GeometryPhase::settle, UserHold::background, wide, turn,
         Axis::horizontal},
        {"wider in the hand", showing(narrow), GeometryPhase::live, UserHold::edge, {500, 600}, atOnce, Axis::vertical},
        {"wide enough in the hand", showing(narrow), GeometryPhase::live, UserHold::edge, wide, atOnce, Axis::vertical},
        {"a snapshot asks while an edge is held", showing(narrow), GeometryPhase::settle, UserHold::edge, wide, atOnce,
         Axis::vertical},
    };

    for (const auto& [why, before, phase, hold, content, work, axis] : rows) {
        SCOPED_TRACE(why);
        PanelState state = before;
        const GeometryDecision decision = panelMeasured(state, phase, hold, content, content);
        EXPECT_EQ(decision.applyAnimated, work == animated);
        EXPECT_EQ(decision.transitionAxis, work == turn);
        EXPECT_EQ(decision.applyLayoutAtOnce, work == atOnce);
        EXPECT_EQ(decision.applyTypographyAtOnce, work == atOnce);
        EXPECT_EQ(state.metrics.current.axis, axis);
        EXPECT_EQ(state.arrangement, work == turn ? Arrangement::turning : Arrangement::settled);
        // What was asked for counts as applied.
        EXPECT_EQ(state.metrics.appliedLayout, state.metrics.current);
        EXPECT_EQ(state.metrics.appliedTypography, state.metrics.current);
        axisTurned(state);
        EXPECT_EQ(state.arrangement, Arrangement::settled);
        const GeometryDecision again = panelMeasured(state, phase, hold, content, content);
        EXPECT_FALSE(again.applyAnimated || again.transitionAxis || again.applyLayoutAtOnce ||
                     again.applyTypographyAtOnce)
            << "so that the same size asks for nothing more";
    }
}

TEST(PanelStates, ApplyInTheHandOnlyWhatChanged) {
    PanelState state = showing({360, 600});
    const ResolvedMetrics applied = *state.metrics.appliedLayout;
    ResolvedMetrics otherFonts = applied;
    otherFonts.nameSize += 0.5;
    state.metrics.appliedTypography = otherFonts;
    GeometryDecision decision = panelMeasured(state, GeometryPhase::live, UserHold::edge, {360, 600}, {360, 600});
    EXPECT_TRUE(decision.applyTypographyAtOnce && !decision.applyLayoutAtOnce);
    EXPECT_EQ(state.metrics.appliedTypography, applied);

    ResolvedMetrics otherLengths = applied;
    otherLengths.contentInset += 0.5;
    state.metrics.appliedLayout = otherLengths;
    decision = panelMeasured(state, GeometryPhase::live, UserHold::edge, {360, 600}, {360, 600});
    EXPECT_TRUE(decision.applyLayoutAtOnce && !decision.applyTypographyAtOnce);
    EXPECT_EQ(state.metrics.appliedLayout, applied);
}

TEST(PanelStates, MeasureNothingWhileTheAxisTurns) {
    for (const GeometryPhase phase : {GeometryPhase::live, GeometryPhase::settle}) {
        PanelState state = showing({360, 600});
        state.arrangement = Arrangement::turning;
        const PanelState before = state;
        EXPECT_TRUE(panelMeasured(state, phase, UserHold::edge, {700, 300}, {700, 300}) == GeometryDecision());
        EXPECT_TRUE(state == before);
    }
}

} // namespace pelloran
