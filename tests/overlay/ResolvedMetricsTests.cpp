#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace pelloran {

static void PrintTo(const ResolvedMetrics& m, std::ostream* out) {
    *out << "class " << static_cast<int>(m.sizeClass) << " scale " << m.scale << " axis " << static_cast<int>(m.axis);
    for (const double length :
         {m.contentInset, m.sectionSpacing, m.cardSpacing, m.cardPadding, m.metricSpacing, m.stackInnerSpacing,
          m.cornerRadius, m.panelCornerRadius, m.cardMinWidth, m.metricRowMinWidth, m.titleSize, m.messageSize,
          m.slotSize, m.nameSize, m.subtitleSize, m.metricKeySize, m.metricValueSize}) {
        *out << ' ' << length;
    }
}

namespace {

using enum Axis;
using enum SizeClass;

constexpr double unbounded = std::numeric_limits<double>::infinity();

ResolvedMetrics threeTiles(double width, double height, Axis previous = vertical) {
    return ResolvedMetrics::resolve({width, height}, 3, previous);
}

// Rounds half away from zero by another road than the one under test.
double nearestHalf(double x) {
    const double doubled = 2 * std::abs(x);
    double whole = std::floor(doubled);
    if (doubled - whole >= 0.5) {
        whole += 1;
    }
    return std::copysign(whole / 2, x);
}

double atLeast(double value, double least) {
    return value < least ? least : value;
}

// The rules once more, as plainly as they can be put down.
ResolvedMetrics plainly(double width, double height, int cardCount, Axis previous) {
    ResolvedMetrics m;
    if (width <= 1.0) {
        width = 1.0;
    }

    int band = 3;
    if (width < 640) {
        band = 2;
    }
    if (width < 480) {
        band = 1;
    }
    if (width < 320) {
        band = 0;
    }
    m.sizeClass = static_cast<SizeClass>(band);

    m.axis = vertical;
    if (cardCount >= 2) {
        if (previous == vertical && width >= 580) {
            m.axis = horizontal;
        }
        if (previous == horizontal && width >= 520) {
            m.axis = horizontal;
        }
    }

    double h = 0.0005238095238095238;
    if (height > 1.0) {
        h = (height / 420) * 0.22;
    }
    double raw = (width / 360) * 0.78 + h;
    if (raw < 0.01) {
        raw = 0.01;
    }
    double s = std::pow(raw, 0.78);
    if (s < 0.88) {
        s = 0.88;
    }
    if (s > 1.36) {
        s = 1.36;
    }
    m.scale = s;

    const bool sideBySide = m.axis == horizontal;
    const double capped = s < 1.2 ? s : 1.2;
    m.contentInset = nearestHalf(12 * s);
    m.sectionSpacing = nearestHalf(10 * s);
    m.cardSpacing = sideBySide ? nearestHalf(10 * s) : nearestHalf(12 * s);
    m.cardPadding = nearestHalf(10 * s);
    m.metricSpacing = nearestHalf(6 * s);
    m.stackInnerSpacing = atLeast(nearestHalf(4 * s), 3);
    m.cornerRadius = atLeast(nearestHalf(10 * s), 8);
    m.panelCornerRadius = atLeast(nearestHalf(10 * s), 8) + 2;
    m.cardMinWidth = sideBySide ? nearestHalf(160 * capped) : nearestHalf(220 * capped);
    m.metricRowMinWidth = s > 1.15 ? 161 : nearestHalf(140 * s);

    const double k = 0.55 * band + 4.5 * (s - 1);
    m.titleSize = atLeast(nearestHalf(13.5 + 0.9 * k), 11);
    m.messageSize = atLeast(nearestHalf(12.5 + 0.7 * k), 11);
    m.slotSize = atLeast(nearestHalf(11.5 + 0.6 * k), 11);
    m.nameSize = atLeast(nearestHalf(14.5 + k), 11);
    m.subtitleSize = atLeast(nearestHalf(11 + 0.5 * k), 11);
    m.metricKeySize = atLeast(nearestHalf(12 + 0.6 * k), 11);
    m.metricValueSize = atLeast(nearestHalf(12.5 + 0.7 * k), 11);
    return m;
}

const struct {
    const char* name;
    double ResolvedMetrics::* field;
} lengthFields[] =
    {
        {"contentInset", &ResolvedMetrics::contentInset},   {"sectionSpacing", &ResolvedMetrics::sectionSpacing},
        {"cardSpacing", &ResolvedMetrics::cardSpacing},     {"cardPadding", &ResolvedMetrics::cardPadding},
        {"metricSpacing", &ResolvedMetrics::metricSpacing}, {"stackInnerSpacing", &ResolvedMetrics::stackInnerSpacing},
        {"cornerRadius", &ResolvedMetrics::cornerRadius},   {"panelCornerRadius", &ResolvedMetrics::panelCornerRadius},
        {"cardMinWidth", &ResolvedMetrics::cardMinWidth},   {"metricRowMinWidth", &ResolvedMetrics::metricRowMinWidth},
},
  fontFields[] = {
      {"titleSize", &ResolvedMetrics::titleSize},
      {"messageSize", &ResolvedMetrics::messageSize},
      {"slotSize", &ResolvedMetrics::slotSize},
      {"nameSize", &ResolvedMetrics::nameSize},
      {"subtitleSize", &ResolvedMetrics::subtitleSize},
      {"metricKeySize", &ResolvedMetrics::metricKeySize},
      {"metricValueSize", &ResolvedMetrics::metricValueSize},
};

} // namespace

TEST(ResolvedMetrics, AreThoseOfTheWorkedSizes) {
    const struct {
        const char* why;
        double width;
        double height;
        Axis previous;
        ResolvedMetrics expected; // the scale to four digits
    } rows[] = {
        {"as small as it gets by dragging", 280, 200, vertical, {compact, 0.88, vertical, 10.5, 9,     10.5, 9,
                                                                 5.5,     3.5,  9,        11,   193.5, 123,  13,
                                                                 12,      11,   14,       11,   11.5,  12}},
        {"the first size", 360, 420, vertical, {regular, 1.0, vertical, 12, 10, 12, 10, 6,    4,    10,
                                                12,      220, 140,      14, 13, 12, 15, 11.5, 12.5, 13}},
        {"wider, still a column", 500, 420, vertical, {large, 1.2295, vertical, 15,   12.5, 15, 12.5, 7.5, 5,    12.5,
                                                       14.5,  264,    161,      15.5, 14,   13, 16.5, 12,  13.5, 14}},
        {"a row keeps its axis", 560, 400, horizontal, {large, 1.3166, horizontal, 16, 13,   13, 13, 8,    5.5,  13,
                                                        15,    192,    161,        16, 14.5, 13, 17, 12.5, 13.5, 14.5}},
        {"wide enough for a row", 600, 400, vertical, {large, 1.36, horizontal, 16.5, 13.5, 13.5, 13.5,
                                                       8,     5.5,  13.5,       15.5, 192,  161,  16,
                                                       14.5,  13,   17,         12.5, 13.5, 14.5}},
        {"as large as anything grows", 800, 500, vertical, {xLarge, 1.36, horizontal, 16.5, 13.5, 13.5, 13.5,
                                                            8,      5.5,  13.5,       15.5, 192,  161,  16.5,
                                                            15,     13.5, 18,         12.5, 14,   15}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        ResolvedMetrics resolved = threeTiles(row.width, row.height, row.previous);
        EXPECT_NEAR(resolved.scale, row.expected.scale, 0.00005);
        resolved.scale = row.expected.scale;
        EXPECT_EQ(resolved, row.expected);
    }
}

TEST(ResolvedMetrics, AreExactlyOneAtTheFirstSize) {
    EXPECT_EQ(threeTiles(360, 420).scale, 1.0);
    EXPECT_EQ(ResolvedMetrics::resolve({360, 420}, 0, vertical).scale, 1.0);
}

TEST(ResolvedMetrics, FollowTheRulesOnAGridOfSizes) {
    const double widths[] = {-5,  0,     0.5, 1,     1.5, 100, 200.25, 279.5, 280, 300, 319.5, 319.999, 320,
                             333, 359.5, 360, 419.9, 420, 450, 479.5,  480,   499, 500, 519.5, 520,     540,
                             560, 579.5, 580, 600,   620, 639, 639.5,  640,   700, 800, 1920,  7680};
    const double heights[] = {-300, 0, 0.5, 1, 1.5, 100, 160, 200, 280, 333.3, 400, 419.5, 420, 500, 600, 750, 2160};
    for (const double width : widths) {
        for (const double height : heights) {
            for (int count = 0; count <= 4; ++count) {
                for (const Axis previous : {vertical, horizontal}) {
                    ASSERT_EQ(ResolvedMetrics::resolve({width, height}, count, previous),
                              plainly(width, height, count, previous))
                        << width << " x " << height << ", " << count << " tiles, axis " << static_cast<int>(previous);
                }
            }
        }
    }
}

TEST(ResolvedMetrics, StayWithinTheirBounds) {
    double lastScale = 0;
    for (int width = 1; width < 900; ++width) {
        const ResolvedMetrics m = threeTiles(width, 420);
        EXPECT_GE(m.scale, lastScale) << width << ": a wider panel is never drawn smaller";
        lastScale = m.scale;
        EXPECT_GE(m.scale, 0.88);
        EXPECT_LE(m.scale, 1.36);
        for (const auto& [name, field] : lengthFields) {
            EXPECT_EQ(m.*field * 2, std::floor(m.*field * 2)) << name << " is a multiple of a half at " << width;
        }
        for (const auto& [name, field] : fontFields) {
            EXPECT_EQ(m.*field * 2, std::floor(m.*field * 2)) << name << " is a multiple of a half at " << width;
            EXPECT_GE(m.*field, 11) << name << " at " << width;
        }
        EXPECT_EQ(m.metricValueSize, m.messageSize);
        EXPECT_EQ(m.panelCornerRadius, m.cornerRadius + 2);
    }
}

TEST(ResolvedMetrics, TakeAWidthOfOneOrLessAsOne) {
    for (const double width : {1.0, 0.999, 0.0, -0.0, -1.0, -1e9, -unbounded}) {
        SCOPED_TRACE(width);
        const ResolvedMetrics m = threeTiles(width, 420);
        EXPECT_EQ(m, threeTiles(1, 420));
        EXPECT_EQ(m.sizeClass, compact);
        EXPECT_EQ(m.scale, 0.88);
    }
}

TEST(ResolvedMetrics, TakeAHeightOfOneOrLessAsOne) {
    // At a width where the scale is between its bounds, so that the height shows.
    const ResolvedMetrics low = threeTiles(500, 1);
    EXPECT_DOUBLE_EQ(low.scale, std::pow(500.0 / 360 * 0.78 + 0.0005238095238095238, 0.78));
    for (const double height : {0.5, 0.0, -420.0, -unbounded}) {
        SCOPED_TRACE(height);
        EXPECT_EQ(threeTiles(500, height).scale, low.scale);
    }
    EXPECT_GT(threeTiles(500, 1.001).scale, low.scale) << "from there on it counts";
}

TEST(ResolvedMetrics, AreFiniteForAnySize) {
    EXPECT_EQ(threeTiles(unbounded, unbounded).scale, 1.36);
    EXPECT_EQ(threeTiles(1e300, 1e300).scale, 1.36);
    EXPECT_EQ(threeTiles(-1e300, -1e300).scale, 0.88);
}

TEST(ResolvedMetrics, ChangeTheBandExactlyAtItsWidth) {
    const struct {
        double width;
        SizeClass expected;
    } rows[] = {{319.999, compact}, {320, regular}, {479.999, regular}, {480, large},
                {639.999, large},   {640, xLarge},  {1e6, xLarge},      {1, compact}};

    for (const auto& row : rows) {
        SCOPED_TRACE(row.width);
        for (const double height : {100.0, 420.0, 1000.0}) {
            EXPECT_EQ(threeTiles(row.width, height).sizeClass, row.expected);
        }
    }
}

TEST(ResolvedMetrics, KeepTheAxisInABandOfWidths) {
    const struct {
        const char* why;
        double width;
        int cardCount;
        Axis previous;
        Axis expected;
    } rows[] = {
        {"a column is kept in the band", 560, 3, vertical, vertical},
        {"a row is kept in the band", 560, 3, horizontal, horizontal},
        {"just below the band a row turns", 519.5, 3, horizontal, vertical},
        {"the lower end of the band keeps it", 520, 3, horizontal, horizontal},
        {"the lower end keeps a column", 520, 3, vertical, vertical},
        {"just below the upper end a column is kept", 579.999, 3, vertical, vertical},
        {"at the upper end a column turns", 580, 3, vertical, horizontal},
        {"a wide row stays", 580, 3, horizontal, horizontal},
        {"two tiles stand side by side", 580, 2, vertical, horizontal},
        {"two tiles keep a row", 520, 2, horizontal, horizontal},
        {"one tile never", 10'000, 1, vertical, vertical},
        {"one tile turns a row back", 10'000, 1, horizontal, vertical},
        {"no tile turns a row back", 10'000, 0, horizontal, vertical},
        {"a count below zero", 10'000, -1, horizontal, vertical},
        {"more tiles than are shown", 580, 7, vertical, horizontal},
        {"narrow", 280, 3, horizontal, vertical},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ResolvedMetrics::resolve({row.width, 420}, row.cardCount, row.previous).axis, row.expected);
    }
}

TEST(ResolvedMetrics, DoNotFlapAtTheThreshold) {
    Axis axis = vertical;
    int turns = 0;
    for (const double width : {570.0, 579.5, 580.0, 579.5, 580.0, 560.0, 521.0, 520.0, 519.5, 520.0, 579.0, 519.0}) {
        const Axis next = threeTiles(width, 420, axis).axis;
        turns += next != axis;
        axis = next;
    }
    EXPECT_EQ(turns, 2);
}

TEST(ResolvedMetrics, KeepRowsAtOneWidthAboveAScale) {
    // 1.15 is reached between these two widths.
    double narrow = 0;
    double wide = 0;
    for (double width = 400; wide == 0; width += 0.25) {
        (threeTiles(width, 420).scale > 1.15 ? wide : narrow) = width;
    }
    EXPECT_EQ(threeTiles(narrow, 420).metricRowMinWidth, 161) << "140 x 1.15 is 161";
    EXPECT_EQ(threeTiles(wide, 420).metricRowMinWidth, 161);
    EXPECT_EQ(threeTiles(5000, 5000).metricRowMinWidth, 161) << "and not 140 x 1.36";
    EXPECT_LT(threeTiles(narrow - 5, 420).metricRowMinWidth, 161);
}

TEST(ResolvedMetrics, KeepTilesFromGrowingWiderThanAFifthMore) {
    EXPECT_EQ(threeTiles(5000, 5000, horizontal).cardMinWidth, 192);
    EXPECT_EQ(ResolvedMetrics::resolve({5000, 5000}, 1, vertical).cardMinWidth, 264);
}

TEST(ResolvedMetrics, AlongTheOtherAxisDifferInWhatDependsOnIt) {
    for (int width = 280; width < 700; width += 7) {
        SCOPED_TRACE(width);
        for (const Axis previous : {vertical, horizontal}) {
            const ResolvedMetrics m = threeTiles(width, 400, previous);
            const ResolvedMetrics turned = m.along(m.axis == vertical ? horizontal : vertical);
            EXPECT_NE(turned.axis, m.axis);
            const bool row = turned.axis == horizontal;
            EXPECT_EQ(turned.cardSpacing, nearestHalf((row ? 10 : 12) * m.scale));
            EXPECT_EQ(turned.cardMinWidth, nearestHalf((row ? 160 : 220) * (m.scale < 1.2 ? m.scale : 1.2)));

            ResolvedMetrics rest = turned;
            rest.axis = m.axis;
            rest.cardSpacing = m.cardSpacing;
            rest.cardMinWidth = m.cardMinWidth;
            EXPECT_EQ(rest, m) << "nothing else";
            EXPECT_EQ(m.along(m.axis), m) << "along its own axis";
            EXPECT_EQ(turned.along(m.axis), m) << "there and back";
        }
    }
}

TEST(ResolvedMetrics, AlongTheOtherAxisAreThoseThatTheAxisWouldHaveGiven) {
    // In the band both can be had by the axis before.
    EXPECT_EQ(threeTiles(560, 400, vertical).along(horizontal), threeTiles(560, 400, horizontal));
    EXPECT_EQ(threeTiles(560, 400, horizontal).along(vertical), threeTiles(560, 400, vertical));
}

TEST(ResolvedMetrics, CompareAsLayoutsByLengthsAndAxis) {
    const ResolvedMetrics m = threeTiles(360, 420);
    EXPECT_TRUE(m.layoutEquals(m));
    for (const auto& [name, field] : lengthFields) {
        SCOPED_TRACE(name);
        ResolvedMetrics other = m;
        other.*field = std::nextafter(m.*field, 1000);
        EXPECT_FALSE(m.layoutEquals(other)) << "the smallest difference counts";
        EXPECT_FALSE(other.layoutEquals(m));
        EXPECT_TRUE(m.typographyEquals(other));
        EXPECT_NE(m, other);
    }
    for (const auto& [name, field] : fontFields) {
        SCOPED_TRACE(name);
        ResolvedMetrics other = m;
        other.*field += 0.5;
        EXPECT_TRUE(m.layoutEquals(other));
    }
    ResolvedMetrics other = m;
    other.axis = horizontal;
    EXPECT_FALSE(m.layoutEquals(other));
    EXPECT_TRUE(m.typographyEquals(other));
    other = m;
    other.scale = 1.1;
    other.sizeClass = xLarge;
    EXPECT_TRUE(m.layoutEquals(other)) << "scale and band are not what is laid out";
    EXPECT_TRUE(m.typographyEquals(other));
    EXPECT_NE(m, other);
}

TEST(ResolvedMetrics, CompareAsTypographyByFontSizes) {
    const ResolvedMetrics m = threeTiles(360, 420);
    EXPECT_TRUE(m.typographyEquals(m));
    for (const auto& [name, field] : fontFields) {
        SCOPED_TRACE(name);
        ResolvedMetrics other = m;
        other.*field = std::nextafter(m.*field, 0);
        EXPECT_FALSE(m.typographyEquals(other));
        EXPECT_FALSE(other.typographyEquals(m));
        EXPECT_NE(m, other);
    }
}

TEST(SizeClasses, AreNumberedFromZeroToThree) {
    EXPECT_EQ(sizeClassFromRawValue(0), compact);
    EXPECT_EQ(sizeClassFromRawValue(1), regular);
    EXPECT_EQ(sizeClassFromRawValue(2), large);
    EXPECT_EQ(sizeClassFromRawValue(3), xLarge);
    for (const int other : {-1, 4, 255, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(sizeClassFromRawValue(other), std::nullopt) << other;
    }
}

TEST(HalfRound, TakesHalvesAwayFromZero) {
    const struct {
        const char* why;
        double value;
        double expected;
    } rows[] = {
        {"a multiple stays", 12.5, 12.5},
        {"zero", 0, 0},
        {"nearer to the lower", 12.24, 12.0},
        {"nearer to the upper", 12.26, 12.5},
        {"a tie goes up", 12.25, 12.5},
        {"a tie above a half goes up as well, not to the even", 12.75, 13.0},
        {"a tie below zero goes down", -12.25, -12.5},
        {"and above its half", -12.75, -13.0},
        {"nearer to zero", -12.24, -12.0},
        {"the smallest tie", 0.25, 0.5},
        {"the smallest tie below zero", -0.25, -0.5},
        {"not quite a tie", std::nextafter(0.25, 0.0), 0.0},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(halfRound(row.value), row.expected);
    }
}

TEST(LayoutsBetween, GoFromOneToTheOther) {
    const ResolvedMetrics from = threeTiles(360, 420);
    const ResolvedMetrics to = threeTiles(600, 400);
    EXPECT_EQ(betweenLayouts(from, to, 1), to);
    const ResolvedMetrics start = betweenLayouts(from, to, 0);
    const ResolvedMetrics half = betweenLayouts(from, to, 0.5);
    for (const auto& [name, field] : lengthFields) {
        SCOPED_TRACE(name);
        EXPECT_EQ(start.*field, from.*field);
        EXPECT_DOUBLE_EQ(half.*field, (from.*field + to.*field) / 2);
    }
    for (const auto& [name, field] : fontFields) {
        EXPECT_EQ(half.*field, to.*field) << name << " is no length";
    }
    EXPECT_EQ(half.axis, to.axis);
    EXPECT_EQ(half.scale, to.scale);
    EXPECT_EQ(half.sizeClass, to.sizeClass);
}

} // namespace pelloran
