#include "data/WinrateStore.h"
#include "recognition/CardRecognizer.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/Printing.h"
#include "tests/support/Sanitizers.h"
#include "tools/stage/ScreenSeries.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <span>
#include <string>

// The stage's screens, painted here and read by the whole reader: everything but the window itself, in every checkout.
namespace pelloran {

namespace {

using stage::ChineseLettering;
using stage::Language;
using stage::Look;
using stage::ScreenSeries;

constexpr bool slow = testing::hasAddressSanitizer || testing::hasThreadSanitizer;

struct Client {
    const char* name;
    Language language;
    ChineseLettering lettering;
    Look look;
    bool heroesByName = false;
};

void PrintTo(const Client& client, std::ostream* out) {
    *out << client.name;
}

constexpr Client clients[] = {
    {"EnglishOld", Language::english, ChineseLettering::printed, Look::parchment},
    {"EnglishNew", Language::english, ChineseLettering::printed, Look::felt},
    {"PrintedChineseOld", Language::chinese, ChineseLettering::printed, Look::parchment},
    {"PrintedChineseNew", Language::chinese, ChineseLettering::printed, Look::felt},
    {"ClericalChineseOld", Language::chinese, ChineseLettering::clerical, Look::parchment},
    {"ClericalChineseNew", Language::chinese, ChineseLettering::clerical, Look::felt},
    {"EnglishHeroesByName", Language::english, ChineseLettering::printed, Look::felt, true},
    {"PrintedChineseHeroesByName", Language::chinese, ChineseLettering::printed, Look::felt, true},
    {"ClericalChineseHeroesByName", Language::chinese, ChineseLettering::clerical, Look::felt, true},
};

// What is painted for each client: more, and larger, takes longer without showing more. Numbers are those of the
// series, of which a picture's sort follows.
struct Pick {
    QSize size;
    int number;
};

const Pick picks[] = {
    {{1280, 720}, 0},  // cards
    {{1280, 720}, 1},  // heroes
    {{1512, 945}, 3},  // cards, in a window of an odd size
    {{1512, 945}, 7},  // heroes
    {{1920, 1080}, 4}, // cards
    {{2560, 1440}, 6}, // cards
};
constexpr std::size_t picksWhereSlow = 2;

// Burning and arriving cards, a hero looked at, the collection, a finished deck, a menu, cards face down, decks and the
// main menu. Each client has two of these sorts.
constexpr int without[] = {2, 5, 8, 10, 14, 17, 18, 21, 23};

class PaintedScreensTest : public ::testing::TestWithParam<Client> {
protected:
    void SetUp() override {
        auto made = TextReader::create(files);
        ASSERT_TRUE(made) << made.error().reason.toStdString();
        reader = *std::move(made);
        const auto loaded = store.loadFromBundle();
        ASSERT_TRUE(loaded) << loaded.error().localizedDescription.toStdString();
    }

    static ScreenSeries seriesOf(const Client& client, const QSize& size) {
        auto series = ScreenSeries::create({.seed = 12,
                                            .size = size,
                                            .language = client.language,
                                            .look = client.look,
                                            .lettering = client.lettering,
                                            .heroesByName = client.heroesByName},
                                           stage::Catalogue::sample().cards());
        EXPECT_TRUE(series) << series.error().toStdString();
        return *std::move(series);
    }

    // As a picture before which nothing was seen.
    std::vector<SlotMatch> recognize(const QImage& image, DraftPhase phase) {
        reader->forget();
        return phase == DraftPhase::heroPick ? recognizer.recognizeHeroes(image, *reader)
                                             : recognizer.recognizeCards(image, *reader);
    }

    QString nameOf(const SlotMatch& match, DraftPhase phase) const {
        const bool chinese = GetParam().language == Language::chinese;
        if (!match.cardId) {
            return {};
        }
        if (phase == DraftPhase::heroPick) {
            const auto row = store.classStats(*match.cardId);
            const auto* hero = stage::Catalogue::sample().heroClass(row ? row->playerClass : QString());
            // As the game prints it.
            if (hero && GetParam().heroesByName) {
                return hero->heroName.in(GetParam().language);
            }
            return hero ? hero->name.in(GetParam().language).toUpper() : *match.cardId;
        }
        const auto stats = store.stats(*match.cardId);
        return stats ? (chinese ? stats->nameZh : stats->nameEn).value_or(*match.cardId) : *match.cardId;
    }

    QStringList namesOf(const QImage& image, DraftPhase phase) {
        QStringList names;
        for (const SlotMatch& match : recognize(image, phase)) {
            names.append(nameOf(match, phase));
        }
        return names;
    }

    static QStringList offeredOn(const ScreenSeries::Picture& picture) {
        QStringList names;
        for (const auto& name : picture.truth[u"names"].toArray()) {
            names.append(name.toString());
        }
        return names;
    }

    const testing::FakeApplicationFiles files{QStringLiteral(PELLORAN_SOURCES)};
    WinrateStore store{files};
    const CardRecognizer recognizer{store, NameLengths::limitedUnlessExact};
    std::unique_ptr<TextReader> reader;
};

const QStringList nothing{QString(), QString(), QString()};

// In some letterings and sizes: seven characters, which the ribbon squeezes, and a class of two in the thinnest
// strokes. They may be missing, never be another name.
const QStringList notReadYet{QStringLiteral("加拉克苏斯大王"), QStringLiteral("牧师")};

TEST_P(PaintedScreensTest, PicksGiveTheirNamesAndNoOthers) {
    for (const Pick& pick : std::span(picks).first(slow ? picksWhereSlow : std::size(picks))) {
        const ScreenSeries::Picture picture = seriesOf(GetParam(), pick.size).picture(pick.number);
        SCOPED_TRACE(::testing::Message() << picture.name.toStdString() << ", " << pick.size.height());
        const bool heroes = picture.truth[u"phase"].toString() == u"heroPick";
        const auto phase = heroes ? DraftPhase::heroPick : DraftPhase::cardPick;
        const QStringList read = namesOf(picture.image, phase);
        const QStringList offered = offeredOn(picture);
        ASSERT_EQ(offered.size(), 3);
        for (qsizetype slot = 0; slot < 3; ++slot) {
            if (!read[slot].isEmpty() || !notReadYet.contains(offered[slot])) {
                EXPECT_EQ(read[slot], offered[slot]);
            }
        }
        const auto other = heroes ? DraftPhase::cardPick : DraftPhase::heroPick;
        EXPECT_EQ(namesOf(picture.image, other), nothing) << "the logs may be a moment late";
    }
}

TEST_P(PaintedScreensTest, ScreensWithoutAPickGiveNothing) {
    const auto first = static_cast<std::size_t>(std::ranges::find(clients, GetParam().name, &Client::name) - clients);
    for (std::size_t turn = 0; turn < 2; ++turn) {
        const int number = without[(2 * first + turn) % std::size(without)];
        const QSize size = slow || turn == 0 ? QSize(1280, 720) : QSize(1512, 945);
        const ScreenSeries::Picture picture = seriesOf(GetParam(), size).picture(number);
        SCOPED_TRACE(::testing::Message() << picture.name.toStdString() << ", " << size.height());
        ASSERT_TRUE(picture.truth[u"phase"].toString() == u"none");
        for (const DraftPhase phase : {DraftPhase::heroPick, DraftPhase::cardPick}) {
            EXPECT_EQ(namesOf(picture.image, phase), nothing);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, PaintedScreensTest, ::testing::ValuesIn(clients),
                         [](const auto& client) { return std::string(client.param.name); });

} // namespace

} // namespace pelloran
