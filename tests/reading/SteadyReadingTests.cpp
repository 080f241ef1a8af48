#include "reading/LineByLineReader.h"
#include "tests/fakes/FakeLineReader.h"
#include "tests/reading/PaintedScreen.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <random>

// A reader that remembers its last look must read whatever comes next as one that never saw anything.
namespace pelloran {

namespace {

using testing::FakeLineReader;
using Offers = ReadingHints::Offers;
using Words = std::array<QString, 3>;

// What is painted, and the name that it is read as.
const std::map<QString, QString> namesOfWords{
    {QStringLiteral("Houneuoceu"), QStringLiteral("Copper Kettle")},
    {QStringLiteral("Houneuoccu"), QStringLiteral("Salt Merchant")},  // one stroke less
    {QStringLiteral("Hounouoceu"), QStringLiteral("Quiet Orchard")},  // one letter else
    {QStringLiteral("oHouneuoceuo"), QStringLiteral("Lantern Moth")}, // the first, and a letter at both ends
    {QStringLiteral("Houne"), QStringLiteral("Amber Wolf")},
    {QStringLiteral("Hounecoruoce"), QStringLiteral("Old Ferry")}, // begins as another does
    {QStringLiteral("Houneuoceuonucoe"), QStringLiteral("Winter Gate")},
};

constexpr std::array sizes{QSize(1024, 768), QSize(1280, 720), QSize(1920, 1080)};

const Words first{QStringLiteral("Houne"), QStringLiteral("Houneuoceu"), QStringLiteral("Houneuoceuonucoe")};

std::shared_ptr<const Lexicon> newLexicon() {
    std::vector<KnownName> list;
    for (const auto& [word, name] : namesOfWords) {
        list.push_back({name, {}});
    }
    return std::make_shared<const Lexicon>(std::move(list), Lexicon::forCards);
}

ReadingHints hintsFor(Offers offers, const std::shared_ptr<const Lexicon>& names) {
    return {QRectF(0.08, 0.28, 0.64, 0.5), offers, Script::latin, names};
}

QImage painted(Offers offers, const QSize& size, const Words& words) {
    return offers == Offers::cards ? testing::paintedCards(size, words)
                                   : testing::paintedHeroes(size, testing::HeroGround::parchment, heroCentres[1], words,
                                                            QStringLiteral("Tuocnoecoru"));
}

// Knows how each word looks, and takes a picture for the one that it is most like.
class Eye {
public:
    Eye() {
        for (const Offers offers : {Offers::cards, Offers::heroes}) {
            for (const QSize& size : sizes) {
                for (const auto& [word, name] : namesOfWords) {
                    FakeLineReader::Told told;
                    LineByLineReader reader(std::make_unique<FakeLineReader>(told), nullptr);
                    reader.read(painted(offers, size, {word, word, word}), hintsFor(offers, newLexicon()));
                    EXPECT_GE(told.seen.size(), 3U);
                    // The first readings are those of the three words.
                    for (std::size_t i = 0; i < std::min<std::size_t>(3, told.seen.size()); ++i) {
                        known.push_back({told.seen[i], name});
                    }
                }
            }
        }
    }

    LineReading operator()(const QImage& seen) const {
        double least = mostUnlike;
        QString name;
        for (const auto& [picture, itsName] : known) {
            if (const double far = distance(picture, seen, least); far < least) {
                least = far;
                name = itsName;
            }
        }
        return {name, name.isEmpty() ? 0 : 0.9F};
    }

private:
    static constexpr double mostUnlike = 40; // difference of brightness
    static constexpr int letter = 12;        // pixels
    static constexpr int room = 3;           // pixels by which a letter may stand elsewhere

    // Of the letter that differs most: among ten that are alike it is not to be lost. Or anything that is not below
    // `least`.
    static double distance(const QImage& one, const QImage& other, double least) {
        const double shapes = double(one.width()) / one.height() / (double(other.width()) / other.height());
        if (std::abs(shapes - 1) > 0.06) {
            return least;
        }
        const QImage scaled = other.size() == one.size()
                                  ? other
                                  : other.scaled(one.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                        .convertToFormat(QImage::Format_Grayscale8);
        double most = 0;
        for (int left = room; left + letter + room <= one.width() && most < least; left += letter / 2) {
            const QRect area(left, 1, letter, one.height() - 2);
            int nearest = std::numeric_limits<int>::max();
            for (int down = -1; down <= 1; ++down) {
                for (int right = -room; right <= room; ++right) {
                    nearest = std::min(nearest, sumOfDifferences(one, scaled, area, QPoint(right, down), nearest));
                }
            }
            most = std::max(most, double(nearest) / area.width() / area.height());
        }
        return most;
    }

    static int sumOfDifferences(const QImage& one, const QImage& other, const QRect& area, QPoint shift, int enough) {
        int sum = 0;
        for (int y = area.top(); y <= area.bottom() && sum < enough; ++y) {
            const uchar* here = one.constScanLine(y) + area.left();
            const uchar* there = other.constScanLine(y + shift.y()) + area.left() + shift.x();
            for (int x = 0; x < area.width(); ++x) {
                sum += std::abs(here[x] - there[x]);
            }
        }
        return sum;
    }

    std::vector<std::pair<QImage, QString>> known;
};

const Eye& eye() {
    static const Eye instance;
    return instance;
}

// Changes the brightness of each pixel.
void light(QImage& image, auto valueAt) {
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const auto lit = [&](int value) { return std::clamp(int(std::lround(valueAt(x, y, value))), 0, 255); };
            row[x] = qRgb(lit(qRed(row[x])), lit(qGreen(row[x])), lit(qBlue(row[x])));
        }
    }
}

QImage dimmed(QImage image, double strength, double slope = 0) {
    const double width = image.width();
    light(image, [=](int x, int, int value) { return value * (strength + slope * (x / width - 0.5)); });
    return image;
}

QImage grainy(QImage image, int levels, unsigned seed) {
    std::mt19937 random(seed);
    light(image, [&](int, int, int value) { return value + int(random() % unsigned(2 * levels + 1)) - levels; });
    return image;
}

// The brightest light stands at `place`, in widths of the image.
QImage shone(QImage image, double place) {
    std::vector<double> added;
    for (int x = 0; x < image.width(); ++x) {
        added.push_back(30 * std::exp(-std::pow((double(x) / image.width() - place) * 25, 2)));
    }
    light(image, [&](int x, int, int value) { return value + added[std::size_t(x)]; });
    return image;
}

QImage burnt(QImage image, double share, unsigned seed) {
    std::mt19937 random(seed);
    for (int y = 0; y < image.height(); y += 6) {
        for (int x = 0; x < image.width(); x += 6) {
            if (random() % 1000 < 1000 * share) {
                QPainter(&image).fillRect(x, y, 6, 6, QColor(220, 110, 30));
            }
        }
    }
    return image;
}

QImage moved(const QImage& image, int right, int down) {
    QImage result = testing::emptyScreen(image.size());
    QPainter(&result).drawImage(right, down, image);
    return result;
}

// `place` from the left, in widths of the image.
QImage withCursor(QImage image, Offers offers, double place) {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(230, 200, 90));
    const QPointF tip(place * image.width(), (offers == Offers::cards ? 0.372 : 0.53) * image.height());
    painter.drawPolygon(QPolygonF{tip, tip + QPointF(0, 30), tip + QPointF(22, 22)});
    return image;
}

QImage withTooltip(QImage image, double left) {
    QPainter painter(&image);
    painter.fillRect(QRectF(left * image.width(), 0.33 * image.height(), 0.11 * image.width(), 0.25 * image.height()),
                     QColor(20, 20, 24));
    return image;
}

QStringList textsOf(const ReadText& read) {
    QStringList texts;
    for (const OCRToken& token : read.tokens) {
        texts.append(token.text);
    }
    return texts;
}

QStringList namesOf(const Words& words) {
    QStringList names;
    for (const QString& word : words) {
        names.append(namesOfWords.at(word));
    }
    return names;
}

class SteadyReadingTest : public ::testing::Test {
protected:
    SteadyReadingTest() { told.answer = std::ref(eye()); }

    // What a reader makes of it that has seen nothing before.
    static ReadText readAfresh(const QImage& image, const ReadingHints& hints) {
        FakeLineReader::Told other;
        other.answer = std::ref(eye());
        return LineByLineReader(std::make_unique<FakeLineReader>(other), nullptr).read(image, hints);
    }

    // Lines read for it.
    std::size_t look(const QImage& image, const ReadingHints& hints) {
        told.readings = 0;
        last = reader.read(image, hints);
        expectSame(last, readAfresh(image, hints), image.size());
        return told.readings;
    }

    static void expectSame(const ReadText& read, const ReadText& fresh, const QSize& size) {
        ASSERT_EQ(textsOf(read), textsOf(fresh));
        ASSERT_EQ(read.columns, fresh.columns);
        for (std::size_t i = 0; i < read.tokens.size(); ++i) {
            // A line's ends are found to about a pixel, and less surely under another light.
            EXPECT_NEAR(read.tokens[i].midX, fresh.tokens[i].midX, 2.0 / size.width());
            EXPECT_NEAR(read.tokens[i].midY, fresh.tokens[i].midY, 2.0 / size.height());
            EXPECT_NEAR(read.tokens[i].width, fresh.tokens[i].width, 4.0 / size.width());
            EXPECT_NEAR(read.tokens[i].height, fresh.tokens[i].height, 4.0 / size.height());
        }
    }

    FakeLineReader::Told told;
    LineByLineReader reader{std::make_unique<FakeLineReader>(told), nullptr};
    ReadText last;
};

TEST_F(SteadyReadingTest, ReadsOnlyWhatChanged) {
    struct Row {
        Words words;
        std::size_t fewest; // lines read
        std::size_t most;
        const char* why;
    };

    const auto word = [](const char* each) { return QString::fromLatin1(each); };
    const Row table[] = {
        {first, 3, 3, "the first look"},
        {first, 0, 0, "nothing changed"},
        {{first[1], first[1], first[2]}, 1, 1, "the first one"},
        {{first[1], first[1], first[2]}, 0, 0, "it is known now"},
        {{first[1], word("Houneuoccu"), first[2]}, 1, 1, "a stroke less"},
        {{first[1], word("Hounouoceu"), first[2]}, 1, 1, "another letter"},
        {{first[1], first[1], first[2]}, 1, 1, "back again"},
        {{first[1], word("oHouneuoceuo"), first[2]}, 1, 1, "letters at both ends, the others where they were"},
        {{first[1], first[1], first[2]}, 1, 1, "and without them again"},
        {{first[0], first[1], first[0]}, 2, 2, "two"},
        {{word("Hounecoruoce"), first[1], first[0]}, 1, 1, "a name that begins as the one before"},
        {{first[1], first[2], first[1]}, 3, 3, "all three"},
        {{first[1], first[2], first[1]}, 0, 0, "and then none"},
    };
    for (const Offers offers : {Offers::cards, Offers::heroes}) {
        for (const QSize& size : sizes) {
            // The line of a hero's own name is not read where the class settles.
            const ReadingHints hints = hintsFor(offers, newLexicon());
            for (const Row& row : table) {
                SCOPED_TRACE(row.why);
                SCOPED_TRACE(size.width());
                SCOPED_TRACE(int(offers));
                const std::size_t lines = look(painted(offers, size, row.words), hints);
                EXPECT_GE(lines, row.fewest);
                EXPECT_LE(lines, row.most);
                EXPECT_EQ(textsOf(last), namesOf(row.words));
            }
        }
    }
}

TEST_F(SteadyReadingTest, LightAndGrainAreNoChange) {
    for (const Offers offers : {Offers::cards, Offers::heroes}) {
        const ReadingHints hints = hintsFor(offers, newLexicon());
        // Of the words that nobody takes for another in any light.
        const QImage image = painted(offers, QSize(1280, 720), {first[0], QStringLiteral("Hounecoruoce"), first[2]});

        struct Row {
            QImage image;
            const char* why;
        };

        const Row table[] = {
            {dimmed(image, 0.8), "darker"},
            {dimmed(image, 1.15), "lighter, up to where white can become no whiter"},
            {dimmed(image, 1, 0.3), "lighter to the right"},
            {dimmed(image, 0.9, -0.3), "darker, and more so to the right"},
            {shone(image, 0.27), "a light over the first name"},
            {shone(image, 0.4), "and over the second"},
            {grainy(image, 4, 1), "grain"},
            {grainy(dimmed(image, 0.85, 0.1), 3, 2), "all of it"},
            {image.convertToFormat(QImage::Format_RGBA8888), "in another format"},
        };
        ASSERT_EQ(look(image, hints), 3U);
        for (const Row& row : table) {
            SCOPED_TRACE(row.why);
            SCOPED_TRACE(int(offers));
            EXPECT_EQ(look(row.image, hints), 0U);
        }
    }
}

TEST_F(SteadyReadingTest, WhatIsRememberedEndsWithWhatItWasReadFor) {
    const auto names = newLexicon();
    const ReadingHints hints = hintsFor(Offers::cards, names);
    const QImage image = painted(Offers::cards, QSize(1280, 720), first);

    struct Row {
        std::function<void()> between;
        const char* why;
    };

    const Row table[] = {
        {[&] { reader.forget(); }, "told to forget"},
        {[&] { look(image, hintsFor(Offers::heroes, names)); }, "heroes were asked for"},
        {[&] { look(image, hintsFor(Offers::cards, newLexicon())); }, "other names, though they are the same"},
        {[&] { look(painted(Offers::cards, QSize(1920, 1080), first), hints); }, "another size"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        look(image, hints);
        ASSERT_EQ(look(image, hints), 0U);
        row.between();
        EXPECT_EQ(look(image, hints), 3U);
    }
    // What was gone and comes back is another pick, for all that is known.
    ASSERT_EQ(look(image, hints), 0U);
    look(testing::emptyScreen(image.size()), hints);
    EXPECT_TRUE(last.tokens.empty());
    EXPECT_EQ(look(image, hints), 3U);
}

TEST_F(SteadyReadingTest, ANameThatWasNotReadExactlyIsReadOnceMore) {
    const ReadingHints hints = hintsFor(Offers::cards, newLexicon());
    const QImage image = painted(Offers::cards, QSize(1280, 720), first);
    // Never twice alike: that would say that the name is not known.
    const QStringList misread{QStringLiteral("Copper Ketle"), QStringLiteral("Coper Kettle"),
                              QStringLiteral("Copper Kettl"), QStringLiteral("opper Kettle"),
                              QStringLiteral("Copper Kttle"), QStringLiteral("Cpper Kettle")};
    qsizetype turn = 0;
    told.answer = [&](const QImage& picture) {
        LineReading reading = eye()(picture);
        if (reading.text == namesOfWords.at(first[1])) {
            reading.text = misread[turn++ % misread.size()];
        }
        return reading;
    };
    const auto readings = [&] {
        told.readings = 0;
        EXPECT_EQ(textsOf(reader.read(image, hints)), namesOf(first));
        return told.readings;
    };
    EXPECT_GT(readings(), 3U);
    EXPECT_GT(readings(), 0U) << "the misread one";
    EXPECT_EQ(readings(), 0U) << "twice the same name";
}

// A place that could not be read costs most: it stands once a second look says the same, and is read anew now and then,
// for what lay over it may have been as still as a name.
TEST_F(SteadyReadingTest, WhatIsNotKnownStandsForSomeLooks) {
    const ReadingHints hints = hintsFor(Offers::cards, newLexicon());
    const QImage covered = withTooltip(painted(Offers::cards, QSize(1280, 720), first), 0.51);
    const QImage empty = testing::emptyScreen(QSize(1280, 720));
    for (const QImage& image : {covered, empty}) {
        const QStringList expected = image == covered ? namesOf(first).first(2) : QStringList();
        look(image, hints);
        EXPECT_EQ(textsOf(last), expected);
        look(image, hints);
        int readings = 0;
        for (int i = 0; i < 10; ++i) {
            readings += look(image, hints) > 0;
            EXPECT_EQ(textsOf(last), expected);
        }
        EXPECT_LE(readings, 2);
        if (image == covered) {
            EXPECT_GE(readings, 1) << "some day it may be seen";
        }
    }
    look(painted(Offers::cards, QSize(1280, 720), first), hints);
    EXPECT_EQ(textsOf(last), namesOf(first)) << "at once when it shows";
}

TEST_F(SteadyReadingTest, WhateverComesNextIsReadAsIfNothingHadBeen) {
    std::size_t steady = 0;
    std::size_t inPart = 0;
    std::size_t complete = 0;
    for (unsigned seed = 0; seed < 3; ++seed) {
        std::mt19937 random(seed);
        const auto oneOf = [&](std::size_t count) { return std::size_t(random() % count); };
        const auto share = [&] { return double(random() % 1001) / 1000; };
        const auto randomWord = [&] { return std::next(namesOfWords.begin(), std::ptrdiff_t(oneOf(7)))->first; };
        Words words = first;
        QSize size(1280, 720);
        Offers offers = Offers::cards;
        auto names = newLexicon();
        for (int tick = 0; tick < 45; ++tick) {
            switch (oneOf(12)) {
            case 0:
            case 1:
            case 2:
                words[oneOf(3)] = randomWord();
                break;
            case 3:
                words = {randomWord(), randomWord(), randomWord()};
                break;
            case 4:
                words = first;
                break;
            case 5:
                if (oneOf(4) == 0) {
                    size =
                        size.width() == 1280 ? QSize(1024, 768) : QSize(1280, 720); // smaller ones are painted sooner
                }
                break;
            case 6:
                if (oneOf(4) == 0) {
                    offers = offers == Offers::cards ? Offers::heroes : Offers::cards;
                }
                break;
            case 7:
                if (oneOf(4) == 0) {
                    names = newLexicon();
                }
                break;
            case 8:
                if (oneOf(4) == 0) {
                    reader.forget();
                }
                break;
            default:
                break;
            }
            QImage image = painted(offers, size, words);
            const std::size_t disguise = oneOf(14);
            switch (disguise) {
            case 0:
                image = dimmed(image, 0.8 + 0.4 * share(), 0.3 * (share() - 0.5));
                break;
            case 1:
                image = grainy(image, 1 + int(oneOf(4)), random());
                break;
            case 2:
                image = shone(image, share());
                break;
            case 3:
                image = withCursor(image, offers, 0.2 + 0.5 * share());
                break;
            case 4:
                image = withTooltip(image, 0.15 + 0.5 * share());
                break;
            case 5:
                image = burnt(image, 0.4 * share(), random());
                break;
            case 6:
                image = moved(image, int(oneOf(3)) - 1, int(oneOf(3)) - 1);
                break;
            case 7:
                image = testing::emptyScreen(size);
                break;
            default:
                break;
            }
            SCOPED_TRACE(::testing::Message() << "seed " << seed << ", tick " << tick << ", disguise " << disguise
                                              << ", " << namesOf(words).join(u'|').toStdString());
            const std::size_t lines = look(image, hintsFor(offers, names));
            if (HasFailure()) {
                return; // what follows would fail as well
            }
            const bool isWhole = last.tokens.size() == 3;
            steady += isWhole && lines == 0;
            inPart += isWhole && (lines == 1 || lines == 2);
            complete += isWhole && lines >= 3;
        }
    }
    // Else nothing is shown.
    EXPECT_GT(steady, 20U);
    EXPECT_GT(inPart, 10U);
    EXPECT_GT(complete, 20U);
}

} // namespace

} // namespace pelloran
