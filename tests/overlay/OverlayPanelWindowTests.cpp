#include "overlay/OverlayPanel/views/TextLabel.h"
#include "tests/overlay/OverlayPanelControllerTest.h"
#include "tests/support/ExpectedWarning.h"
#include "tests/support/Printing.h"

#include <QApplication>
#include <QPalette>

#include <gtest/gtest.h>

// The panel's window: its corners, its look, its painting, its end.
namespace pelloran {

namespace {

using testing::ExpectedWarning;
using testing::turnEventLoop;

// Widgets remember their mask all the same.
const QString noMasks = u"This plugin does not support setting window masks"_s;

TEST_F(OverlayPanelControllerTest, CutsItsCornersWhereNothingIsComposed) {
    showSettled();
    EXPECT_TRUE(panel().mask().isEmpty());
    EXPECT_EQ(window->blurRadius, 12);
    const ExpectedWarning unmasked(noMasks);
    window->setComposited(false);
    const QRegion mask = panel().mask();
    EXPECT_FALSE(mask.contains(QPoint(0, 0)));
    EXPECT_FALSE(mask.contains(QPoint(359, 419)));
    EXPECT_TRUE(mask.contains(QPoint(180, 0)));
    EXPECT_TRUE(mask.contains(QPoint(180, 210)));
    EXPECT_TRUE(mask.contains(QPoint(358, 210)));

    updateSettled(tiles(3));
    EXPECT_TRUE(panel().mask().contains(QPoint(180, 598))) << "the mask grows with the panel";
    EXPECT_FALSE(panel().mask().contains(QPoint(0, 0)));
    EXPECT_FALSE(panel().mask().contains(QPoint(359, 599)));
    EXPECT_EQ(window->blurRadius, metrics().panelCornerRadius);
    panel().setFrame({40, 60, 363, 600});
    EXPECT_TRUE(panel().mask().contains(QPoint(361, 300))) << "at once, or its edge would be missing";

    window->setComposited(true);
    EXPECT_TRUE(panel().mask().isEmpty());
}

TEST_F(OverlayPanelControllerTest, IsOpaqueWhereNothingIsComposed) {
    showSettled();
    const auto middle = [this] {
        QImage image(panel().size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        panel().render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return qAlpha(image.pixel(180, 300));
    };
    EXPECT_LT(middle(), 255);
    EXPECT_GT(middle(), 200);
    const ExpectedWarning unmasked(noMasks);
    window->setComposited(false);
    EXPECT_EQ(middle(), 255);
}

TEST_F(OverlayPanelControllerTest, FollowsTheDesktopsLook) {
    settings.setAppearance(Appearance::light);
    build();
    showSettled();
    const auto sheet = [this] {
        QImage image(panel().size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        panel().render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return qAlpha(image.pixel(180, 300));
    };
    EXPECT_EQ(sheet(), PanelColors::of(Appearance::light).material.alpha());
    EXPECT_EQ(root().titleLabel->color(), PanelColors::of(Appearance::light).title);
    settings.setAppearance(Appearance::dark);
    controller->systemSettingsChanged();
    EXPECT_EQ(sheet(), PanelColors::of(Appearance::dark).material.alpha());
}

TEST_F(OverlayPanelControllerTest, FollowsThePaletteWhereTheDesktopSaysNothing) {
    const QPalette before = QApplication::palette();
    const auto sheet = [this] {
        QImage image(panel().size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        panel().render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return qAlpha(image.pixel(180, 300));
    };

    const struct {
        const char* why;
        std::optional<Appearance> said;
        QColor window;
        Appearance expected;
    } rows[] = {
        {"a dark palette", {}, QColor(30, 30, 30), Appearance::dark},
        {"a light palette", {}, QColor(240, 240, 240), Appearance::light},
        {"dark again", {}, QColor(40, 40, 40), Appearance::dark},
        {"the desktop's word counts for more", Appearance::light, QColor(20, 20, 20), Appearance::light},
    };

    ASSERT_NE(PanelColors::of(Appearance::dark).material.alpha(), PanelColors::of(Appearance::light).material.alpha());
    showSettled();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        settings.setAppearance(row.said);
        QApplication::setPalette(QPalette(row.window, row.window));
        turnEventLoop();
        EXPECT_EQ(sheet(), PanelColors::of(row.expected).material.alpha());
    }
    QApplication::setPalette(before);
}

TEST_F(OverlayPanelControllerTest, PaintsWithoutComplaintInEveryState) {
    // A warning fails the test.
    showSettled();
    const QString hebrew = u"כדור אש"_s;
    for (const OverlaySnapshot& snapshot :
         {message(u""_s), tiles(3, QString()), tiles(3, u"W"_s.repeated(60)), tiles(2, u"a\nb\nc"_s), tiles(1, hebrew),
          tiles(3, u"火"_s.repeated(60)), message(hebrew), tiles(0), tiles(3)}) {
        update(snapshot);
        for (int frame = 0; frame < 10; ++frame) {
            time.pass(32);
            EXPECT_FALSE(panel().grab().isNull());
        }
        settle();
    }
}

TEST_F(OverlayPanelControllerTest, MayGoAtAnyMoment) {
    showSettled();
    const auto rebuilt = [this] {
        controller.reset();
        time.pass(600);
        build();
        showSettled();
        updateSettled(tiles(3));
    };
    controller->update(tiles(3)); // not yet delivered
    rebuilt();
    update(message()); // the frame is moving
    time.pass(64);
    rebuilt();
    dragWidthTo(700); // the axis is turning
    time.pass(64);
    rebuilt();
    dragWidthTo(500, false); // an edge is held
    rebuilt();
    EXPECT_EQ(tilesShown(), 3);
}

} // namespace

} // namespace pelloran
