#include "overlay/OverlayPanel/layout/PanelDecisions.h"

#include <gtest/gtest.h>

namespace pelloran {

namespace {

using namespace Qt::StringLiterals;

// Tiles captioned "L", "M", ... as given.
OverlaySnapshot snapshot(const QString& captions, std::optional<QString> message = {}) {
    OverlaySnapshot result{u"title"_s, std::move(message), {}, true, DraftPhase::cardPick};
    for (const QChar caption : captions) {
        result.cards.push_back({QString(caption), u"name"_s, {}, {}, true});
    }
    return result;
}

OverlaySnapshot renamed(OverlaySnapshot shown) {
    shown.title = u"another title"_s;
    for (OverlayCardViewModel& card : shown.cards) {
        card.name += u" changed"_s;
        card.subtitle = u"new"_s;
        card.metrics.emplace_back(MetricKind::pickRate, 5.0);
        card.recognized = !card.recognized;
    }
    return shown;
}

using Change = SnapshotUpdate;

const ResolvedMetrics column = ResolvedMetrics::resolve({360, 420}, 3, Axis::vertical);
const ResolvedMetrics row = column.along(Axis::horizontal);

ResolvedMetrics withInset(ResolvedMetrics metrics) {
    metrics.contentInset += 0.5;
    return metrics;
}

ResolvedMetrics withFont(ResolvedMetrics metrics) {
    metrics.nameSize += 0.5;
    return metrics;
}

ResolvedMetrics withScale(ResolvedMetrics metrics) {
    metrics.scale += 0.001;
    return metrics;
}

} // namespace

TEST(SnapshotUpdates, RebuildNoMoreThanTheyMust) {
    const struct {
        const char* why;
        std::optional<OverlaySnapshot> previous;
        OverlaySnapshot next;
        int activeCardCount;
        Change expected;
    } rows[] = {
        {"the first one, with tiles", {}, snapshot(u"LMR"_s), 0, Change::bindAppearing},
        {"the first one, with a message", {}, snapshot(u""_s, u"wait"_s), 0, Change::bindAll},
        {"the first one, with nothing", {}, snapshot(u""_s), 0, Change::bindAll},
        {"the first one, with both", {}, snapshot(u"LMR"_s, u"wait"_s), 0, Change::bindAppearing},

        {"the same again", snapshot(u"LMR"_s), snapshot(u"LMR"_s), 3, Change::rebind},
        {"the next offer in the same slots", snapshot(u"LMR"_s), renamed(snapshot(u"LMR"_s)), 3, Change::rebind},
        {"another caption", snapshot(u"LMR"_s), snapshot(u"LMX"_s), 3, Change::bindAll},
        {"captions in another order", snapshot(u"LMR"_s), snapshot(u"RML"_s), 3, Change::bindAll},
        {"a tile less", snapshot(u"LMR"_s), snapshot(u"LM"_s), 3, Change::bindAll},
        {"a tile more", snapshot(u"LM"_s), snapshot(u"LMR"_s), 2, Change::bindAll},
        {"a caption that only differs in length", snapshot(u"LM"_s), snapshot(u"L"_s), 2, Change::bindAll},

        {"tiles after a message", snapshot(u""_s, u"wait"_s), snapshot(u"LMR"_s), 0, Change::bindAppearing},
        {"tiles after nothing", snapshot(u""_s), snapshot(u"LMR"_s), 0, Change::bindAppearing},
        {"a message after tiles", snapshot(u"LMR"_s), snapshot(u""_s, u"wait"_s), 3, Change::bindAll},
        {"nothing after tiles", snapshot(u"LMR"_s), snapshot(u""_s), 3, Change::bindAll},

        {"another message", snapshot(u""_s, u"wait"_s), snapshot(u""_s, u"go"_s), 0, Change::showMessage},
        {"the same message", snapshot(u""_s, u"wait"_s), snapshot(u""_s, u"wait"_s), 0, Change::showMessage},
        {"an empty message is one", snapshot(u""_s, u"wait"_s), snapshot(u""_s, u""_s), 0, Change::showMessage},
        {"a message appears", snapshot(u""_s), snapshot(u""_s, u"wait"_s), 0, Change::bindAll},
        {"a message vanishes", snapshot(u""_s, u"wait"_s), snapshot(u""_s), 0, Change::bindAll},
        {"an empty message appears", snapshot(u""_s), snapshot(u""_s, u""_s), 0, Change::bindAll},
        {"nothing after nothing", snapshot(u""_s), snapshot(u""_s), 0, Change::rebind},

        {"a message appears beside tiles", snapshot(u"LMR"_s), snapshot(u"LMR"_s, u"wait"_s), 3, Change::bindAll},
        {"and vanishes", snapshot(u"LMR"_s, u"wait"_s), snapshot(u"LMR"_s), 3, Change::bindAll},
        {"and changes, which nobody sees", snapshot(u"LMR"_s, u"a"_s), snapshot(u"LMR"_s, u"b"_s), 3, Change::rebind},

        {"four tiles, three shown", snapshot(u"LMRX"_s), snapshot(u"LMRX"_s), 3, Change::rebind},
        {"a fourth caption that is not shown counts as well", snapshot(u"LMRX"_s), snapshot(u"LMRY"_s), 3,
         Change::bindAll},
        {"a fourth tile that is not shown counts as well", snapshot(u"LMR"_s), snapshot(u"LMRX"_s), 3, Change::bindAll},
        {"fewer are shown than there should be", snapshot(u"LMR"_s), snapshot(u"LMR"_s), 2, Change::bindAll},
    };

    for (const auto& [why, previous, next, activeCardCount, expected] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(snapshotUpdate(previous ? &*previous : nullptr, next, activeCardCount), expected);
    }
}

TEST(Snapshots, FillAtMostThreeTiles) {
    EXPECT_EQ(shownCardCount(snapshot(u""_s)), 0);
    EXPECT_EQ(shownCardCount(snapshot(u"LM"_s)), 2);
    EXPECT_EQ(shownCardCount(snapshot(u"LMR"_s)), 3);
    EXPECT_EQ(shownCardCount(snapshot(u"LMRXY"_s)), 3);
}

TEST(Snapshots, ShowAMessageOnlyWithoutTiles) {
    EXPECT_TRUE(showsMessageOnly(snapshot(u""_s, u"wait"_s)));
    EXPECT_TRUE(showsMessageOnly(snapshot(u""_s, u""_s)));
    EXPECT_FALSE(showsMessageOnly(snapshot(u""_s)));
    EXPECT_FALSE(showsMessageOnly(snapshot(u"L"_s, u"wait"_s)));
    EXPECT_FALSE(showsMessageOnly(snapshot(u"L"_s)));
}

TEST(SettleDecisions, AnimateWhatChanged) {
    enum Outcome { nothing, animate, turn };

    const std::optional<ResolvedMetrics> never;

    const struct {
        const char* why;
        PanelMetrics metrics;
        ResolvedMetrics resolved;
        Outcome expected;
    } rows[] = {
        {"nothing changed", {column, column, column}, column, nothing},
        {"only the scale: nothing is stored", {column, column, column}, withScale(column), nothing},
        {"a length", {column, column, column}, withInset(column), animate},
        {"a font", {column, column, column}, withFont(column), animate},
        {"both", {column, column, column}, withFont(withInset(column)), animate},
        {"no layout was applied", {column, never, column}, column, animate},
        {"no fonts were applied", {column, column, never}, column, animate},
        {"neither was applied", {column, never, never}, column, animate},
        {"the applied layout is older than the metrics in force", {column, withInset(column), column}, column, animate},
        {"the applied fonts are older", {column, column, withFont(column)}, column, animate},
        {"the axis", {column, column, column}, row, turn},
        {"and back", {row, row, row}, column, turn},
        {"the axis and a font", {column, column, column}, withFont(row), turn},
        {"the axis, first of all", {column, never, never}, row, turn},
        {"the layout of that axis is applied already, but not in force", {column, row, row}, row, turn},
        {"in force, but the other axis is applied", {row, column, row}, row, animate},
    };

    for (const auto& [why, metrics, resolved, expected] : rows) {
        SCOPED_TRACE(why);
        const GeometryDecision decision = settleDecision(metrics, resolved);
        EXPECT_EQ(decision.store, expected == nothing ? std::nullopt : std::optional(resolved));
        EXPECT_EQ(decision.transitionAxis, expected == turn);
        EXPECT_EQ(decision.applyAnimated, expected == animate);
        EXPECT_FALSE(decision.applyLayoutAtOnce);
        EXPECT_FALSE(decision.applyTypographyAtOnce);
    }
}

TEST(LiveDecisions, ApplyWhatChangedAndKeepTheAxis) {
    const std::optional<ResolvedMetrics> never;

    const struct {
        const char* why;
        PanelMetrics metrics;
        ResolvedMetrics resolved;
        ResolvedMetrics stored;
        bool layout;
        bool typography;
    } rows[] = {
        {"nothing changed: stored all the same", {column, column, column}, column, column, false, false},
        {"only the scale: stored", {column, column, column}, withScale(column), withScale(column), false, false},
        {"a length", {column, column, column}, withInset(column), withInset(column), true, false},
        {"a font", {column, column, column}, withFont(column), withFont(column), false, true},
        {"both", {column, column, column}, withFont(withInset(column)), withFont(withInset(column)), true, true},
        {"no layout was applied", {column, never, column}, column, column, true, false},
        {"no fonts were applied", {column, column, never}, column, column, false, true},
        {"the axis alone: kept", {column, column, column}, row, column, false, false},
        {"the axis of a row: kept", {row, row, row}, column, row, false, false},
        {"the axis and a length", {column, column, column}, withInset(row), withInset(column), true, false},
        {"the axis and a font", {row, row, row}, withFont(column), withFont(row), false, true},
    };

    for (const auto& [why, metrics, resolved, stored, layout, typography] : rows) {
        SCOPED_TRACE(why);
        const GeometryDecision decision = liveDecision(metrics, resolved);
        EXPECT_TRUE(decision.store == stored);
        EXPECT_EQ(decision.applyLayoutAtOnce, layout);
        EXPECT_EQ(decision.applyTypographyAtOnce, typography);
        EXPECT_FALSE(decision.transitionAxis);
        EXPECT_FALSE(decision.applyAnimated);
    }
}

TEST(LiveDecisions, ComputeWhatDependsOnTheAxisAnew) {
    const ResolvedMetrics wide = ResolvedMetrics::resolve({700, 300}, 3, Axis::vertical);
    ASSERT_EQ(wide.axis, Axis::horizontal);
    const GeometryDecision decision = liveDecision({column, column, column}, wide);
    ASSERT_TRUE(decision.store);
    EXPECT_EQ(decision.store->axis, Axis::vertical);
    EXPECT_EQ(decision.store->cardSpacing, halfRound(12 * wide.scale));
    EXPECT_EQ(decision.store->cardMinWidth, 264);
}

} // namespace pelloran
