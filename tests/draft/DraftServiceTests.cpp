#include "draft/DraftService.h"

#include "localisation/AppLanguage.h"
#include "recognition/ScreenReader.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeTextReader.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/fakes/FakeWindowServer.h"
#include "tests/fakes/ManualQueue.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/Printing.h"
#include "tests/support/SampleStore.h"

#include <QTest>

#include <gtest/gtest.h>

namespace pelloran {
namespace {

using testing::FakeTextReader;
using testing::FakeWindowServer;
using testing::SampleStore;

const QByteArray cardFile = R"({"player_class": "ALL", "time_range": "TEST", "cards": [
    {"card_id": "FIREBALL", "name_zh": "火球术", "name_en": "Fireball", "deck_win_rate": 56.1, "drawn_win_rate": 57,
     "played_win_rate": 58.5, "popularity": 7.26, "avg_copies_in_deck": 1.5},
    {"card_id": "FROSTBOLT", "name_zh": "寒冰箭", "name_en": "Frostbolt", "deck_win_rate": 52, "drawn_win_rate": 57},
    {"card_id": "YETI", "name_zh": "冰风雪人", "name_en": "Chillwind Yeti", "deck_win_rate": 56.1}
]})";

const QByteArray classFile = R"({"classes": [
    {"player_class": "mage", "name_zh": "法师", "name_en": "Mage", "win_rate": 51.5, "pick_rate": 12, "pct_7_plus": 9.25, "rank": 2},
    {"player_class": "DRUID", "name_zh": "德鲁伊", "name_en": "Druid", "win_rate": 47, "rank": 9},
    {"player_class": "ROGUE", "name_zh": "潜行者", "name_en": "Rogue", "win_rate": 53, "pick_rate": 12}
]})";

// Text lines as the game's log has them.
const QByteArray heroPickLog =
    "D 1 DraftManager.OnBegin - Got new draft deck with ID: 7\nD 1 SetDraftMode - DRAFTING\n";
const QByteArray cardPickLog = heroPickLog + "D 1 DraftManager.OnChosen(): hero=HERO_08\n";
const QByteArray otherHeroPickLog = cardPickLog + heroPickLog;
const QByteArray idleLog = "D 1 SetDraftMode - NO_ACTIVE_DRAFT\n";

struct Recorder final : DraftServiceDelegate {
    void draftServiceDidUpdate(const OverlaySnapshot& snapshot) override { published.push_back(snapshot); }

    std::vector<OverlaySnapshot> published;
};

QStringList names(const OverlaySnapshot& snapshot) {
    QStringList names;
    for (const OverlayCardViewModel& tile : snapshot.cards) {
        names.append(tile.name);
    }
    return names;
}

QStringList list(std::initializer_list<const char*> texts) {
    QStringList strings;
    for (const char* text : texts) {
        strings.append(QString::fromUtf8(text));
    }
    return strings;
}

class DraftServiceTest : public ::testing::Test {
protected:
    DraftServiceTest() {
        AppLanguage::configure(&defaults, &settings);
        config.logsDir = logs.path();
        EXPECT_TRUE(QDir(logs.path()).mkpath(QStringLiteral("Hearthstone_1")));
        showWindow();
        setReads({});
        makeService();
        EXPECT_TRUE(recorder->published.empty()) << "nothing is published before the first tick";
    }

    ~DraftServiceTest() override { AppLanguage::configure(nullptr, nullptr); }

    void makeService() {
        service.emplace(config, sample.store, queue, screenReader);
        service->delegate = recorder;
    }

    void writeLog(const QByteArray& arena) const {
        QFile file(logs.path() + QStringLiteral("/Hearthstone_1/Arena.log"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(arena);
    }

    void showWindow() {
        windowServer->onScreen = {{WindowDescription{
            .number = 5,
            .ownerName = QStringLiteral("Hearthstone"),
            .name = QStringLiteral("Hearthstone"),
            .layer = 0,
            .bounds = WindowBounds{0, 0, 1920, 1080},
        }}};
        windowServer->images[5] = QImage(192, 108, QImage::Format_RGB32);
    }

    void hideWindow() { windowServer->onScreen = std::vector<WindowDescription>{}; }

    // What stands at the places of the left, middle and right offer; "" for nothing.
    void setReads(std::initializer_list<const char*> lines) {
        textReader->tokens.clear();
        double midX = 0.2;
        for (const char* line : lines) {
            if (*line) {
                textReader->tokens.push_back({QString::fromUtf8(line), 1, midX, 0.5, 0.1, 0.02});
            }
            midX += 0.2;
        }
    }

    // One whole tick, and what it published.
    OverlaySnapshot tick() {
        const std::size_t before = recorder->published.size();
        service->tick();
        while (queue.waiting() > 0) {
            queue.finishNext();
        }
        EXPECT_EQ(recorder->published.size(), before + 1) << "every tick publishes once";
        return recorder->published.empty() ? OverlaySnapshot() : recorder->published.back();
    }

    testing::FakeUserDefaults defaults;
    testing::FakeSystemSettings settings;
    SampleStore sample{cardFile, classFile};
    QTemporaryDir logs;
    AppConfig config;
    std::unique_ptr<FakeWindowServer> ownedWindowServer = std::make_unique<FakeWindowServer>();
    std::unique_ptr<FakeTextReader> ownedTextReader = std::make_unique<FakeTextReader>();
    FakeWindowServer* windowServer = ownedWindowServer.get();
    FakeTextReader* textReader = ownedTextReader.get();
    bool readerMissing = false;
    ScreenReader screenReader{
        [this] { return std::move(ownedWindowServer); },
        [this]() -> std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> {
            if (readerMissing) {
                return std::unexpected(TextReader::Unavailable{QStringLiteral("install the reader")});
            }
            return std::move(ownedTextReader);
        },
    };
    testing::ManualQueue queue;
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    std::optional<DraftService> service;
};

TEST_F(DraftServiceTest, PublishesTheIdleMessageOutsideADraft) {
    writeLog(idleLog);
    EXPECT_EQ(tick(), OverlaySnapshot::idle(QStringLiteral("Waiting for Arena draft…")));
    EXPECT_FALSE(service->isInDraft);
    EXPECT_EQ(windowServer->captures, 0) << "outside a draft nobody looks at the window";

    AppLanguage::setPreference(AppLanguage::zh);
    service->relocalizeAndRefresh();
    EXPECT_EQ(recorder->published.back().title, QStringLiteral("Pelloran · 竞技场"));
    EXPECT_EQ(recorder->published.back().message, QStringLiteral("Waiting for Arena draft…"))
        << "the message belongs to whoever set it";

    service->idleMessage = QStringLiteral("another line");
    EXPECT_EQ(tick().message, QStringLiteral("another line"));
}

TEST_F(DraftServiceTest, BuildsHeroTilesFromTheClassFigures) {
    writeLog(heroPickLog);
    setReads({"Mage", "Druid", "Rogue"});
    const OverlaySnapshot snapshot = tick();
    EXPECT_TRUE(service->isInDraft);
    EXPECT_EQ(snapshot.title, QStringLiteral("Pelloran · Hero Pick"));
    EXPECT_EQ(snapshot.message, std::nullopt);
    EXPECT_TRUE(snapshot.inDraft);
    EXPECT_EQ(snapshot.phase, DraftPhase::heroPick);
    ASSERT_EQ(snapshot.cards.size(), 3U);
    using enum MetricHighlight;
    EXPECT_EQ(snapshot.cards[0], (OverlayCardViewModel{
                                     QStringLiteral("L"),
                                     QStringLiteral("Mage"),
                                     QStringLiteral("mage"),
                                     {{MetricKind::classWinRate, 51.5, normal},
                                      {MetricKind::pickRate, 12, normal},
                                      {MetricKind::pct7Plus, 9.25, normal},
                                      {MetricKind::classRank, 2, high}},
                                     true,
                                 }));
    EXPECT_EQ(snapshot.cards[1].metrics, (std::vector<MetricValue>{{MetricKind::classWinRate, 47, low},
                                                                   {MetricKind::pickRate, std::nullopt, normal},
                                                                   {MetricKind::pct7Plus, std::nullopt, normal},
                                                                   {MetricKind::classRank, 9, low}}));
    EXPECT_EQ(snapshot.cards[2].metrics, (std::vector<MetricValue>{{MetricKind::classWinRate, 53, high},
                                                                   {MetricKind::pickRate, 12, normal},
                                                                   {MetricKind::pct7Plus, std::nullopt, normal},
                                                                   {MetricKind::classRank, std::nullopt, normal}}));
}

TEST_F(DraftServiceTest, BuildsCardTilesFromTheCardFigures) {
    writeLog(cardPickLog);
    setReads({"Fireball", "Frostbolt", "Chillwind Yeti"});
    const OverlaySnapshot snapshot = tick();
    EXPECT_EQ(snapshot.title, QStringLiteral("Pelloran · Card Pick"));
    EXPECT_EQ(snapshot.phase, DraftPhase::cardPick);
    ASSERT_EQ(snapshot.cards.size(), 3U);
    using enum MetricHighlight;
    EXPECT_EQ(snapshot.cards[0], (OverlayCardViewModel{
                                     QStringLiteral("L"),
                                     QStringLiteral("Fireball"),
                                     std::nullopt,
                                     {{MetricKind::deckWinRate, 56.1, high},
                                      {MetricKind::drawnWinRate, 57, normal},
                                      {MetricKind::playedWinRate, 58.5, normal},
                                      {MetricKind::popularity, 7.26, normal},
                                      {MetricKind::avgCopies, 1.5, normal}},
                                     true,
                                 }));
    EXPECT_EQ(snapshot.cards[1].metrics[0], (MetricValue{MetricKind::deckWinRate, 52, low}));
    EXPECT_EQ(snapshot.cards[2].metrics[0], (MetricValue{MetricKind::deckWinRate, 56.1, high}));
    EXPECT_EQ(snapshot.cards[2].metrics[4], (MetricValue{MetricKind::avgCopies, std::nullopt, normal}));
}

TEST_F(DraftServiceTest, RecognizesLongNamesAsConfigured) {
    sample.write(QStringLiteral("all_classes_LAST_7_DAYS.json"),
                 R"({"cards": [{"card_id": "FARSEER", "name_en": "Earthen Ring Farseer"}]})");
    sample.reload();
    writeLog(cardPickLog);
    setReads({"Earthen Ring Farseer"});
    EXPECT_FALSE(tick().cards[0].recognized);
    config.nameLengths = NameLengths::limitedUnlessExact;
    makeService();
    EXPECT_TRUE(tick().cards[0].recognized);
}

TEST_F(DraftServiceTest, ShowsUnrecognizedTilesWithEveryRow) {
    writeLog(cardPickLog);
    const OverlaySnapshot cards = tick();
    EXPECT_EQ(names(cards), list({"Unrecognized", "Unrecognized", "Unrecognized"}));
    for (const OverlayCardViewModel& tile : cards.cards) {
        EXPECT_FALSE(tile.recognized);
        EXPECT_EQ(tile.subtitle, std::nullopt);
        ASSERT_EQ(tile.metrics.size(), 5U);
        for (std::size_t row = 0; row < 5; ++row) {
            EXPECT_EQ(tile.metrics[row], (MetricValue{MetricKind::cardKinds()[row], std::nullopt}));
        }
    }
    writeLog(heroPickLog);
    EXPECT_EQ(tick().cards[2].metrics.size(), 4U);
}

TEST_F(DraftServiceTest, KeepsTheTileOfASlotThatWasReadBefore) {
    writeLog(cardPickLog);
    setReads({"Fireball", "Frostbolt", "Chillwind Yeti"});
    tick();
    setReads({"Chillwind Yeti", "", ""}); // stands at the left place
    EXPECT_EQ(names(tick()), list({"Chillwind Yeti", "Frostbolt", "Chillwind Yeti"}));
    setReads({"", "", "Fireball"});
    EXPECT_EQ(names(tick()), list({"Chillwind Yeti", "Fireball", "Chillwind Yeti"}))
        << "a single line at 0.6 is the middle offer";
    AppLanguage::setPreference(AppLanguage::zh);
    setReads({"", "Frostbolt", ""});
    const OverlaySnapshot relabelled = tick();
    EXPECT_EQ(relabelled.cards[0].name, QStringLiteral("Chillwind Yeti")) << "as it was read";
    EXPECT_EQ(relabelled.cards[0].slotLabel, QStringLiteral("左")) << "captions are of the moment";
}

TEST_F(DraftServiceTest, MarksCachedTilesAgainstTheirPresentNeighbours) {
    writeLog(cardPickLog);
    setReads({"Fireball", "Frostbolt", ""});
    EXPECT_EQ(tick().cards[0].metrics[0].highlight, MetricHighlight::high);
    setReads({"Fireball", "", ""});
    EXPECT_EQ(tick().cards[1].metrics[0].highlight, MetricHighlight::low) << "from the cache, marked anew";
    sample.write(QStringLiteral("all_classes_LAST_7_DAYS.json"),
                 R"({"cards": [{"card_id": "FIREBALL", "name_en": "Fireball", "deck_win_rate": 40}]})");
    sample.reload();
    const OverlaySnapshot reloaded = tick();
    EXPECT_EQ(reloaded.cards[0].metrics[0], (MetricValue{MetricKind::deckWinRate, 40, MetricHighlight::low}))
        << "a reload shows in the next tick";
    EXPECT_EQ(reloaded.cards[1].metrics[0], (MetricValue{MetricKind::deckWinRate, 52, MetricHighlight::high}));
}

TEST_F(DraftServiceTest, RepublishesTheGoodSnapshotWhenNothingIsRead) {
    writeLog(cardPickLog);
    setReads({"Fireball", "Frostbolt", "Chillwind Yeti"});
    const OverlaySnapshot good = tick();
    setReads({});
    EXPECT_EQ(tick(), good);
}

TEST_F(DraftServiceTest, ForgetsExactlyWhatAChangeOfPhaseOutdates) {
    writeLog(heroPickLog);
    setReads({"Mage", "Druid", "Rogue"});
    tick();
    writeLog(cardPickLog);
    setReads({});
    EXPECT_EQ(names(tick()), list({"Unrecognized", "Unrecognized", "Unrecognized"}))
        << "hero tiles never stand in for cards";
    setReads({"Fireball", "Frostbolt", "Chillwind Yeti"});
    tick();

    writeLog(otherHeroPickLog);
    setReads({});
    EXPECT_EQ(names(tick()), list({"Unrecognized", "Unrecognized", "Unrecognized"}))
        << "going to the cards had forgotten the heroes";
    writeLog(cardPickLog);
    EXPECT_EQ(names(tick()), list({"Fireball", "Frostbolt", "Chillwind Yeti"}))
        << "the last good snapshot outlives the way there and back; only the tiles per slot were forgotten";
    setReads({"Frostbolt", "", ""});
    EXPECT_EQ(names(tick()), list({"Frostbolt", "Unrecognized", "Unrecognized"}));
}

TEST_F(DraftServiceTest, ForgetsEverythingWhenTheDraftEnds) {
    writeLog(cardPickLog);
    setReads({"Fireball", "", ""});
    EXPECT_EQ(names(tick()), list({"Fireball", "Unrecognized", "Unrecognized"}));
    writeLog(idleLog);
    tick();
    EXPECT_FALSE(service->isInDraft);
    writeLog(cardPickLog);
    setReads({});
    EXPECT_EQ(names(tick()), list({"Unrecognized", "Unrecognized", "Unrecognized"})) << "leaving the draft forgot all";
}

TEST_F(DraftServiceTest, TellsOfAMissingWindowOnlyWithoutAGoodSnapshot) {
    writeLog(cardPickLog);
    hideWindow();
    EXPECT_EQ(tick(), OverlaySnapshot::status(QStringLiteral("In Arena, but Hearthstone window not found"), true));
    showWindow();
    setReads({"Fireball", "", ""});
    const OverlaySnapshot good = tick();
    hideWindow();
    EXPECT_EQ(tick(), good);
    writeLog(otherHeroPickLog);
    EXPECT_EQ(tick(), good) << "without a window the phase of what was shown does not matter";
}

TEST_F(DraftServiceTest, TellsOfAFailedCapture) {
    writeLog(heroPickLog);
    const QString expected =
        QStringLiteral("Capture failed: grant Screen Recording in System Settings, then relaunch Pelloran");
    windowServer->failNext(WindowGone{});
    EXPECT_EQ(tick(), OverlaySnapshot::status(expected, true));
    windowServer->failNext(CaptureDenied{});
    EXPECT_EQ(tick().message, expected);
    windowServer->images[5] = QImage();
    EXPECT_EQ(tick().message, expected) << "a picture of no size is a failure too";
}

TEST_F(DraftServiceTest, StatusLeavesTheTilesAlone) {
    writeLog(cardPickLog);
    setReads({"Fireball", "", ""});
    tick();
    hideWindow();
    tick();
    showWindow();
    setReads({"", "Frostbolt", ""});
    EXPECT_EQ(names(tick()), list({"Fireball", "Frostbolt", "Unrecognized"}));
}

TEST_F(DraftServiceTest, KeepsTheTileOfAClassThatTheDataHasLost) {
    writeLog(heroPickLog);
    setReads({"Mage", "", ""});
    tick();
    sample.write(QStringLiteral("class_winrates.json"),
                 R"({"classes": [{"player_class": "DRUID", "name_zh": "德鲁伊", "name_en": "Druid"}]})");
    sample.reload();
    EXPECT_EQ(names(tick()), list({"Mage", "Unrecognized", "Unrecognized"})) << "the tile stays as it was";
}

TEST_F(DraftServiceTest, RebuildsEverythingInTheNewLanguage) {
    writeLog(cardPickLog);
    setReads({"Fireball", "", ""});
    tick();
    AppLanguage::setPreference(AppLanguage::zh);
    service->relocalizeAndRefresh();
    queue.finishNext();
    const OverlaySnapshot chinese = recorder->published.back();
    EXPECT_EQ(names(chinese), list({"火球术", "未识别", "未识别"}));
    EXPECT_EQ(chinese.title, QStringLiteral("Pelloran · 选牌"));
    EXPECT_EQ(chinese.cards[2].slotLabel, QStringLiteral("右"));

    setReads({});
    AppLanguage::setPreference(AppLanguage::en);
    service->relocalizeAndRefresh();
    queue.finishNext();
    EXPECT_EQ(names(recorder->published.back()), list({"Unrecognized", "Unrecognized", "Unrecognized"}))
        << "no tile of the other language survives";
}

TEST_F(DraftServiceTest, DropsSnapshotsWithoutADelegate) {
    writeLog(cardPickLog);
    service->tick();
    recorder.reset();
    queue.finishNext();
    recorder = std::make_shared<Recorder>();
    service->delegate = recorder;
    EXPECT_EQ(tick().phase, DraftPhase::cardPick) << "the service goes on";
}

TEST_F(DraftServiceTest, DoesNotReadTextWithoutAReader) {
    readerMissing = true;
    const testing::CollectedLog logged;
    writeLog(cardPickLog);
    EXPECT_EQ(names(tick()), list({"Unrecognized", "Unrecognized", "Unrecognized"}));
    tick();
    EXPECT_EQ(logged.lines(), list({"install the reader"})) << "told once";
    readerMissing = false;
    setReads({"Fireball", "", ""});
    EXPECT_EQ(names(tick()), list({"Fireball", "Unrecognized", "Unrecognized"})) << "used as soon as it is there";
}

TEST_F(DraftServiceTest, GoesOnWithTheStateItBeganWith) {
    writeLog(cardPickLog);
    setReads({"Fireball", "", ""});
    service->tick();
    writeLog(idleLog);
    queue.finishNext();
    EXPECT_EQ(recorder->published.back().phase, DraftPhase::cardPick);
    EXPECT_EQ(tick().phase, DraftPhase::idle);
}

TEST_F(DraftServiceTest, TicksOnceMoreForARefreshDuringATick) {
    writeLog(cardPickLog);
    service->tick();
    service->tick();
    service->tick();
    EXPECT_EQ(queue.waiting(), 1U) << "never two looks at once";
    queue.finishNext();
    EXPECT_EQ(recorder->published.size(), 1U);
    ASSERT_EQ(queue.waiting(), 1U) << "both refreshes share one more tick";
    queue.finishNext();
    EXPECT_EQ(recorder->published.size(), 2U);
    EXPECT_EQ(queue.waiting(), 0U);
}

TEST_F(DraftServiceTest, DropsTheAnswerInTheOldLanguage) {
    writeLog(cardPickLog);
    setReads({"Fireball", "", ""});
    service->tick();
    service->relocalizeAndRefresh();
    queue.finishNext();
    EXPECT_TRUE(recorder->published.empty());
    ASSERT_EQ(queue.waiting(), 1U);
    queue.finishNext();
    EXPECT_EQ(recorder->published.size(), 1U);
}

TEST_F(DraftServiceTest, DropsTheAnswerOnceStopped) {
    writeLog(cardPickLog);
    service->tick();
    service->stop();
    queue.finishNext();
    EXPECT_TRUE(recorder->published.empty());
    EXPECT_EQ(queue.waiting(), 0U);

    service->tick();
    service->stop();
    service->tick();
    ASSERT_EQ(queue.waiting(), 2U);
    queue.finishNext();
    EXPECT_TRUE(recorder->published.empty()) << "the answer to the look before the stop";
    queue.finishNext();
    EXPECT_EQ(recorder->published.size(), 1U);
}

TEST_F(DraftServiceTest, MayBeStoppedByWhoReceivesASnapshot) {
    struct Stopper final : DraftServiceDelegate {
        void draftServiceDidUpdate(const OverlaySnapshot&) override {
            ++published;
            service->stop();
        }

        DraftService* service = nullptr;
        int published = 0;
    };

    const auto stopper = std::make_shared<Stopper>();
    stopper->service = &*service;
    service->delegate = stopper;
    writeLog(cardPickLog);
    service->tick();
    service->tick(); // asks for one more, which the stop takes back
    queue.finishNext();
    EXPECT_EQ(stopper->published, 1);
    EXPECT_EQ(queue.waiting(), 0U);
}

TEST_F(DraftServiceTest, MayBeRefreshedByWhoReceivesASnapshot) {
    struct Refresher final : DraftServiceDelegate {
        void draftServiceDidUpdate(const OverlaySnapshot& snapshot) override {
            if (std::exchange(refreshes, false)) {
                service->relocalizeAndRefresh(); // forgets the last good one
            }
            titles.append(snapshot.title);
        }

        DraftService* service = nullptr;
        bool refreshes = false;
        QStringList titles;
    };

    const auto refresher = std::make_shared<Refresher>();
    refresher->service = &*service;
    service->delegate = refresher;
    writeLog(cardPickLog);
    setReads({"Fireball", "Frostbolt", "Chillwind Yeti"});
    service->tick();
    queue.finishNext();
    ASSERT_EQ(refresher->titles.size(), 1);
    hideWindow();
    refresher->refreshes = true;
    service->tick();
    queue.finishNext();
    ASSERT_EQ(refresher->titles.size(), 2);
    EXPECT_EQ(refresher->titles[1], refresher->titles[0]) << "what was published again stays as it was";
}

TEST_F(DraftServiceTest, SurvivesItsEndDuringATick) {
    writeLog(cardPickLog);
    service->tick();
    service.reset();
    queue.finishNext();
    EXPECT_TRUE(recorder->published.empty());
}

TEST_F(DraftServiceTest, TicksEveryNineTenthsOfASecondUntilStopped) {
    writeLog(idleLog);
    const QTimer* timer = service->findChild<QTimer*>();
    ASSERT_TRUE(timer);
    EXPECT_FALSE(timer->isActive()) << "starts nothing by itself";
    service->start();
    EXPECT_TRUE(timer->isActive());
    EXPECT_FALSE(timer->isSingleShot());
    EXPECT_EQ(timer->interval(), 900);
    service->start();
    EXPECT_EQ(recorder->published.size(), 2U) << "every start ticks at once";
    service->stop();
    EXPECT_FALSE(timer->isActive());
    service->start();
    EXPECT_TRUE(timer->isActive());
}

TEST_F(DraftServiceTest, TicksAtOnceAndThenAgainAndAgain) {
    config.pollInterval = 0.001;
    makeService();
    writeLog(idleLog);
    service->start();
    EXPECT_EQ(recorder->published.size(), 1U);
    EXPECT_TRUE(QTest::qWaitFor([&] { return recorder->published.size() >= 3; }));

    writeLog(cardPickLog);
    EXPECT_TRUE(QTest::qWaitFor([&] { return queue.waiting() == 1; }));
    const std::size_t before = recorder->published.size();
    int firings = 0; // of a timer as fast as the service's own
    QTimer other;
    other.callOnTimeout([&] { ++firings; });
    other.start(std::chrono::milliseconds(1));
    EXPECT_TRUE(QTest::qWaitFor([&] { return firings >= 10; }));
    EXPECT_EQ(queue.waiting(), 1U);
    EXPECT_EQ(recorder->published.size(), before);
    service->stop();
}

} // namespace
} // namespace pelloran
