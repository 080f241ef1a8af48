#include "overlay/OverlayPanel/layout/TileFit.h"

#include <gtest/gtest.h>

namespace pelloran {

TEST(TileFit, GivesWayToWhatStandsInATile) {
    const struct {
        const char* why;
        std::vector<int> heights;
        double spacing;
        double padding;
        double available;
        TileFit expected;
    } rows[] = {
        {"room to spare", {20, 20, 20}, 4, 10, 200, {4, 10, true}},
        {"just so", {20, 20, 20}, 4, 10, 88, {4, 10, true}},
        {"the gaps give way first", {20, 20, 20}, 4, 10, 86, {3, 10, true}},
        {"to nothing", {20, 20, 20}, 4, 10, 80, {0, 10, true}},
        {"then the padding", {20, 20, 20}, 4, 10, 76, {0, 8, true}},
        {"to its floor", {20, 20, 20}, 4, 10, 70, {0, 5, true}},
        {"and then the last rows are cut", {20, 20, 20}, 4, 10, 69, {0, 5, false}},
        {"no height at all", {20, 20, 20}, 4, 10, 0, {0, 5, false}},
        {"a height below zero", {20}, 4, 10, -5, {4, 5, false}},
        {"one line has no gap to give", {20}, 4, 10, 36, {4, 8, true}},
        {"no line", {}, 4, 10, 20, {4, 10, true}},
        {"no line and no room", {}, 4, 10, 8, {4, 5, false}},
        {"a padding below its floor stays", {20, 20}, 4, 3, 46, {0, 3, true}},
        {"and is not widened when nothing fits", {20, 20}, 4, 3, 10, {0, 3, false}},
        {"thirds of a gap still fit", {10, 10, 10, 10}, 1, 0, 42, {2.0 / 3, 0, true}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        const TileFit fit = fitTile(row.heights, row.spacing, row.padding, row.available);
        EXPECT_DOUBLE_EQ(fit.spacing, row.expected.spacing);
        EXPECT_DOUBLE_EQ(fit.padding, row.expected.padding);
        EXPECT_EQ(fit.fits, row.expected.fits);
    }
}

TEST(TileFit, NeverNeedsMoreThanThereIs) {
    for (int lines = 1; lines < 9; ++lines) {
        const std::vector<int> heights(static_cast<std::size_t>(lines), 17);
        for (double available = 0; available < 250; available += 0.5) {
            const TileFit fit = fitTile(heights, 5.5, 13.5, available);
            const double needed = lines * 17 + (lines - 1) * fit.spacing + 2 * fit.padding;
            EXPECT_EQ(fit.fits, needed <= available + 1e-6) << lines << " lines in " << available;
            EXPECT_GE(fit.spacing, 0);
            EXPECT_LE(fit.spacing, 5.5);
            EXPECT_GE(fit.padding, 5);
            EXPECT_LE(fit.padding, 13.5);
        }
    }
}

} // namespace pelloran
