#include "model/OverlayModel.h"

#include "localisation/AppLanguage.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cstdio>
#include <functional>
#include <limits>
#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using Number = std::optional<double>;
using enum MetricHighlight;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

// One tile per row, one metric of `kind` in each.
std::vector<OverlayCardViewModel> tilesOf(MetricKind kind, const std::vector<Number>& values) {
    std::vector<OverlayCardViewModel> tiles;
    tiles.reserve(values.size());
    for (const Number& value : values) {
        tiles.push_back({u"L"_s, u"x"_s, {}, {{kind, value}}, true});
    }
    return tiles;
}

std::vector<MetricHighlight> highlightsOf(const std::vector<OverlayCardViewModel>& tiles) {
    std::vector<MetricHighlight> highlights;
    for (const OverlayCardViewModel& tile : tiles) {
        for (const MetricValue& metric : tile.metrics) {
            highlights.push_back(metric.highlight);
        }
    }
    return highlights;
}

QString printed(MetricKind kind, double value) {
    const char* const format = kind == MetricKind::classRank   ? "#%.0f"
                               : kind.isPercent()              ? "%.1f%%"
                               : kind == MetricKind::avgCopies ? "%.2f"
                                                               : "%.1f";
    char text[512];
    const int length = std::snprintf(text, sizeof text, format, value); // the tests' locale is "C"
    return QString::fromLatin1(text, length);
}

} // namespace

TEST(MetricKinds, StandInATableOfNine) {
    const struct {
        MetricKind kind;
        QString rawValue;
        QString english;
        QString chinese;
        bool isPercent;
        bool higherIsBetter;
    } rows[] = {
        {MetricKind::deckWinRate, u"deckWinRate"_s, u"Deck WR"_s, u"卡组胜率"_s, true, true},
        {MetricKind::drawnWinRate, u"drawnWinRate"_s, u"Drawn WR"_s, u"抽到胜率"_s, true, true},
        {MetricKind::playedWinRate, u"playedWinRate"_s, u"Played WR"_s, u"打出胜率"_s, true, true},
        {MetricKind::popularity, u"popularity"_s, u"Popularity"_s, u"出现热度"_s, false, true},
        {MetricKind::avgCopies, u"avgCopies"_s, u"Avg copies"_s, u"套牌均拷"_s, false, true},
        {MetricKind::classWinRate, u"classWinRate"_s, u"Class WR"_s, u"职业胜率"_s, true, true},
        {MetricKind::pickRate, u"pickRate"_s, u"Pick rate"_s, u"选择热度"_s, true, true},
        {MetricKind::pct7Plus, u"pct7Plus"_s, u"7+ wins"_s, u"7胜以上"_s, true, true},
        {MetricKind::classRank, u"classRank"_s, u"Class rank"_s, u"职业排名"_s, false, false},
    };

    ASSERT_EQ(std::size(rows), MetricKind::allCases().size());
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const auto& row = rows[i];
        SCOPED_TRACE(row.rawValue.toStdString());
        EXPECT_EQ(row.kind, MetricKind::allCases()[i]);
        EXPECT_EQ(row.kind.rawValue(), row.rawValue);
        EXPECT_EQ(MetricKind::fromRawValue(row.rawValue), row.kind);
        EXPECT_EQ(row.kind.isPercent(), row.isPercent);
        EXPECT_EQ(row.kind.higherIsBetter(), row.higherIsBetter);
        AppLanguage::overridePreference(AppLanguage::en);
        EXPECT_EQ(row.kind.label(), row.english);
        AppLanguage::overridePreference(AppLanguage::zh);
        EXPECT_EQ(row.kind.label(), row.chinese);
    }
    AppLanguage::configure(nullptr, nullptr);
}

TEST(MetricKinds, AreNotMadeOfOtherTexts) {
    for (const QString& text : {u""_s, u"DeckWinRate"_s, u"deck_win_rate"_s, u"classRank "_s}) {
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(MetricKind::fromRawValue(text), std::nullopt);
    }
}

TEST(MetricKinds, OfCardsAndHeroesComeInTheOrderOfTheirRows) {
    using Cards = std::array<MetricKind::Value, 5>;
    using Heroes = std::array<MetricKind::Value, 4>;
    EXPECT_EQ(MetricKind::cardKinds(),
              (Cards{MetricKind::deckWinRate, MetricKind::drawnWinRate, MetricKind::playedWinRate,
                     MetricKind::popularity, MetricKind::avgCopies}));
    EXPECT_EQ(MetricKind::heroKinds(),
              (Heroes{MetricKind::classWinRate, MetricKind::pickRate, MetricKind::pct7Plus, MetricKind::classRank}));
}

TEST(MetricFormat, FollowsTheKind) {
    const struct {
        const char* why;
        MetricKind kind;
        Number value;
        QString expected;
    } rows[] = {
        {"absent", MetricKind::deckWinRate, {}, u"\u2014"_s},
        {"absent rank", MetricKind::classRank, {}, u"\u2014"_s},
        {"a percentage", MetricKind::deckWinRate, 55.31, u"55.3%"_s},
        {"a tie that is exact goes to the even digit", MetricKind::drawnWinRate, 55.25, u"55.2%"_s},
        {"and the other way", MetricKind::playedWinRate, 55.75, u"55.8%"_s},
        {"a tie in decimal that is none in binary", MetricKind::classWinRate, 0.35, u"0.3%"_s},
        {"all of it", MetricKind::pickRate, 100.0, u"100.0%"_s},
        {"nothing", MetricKind::pct7Plus, 0.0, u"0.0%"_s},
        {"popularity has no percent sign", MetricKind::popularity, 7.26, u"7.3"_s},
        {"copies have two decimals", MetricKind::avgCopies, 1.0, u"1.00"_s},
        {"copies", MetricKind::avgCopies, 1.5, u"1.50"_s},
        {"a rank", MetricKind::classRank, 12.0, u"#12"_s},
        {"the best rank", MetricKind::classRank, 3.0, u"#3"_s},
        {"a rank between ranks", MetricKind::classRank, 2.5, u"#2"_s},
        {"no grouping", MetricKind::popularity, 1234567.0, u"1234567.0"_s},
        {"below zero", MetricKind::popularity, -0.26, u"-0.3"_s},
        {"rounded to zero from below keeps its sign, as printf does", MetricKind::popularity, -0.01, u"-0.0"_s},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ((MetricValue{row.kind, row.value}).formatted(), row.expected);
    }
}

TEST(MetricFormat, IsThatOfPrintf) {
    std::mt19937_64 random(41); // NOLINT(bugprone-random-generator-seed): the same numbers every time
    std::uniform_real_distribution percentages(0.0, 100.0);
    std::vector<double> numbers{0.0,
                                -0.0,
                                infinite,
                                -infinite,
                                notANumber,
                                -notANumber,
                                std::numeric_limits<double>::max(),
                                std::numeric_limits<double>::lowest(),
                                std::numeric_limits<double>::min(),
                                std::numeric_limits<double>::denorm_min(),
                                1e15 + 0.5,
                                9.995,
                                99.95};
    for (int tie = -2'000; tie < 2'000; ++tie) {
        numbers.push_back(tie / 8.0);
        numbers.push_back(tie / 20.0);
    }
    for (int i = 0; i < 20'000; ++i) {
        numbers.push_back(percentages(random));
        numbers.push_back(std::bit_cast<double>(random())); // any bits at all
    }
    for (const double number : numbers) {
        for (const MetricKind kind : MetricKind::allCases()) {
            ASSERT_EQ((MetricValue{kind, number}).formatted(), printed(kind, number)) << number;
        }
    }
}

TEST(MetricFormat, DoesNotFollowTheProcesssLocale) {
    const QByteArray before = std::setlocale(LC_NUMERIC, nullptr);
    const bool hasCommas = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") || std::setlocale(LC_NUMERIC, "fr_FR.UTF-8");
    const QString text = MetricValue{MetricKind::deckWinRate, 55.3}.formatted();
    std::setlocale(LC_NUMERIC, before);
    if (!hasCommas) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    EXPECT_EQ(text, u"55.3%"_s);
}

TEST(Highlights, MarkBestAndWorst) {
    const struct {
        const char* why;
        MetricKind kind;
        std::vector<Number> values;
        std::vector<MetricHighlight> expected;
    } rows[] = {
        {"ties for the best share the mark", MetricKind::deckWinRate, {56.1, 52.0, 56.1}, {high, low, high}},
        {"ties for the worst do as well", MetricKind::deckWinRate, {52.0, 56.1, 52.0}, {low, high, low}},
        {"the middle one is normal", MetricKind::pickRate, {1.0, 2.0, 3.0}, {low, normal, high}},
        {"rank 1 is the best", MetricKind::classRank, {3.0, 1.0, 2.0}, {low, high, normal}},
        {"two tiles", MetricKind::avgCopies, {1.0, 1.5}, {low, high}},
        {"all agree", MetricKind::avgCopies, {1.0, 1.0, 1.0}, {normal, normal, normal}},
        {"one known value is never marked", MetricKind::popularity, {{}, 7.0, {}}, {normal, normal, normal}},
        {"two of three known", MetricKind::popularity, {7.0, {}, 6.0}, {high, normal, low}},
        {"none known", MetricKind::popularity, {{}, {}, {}}, {normal, normal, normal}},
        {"no tiles", MetricKind::popularity, {}, {}},
        {"the smallest difference counts", MetricKind::deckWinRate, {0.1 + 0.2, 0.3, 0.3}, {high, low, low}},
        {"zeros of both signs are equal", MetricKind::deckWinRate, {0.0, -0.0}, {normal, normal}},
        {"below zero", MetricKind::deckWinRate, {-1.0, -2.0}, {high, low}},
        {"more tiles than slots", MetricKind::deckWinRate, {1.0, 2.0, 3.0, 3.0, 1.0}, {low, normal, high, high, low}},
        {"infinite values", MetricKind::deckWinRate, {infinite, 1.0, -infinite}, {high, normal, low}},
        {"no number first: it compares with nothing",
         MetricKind::deckWinRate,
         {notANumber, 1.0, 2.0},
         {normal, normal, normal}},
        {"no number later: it is neither", MetricKind::deckWinRate, {1.0, notANumber, 2.0}, {low, normal, high}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        auto tiles = tilesOf(row.kind, row.values);
        MetricHighlighter::applyHighlights(tiles);
        EXPECT_EQ(highlightsOf(tiles), row.expected);
    }
}

TEST(Highlights, AreEachKindsOwn) {
    std::vector<OverlayCardViewModel> tiles(2);
    tiles[0].metrics = {{MetricKind::classWinRate, 50.0}, {MetricKind::classRank, 1.0}, {MetricKind::pickRate, 5.0}};
    tiles[1].metrics = {{MetricKind::classRank, 2.0}, {MetricKind::classWinRate, 51.0}};
    MetricHighlighter::applyHighlights(tiles);
    EXPECT_EQ(highlightsOf(tiles), (std::vector{low, high, normal, low, high}));
}

TEST(Highlights, GoByTheFirstMetricOfAKindInATile) {
    const struct {
        const char* why;
        std::vector<MetricValue> first;
        std::vector<MetricValue> second;
        std::vector<MetricHighlight> expected;
    } rows[] = {
        {"a second one neither counts nor is marked",
         {{MetricKind::pickRate, 5.0}, {MetricKind::pickRate, 9.0}},
         {{MetricKind::pickRate, 6.0}},
         {low, normal, high}},
        {"also when the first has no value",
         {{MetricKind::pickRate, {}}, {MetricKind::pickRate, 9.0}},
         {{MetricKind::pickRate, 6.0}},
         {normal, normal, normal}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        std::vector<OverlayCardViewModel> tiles(2);
        tiles[0].metrics = row.first;
        tiles[1].metrics = row.second;
        MetricHighlighter::applyHighlights(tiles);
        EXPECT_EQ(highlightsOf(tiles), row.expected);
    }
}

TEST(Highlights, TakeTilesThatWereNotRecognisedLikeAnyOther) {
    auto tiles = tilesOf(MetricKind::deckWinRate, {1.0, 2.0});
    tiles[0].recognized = false;
    MetricHighlighter::applyHighlights(tiles);
    EXPECT_EQ(highlightsOf(tiles), (std::vector{low, high}));

    tiles = tilesOf(MetricKind::deckWinRate, {1.0});
    tiles.emplace_back();
    MetricHighlighter::applyHighlights(tiles);
    EXPECT_EQ(highlightsOf(tiles), std::vector{normal}) << "an unrecognised tile without metrics leaves one value";
}

TEST(Highlights, KeepOrReplaceEarlierMarksByTheRule) {
    const struct {
        const char* why;
        std::vector<Number> values;
        std::vector<MetricHighlight> expected;
    } rows[] = {
        {"the middle one is reset", {1.0, 2.0, 3.0}, {low, normal, high}},
        {"one value: untouched", {{}, 2.0, {}}, {high, high, high}},
        {"all equal: untouched", {2.0, 2.0, 2.0}, {high, high, high}},
        {"without a value: untouched", {1.0, {}, 3.0}, {low, high, high}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        auto tiles = tilesOf(MetricKind::deckWinRate, row.values);
        for (OverlayCardViewModel& tile : tiles) {
            tile.metrics.front().highlight = high;
        }
        MetricHighlighter::applyHighlights(tiles);
        EXPECT_EQ(highlightsOf(tiles), row.expected);
    }
}

TEST(Highlights, ChangeNothingElseAndGiveTheSameTwice) {
    auto tiles = tilesOf(MetricKind::deckWinRate, {1.0, {}, 3.0});
    const auto before = tiles;
    MetricHighlighter::applyHighlights(tiles);
    auto again = tiles;
    MetricHighlighter::applyHighlights(again);
    EXPECT_EQ(again, tiles);
    for (OverlayCardViewModel& tile : tiles) {
        tile.metrics.front().highlight = normal;
    }
    EXPECT_EQ(tiles, before);
}

TEST(Snapshots, WithoutTilesAreMadeOfAMessage) {
    AppLanguage::overridePreference(AppLanguage::en);
    EXPECT_EQ(OverlaySnapshot::idle(u"wait"_s),
              (OverlaySnapshot{u"Pelloran · Arena"_s, u"wait"_s, {}, false, DraftPhase::idle}));
    EXPECT_EQ(OverlaySnapshot::status(u"no window"_s, true),
              (OverlaySnapshot{u"Pelloran · Arena"_s, u"no window"_s, {}, true, DraftPhase::idle}));
    EXPECT_EQ(OverlaySnapshot::status(u"x"_s, false), OverlaySnapshot::idle(u"x"_s));
    EXPECT_EQ(OverlaySnapshot::idle(u""_s).message, u""_s) << "an empty message is a message";
    AppLanguage::overridePreference(AppLanguage::zh);
    EXPECT_EQ(OverlaySnapshot::idle(u"x"_s).title, u"Pelloran · 竞技场"_s);
    AppLanguage::configure(nullptr, nullptr);
}

TEST(Snapshots, CompareEverythingDeeply) {
    const auto make = [] {
        auto tiles = tilesOf(MetricKind::deckWinRate, {56.1, {}});
        return OverlaySnapshot{u"t"_s, u"m"_s, std::move(tiles), true, DraftPhase::cardPick};
    };

    const struct {
        const char* why;
        std::function<void(OverlaySnapshot&)> change;
    } rows[] = {
        {"title", [](OverlaySnapshot& other) { other.title = u"x"_s; }},
        {"message", [](OverlaySnapshot& other) { other.message = u"x"_s; }},
        {"no message", [](OverlaySnapshot& other) { other.message.reset(); }},
        {"inDraft", [](OverlaySnapshot& other) { other.inDraft = false; }},
        {"phase", [](OverlaySnapshot& other) { other.phase = DraftPhase::heroPick; }},
        {"a tile less", [](OverlaySnapshot& other) { other.cards.pop_back(); }},
        {"tiles in another order", [](OverlaySnapshot& other) { std::swap(other.cards[0], other.cards[1]); }},
        {"a tile's caption", [](OverlaySnapshot& other) { other.cards[0].slotLabel = u"R"_s; }},
        {"a tile's name", [](OverlaySnapshot& other) { other.cards[0].name = u"X"_s; }},
        {"a tile's second line", [](OverlaySnapshot& other) { other.cards[0].subtitle = u""_s; }},
        {"a tile not recognised", [](OverlaySnapshot& other) { other.cards[0].recognized = false; }},
        {"a metric more", [](OverlaySnapshot& other) { other.cards[0].metrics.emplace_back(); }},
        {"a metric's kind", [](OverlaySnapshot& other) { other.cards[0].metrics[0].kind = MetricKind::pickRate; }},
        {"a metric's value", [](OverlaySnapshot& other) { other.cards[0].metrics[0].value = 56.2; }},
        {"a metric's value absent", [](OverlaySnapshot& other) { other.cards[0].metrics[0].value.reset(); }},
        {"a value where none was", [](OverlaySnapshot& other) { other.cards[1].metrics[0].value = 0.0; }},
        {"a mark alone", [](OverlaySnapshot& other) { other.cards[0].metrics[0].highlight = high; }},
    };

    const OverlaySnapshot snapshot = make();
    EXPECT_EQ(snapshot, make());
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        OverlaySnapshot changed = snapshot;
        EXPECT_EQ(changed, snapshot);
        row.change(changed);
        EXPECT_NE(changed, snapshot);
    }
}

TEST(Snapshots, CompareNumbersAsNumbers) {
    const auto metric = [](double value) { return MetricValue{MetricKind::pickRate, value}; };
    EXPECT_EQ(metric(0.0), metric(-0.0));
    EXPECT_NE(metric(notANumber), metric(notANumber));
}

} // namespace pelloran
