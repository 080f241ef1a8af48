#include "tests/support/Printing.h"
#include "tools/stage/painting/ScenePainter.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

// Where names stand and what they look like, measured on painted screens as it was on the game's: white cores of
// letters, medians of grounds. The numbers are the measurements, not what the painter computes with.
namespace pelloran::stage {

namespace {

Lettering lettering(Language language, ChineseLettering style = ChineseLettering::printed) {
    std::expected<Lettering, QString> made = Lettering::create(language, style);
    EXPECT_TRUE(made.has_value()) << made.error().toStdString();
    return *std::move(made);
}

Card cardOf(const QString& type, const QString& name) {
    Card card;
    card.id = type + name;
    card.name = {name, QStringLiteral("四四四四")};
    card.type = type;
    card.rarity = QStringLiteral("FREE");
    card.cardClass = QStringLiteral("NEUTRAL");
    return card;
}

Screen pickOf(const std::vector<Card>& cards) {
    Screen screen;
    screen.situation.step.kind = StepKind::cardPick;
    screen.situation.step.cards = cards;
    return screen;
}

QImage paint(ScenePainter& painter, const Screen& screen) {
    QImage image(painter.size(), QImage::Format_RGB32);
    painter.show(screen);
    QPainter canvas(&image);
    painter.paint(canvas, 0);
    return image;
}

struct Paint {
    QSize size{1920, 1080};
    Look look = Look::felt;
    Language language = Language::english;
    ChineseLettering style = ChineseLettering::printed;
};

QImage paint(const Paint& how, const Screen& screen) {
    ScenePainter painter(how.size, {.language = how.language, .look = how.look, .seed = 1},
                         lettering(how.language, how.style));
    return paint(painter, screen);
}

int luma(QRgb colour) {
    return qGray(colour);
}

// The median of a patch, by lightness.
QRgb median(const QImage& image, const QRect& patch) {
    std::vector<QRgb> all;
    for (int y = patch.top(); y <= patch.bottom(); ++y) {
        for (int x = patch.left(); x <= patch.right(); ++x) {
            all.push_back(image.pixel(x, y));
        }
    }
    std::ranges::nth_element(all, all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2), {}, luma);
    return all[all.size() / 2];
}

void expectNear(QRgb colour, const QColor& expected, int tolerance) {
    EXPECT_NEAR(qRed(colour), expected.red(), tolerance);
    EXPECT_NEAR(qGreen(colour), expected.green(), tolerance);
    EXPECT_NEAR(qBlue(colour), expected.blue(), tolerance);
}

struct Measured {
    const char* type;
    double oldBase;
    double newBase;
    double linear;
    double square;
    double cube;
};

constexpr Measured measured[] = {
    {"MINION", 0.3913, 0.3783, -0.01557, 0.01034, 0.01416},
    {"SPELL", 0.3855, 0.3728, -0.00107, 0.01463, 0},
    {"WEAPON", 0.3862, 0.3735, 0, 0, 0},
    {"HERO", 0.3905, 0.3775, 0, 0.02885, 0},
};

// The lowest white pixels of a name without round letters, column by column, against the line that it should stand on.
void expectStandsOn(const QImage& image, const Measured& line, double base, double centre) {
    const double height = std::min<double>(image.height(), 0.75 * image.width());
    const double middle = image.width() / 2.0 + centre * height;
    double worst = 0;
    int columns = 0;
    double tallest = 0;
    for (int x = static_cast<int>(middle - 0.07 * height); x < middle + 0.07 * height; ++x) {
        const double u = (x + 0.5 - middle) / (0.1 * height);
        const double expected = (base + u * (line.linear + u * (line.square + u * line.cube))) * height;
        int lowest = -1;
        int highest = -1;
        for (int y = static_cast<int>(expected - 0.017 * height); y < expected + 0.006 * height; ++y) {
            if (luma(image.pixel(x, y)) > 200) {
                lowest = y;
                highest = highest < 0 ? y : highest;
            }
        }
        // Columns through a stem: the others hold serifs or bars only.
        if (lowest - highest > 0.009 * height) {
            worst = std::max(worst, std::abs(lowest + 1 - expected));
            tallest = std::max<double>(tallest, lowest + 1 - highest);
            ++columns;
        }
    }
    EXPECT_GT(columns, 0.01 * height) << "a name of several stems";
    EXPECT_LT(worst, 0.0007 * height + 1);
    EXPECT_GT(tallest, 0.011 * height - 1);
    EXPECT_LT(tallest, 0.013 * height + 2) << "letters that lean are a little higher";
}

} // namespace

TEST(NamesOnScreen, StandOnTheLinesMeasured) {
    constexpr double centres[] = {-0.419, -0.1605, 0.0975};
    const QSize sizes[] = {{1920, 1080}, {1280, 960}, {2560, 1440}, {2560, 1080}, {1000, 1000}};
    for (const Look look : {Look::parchment, Look::felt}) {
        for (const QSize& size : sizes) {
            ScenePainter painter(size, {.language = Language::english, .look = look, .seed = 1},
                                 lettering(Language::english));
            for (const Measured& line : measured) {
                SCOPED_TRACE(std::string(line.type) + (look == Look::parchment ? " old " : " new ") +
                             std::to_string(size.width()) + "x" + std::to_string(size.height()));
                const Card card = cardOf(QString::fromLatin1(line.type), QStringLiteral("HIHHIH"));
                const QImage image = paint(painter, pickOf({card, card, card}));
                for (const double centre : centres) {
                    expectStandsOn(image, line, look == Look::parchment ? line.oldBase : line.newBase, centre);
                }
            }
        }
    }
}

TEST(NamesOnScreen, LongOnesAreSetSmallerAndTighterOnOneLine) {
    ScenePainter painter({1920, 1080}, {.look = Look::felt}, lettering(Language::english));
    paint(painter, pickOf({cardOf(QStringLiteral("WEAPON"), QStringLiteral("HIN")),
                           cardOf(QStringLiteral("WEAPON"), QStringLiteral("HINHINHINHINHINHINHINHIN")),
                           cardOf(QStringLiteral("MINION"), QStringLiteral("HINHINHINHINHINHINHINHIN"))}));
    const std::vector<PrintedName>& names = painter.names();
    ASSERT_EQ(names.size(), 3U);
    EXPECT_LT(names[1].box.width(), 0.19 * 1080) << "on its plate";
    EXPECT_LT(names[2].box.width(), 0.19 * 1080) << "on its ribbon";
    EXPECT_LT(names[1].box.height(), names[0].box.height()) << "smaller";
    const double perLetter = names[1].box.width() / 24 / names[1].box.height();
    EXPECT_LT(perLetter, names[0].box.width() / 3 / names[0].box.height()) << "and tighter";
}

TEST(NamesOnScreen, RibbonsAreBrighterThanHalfExceptOnGoldenCards) {
    struct Row {
        const char* type;
        bool golden;
        QColor expected;
    };

    const Row rows[] = {
        {"MINION", false, {155, 133, 105}}, {"SPELL", false, {155, 130, 85}}, {"WEAPON", false, {95, 95, 95}},
        {"MINION", true, {62, 52, 40}},     {"SPELL", true, {62, 52, 40}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.type) + (row.golden ? ", golden" : ""));
        Card card = cardOf(QString::fromLatin1(row.type), QStringLiteral("I"));
        card.golden = row.golden;
        const QImage image = paint({}, pickOf({card, card, card}));
        // Beside the one letter, at half the height of a capital above the line.
        const int x = 960 - static_cast<int>(0.1605 * 1080) + 30;
        const double u = 30 / 108.0;
        const Measured& line = *std::ranges::find(measured, std::string_view(row.type), &Measured::type);
        const double y = 1080 * (line.newBase - 0.006 + u * (line.linear + u * (line.square + u * line.cube)));
        expectNear(median(image, QRect(x - 4, static_cast<int>(y) - 3, 9, 7)), row.expected, 16);
    }
}

TEST(NamesOnScreen, GroundsAreThoseOfTheTwoLooks) {
    const Screen screen = pickOf({cardOf(QStringLiteral("SPELL"), QStringLiteral("I")),
                                  cardOf(QStringLiteral("SPELL"), QStringLiteral("I")),
                                  cardOf(QStringLiteral("SPELL"), QStringLiteral("I"))});
    const QRect between(1078, 598, 40, 24); // below the cards
    expectNear(median(paint({.look = Look::parchment}, screen), between), QColor(200, 175, 135), 30);
    expectNear(median(paint({.look = Look::felt}, screen), between), QColor(60, 5, 3), 30);
}

// What is grey in a column of pixels around `middle`, in pixels of full grey, and the black on either side of it.
struct Stroke {
    double width = 0;
    double above = 0;
    double below = 0;
};

Stroke strokeAt(const QImage& image, int x, int middle) {
    constexpr int reach = 7;
    int brightest = middle;
    for (int y = middle - reach; y <= middle + reach; ++y) {
        brightest = luma(image.pixel(x, y)) > luma(image.pixel(x, brightest)) ? y : brightest;
    }
    Stroke stroke;
    for (int y = brightest - 2; y <= brightest + 2; ++y) {
        stroke.width += luma(image.pixel(x, y)) / 204.0;
    }
    const auto isBlack = [&](int y) { return luma(image.pixel(x, y)) < 40; };
    for (int y = brightest - 1; y > brightest - reach; --y) {
        stroke.above += isBlack(y);
    }
    for (int y = brightest + 1; y < brightest + reach; ++y) {
        stroke.below += isBlack(y);
    }
    return stroke;
}

TEST(NamesOnScreen, ClericalLettersAreGreyFlatAndFarApart) {
    const auto weapon = [](const QString& id, const QString& chinese) {
        Card card = cardOf(QStringLiteral("WEAPON"), id);
        card.name.chinese = chinese;
        return card;
    };
    // Names of one, four and sixteen characters, cut by the same hand, as the identifier is the same.
    std::vector<double> pitches;
    std::vector<double> heights;
    for (const char* id : {"a", "b", "c", "d", "e"}) {
        SCOPED_TRACE(id);
        const auto named = [&](const QString& chinese) { return weapon(QString::fromLatin1(id), chinese); };
        const QString usual = QStringLiteral("魔");
        ScenePainter painter({1920, 1080}, {.language = Language::chinese, .look = Look::felt, .seed = 1},
                             lettering(Language::chinese, ChineseLettering::clerical));
        const QImage image =
            paint(painter, pickOf({named(usual), named(usual.repeated(4)), named(usual.repeated(16))}));
        const QRectF one = painter.names()[0].box;
        const QRectF four = painter.names()[1].box;
        const QRectF many = painter.names()[2].box;
        pitches.push_back((four.width() - one.width()) / 3);
        heights.push_back(one.height());
        EXPECT_GT(one.width() / one.height(), 1.05) << "wider than high";
        EXPECT_LT(one.width() / one.height(), 1.45);
        EXPECT_LT((many.width() - one.width()) / 15, pitches.back()) << "long ones tighter";
        EXPECT_LT(many.width(), 0.19 * 1080) << "on the plate";

        const QImage line = paint(painter, pickOf({named(QStringLiteral("一")), named(usual), named(usual)}));
        const QPoint middle = painter.names()[0].box.center().toPoint();
        const Stroke stroke = strokeAt(line, middle.x(), middle.y());
        EXPECT_GT(stroke.width, 1.0) << "thin";
        EXPECT_LT(stroke.width, 2.0);
        EXPECT_GE(stroke.above + stroke.below, 3) << "the outline is wider than the stroke";

        int brightest = 0;
        for (int x = static_cast<int>(four.left()); x <= four.right(); ++x) {
            for (int y = static_cast<int>(four.top()); y <= four.bottom(); ++y) {
                brightest = std::max(brightest, luma(image.pixel(x, y)));
            }
        }
        EXPECT_GT(brightest, 185) << "light grey";
        EXPECT_LT(brightest, 216) << "nowhere white";
    }
    for (const double pitch : pitches) {
        EXPECT_GT(pitch, 1.2 * 0.0135 * 1080 - 0.1);
        EXPECT_LT(pitch, 1.5 * 0.0145 * 1080 + 0.1);
    }
    for (const double height : heights) {
        EXPECT_GT(height, 0.0125 * 1080);
        EXPECT_LT(height, 0.0160 * 1080);
    }
    EXPECT_GT(std::ranges::max(pitches) - std::ranges::min(pitches), 2) << "not all alike";
    EXPECT_GT(std::ranges::max(heights) - std::ranges::min(heights), 0.3);
}

TEST(NamesOnScreen, ClassesStandBelowHeroesWithoutAnOutline) {
    struct Row {
        Look look;
        double centres[3];
        QColor ink;
        bool inkIsDarker;
    };

    const Row rows[] = {
        {Look::parchment, {-0.42, -0.16, 0.098}, {45, 30, 10}, true},
        {Look::felt, {-0.37, -0.02, 0.34}, {248, 132, 110}, false},
    };
    const std::vector<HeroClass>& classes = Catalogue::sample().heroClasses();
    Screen screen;
    screen.situation.step.kind = StepKind::heroPick;
    screen.situation.step.heroes = {classes[4], classes[5], classes[6]};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.look == Look::parchment ? "old" : "new");
        ScenePainter painter({1920, 1080}, {.look = row.look}, lettering(Language::english));
        const QImage image = paint(painter, screen);
        ASSERT_EQ(painter.names().size(), 3U);
        EXPECT_EQ(painter.names()[0].text, QStringLiteral("MAGE")) << "in capitals";
        for (std::size_t i = 0; i < 3; ++i) {
            const QRectF box = painter.names()[i].box;
            EXPECT_NEAR(box.center().x(), 960 + row.centres[i] * 1080, 2);
            EXPECT_NEAR(box.center().y(), 0.530 * 1080, 2);
            EXPECT_NEAR(box.height(), 0.010 * 1080, 2);
            QRgb ink = image.pixel(box.center().toPoint());
            for (int y = static_cast<int>(box.top()); y <= box.bottom(); ++y) {
                for (int x = static_cast<int>(box.left()); x <= box.right(); ++x) {
                    const QRgb colour = image.pixel(x, y);
                    const bool more = row.inkIsDarker ? luma(colour) < luma(ink) : luma(colour) > luma(ink);
                    ink = more ? colour : ink;
                }
            }
            expectNear(ink, row.ink, 12);
        }
    }
}

TEST(NamesOnScreen, HeroesMayHaveNoMoreThanTheirNamesOnTheNewScreen) {
    const std::vector<HeroClass>& classes = Catalogue::sample().heroClasses();
    Screen screen;
    screen.situation.step.kind = StepKind::heroPick;
    screen.situation.step.heroes = {classes[4], classes[5], classes[6]};
    for (const Look look : {Look::parchment, Look::felt}) {
        SCOPED_TRACE(look == Look::parchment ? "old" : "new");
        ScenePainter painter({1920, 1080}, {.look = look, .heroesByName = true}, lettering(Language::english));
        paint(painter, screen);
        ASSERT_EQ(painter.names().size(), 3U);
        const bool byName = look == Look::felt;
        EXPECT_EQ(painter.names()[0].text, byName ? classes[4].heroName.in(Language::english) : QStringLiteral("MAGE"));
        EXPECT_NEAR(painter.names()[0].box.center().y(), (byName ? 0.509 : 0.530) * 1080, 4);
    }
}

TEST(NamesOnScreen, NothingIsOnOfferBetweenPicks) {
    const std::vector<Card>& sample = Catalogue::sample().cards();
    Screen screen = pickOf({sample[0], sample[1], sample[2]});
    ScenePainter painter({800, 600}, {}, lettering(Language::english));
    for (const Moment moment : {Moment::burning, Moment::arriving, Moment::menu, Moment::collection, Moment::decks}) {
        screen.moment = moment;
        screen.progress = 0.5;
        paint(painter, screen);
        EXPECT_TRUE(painter.names().empty()) << static_cast<int>(moment);
    }
    screen.moment = Moment::steady;
    paint(painter, screen);
    EXPECT_EQ(painter.names().size(), 3U);
}

} // namespace pelloran::stage
