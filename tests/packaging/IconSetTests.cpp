#include "tests/support/Printing.h"

#include <QDir>
#include <QImage>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace pelloran {
namespace {

const QString sources = QStringLiteral(PELLORAN_SOURCES);
const QString iconSet = sources + u"/packaging/macos/Pelloran.iconset/"_s;

// How far two pictures of one size are apart: the mean of what their pixels differ by, of 255.
double difference(const QImage& a, const QImage& b) {
    const QImage left = a.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage right = b.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    qint64 sum = 0;
    for (int y = 0; y < left.height(); ++y) {
        for (qsizetype x = 0; x < qsizetype{left.width()} * 4; ++x) {
            sum += std::abs(left.constScanLine(y)[x] - right.constScanLine(y)[x]);
        }
    }
    return static_cast<double>(sum) / (static_cast<double>(left.sizeInBytes()));
}

// iconutil takes these names and no others.
TEST(IconSet, HasEverySizeThatTheMacShows) {
    struct Case {
        const char* why;
        QString name;
        int side;
    };

    const Case cases[] = {
        {"lists", u"icon_16x16.png"_s, 16},          {"lists, fine screens", u"icon_16x16@2x.png"_s, 32},
        {"menus", u"icon_32x32.png"_s, 32},          {"menus, fine screens", u"icon_32x32@2x.png"_s, 64},
        {"the Dock", u"icon_128x128.png"_s, 128},    {"the Dock, fine screens", u"icon_128x128@2x.png"_s, 256},
        {"large", u"icon_256x256.png"_s, 256},       {"large, fine screens", u"icon_256x256@2x.png"_s, 512},
        {"the largest", u"icon_512x512.png"_s, 512}, {"the largest, fine screens", u"icon_512x512@2x.png"_s, 1024},
    };
    const QImage drawn(sources + u"/resources/pelloran.png"_s);
    ASSERT_EQ(drawn.size(), QSize(256, 256));
    QStringList names;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        names.append(c.name);
        const QImage icon(iconSet + c.name);
        ASSERT_EQ(icon.size(), QSize(c.side, c.side));
        EXPECT_TRUE(icon.hasAlphaChannel());
        EXPECT_EQ(icon.pixelColor(0, 0).alpha(), 0) << "its corners are round";
        // The smaller of the two is what the larger one becomes; the measure is 10 and more for another drawing.
        const int side = std::min(c.side, drawn.width());
        const auto sized = [side](const QImage& image) {
            return image.scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        };
        EXPECT_LT(difference(sized(icon), sized(drawn)), 3);
    }
    names.sort();
    EXPECT_EQ(QDir(iconSet).entryList(QDir::Files | QDir::Hidden, QDir::Name), names);
}

TEST(IconSet, AnotherDrawingIsToldApart) {
    const QImage drawn(sources + u"/resources/pelloran.png"_s);
    EXPECT_GT(difference(drawn, drawn.mirrored(true, true)), 10);
}

} // namespace
} // namespace pelloran
