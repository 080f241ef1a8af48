#include "overlay/OverlayPanel/views/FontCache.h"

#include <gtest/gtest.h>

#include <limits>

namespace pelloran {

TEST(FontCache, KeepsSizesToTheHalf) {
    FontCache cache;
    const QFont thirteen = cache.font(13.1, QFont::Normal);
    EXPECT_EQ(thirteen.pixelSize(), 13);
    EXPECT_EQ(cache.count(), 1U);
    EXPECT_EQ(cache.font(13.2, QFont::Normal), thirteen);
    EXPECT_EQ(cache.font(13.0, QFont::Normal), thirteen);
    EXPECT_EQ(cache.font(12.75, QFont::Normal), thirteen) << "a tie goes up";
    EXPECT_EQ(cache.count(), 1U) << "one font for all of them";

    const QFont next = cache.font(13.3, QFont::Normal);
    EXPECT_EQ(cache.count(), 2U);
    EXPECT_EQ(cache.font(13.5, QFont::Normal), next);
    EXPECT_EQ(cache.count(), 2U);
    EXPECT_EQ(next.pixelSize(), 14) << "halves are drawn one size up";
}

TEST(FontCache, MakesAFontPerWeight) {
    FontCache cache;
    for (const QFont::Weight weight : {QFont::Normal, QFont::Medium, QFont::DemiBold, QFont::Bold}) {
        const QFont font = cache.font(13, weight);
        EXPECT_EQ(font.weight(), weight);
        EXPECT_EQ(font.pixelSize(), 13);
    }
    EXPECT_EQ(cache.count(), 4U);
    cache.font(13, QFont::Bold);
    EXPECT_EQ(cache.count(), 4U);
}

TEST(FontCache, IsShared) {
    EXPECT_EQ(&FontCache::shared(), &FontCache::shared());
    FontCache::shared().font(13, QFont::Normal);
    const std::size_t count = FontCache::shared().count();
    FontCache::shared().font(13, QFont::Normal);
    EXPECT_EQ(FontCache::shared().count(), count);
}

TEST(FontCache, AsksForTheSimplifiedFormsOfCharactersAfterTheDesktopsFont) {
    const QStringList families = FontCache::shared().font(13, QFont::Normal).families();
    ASSERT_GT(families.size(), 1);
    EXPECT_FALSE(families.first().isEmpty());
    EXPECT_TRUE(families.contains(QStringLiteral("Noto Sans CJK SC")));
}

TEST(FontCacheDeathTest, StopsTheProgramForASizeThatIsNone) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const double size : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity()}) {
        EXPECT_DEATH(FontCache::shared().font(size, QFont::Normal), "a font of no size");
    }
}

} // namespace pelloran
