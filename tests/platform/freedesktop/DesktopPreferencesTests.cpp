#include "platform/freedesktop/DesktopPreferences.h"

#include "platform/freedesktop/PortalNames.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace pelloran::freedesktop {

namespace {

TEST(DesktopPreferences, WithoutAnyWordAreTheDefaults) {
    const DesktopPreferences preferences;
    EXPECT_FALSE(preferences.reducesMotion());
    EXPECT_FALSE(preferences.appearance());
    EXPECT_FALSE(preferences.portalTellsOfMotion());
}

TEST(DesktopPreferences, TheColourSchemeIsANumber) {
    struct Case {
        const char* why;
        QVariant value;
        std::optional<Appearance> expected;
    };

    const Case cases[] = {
        {"no preference", 0U, std::nullopt},
        {"dark", 1U, Appearance::dark},
        {"light", 2U, Appearance::light},
        {"not known yet", 3U, std::nullopt},
        {"another type of number", 1, Appearance::dark},
        {"a long number", qulonglong{2}, Appearance::light},
        {"negative", -1, std::nullopt},
        {"text", QStringLiteral("1"), std::nullopt},
        {"a truth", true, std::nullopt},
        {"a fraction", 1.0, std::nullopt},
        {"a list", QVariantList{1U}, std::nullopt},
        {"nothing", QVariant(), std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        DesktopPreferences preferences;
        preferences.setPortal(PortalGroups{{appearanceGroup, {{colorSchemeKey, c.value}}}});
        EXPECT_EQ(preferences.appearance(), c.expected);
        EXPECT_FALSE(preferences.portalTellsOfMotion());
    }
}

TEST(DesktopPreferences, MotionIsReducedWhereAnyPlaceOfThePortalAsksForIt) {
    struct Case {
        const char* why;
        QVariant reducedMotion;
        QVariant gnomeAnimations;
        QVariant kdeFactor;
        bool reduces;
        bool tells;
    };

    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const Case cases[] = {
        {"no word", {}, {}, {}, false, false},
        {"reduced", 1U, {}, {}, true, true},
        {"no preference", 0U, {}, {}, false, true},
        {"not known yet", 7U, {}, {}, false, true},
        {"text is no number there", QStringLiteral("1"), {}, {}, false, false},
        {"GNOME without animations", {}, false, {}, true, true},
        {"GNOME with animations", {}, true, {}, false, true},
        {"a number is no truth", {}, 0, {}, false, false},
        {"KDE: instantly, as text", {}, {}, QStringLiteral("0"), true, true},
        {"KDE: instantly, as text with a fraction", {}, {}, QStringLiteral("0.0"), true, true},
        {"KDE: instantly, as a number", {}, {}, 0, true, true},
        {"KDE: instantly, as a fraction", {}, {}, 0.0, true, true},
        {"KDE: faster", {}, {}, QStringLiteral("0.5"), false, true},
        {"KDE: slower", {}, {}, 2.0, false, true},
        {"KDE: empty", {}, {}, QString(), false, false},
        {"KDE: words", {}, {}, QStringLiteral("none"), false, false},
        {"KDE: no number", {}, {}, notANumber, false, false},
        {"KDE: no number, as text", {}, {}, QStringLiteral("nan"), false, false},
        {"KDE: a truth", {}, {}, false, false, false},
        {"one of them asks", 0U, false, QStringLiteral("1"), true, true},
        {"another asks", 0U, true, QStringLiteral("0"), true, true},
        {"none asks", 0U, true, QStringLiteral("1"), false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        DesktopPreferences preferences;
        PortalGroups groups;
        const auto put = [&](const QString& group, const QString& key, const QVariant& value) {
            if (value.isValid()) {
                groups[group][key] = value;
            }
        };
        put(appearanceGroup, reducedMotionKey, c.reducedMotion);
        put(gnomeGroup, gnomeAnimationsKey, c.gnomeAnimations);
        put(kdeGroup, kdeDurationKey, c.kdeFactor);
        preferences.setPortal(groups);
        EXPECT_EQ(preferences.reducesMotion(), c.reduces);
        EXPECT_EQ(preferences.portalTellsOfMotion(), c.tells);
        EXPECT_FALSE(preferences.appearance());
    }
}

TEST(DesktopPreferences, WhatWeReadOurselvesCountsWithoutAWordFromThePortal) {
    DesktopPreferences preferences;
    preferences.setKdeAnimationDurationFactor(1.0);
    preferences.setGnomeAnimations(true);
    EXPECT_FALSE(preferences.reducesMotion());
    preferences.setKdeAnimationDurationFactor(0.0);
    EXPECT_TRUE(preferences.reducesMotion());
    preferences.setKdeAnimationDurationFactor(std::nullopt);
    EXPECT_FALSE(preferences.reducesMotion());
    preferences.setGnomeAnimations(false);
    EXPECT_TRUE(preferences.reducesMotion());

    preferences.setPortal(PortalGroups{{appearanceGroup, {{colorSchemeKey, 1U}}}});
    EXPECT_TRUE(preferences.reducesMotion()) << "it speaks of colours only";
    preferences.setInPortal(appearanceGroup, reducedMotionKey, 0U);
    EXPECT_FALSE(preferences.reducesMotion());
    EXPECT_EQ(preferences.appearance(), Appearance::dark);
}

TEST(DesktopPreferences, APortalThatIsGoneLeavesNothingBehind) {
    DesktopPreferences preferences;
    preferences.setPortal(PortalGroups{{appearanceGroup, {{colorSchemeKey, 1U}, {reducedMotionKey, 1U}}}});
    EXPECT_TRUE(preferences.reducesMotion());
    preferences.setPortal(std::nullopt);
    EXPECT_FALSE(preferences.reducesMotion());
    EXPECT_FALSE(preferences.appearance());
}

TEST(DesktopPreferences, OtherKeysOfTheSameNameHaveNoPart) {
    DesktopPreferences preferences;
    preferences.setInPortal(QStringLiteral("org.example"), colorSchemeKey, 1U);
    preferences.setInPortal(appearanceGroup, gnomeAnimationsKey, false);
    preferences.setInPortal(QString(), QString(), QVariant());
    EXPECT_FALSE(preferences.reducesMotion());
    EXPECT_FALSE(preferences.appearance());
}

} // namespace

} // namespace pelloran::freedesktop
