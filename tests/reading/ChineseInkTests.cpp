#include "reading/chinese/ChineseInk.h"

#include "tests/reading/PaintedCharacters.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace pelloran {

namespace {

const QString name = QStringLiteral("石田木火");
constexpr double size = 30; // of a character, pixels

struct Colours {
    QColor ground;
    QColor letters;
    QColor outline; // transparent for none
};

// Letters in the middle of a strip's height, with the columns that they take up.
struct Strip {
    QImage image;
    Extent seen;

    explicit Strip(const QString& text = name, const Colours& colours = {Qt::black, Qt::white, Qt::transparent},
                   double pitch = 1.1)
        : image(int((testing::CharacterStyle{.pitch = pitch}.widthOf(text) + 4) * size), stripRows,
                QImage::Format_RGB32)
        , seen{int(2 * size), image.width() - int(2 * size)} {
        image.fill(colours.ground);
        paint([&](QPainter& painter) {
            painter.translate(2 * size, (stripRows - size) / 2);
            painter.scale(size, size);
            const QPainterPath path = testing::pathOf(text, {.pitch = pitch});
            if (colours.outline.alpha() > 0) {
                painter.strokePath(path, QPen(colours.outline, 0.2));
            }
            painter.fillPath(path, colours.letters);
        });
    }

    void paint(const std::function<void(QPainter&)>& what) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        what(painter);
    }

    Plane plane() const { return testing::grey(image); }
};

QColor grey(int value) {
    return {value, value, value};
}

// Nothing but the letters.
Plane cleanInk(const QString& text = name, double pitch = 1.1) {
    return Strip(text, {Qt::black, Qt::white, Qt::transparent}, pitch).plane();
}

double meanDifference(const Plane& first, const Plane& second) {
    double sum = 0;
    for (std::size_t i = 0; i < first.pixels.size(); ++i) {
        sum += std::abs(first.pixels[i] - second.pixels[i]);
    }
    return sum / double(first.pixels.size());
}

TEST(ChineseInkTest, LettersAreInkWhateverTheirGround) {
    struct Row {
        Colours colours;
        const char* why;
    };

    const Row table[] = {
        {{grey(0), grey(255), Qt::transparent}, "white on black"},
        {{grey(20), grey(90), Qt::transparent}, "faint, on dark ground"},
        {{grey(0), grey(40), Qt::transparent}, "hardly to be seen"},
        {{grey(40), grey(180), grey(5)}, "dark ground, and an outline"},
        {{grey(110), grey(200), grey(10)}, "light ground: the outline tells letters from it"},
        {{grey(150), grey(220), grey(20)}, "lighter ground"},
    };
    const Plane expected = cleanInk();
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const Strip strip(name, row.colours);
        const Plane ink = inkOf(strip.plane(), strip.seen);
        ASSERT_EQ(ink.width, expected.width);
        ASSERT_EQ(ink.height, expected.height);
        EXPECT_LT(meanDifference(ink, expected), 8) << "edges may be a little harder or softer";
        EXPECT_EQ(ink.at(1, 1), 0);
        const QRect box = testing::inkBox(expected);
        EXPECT_LE((testing::inkBox(ink).topLeft() - box.topLeft()).manhattanLength(), 2);
        EXPECT_LE((testing::inkBox(ink).bottomRight() - box.bottomRight()).manhattanLength(), 2);
    }
}

TEST(ChineseInkTest, LightThingsWithoutAnOutlineAreNoInkOnLightGround) {
    Strip strip(name, {grey(110), grey(200), grey(10)});
    strip.paint([&](QPainter& painter) { painter.fillRect(strip.seen.right + 20, 5, 30, 54, grey(220)); });
    const Plane ink = inkOf(strip.plane(), strip.seen);
    EXPECT_EQ(ink.at(strip.seen.right + 35, 32), 0);
    EXPECT_TRUE(trimmedLine(ink, strip.seen)) << "else nothing is shown";
}

TEST(ChineseInkTest, WhereThereAreNoLettersThereIsNoInk) {
    const Plane flat(300, stripRows, 128);
    Plane grain(300, stripRows);
    std::mt19937 random(7);
    for (std::uint8_t& pixel : grain.pixels) {
        pixel = std::uint8_t(100 + random() % 20);
    }

    struct Row {
        Plane strip;
        Extent seen;
        const char* why;
    };

    const Row table[] = {
        {flat, {50, 250}, "flat"},
        {Plane(300, stripRows, 255), {50, 250}, "white"},
        {Plane(300, stripRows, 0), {0, 300}, "black"},
        {grain, {50, 250}, "grain too faint for letters"},
        {flat, {400, 500}, "letters seen beside the strip"},
        {flat, {-300, -100}, "and on its other side"},
        {flat, {200, 200}, "none seen"},
        {flat, {200, 100}, "the wrong way round"},
        {Plane(1, stripRows, 9), {0, 1}, "a column"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const Plane ink = inkOf(row.strip, row.seen);
        EXPECT_EQ(ink, Plane(row.strip.width, row.strip.height));
        EXPECT_FALSE(trimmedLine(ink, row.seen));
    }
    EXPECT_EQ(inkOf(Plane(), {0, 0}), Plane());
    EXPECT_FALSE(trimmedLine(Plane(), {0, 0}));
}

TEST(ChineseInkTest, SpecksAllOverAreNoLine) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Plane ink(300, stripRows);
        for (std::uint8_t& pixel : ink.pixels) {
            pixel = random() % 50 ? 0 : 255;
        }
        EXPECT_FALSE(trimmedLine(ink, {50, 250}));
    }
}

TEST(ChineseInkTest, FaintInkIsThereFromTheLevelThatIsAskedFor) {
    const Strip strip(name, {Qt::black, grey(100), Qt::transparent});
    const Plane faint = strip.plane(); // as ink of 100
    EXPECT_FALSE(trimmedLine(faint, strip.seen, 128));
    EXPECT_TRUE(trimmedLine(faint, strip.seen, 60));
}

TEST(TrimmedLineTest, KeepsTheLettersAloneAndAllOfThem) {
    struct Row {
        QString text;
        std::function<void(QPainter&, const Strip&)> added;
        const char* why;
    };

    const auto fill = [](QPainter& painter, double x, double y, double width, double height) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(QRectF(x, y, width, height), Qt::white);
    };
    const Row table[] = {
        {name, [](QPainter&, const Strip&) {}, "nothing else there"},
        {name, [&](QPainter& p, const Strip& s) { fill(p, s.seen.left, 0, 40, 5); }, "art runs in from above"},
        {name, [&](QPainter& p, const Strip& s) { fill(p, s.seen.left + 30, 58, 40, 6); }, "and from below"},
        {name, [&](QPainter& p, const Strip&) { fill(p, 0, 20, 8, 24); }, "a frame at the left side"},
        {name, [&](QPainter& p, const Strip& s) { fill(p, s.image.width() - 8, 20, 8, 24); }, "and at the right one"},
        {name, [&](QPainter& p, const Strip& s) { fill(p, s.seen.left + 31, 10, 2, 1); }, "a speck above"},
        {name, [&](QPainter& p, const Strip& s) { fill(p, s.seen.right + 4, 32, 1, 2); }, "a speck beside"},
        {name, [&](QPainter& p, const Strip& s) { fill(p, s.seen.left - 20, 8, 170, 2); },
         "the edge of the ribbon, above"},
        {name, [&](QPainter& p, const Strip& s) { fill(p, s.seen.left - 20, 57, 170, 2); }, "and below"},
        {name, [&](QPainter& p, const Strip& s) { fill(p, s.seen.right + 32, 18, 20, 26); }, "a gem beside the name"},
        {name, [&](QPainter& p, const Strip&) { fill(p, 12, 18, 16, 26); }, "and before it"},
        {QStringLiteral("石一木火"), [](QPainter&, const Strip&) {}, "a single stroke between characters"},
        {QStringLiteral("一石木一"), [](QPainter&, const Strip&) {}, "strokes at both ends"},
        {QStringLiteral("二三川二"), [](QPainter&, const Strip&) {}, "characters of parts that do not touch"},
        {QStringLiteral("石·木火"), [](QPainter&, const Strip&) {}, "a dot between characters"},
        {QStringLiteral("十"), [](QPainter&, const Strip&) {}, "one character"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        Strip strip(row.text);
        const Plane clean = strip.plane();
        strip.paint([&](QPainter& painter) { row.added(painter, strip); });
        const auto line = trimmedLine(strip.plane(), strip.seen);
        ASSERT_TRUE(line);
        // A pixel around it, for its soft edges.
        const QRect box = testing::inkBox(clean).adjusted(-1, -1, 1, 1);
        EXPECT_EQ(QSize(line->width, line->height), box.size());
        if (QSize(line->width, line->height) == box.size()) {
            EXPECT_LT(meanDifference(*line, cropped(clean, box)), 1);
        }
    }
}

TEST(TrimmedLineTest, FindsLettersBesideThoseThatWereSeen) {
    struct Row {
        Extent seen; // in characters
        double pitch;
        double characters; // that are found
        const char* why;
    };

    const Row table[] = {
        {{0, 4}, 1.1, 4, "all seen"},
        {{1, 3}, 1.1, 4, "those in the middle: the others stand close by"},
        {{0, 1}, 1.1, 4, "the first: from one to the next"},
        {{3, 4}, 1.1, 4, "the last"},
        {{1, 3}, 1.5, 4, "set wide"},
        {{1, 3}, 2.6, 2, "too far apart for a name"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const QString text = QStringLiteral("田目田目");
        const Plane ink = cleanInk(text, row.pitch);
        const double first = 2 * size;
        const auto columns = [&](double character) { return int(first + character * row.pitch * size); };
        const auto line = trimmedLine(ink, {columns(row.seen.left), columns(row.seen.right)});
        ASSERT_TRUE(line);
        EXPECT_NEAR(line->width, ((row.characters - 1) * row.pitch + 1) * size, 0.35 * size);
    }
    EXPECT_FALSE(trimmedLine(cleanInk(), {1, 10})) << "nothing where letters were seen";
}

} // namespace

} // namespace pelloran
