#include "platform/macos/WindowRecord.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace pelloran::macos {

namespace {

Value text(const char16_t* characters) {
    return QString(QStringView(characters).toString());
}

Value whole(std::int64_t number) {
    return number;
}

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(WindowRecord, AnUsualWindowIsToldWhole) {
    const WindowRecord record{
        .number = whole(77),
        .ownerName = text(u"Hearthstone"),
        .name = text(u"Hearthstone"),
        .layer = whole(0),
        .bounds = WindowRecord::Bounds{whole(-1440), 25.5, whole(1280), 748.0},
    };
    const WindowDescription expected{77, QStringLiteral("Hearthstone"), QStringLiteral("Hearthstone"), 0,
                                     WindowBounds{-1440, 25.5, 1280, 748}};
    EXPECT_EQ(describe(record), expected);
}

TEST(WindowRecord, WhatIsMissingIsAbsent) {
    EXPECT_EQ(describe({}), WindowDescription());
}

TEST(WindowRecord, NumbersAreWholeOrNothing) {
    struct Case {
        const char* why;
        Value given;
        std::optional<std::int64_t> expected;
    };

    const Case cases[] = {
        {"as the window server gives it", whole(42), 42},
        {"all 32 bits", whole(0xffff'ffff), 0xffff'ffff},
        {"more than 32 bits: what is kept of it is the reader's to say", whole(0x1'0000'0001), 0x1'0000'0001},
        {"below zero", whole(-1), -1},
        {"a double", 42.0, 42},
        {"with a fraction", 42.9, 42},
        {"with a fraction below zero", -42.9, -42},
        {"the least of 64 bits as a double", -9223372036854775808.0, std::numeric_limits<std::int64_t>::min()},
        {"one more than 64 bits hold", 9223372036854775808.0, std::nullopt},
        {"far more", 1e300, std::nullopt},
        {"far less", -1e300, std::nullopt},
        {"infinite", infinite, std::nullopt},
        {"no number", notANumber, std::nullopt},
        {"text, also of digits", text(u"42"), std::nullopt},
        {"nothing", {}, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(describe({.number = c.given, .ownerName = {}, .name = {}, .layer = {}, .bounds = {}}).number,
                  c.expected);
    }
}

TEST(WindowRecord, NoLayerComesToLookLikeThatOfOrdinaryWindows) {
    struct Case {
        const char* why;
        Value given;
        std::optional<int> expected;
    };

    const Case cases[] = {
        {"ordinary", whole(0), 0},
        {"ordinary as a double", 0.0, 0},
        {"a panel", whole(3), 3},
        {"the desktop", whole(std::numeric_limits<int>::min() + 20), std::numeric_limits<int>::min() + 20},
        {"32 bits of zeros, and more before them", whole(0x1'0000'0000), std::numeric_limits<int>::max()},
        {"the same below zero", whole(-0x1'0000'0000), std::numeric_limits<int>::min()},
        {"no number", notANumber, std::nullopt},
        {"text", text(u"0"), std::nullopt},
        {"nothing", {}, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(describe({.number = {}, .ownerName = {}, .name = {}, .layer = c.given, .bounds = {}}).layer,
                  c.expected);
    }
}

TEST(WindowRecord, TextIsTextOrNothing) {
    struct Case {
        const char* why;
        Value given;
        std::optional<QString> expected;
    };

    const Case cases[] = {
        {"letters", text(u"Hearthstone"), QStringLiteral("Hearthstone")},
        {"characters", text(u"炉石传说"), QStringLiteral("炉石传说")},
        {"empty is not absent", text(u""), QString(QLatin1String(""))},
        {"a number", whole(7), std::nullopt},
        {"a double", 7.0, std::nullopt},
        {"nothing", {}, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const WindowDescription description =
            describe({.number = {}, .ownerName = c.given, .name = c.given, .layer = {}, .bounds = {}});
        EXPECT_EQ(description.ownerName, c.expected);
        EXPECT_EQ(description.name, c.expected);
    }
}

TEST(WindowRecord, EachSideOfTheBoundsStandsForItself) {
    struct Case {
        const char* why;
        WindowRecord::Bounds given;
        WindowBounds expected;
    };

    const Case cases[] = {
        {"all four", {1.5, 2.5, 800.0, 600.0}, {1.5, 2.5, 800, 600}},
        {"whole numbers", {whole(1), whole(2), whole(800), whole(600)}, {1, 2, 800, 600}},
        {"an empty dictionary", {}, {}},
        {"no x", {{}, 2.0, 800.0, 600.0}, {{}, 2, 800, 600}},
        {"no y", {1.0, {}, 800.0, 600.0}, {1, {}, 800, 600}},
        {"no width", {1.0, 2.0, {}, 600.0}, {1, 2, {}, 600}},
        {"no height", {1.0, 2.0, 800.0, {}}, {1, 2, 800, {}}},
        {"text among them", {1.0, 2.0, text(u"800"), 600.0}, {1, 2, {}, 600}},
        {"not finite", {infinite, -infinite, notANumber, 600.0}, {{}, {}, {}, 600}},
        {"huge ones are the reader's to judge", {-1e300, 0.0, 1e300, 600.0}, {-1e300, 0, 1e300, 600}},
        {"below zero too", {0.0, 0.0, -800.0, -600.0}, {0, 0, -800, -600}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(describe({.number = {}, .ownerName = {}, .name = {}, .layer = {}, .bounds = c.given}).bounds,
                  c.expected);
    }
}

TEST(WindowRecord, SizesAreInWholePoints) {
    struct Case {
        const char* why;
        std::optional<WindowBounds> bounds;
        std::optional<QSize> expected;
    };

    const Case cases[] = {
        {"usual", WindowBounds{10, 20, 1280, 748}, QSize(1280, 748)},
        {"between two points", WindowBounds{0, 0, 1279.6, 748.4}, QSize(1280, 748)},
        {"where it stands does not matter", WindowBounds{{}, {}, 1280, 748}, QSize(1280, 748)},
        {"of no size", WindowBounds{0, 0, 0, 0}, QSize(0, 0)},
        {"less than nothing", WindowBounds{0, 0, -1280, 748}, std::nullopt},
        {"no width", WindowBounds{0, 0, {}, 748}, std::nullopt},
        {"no height", WindowBounds{0, 0, 1280, {}}, std::nullopt},
        {"no bounds", std::nullopt, std::nullopt},
        {"wider than any display", WindowBounds{0, 0, 1e9, 748}, std::nullopt},
        {"not a number", WindowBounds{0, 0, notANumber, 748}, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(pointsOf({.number = 1, .ownerName = {}, .name = {}, .layer = {}, .bounds = c.bounds}), c.expected);
    }
}

} // namespace

} // namespace pelloran::macos
