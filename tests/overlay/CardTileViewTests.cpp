#include "overlay/OverlayPanel/views/CardTileView.h"

#include "localisation/AppLanguage.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/MetricRowView.h"
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

OverlayCardViewModel cardOf(const QString& name, int metrics = 5) {
    OverlayCardViewModel card{u"Left"_s, name, {}, {}, true};
    for (int index = 0; index < metrics; ++index) {
        card.metrics.emplace_back(MetricKind::allCases()[static_cast<std::size_t>(index)], 10.0 + index);
    }
    return card;
}

class CardTileViewTest : public ::testing::Test {
public:
    ~CardTileViewTest() override { AppLanguage::configure(nullptr, nullptr); }

protected:
    CardTileViewTest() {
        AppLanguage::overridePreference(AppLanguage::en);
        tile.resize(330, 240);
        tile.show();
        turnEventLoop();
    }

    void prepare() {
        tile.applyTypography(metrics);
        tile.applyLayout(metrics);
    }

    int rowsShown() const {
        return static_cast<int>(
            std::ranges::count_if(tile.metricPool, [](const MetricRowView* row) { return !row->isHidden(); }));
    }

    // Top to bottom.
    std::vector<QWidget*> shown() const {
        std::vector<QWidget*> views;
        for (QWidget* view : std::initializer_list<QWidget*>{tile.slotLabel, tile.nameLabel, tile.subtitleLabel,
                                                             tile.unrecognizedLabel}) {
            if (!view->isHidden()) {
                views.push_back(view);
            }
        }
        std::ranges::copy_if(tile.metricPool, std::back_inserter(views), [](QWidget* row) { return !row->isHidden(); });
        return views;
    }

    PanelColors colors = PanelColors::of(Appearance::dark);
    CardTileView tile{nullptr, colors};
    ResolvedMetrics metrics = ResolvedMetrics::resolve({360, 420}, 3, Axis::vertical);
};

} // namespace

TEST_F(CardTileViewTest, ShowsACard) {
    OverlayCardViewModel card = cardOf(u"Fireball"_s);
    card.subtitle = u"second line"_s;
    card.metrics[1].highlight = high;
    card.metrics[2].highlight = low;
    tile.bind(card);
    EXPECT_EQ(tile.slotLabel->text(), u"【Left】"_s);
    EXPECT_EQ(tile.nameLabel->text(), u"Fireball"_s);
    EXPECT_EQ(tile.subtitleLabel->text(), u"second line"_s);
    EXPECT_FALSE(tile.subtitleLabel->isHidden());
    EXPECT_TRUE(tile.unrecognizedLabel->isHidden());
    EXPECT_EQ(tile.activeMetrics, 5);
    EXPECT_EQ(rowsShown(), 5);
    EXPECT_EQ(tile.metricPool[0]->keyLabel->text(), u"Deck WR"_s);
    EXPECT_EQ(tile.metricPool[0]->valLabel->text(), u"10.0%"_s);
    EXPECT_EQ(tile.metricPool[4]->valLabel->text(), u"14.00"_s);
    EXPECT_EQ(tile.metricPool[1]->valueColor, colors.systemGreen);
    EXPECT_EQ(tile.metricPool[2]->valueColor, colors.systemRed);
    EXPECT_EQ(tile.metricPool[3]->valueColor, colors.label);
}

TEST_F(CardTileViewTest, ShowsNoSubtitleThatIsEmpty) {
    OverlayCardViewModel card = cardOf(u"Fireball"_s);
    card.subtitle = u"second line"_s;
    tile.bind(card);
    for (const std::optional<QString>& subtitle :
         {std::optional<QString>(), std::optional(QString()), std::optional(u""_s)}) {
        card.subtitle = u"second line"_s;
        tile.bind(card);
        EXPECT_FALSE(tile.subtitleLabel->isHidden());
        card.subtitle = subtitle;
        tile.bind(card);
        EXPECT_TRUE(tile.subtitleLabel->isHidden());
        EXPECT_EQ(tile.subtitleLabel->text(), QString()) << "and emptied";
    }
}

TEST_F(CardTileViewTest, ShowsUpToSixMetrics) {
    for (const auto& [given, expected] : {std::pair{7, 6}, {6, 6}, {9, 6}, {3, 3}, {0, 0}, {4, 4}}) {
        SCOPED_TRACE(given);
        tile.bind(cardOf(u"x"_s, given));
        EXPECT_EQ(tile.activeMetrics, expected);
        EXPECT_EQ(rowsShown(), expected);
    }
}

TEST_F(CardTileViewTest, SaysThatACardWasNotRecognised) {
    tile.bind(cardOf(u"Fireball"_s));
    OverlayCardViewModel card = cardOf(u"F1reba11"_s); // carries figures all the same
    card.recognized = false;
    tile.bind(card);
    EXPECT_EQ(tile.nameLabel->text(), u"F1reba11"_s);
    EXPECT_FALSE(tile.unrecognizedLabel->isHidden());
    EXPECT_FALSE(tile.unrecognizedLabel->text().isEmpty());
    EXPECT_EQ(tile.activeMetrics, 0);
    EXPECT_EQ(rowsShown(), 0);

    const QString inEnglish = tile.unrecognizedLabel->text();
    AppLanguage::overridePreference(AppLanguage::zh);
    tile.bind(card);
    EXPECT_NE(tile.unrecognizedLabel->text(), inEnglish);

    tile.bind(cardOf(u"Fireball"_s));
    EXPECT_TRUE(tile.unrecognizedLabel->isHidden());
    EXPECT_EQ(rowsShown(), 5);
}

TEST_F(CardTileViewTest, ShowsADashForWhatIsNotKnown) {
    OverlayCardViewModel card = cardOf(u"x"_s, 1);
    card.metrics[0].value.reset();
    tile.bind(card);
    EXPECT_EQ(tile.metricPool[0]->valLabel->text(), u"—"_s);
    EXPECT_EQ(tile.metricPool[0]->valueColor, colors.label);
    EXPECT_EQ(tile.metricPool[0]->valueWeight, QFont::Medium);
}

TEST_F(CardTileViewTest, HasItsFontsWhicheverCameFirst) {
    OverlayCardViewModel card = cardOf(u"Fireball"_s);
    card.metrics[0].highlight = high;
    card.subtitle = u"x"_s;
    FontCache& fonts = FontCache::shared();
    const ResolvedMetrics larger = ResolvedMetrics::resolve({600, 500}, 3, Axis::vertical);
    for (const bool typographyFirst : {true, false}) {
        const ResolvedMetrics& m = typographyFirst ? metrics : larger;
        if (typographyFirst) {
            tile.applyTypography(m);
            tile.bind(card);
        } else {
            tile.bind(card);
            tile.applyTypography(m);
        }
        EXPECT_EQ(tile.slotLabel->textFont(), fonts.font(m.slotSize, QFont::DemiBold));
        EXPECT_EQ(tile.nameLabel->textFont(), fonts.font(m.nameSize, QFont::Bold));
        EXPECT_EQ(tile.subtitleLabel->textFont(), fonts.font(m.subtitleSize, QFont::Normal));
        EXPECT_EQ(tile.unrecognizedLabel->textFont(), fonts.font(m.slotSize, QFont::Normal));
        EXPECT_EQ(tile.metricPool[0]->valLabel->textFont(), fonts.font(m.metricValueSize, QFont::Bold));
        EXPECT_EQ(tile.metricPool[0]->valueColor, colors.systemGreen) << "the mark survives";
        EXPECT_EQ(tile.metricPool[1]->valLabel->textFont(), fonts.font(m.metricValueSize, QFont::Medium));
        EXPECT_EQ(tile.metricPool[5]->keyLabel->textFont(), fonts.font(m.metricKeySize, QFont::Normal))
            << "a hidden row as well";
    }
}

TEST_F(CardTileViewTest, HasItsColorsByTheirMeaning) {
    EXPECT_EQ(tile.slotLabel->color(), colors.secondaryLabel);
    EXPECT_EQ(tile.nameLabel->color(), colors.label);
    EXPECT_EQ(tile.subtitleLabel->color(), colors.tertiaryLabel);
    EXPECT_EQ(tile.unrecognizedLabel->color(), colors.systemOrange);
    PanelColors others = colors;
    others.label = Qt::yellow;
    tile.setColors(others);
    EXPECT_EQ(tile.nameLabel->color(), QColor(Qt::yellow));
    EXPECT_EQ(tile.metricPool[0]->valueColor, QColor(Qt::yellow));
}

TEST_F(CardTileViewTest, StacksItsLinesInsideItsPadding) {
    prepare();
    OverlayCardViewModel card = cardOf(u"Fireball"_s);
    card.subtitle = u"second line"_s;
    tile.bind(card);
    tile.resize(330, 400);
    turnEventLoop();
    const std::vector<QWidget*> views = shown();
    ASSERT_EQ(views.size(), 8U);
    EXPECT_EQ(views.front()->y(), metrics.cardPadding);
    for (std::size_t index = 0; index < views.size(); ++index) {
        EXPECT_EQ(views[index]->x(), metrics.cardPadding + 2);
        EXPECT_EQ(views[index]->width(), 330 - 2 * (metrics.cardPadding + 2));
        if (index > 0) {
            EXPECT_EQ(views[index]->y(), views[index - 1]->geometry().bottom() + 1 + metrics.stackInnerSpacing);
        }
    }
}

TEST_F(CardTileViewTest, KeepsTheMarginOfTheTopAtTheBottom) {
    prepare();
    tile.bind(cardOf(u"Fireball"_s));
    tile.resize(330, 400);
    turnEventLoop();
    // Exactly as high as its lines with both margins, nothing gives way.
    const int needed = shown().back()->geometry().bottom() + 1 + static_cast<int>(metrics.cardPadding);
    tile.resize(330, needed);
    turnEventLoop();
    EXPECT_EQ(shown().front()->y(), metrics.cardPadding);
    EXPECT_EQ(shown()[1]->y() - shown()[0]->geometry().bottom() - 1, metrics.stackInnerSpacing);
    tile.resize(330, needed - 6);
    turnEventLoop();
    EXPECT_LT(shown()[1]->y() - shown()[0]->geometry().bottom() - 1, metrics.stackInnerSpacing);
    EXPECT_LE(shown().back()->geometry().bottom(), tile.height() - metrics.cardPadding)
        << "the margin stays while the gaps give way";
}

TEST_F(CardTileViewTest, WrapsALongNameToTwoLines) {
    prepare();
    tile.resize(240, 400);
    tile.bind(cardOf(u"Ragnaros the Firelord of the Molten Core and its Ashen Lands"_s));
    turnEventLoop();
    EXPECT_EQ(tile.nameLabel->height(), 2 * tile.nameLabel->lineHeight()) << "60 characters";
    tile.bind(cardOf(QString(60, u'W')));
    turnEventLoop();
    EXPECT_EQ(tile.nameLabel->height(), 2 * tile.nameLabel->lineHeight()) << "in one word";
    tile.bind(cardOf(u"火"_s.repeated(60)));
    turnEventLoop();
    EXPECT_EQ(tile.nameLabel->height(), 2 * tile.nameLabel->lineHeight()) << "without a space";
    tile.bind(cardOf(u"Fireball"_s));
    turnEventLoop();
    EXPECT_EQ(tile.nameLabel->height(), tile.nameLabel->lineHeight());
    tile.bind(cardOf(QString()));
    turnEventLoop();
    EXPECT_EQ(tile.nameLabel->height(), tile.nameLabel->lineHeight()) << "an empty name keeps its line";
    tile.bind(cardOf(u"one\ntwo\nthree"_s));
    turnEventLoop();
    EXPECT_EQ(tile.nameLabel->height(), 2 * tile.nameLabel->lineHeight()) << "line breaks";
}

TEST_F(CardTileViewTest, TakesAnyAmountOfLinesForTheOthers) {
    prepare();
    tile.resize(240, 600);
    OverlayCardViewModel card = cardOf(u"x"_s);
    card.subtitle = u"a long second line "_s.repeated(12);
    tile.bind(card);
    turnEventLoop();
    EXPECT_GT(tile.subtitleLabel->height(), 3 * tile.subtitleLabel->lineHeight());
}

TEST_F(CardTileViewTest, GivesUpTheSecondLineOfANameForItsFigures) {
    prepare();
    tile.resize(240, 130);
    tile.bind(cardOf(u"Ragnaros the Firelord of the Molten Core and its Ashen Lands"_s));
    turnEventLoop();
    EXPECT_EQ(tile.nameLabel->height(), tile.nameLabel->lineHeight());
    tile.resize(240, 400);
    turnEventLoop();
    EXPECT_EQ(tile.nameLabel->height(), 2 * tile.nameLabel->lineHeight()) << "and has it back with the room";
}

TEST_F(CardTileViewTest, ComesToRestInATileTooLow) {
    prepare();
    tile.bind(cardOf(u"Ragnaros the Firelord of the Molten Core and its Ashen Lands"_s));
    for (const int height : {160, 90, 40}) {
        tile.resize(240, height);
        for (int turn = 0; turn < 4; ++turn) {
            turnEventLoop();
        }
        testing::EventCounter requests(tile, QEvent::LayoutRequest);
        for (int turn = 0; turn < 20; ++turn) {
            turnEventLoop();
        }
        EXPECT_EQ(requests.take(), 0) << "it lays itself out again and again at a height of " << height;
    }
}

TEST_F(CardTileViewTest, AsksForNoLayoutWhenTheSameIsBoundAgain) {
    prepare();
    tile.bind(cardOf(u"Fireball"_s));
    turnEventLoop();
    testing::EventCounter requests(tile, QEvent::LayoutRequest);
    std::vector<std::unique_ptr<testing::EventCounter>> rowRequests;
    rowRequests.reserve(tile.metricPool.size());
    for (MetricRowView* row : tile.metricPool) {
        rowRequests.push_back(std::make_unique<testing::EventCounter>(*row, QEvent::LayoutRequest));
    }
    tile.bind(cardOf(u"Fireball"_s));
    turnEventLoop();
    EXPECT_EQ(requests.take(), 0);
    for (const auto& row : rowRequests) {
        EXPECT_EQ(row->take(), 0);
    }
    tile.bind(cardOf(u"Frostbolt"_s));
    turnEventLoop();
    EXPECT_GT(requests.take(), 0);
}

TEST_F(CardTileViewTest, LaysOutRowsThatAppear) {
    prepare();
    OverlayCardViewModel card = cardOf(u"Fireball"_s);
    card.recognized = false;
    tile.bind(card);
    tile.resize(330, 400);
    turnEventLoop();
    tile.bind(cardOf(u"Fireball"_s));
    turnEventLoop();
    const std::vector<QWidget*> views = shown();
    ASSERT_EQ(views.size(), 7U);
    for (std::size_t index = 1; index < views.size(); ++index) {
        EXPECT_EQ(views[index]->y(), views[index - 1]->geometry().bottom() + 1 + metrics.stackInnerSpacing);
    }
    EXPECT_EQ(tile.metricPool[0]->valLabel->geometry().right(), tile.metricPool[0]->width() - 1);
}

TEST_F(CardTileViewTest, HasALeastWidthByTheMetrics) {
    EXPECT_EQ(tile.minimumTileWidth(), 220);
    tile.applyLayout(ResolvedMetrics::resolve({800, 300}, 3, Axis::vertical));
    EXPECT_EQ(tile.minimumTileWidth(), 192);
    tile.resize(100, 240);
    EXPECT_EQ(tile.width(), 100) << "it yields";
}

TEST_F(CardTileViewTest, PaintsALightWashWithRoundedCorners) {
    prepare();
    tile.bind(OverlayCardViewModel{u""_s, u""_s, {}, {}, true});
    tile.resize(200, 100);
    QImage image(tile.size(), QImage::Format_ARGB32);
    image.fill(Qt::black);
    tile.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    const int wash = qRed(image.pixel(150, 80));
    EXPECT_NEAR(wash, 255 * 0.08, 2);
    EXPECT_EQ(qRed(image.pixel(0, 0)), 0) << "a corner is cut";
    EXPECT_EQ(qRed(image.pixel(199, 99)), 0);
    EXPECT_EQ(qRed(image.pixel(100, 0)), wash) << "an edge is not";
}

} // namespace pelloran
