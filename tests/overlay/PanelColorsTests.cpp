#include "overlay/OverlayPanel/views/PanelColors.h"

#include <gtest/gtest.h>

#include <cmath>

namespace pelloran {

namespace {

// `above` laid over the opaque colour `below`.
QColor over(const QColor& above, const QColor& below) {
    const float alpha = above.alphaF();
    const auto mix = [alpha](float one, float other) { return one * alpha + other * (1 - alpha); };
    return QColor::fromRgbF(mix(above.redF(), below.redF()), mix(above.greenF(), below.greenF()),
                            mix(above.blueF(), below.blueF()));
}

double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

// As the guidelines for web content define it, from 1 to 21.
double contrast(const QColor& text, const QColor& background) {
    const double one = luminance(over(text, background)) + 0.05;
    const double other = luminance(background) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

const struct {
    const char* name;
    QColor PanelColors::* color;
    double least;
} texts[] = {
    {"title", &PanelColors::title, 4.5},
    {"label", &PanelColors::label, 4.5},
    {"secondary label", &PanelColors::secondaryLabel, 4.5},
    {"tertiary label", &PanelColors::tertiaryLabel, 3.5}, // of a second line, which repeats what the tile is about
    {"green", &PanelColors::systemGreen, 4.5},
    {"red", &PanelColors::systemRed, 4.5},
    {"orange", &PanelColors::systemOrange, 4.5},
};

} // namespace

TEST(PanelColors, CanBeReadOverAnything) {
    ASSERT_NEAR(contrast(Qt::white, Qt::black), 21, 0.01) << "the formula";
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        const PanelColors colors = PanelColors::of(appearance);
        for (const QColor& behind : {QColor(Qt::black), QColor(Qt::white)}) {
            const QColor sheet = over(colors.material, behind);
            const QColor tile = over(colors.tile, sheet);
            for (const auto& [name, color, least] : texts) {
                SCOPED_TRACE(::testing::Message()
                             << name << " on a " << (appearance == Appearance::dark ? "dark" : "light")
                             << " desktop over " << behind.name().toStdString());
                EXPECT_GE(contrast(colors.*color, sheet), least) << "on the sheet";
                EXPECT_GE(contrast(colors.*color, tile), least) << "on a tile";
            }
        }
        const QColor tile = over(colors.tile, colors.opaqueMaterial);
        for (const auto& [name, color, least] : texts) {
            EXPECT_GE(contrast(colors.*color, tile), least) << name << " where nothing shines through";
        }
    }
}

TEST(PanelColors, AreThoseOfADarkSheetWithAGoldenTitle) {
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        const PanelColors colors = PanelColors::of(appearance);
        EXPECT_EQ(colors.title, QColor::fromRgbF(0.95F, 0.78F, 0.35F));
        EXPECT_EQ(colors.opaqueMaterial.alpha(), 255);
        EXPECT_LT(luminance(colors.opaqueMaterial), 0.05);
        EXPECT_LT(colors.material.alphaF(), 1) << "something shines through";
        QColor wash = colors.label;
        wash.setAlphaF(0.08F);
        EXPECT_EQ(colors.tile, wash) << "of the label's colour";
    }
    EXPECT_GT(PanelColors::of(Appearance::light).material.alphaF(),
              PanelColors::of(Appearance::dark).material.alphaF());
}

TEST(PanelColors, TellGoodFromBadToEveryEye) {
    // For who cannot tell red from green the marks differ from plain values by their weight; they must not be mistaken
    // for dimmed texts either.
    const PanelColors colors = PanelColors::of(Appearance::dark);
    const auto hue = [](const QColor& color) { return color.hslHue(); };
    EXPECT_NEAR(hue(colors.systemGreen), 135, 20);
    EXPECT_TRUE(hue(colors.systemRed) < 15 || hue(colors.systemRed) > 345);
    EXPECT_NEAR(hue(colors.systemOrange), 35, 10);
    for (const QColor& color : {colors.systemGreen, colors.systemRed, colors.systemOrange}) {
        EXPECT_GT(color.hslSaturationF(), 0.6F);
    }
}

} // namespace pelloran
