#include "app/desktop/Appearance.h"

#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/PanelColors.h"

#include <QApplication>
#include <QFont>
#include <QGlyphRun>
#include <QRawFont>
#include <QString>
#include <QStringList>
#include <QStyle>
#include <QTextLayout>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace pelloran {
namespace {

// Of the light that a screen sends, as the eye sees it.
double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

TEST(Appearance, HasPalettesThatCanBeRead) {
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        const QPalette palette = paletteFor(appearance);
        EXPECT_EQ(appearanceOf(palette), appearance);

        struct Case {
            const char* why;
            QPalette::ColorRole text;
            QPalette::ColorRole ground;
        };

        const Case cases[] = {
            {"alerts", QPalette::WindowText, QPalette::Window},
            {"menus", QPalette::Text, QPalette::Base},
            {"buttons", QPalette::ButtonText, QPalette::Button},
            {"the chosen entry", QPalette::HighlightedText, QPalette::Highlight},
            {"tooltips", QPalette::ToolTipText, QPalette::ToolTipBase},
        };
        for (const Case& c : cases) {
            SCOPED_TRACE(c.why);
            EXPECT_GE(contrast(palette.color(c.text), palette.color(c.ground)), 4.5);
        }
        EXPECT_NE(palette.color(QPalette::Disabled, QPalette::Text), palette.color(QPalette::Active, QPalette::Text));
    }
}

TEST(Appearance, ChangesOnlyWhatQtDidNotChoose) {
    const QString style = QApplication::style()->name();
    const QColor window = QApplication::palette().color(QPalette::Window);
    const Appearance own = appearanceOf(QApplication::palette());
    const Appearance other = own == Appearance::dark ? Appearance::light : Appearance::dark;

    applyAppearance(own);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), window);
    applyAppearance(other);
    EXPECT_EQ(appearanceOf(QApplication::palette()), other);
    EXPECT_EQ(QApplication::style()->name(), QStringLiteral("fusion"));
    applyAppearance(std::nullopt);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), window);
    EXPECT_EQ(QApplication::style()->name(), style);
}

TEST(Appearance, IsLeftToAStyleThatFollowsTheSystem) {
    EXPECT_TRUE(followsTheSystem(QStringLiteral("macos")));
    EXPECT_TRUE(followsTheSystem(QStringLiteral("macOS"))) << "as it is asked for";
    for (const char* style : {"fusion", "windows", "breeze", ""}) {
        EXPECT_FALSE(followsTheSystem(QString::fromLatin1(style))) << style;
    }
}

// The families that the text is drawn in, piece by piece.
QStringList familiesDrawn(const QString& text, const QFont& font) {
    QTextLayout layout(text, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    QStringList families;
    for (const QGlyphRun& run : layout.glyphRuns()) {
        families += run.rawFont().familyName().toLower(); // Qt writes it as it was asked for
    }
    return families;
}

TEST(Appearance, MenusAndAlertsWriteChineseAsThePanel) {
    const QFont own = QApplication::font();
    const QString desktops = QStringLiteral("monospace"); // whose Chinese is another
    QApplication::setFont(QFont(desktops));
    const QString text = QStringLiteral("隐藏浮窗语言");
    const QStringList ofThePanel = familiesDrawn(text, FontCache::shared().font(13, QFont::Normal));
    ASSERT_FALSE(ofThePanel.isEmpty());

    writeChineseAsThePanel();
    for (const char* widget : {"QWidget", "QMenu", "QLabel", "QPlainTextEdit", "QPushButton"}) {
        EXPECT_EQ(familiesDrawn(text, QApplication::font(widget)), ofThePanel) << widget;
        EXPECT_NE(familiesDrawn(QStringLiteral("Pelloran"), QApplication::font(widget)), ofThePanel)
            << widget << ": what is not Chinese stays in the desktop's own font";
    }
    QFont::removeSubstitutions(desktops);
    QApplication::setFont(own);
}

} // namespace
} // namespace pelloran
