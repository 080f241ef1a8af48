#include "recording/Bands.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran::recording {
namespace {

ReadText textAt(double x, double y) {
    return {{OCRToken{QStringLiteral("x"), 1, x, y, 0.02, 0.01}}, {}, {}};
}

TEST(RecordedBands, LieWithinTheWindow) {
    const QSize sizes[] = {{640, 480}, {1280, 720}, {3840, 2160}, {600, 1200}, {1, 1}, {5, 3000}, {3000, 5}};
    for (const QSize& size : sizes) {
        for (const auto offers : {ReadingHints::Offers::cards, ReadingHints::Offers::heroes}) {
            for (const ReadText& text : {ReadText(), textAt(0.4, 0.39), textAt(0.9, 0.9)}) {
                const Kept kept = partsToKeep(size, offers, text);
                for (const QRect& band : kept.bands) {
                    EXPECT_FALSE(band.isEmpty());
                    EXPECT_TRUE(QRect(QPoint(), size).contains(band)) << size.width() << 'x' << size.height();
                    EXPECT_LE(band.height(), std::max(2.0, size.height() * 0.2)) << "nothing but names";
                }
            }
        }
    }
}

TEST(RecordedBands, AreAllThatWasReadOnlyIfTheyHoldIt) {
    const QSize size(1920, 1080);
    const auto cards = ReadingHints::Offers::cards;
    EXPECT_TRUE(partsToKeep(size, cards, {}).isAll);
    EXPECT_TRUE(partsToKeep(size, cards, textAt(0.4, 0.39)).isAll);
    const Kept around = partsToKeep(size, cards, textAt(0.4, 0.465));
    EXPECT_TRUE(around.isAll) << "names that do not stand at their places";
    EXPECT_GT(around.bands.front().height(), partsToKeep(size, cards, {}).bands.front().height());
    EXPECT_FALSE(partsToKeep(size, cards, textAt(0.4, 0.7)).isAll);
    EXPECT_FALSE(partsToKeep(size, cards, textAt(0.95, 0.39)).isAll);
    EXPECT_TRUE(partsToKeep(size, ReadingHints::Offers::heroes, textAt(0.4, 0.53)).isAll);
    EXPECT_FALSE(partsToKeep(size, ReadingHints::Offers::heroes, textAt(0.4, 0.39)).isAll);
}

TEST(RecordedBands, ComeBackAtTheirPlaces) {
    QImage window(40, 30, QImage::Format_RGB32);
    for (int y = 0; y < window.height(); ++y) {
        for (int x = 0; x < window.width(); ++x) {
            window.setPixel(x, y, qRgb(x * 5, y * 7, 100));
        }
    }
    const std::vector<QRect> bands{{3, 4, 20, 5}, {10, 20, 30, 10}};
    std::vector<QImage> pieces;
    for (const QRect& band : bands) {
        pieces.push_back(window.copy(band));
    }
    const QImage again = unstacked(stacked(pieces), bands, window.size());
    ASSERT_EQ(again.size(), window.size());
    for (int y = 0; y < window.height(); ++y) {
        for (int x = 0; x < window.width(); ++x) {
            const bool isKept = bands[0].contains(x, y) || bands[1].contains(x, y);
            ASSERT_EQ(again.pixel(x, y), isKept ? window.pixel(x, y) : qRgb(0, 0, 0)) << x << ',' << y;
        }
    }
}

} // namespace
} // namespace pelloran::recording
