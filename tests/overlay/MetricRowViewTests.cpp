#include "overlay/OverlayPanel/views/MetricRowView.h"

#include "localisation/AppLanguage.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/TextLabel.h"
#include "tests/support/EventCounter.h"
#include "tests/support/ManualAnimationTime.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran {

namespace {

using namespace Qt::StringLiterals;
using testing::turnEventLoop;
using enum MetricHighlight;

class MetricRowViewTest : public ::testing::Test {
public:
    ~MetricRowViewTest() override { AppLanguage::configure(nullptr, nullptr); }

protected:
    MetricRowViewTest() {
        AppLanguage::overridePreference(AppLanguage::en);
        row.resize(200, 24);
        row.show();
    }

    PanelColors colors = PanelColors::of(Appearance::dark);
    MetricRowView row{nullptr, colors};
    ResolvedMetrics metrics = ResolvedMetrics::resolve({360, 420}, 3, Axis::vertical);
};

} // namespace

TEST_F(MetricRowViewTest, ShowsLabelAndValueByItsMark) {
    const struct {
        const char* why;
        MetricValue metric;
        QString label;
        QString value;
        QColor color;
        QFont::Weight weight;
    } rows[] = {
        {"the best", {MetricKind::deckWinRate, 56.1, high}, u"Deck WR"_s, u"56.1%"_s, colors.systemGreen, QFont::Bold},
        {"the worst", {MetricKind::classRank, 9.0, low}, u"Class rank"_s, u"#9"_s, colors.systemRed, QFont::Bold},
        {"neither", {MetricKind::avgCopies, 1.5, normal}, u"Avg copies"_s, u"1.50"_s, colors.label, QFont::Medium},
        {"not known", {MetricKind::popularity, {}, normal}, u"Popularity"_s, u"—"_s, colors.label, QFont::Medium},
    };

    for (const bool typographyFirst : {true, false}) {
        for (const auto& expected : rows) {
            SCOPED_TRACE(expected.why);
            if (typographyFirst) {
                row.applyTypography(metrics);
                row.bind(expected.metric);
            } else {
                row.bind(expected.metric);
                row.applyTypography(metrics);
            }
            EXPECT_EQ(row.keyLabel->text(), expected.label);
            EXPECT_EQ(row.keyLabel->color(), colors.secondaryLabel);
            EXPECT_EQ(row.keyLabel->textFont(), FontCache::shared().font(metrics.metricKeySize, QFont::Normal));
            EXPECT_EQ(row.valLabel->text(), expected.value);
            EXPECT_EQ(row.valLabel->color(), expected.color);
            EXPECT_EQ(row.valueColor, expected.color);
            EXPECT_EQ(row.valueWeight, expected.weight);
            EXPECT_EQ(row.valLabel->textFont(), FontCache::shared().font(metrics.metricValueSize, expected.weight));
        }
    }
}

TEST_F(MetricRowViewTest, BeginsWithAMediumValue) {
    EXPECT_EQ(row.valueWeight, QFont::Medium);
    EXPECT_EQ(row.valueColor, colors.label);
}

TEST_F(MetricRowViewTest, KeepsTheValueAtTheRightEdge) {
    row.applyTypography(metrics);
    row.applyLayout(metrics);
    row.bind({MetricKind::deckWinRate, 56.1, high});
    turnEventLoop();
    for (const int width : {120, 161, 200, 333}) {
        row.resize(width, 24);
        EXPECT_EQ(row.valLabel->geometry().right(), width - 1) << width;
        EXPECT_EQ(row.valLabel->width(), row.valLabel->naturalWidth()) << "it hugs its text";
        EXPECT_EQ(row.keyLabel->x(), 0);
        EXPECT_GE(row.valLabel->x() - row.keyLabel->geometry().right() - 1, 2 * metrics.metricSpacing)
            << "two gaps, and a spacer of nothing between them";
    }
    row.bind({MetricKind::deckWinRate, 5.0, high});
    turnEventLoop();
    EXPECT_EQ(row.valLabel->geometry().right(), row.width() - 1) << "a shorter value as well";
    EXPECT_EQ(row.valLabel->width(), row.valLabel->naturalWidth());
}

TEST_F(MetricRowViewTest, CutsTheLabelBeforeTheValue) {
    row.applyTypography(metrics);
    row.applyLayout(metrics);
    row.bind({MetricKind::deckWinRate, 56.1, high});
    row.resize(70, 24);
    turnEventLoop();
    EXPECT_EQ(row.valLabel->width(), row.valLabel->naturalWidth());
    EXPECT_LT(row.keyLabel->width(), row.keyLabel->naturalWidth());
    row.resize(10, 24);
    EXPECT_EQ(row.valLabel->geometry(), QRect(0, row.valLabel->y(), 10, row.valLabel->lineHeight()));
    EXPECT_EQ(row.keyLabel->width(), 0);
}

TEST_F(MetricRowViewTest, AlignsItsTextsByTheirBaselines) {
    ResolvedMetrics uneven = metrics;
    uneven.metricKeySize = 11;
    uneven.metricValueSize = 24;
    row.applyTypography(uneven);
    row.bind({MetricKind::deckWinRate, 56.1, high});
    row.resize(300, row.rowHeight());
    turnEventLoop();
    EXPECT_NEAR(row.keyLabel->y() + row.keyLabel->baseline(), row.valLabel->y() + row.valLabel->baseline(), 1);
    for (const TextLabel* label : {row.keyLabel, row.valLabel}) {
        EXPECT_GE(label->y(), 0);
        EXPECT_LE(label->geometry().bottom(), row.rowHeight());
    }
}

TEST_F(MetricRowViewTest, AsksForAtLeastItsMinimumAndForItsTexts) {
    row.applyTypography(metrics);
    row.applyLayout(metrics);
    EXPECT_EQ(row.wantedWidth(), 140) << "nothing in it";
    row.bind({MetricKind::deckWinRate, 56.1, high});
    ResolvedMetrics narrow = metrics;
    narrow.metricRowMinWidth = 10;
    row.applyLayout(narrow);
    EXPECT_EQ(row.wantedWidth(),
              row.keyLabel->naturalWidth() + 2 * metrics.metricSpacing + row.valLabel->naturalWidth());
}

TEST_F(MetricRowViewTest, TakesOtherColorsByItsMark) {
    row.bind({MetricKind::deckWinRate, 56.1, low});
    PanelColors others = colors;
    others.systemRed = Qt::magenta;
    others.secondaryLabel = Qt::cyan;
    row.setColors(others);
    EXPECT_EQ(row.valueColor, QColor(Qt::magenta));
    EXPECT_EQ(row.valLabel->color(), QColor(Qt::magenta));
    EXPECT_EQ(row.keyLabel->color(), QColor(Qt::cyan));
    EXPECT_EQ(row.valueWeight, QFont::Bold);
}

TEST_F(MetricRowViewTest, AsksForNoLayoutForTheSameFigures) {
    row.applyTypography(metrics);
    row.bind({MetricKind::deckWinRate, 56.1, high});
    turnEventLoop();
    testing::EventCounter requests(row, QEvent::LayoutRequest);
    row.bind({MetricKind::deckWinRate, 56.1, high});
    row.applyTypography(metrics);
    turnEventLoop();
    EXPECT_EQ(requests.take(), 0);
    row.bind({MetricKind::deckWinRate, 56.2, high});
    turnEventLoop();
    EXPECT_GT(requests.take(), 0);
}

} // namespace pelloran
