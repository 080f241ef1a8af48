#include "base/Log.h"
#include "recording/Format.h"
#include "recording/RecordingReader.h"
#include "tests/recording/RecordedDraft.h"
#include "tests/support/Printing.h"

#include <QDirIterator>

#include <gtest/gtest.h>

#include <mutex>
#include <random>

// What is recorded of a draft, and that going through it again gives what was shown.
namespace pelloran {
namespace {

using testing::ColorReader;
using testing::draftBegins;
using testing::heroChosen;
using testing::RecordedDraft;

QByteArray everythingIn(const QString& folder) {
    QByteArray all;
    for (QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories); files.hasNext();) {
        QFile file(files.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        all += file.readAll();
    }
    return all;
}

qsizetype picturesIn(const QString& folder) {
    qsizetype count = 0;
    for (QDirIterator files(folder, {QStringLiteral("*.png")}, QDir::Files, QDirIterator::Subdirectories);
         files.hasNext();) {
        files.next();
        ++count;
    }
    return count;
}

TEST(Recorder, RecordsWhatGivesTheSameSnapshots) {
    RecordedDraft draft;
    play(draft);
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
    EXPECT_TRUE(replayed.differences.empty());
    EXPECT_EQ(replayed.outcome->compared, 13);
    EXPECT_EQ(replayed.outcome->parts, 1);
    EXPECT_FALSE(replayed.outcome->cutOff);
    EXPECT_GT(replayed.readings, 5) << "lines are read from the pictures, not repeated";
    EXPECT_EQ(picturesIn(draft.path()), 5) << "one for every change of what was read";
}

TEST(Recorder, ShowsWhatAnotherReaderMakesOfIt) {
    RecordedDraft draft;
    play(draft);
    draft.end();

    struct Blind final : TextReader {
        ReadText read(const QImage&, const ReadingHints&) override { return {}; }

        bool scalesLinesItself() const override { return true; }

        void forget() override {}
    };

    const testing::FakeApplicationFiles noFiles{QString()};
    std::vector<recording::Difference> differences;
    const auto outcome = recording::replay(
        {.folder = draft.path(),
         .makeTextReader = []() -> std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> {
             return std::make_unique<Blind>();
         },
         .snapshotToJson = testing::snapshotToJson,
         .files = noFiles},
        [&](const recording::Difference& difference) { differences.push_back(difference); });
    ASSERT_TRUE(outcome);
    EXPECT_FALSE(outcome->isEqual());
    EXPECT_GT(outcome->readOtherwise, 0);
    const auto first = std::ranges::find(differences, recording::Difference::Kind::shown, &recording::Difference::kind);
    ASSERT_NE(first, differences.end());
    EXPECT_EQ(first->place, QStringLiteral("cards[0].deckWinRate"));
    EXPECT_EQ(first->recorded, QJsonValue(56.1));
    EXPECT_EQ(first->replayed, QJsonValue());
}

TEST(Recorder, NeedsAReaderOnlyWhereOneIsMissing) {
    RecordedDraft draft;
    play(draft);
    draft.end();
    const testing::FakeApplicationFiles noFiles{QString()};
    const auto outcome = recording::replay(
        {.folder = draft.path(),
         .makeTextReader = []() -> std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> {
             return std::unexpected(TextReader::Unavailable{QStringLiteral("install it")});
         },
         .snapshotToJson = testing::snapshotToJson,
         .files = noFiles},
        [](const recording::Difference&) {});
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error(), QStringLiteral("install it"));
}

TEST(Recorder, KeepsNothingOfTheUsers) {
    RecordedDraft draft;
    draft.readsElsewhere = true;
    draft.log("Arena.log",
              draftBegins + heroChosen + "D 1 Friend Jo#4321 is online\nD 1 Draft of Jo#4321 at /home/jo/x\n");
    draft.offer({0, 1, 2});
    draft.tick();
    draft.tick();
    const QString session = draft.home.path();
    draft.end();
    const QByteArray all = everythingIn(draft.path());
    for (const char* secret : {"Mira", "mira", "Dear", "Mail", "4321", "online", "/home/jo", "friend says"}) {
        EXPECT_FALSE(all.contains(secret)) << secret;
    }
    EXPECT_FALSE(all.contains(session.toUtf8()));
    EXPECT_TRUE(all.contains("Draft of <player> at /home/<user>/x")) << "what concerns the draft is there";
    EXPECT_TRUE(all.contains("Frostbolt"));
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
}

TEST(Recorder, RepeatsWhatWasReadElsewhere) {
    RecordedDraft draft;
    draft.readsElsewhere = true;
    play(draft);
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
    EXPECT_EQ(replayed.readings, 0);
}

TEST(Recorder, NoticesWhereANameStands) {
    RecordedDraft draft;
    draft.log("Arena.log", draftBegins + heroChosen);
    for (const std::array<int, 3> names : {std::array{0, -1, -1}, {-1, -1, 0}, {0, 1, -1}, {0, -1, 1}}) {
        draft.offer(names);
        draft.tick();
    }
    draft.end();
    EXPECT_EQ(picturesIn(draft.path()), 4);
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
}

// It may open between a tick's two looks, of which the first is what counts.
TEST(Recorder, KeepsTheListOfWindowsThatWasActedUpon) {
    RecordedDraft draft;
    draft.log("Arena.log", draftBegins + heroChosen);
    draft.offer({-1, -1, -1}); // else it would go on showing what it has
    draft.tick();
    draft.windows->onScreen->clear();
    draft.windows->all->clear();
    int listings = 0;
    draft.windows->beforeListing = [&] {
        if (++listings == 3) { // when it was chosen from all windows, and from those on the screen
            draft.offer({2, 1, 0});
        }
    };
    draft.tick();
    EXPECT_EQ(listings, 3);
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
}

TEST(Recorder, RecordsBothReadingsOfAReaderThatTakesTwo) {
    RecordedDraft draft;
    draft.readsTwice = true;
    play(draft);
    draft.end();
    const auto replayed = draft.replay([](ColorReader& reader) { reader.twice = true; });
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
}

TEST(Recorder, FollowsTheLanguage) {
    RecordedDraft draft;
    draft.log("Arena.log", draftBegins + heroChosen);
    draft.offer({0, 1, 2});
    draft.tick();
    draft.service->tick(); // under way when the language changes: what it sees is not shown
    AppLanguage::overridePreference(AppLanguage::zh);
    draft.service->relocalizeAndRefresh();
    draft.finish();
    draft.offer({-1, -1, -1});
    draft.tick();
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
    EXPECT_EQ(replayed.outcome->ticks, 4);
    EXPECT_EQ(replayed.outcome->compared, 3);
    EXPECT_TRUE(everythingIn(draft.path()).contains("冰风雪人"));
}

// A choice forgets what stood in for a name that is hidden, whether it changes anything or not.
TEST(Recorder, FollowsAChoiceOfTheSameLanguage) {
    RecordedDraft draft;
    draft.log("Arena.log", draftBegins + heroChosen);
    draft.offer({0, 1, 2});
    draft.tick();
    draft.offer({0, -1, 2});
    draft.tick();
    draft.service->relocalizeAndRefresh();
    draft.finish();
    draft.tick();
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
    EXPECT_EQ(replayed.outcome->compared, 4);
}

TEST(Recorder, BeginsAPartWithNewData) {
    RecordedDraft draft;
    draft.log("Arena.log", draftBegins + heroChosen);
    draft.offer({0, 1, 2});
    draft.tick();
    draft.store.write(QStringLiteral("all_classes_LAST_7_DAYS.json"), R"({"cards": [
        {"card_id": "FIREBALL", "name_en": "Fireball", "deck_win_rate": 11},
        {"card_id": "ODD", "name_zh": "", "deck_win_rate": 11},
        {"card_id": "FIREBALL", "name_en": "Frostbolt", "deck_win_rate": 99}]})");
    draft.store.reload();
    draft.tick();
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
    EXPECT_EQ(replayed.outcome->parts, 2);
    EXPECT_EQ(replayed.outcome->compared, 2);
}

TEST(Recorder, KeepsTheNameThatARepeatedRowBrings) {
    RecordedDraft draft;
    draft.store.write(QStringLiteral("all_classes_LAST_7_DAYS.json"), R"({"cards": [
        {"card_id": "FROSTBOLT", "deck_win_rate": 50},
        {"card_id": "FIREBALL", "name_en": "Fireball", "deck_win_rate": 11},
        {"card_id": "FROSTBOLT", "name_en": "Frostbolt", "deck_win_rate": 99}]})");
    draft.store.reload();
    draft.log("Arena.log", draftBegins + heroChosen);
    draft.offer({0, 1, -1});
    draft.tick();
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
}

// What a reader cannot make out is to be seen as it stood, not as it came in.
TEST(Recorder, KeepsThePictureOfNamesThatStayMissing) {
    for (const bool isMissing : {true, false}) {
        SCOPED_TRACE(isMissing);
        RecordedDraft draft;
        draft.log("Arena.log", draftBegins + heroChosen);
        for (int look = 1; look <= 30; ++look) {
            draft.offer({0, isMissing ? -1 : 1, 2}, QColor(look, 80, 70));
            draft.tick();
        }
        draft.end();
        EXPECT_EQ(picturesIn(draft.path()), isMissing ? 4 : 1) << "at the first, 3rd, 9th and 27th look";
        const auto replayed = draft.replay();
        ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
        EXPECT_TRUE(replayed.outcome->isEqual());
    }
}

// A year of figures is larger than many a limit; parts begin by what is added to it.
TEST(Recorder, BeginsNoPartForItsDataAlone) {
    RecordedDraft draft(400'000, 30'000);
    QByteArray rows;
    for (int card = 0; card < 400; ++card) {
        rows += R"({"card_id": "ID)" + QByteArray::number(card) + R"(", "name_en": "Any Name At All )" +
                QByteArray::number(card) + R"(", "deck_win_rate": 50.25},)";
    }
    draft.store.write(QStringLiteral("all_classes_LAST_7_DAYS.json"),
                      R"({"cards": [)" + rows + R"({"card_id": "FIREBALL", "name_en": "Fireball"}]})");
    draft.store.reload();
    draft.log("Arena.log", draftBegins + heroChosen);
    for (int look = 0; look < 20; ++look) {
        draft.offer({look % 3, (look + 1) % 3, 0});
        draft.tick();
    }
    draft.end();
    const auto parts = recording::partsOf(draft.path());
    ASSERT_TRUE(parts);
    EXPECT_LT(parts->back(), 6);
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
}

// Else every look at the same offers would begin another, with their picture.
TEST(Recorder, BeginsNoPartForWhatEachBeginsWith) {
    RecordedDraft draft(400'000, 1000);
    draft.log("Arena.log", draftBegins + heroChosen);
    draft.offer({0, 1, 2});
    for (int look = 0; look < 20; ++look) {
        draft.tick();
    }
    draft.end();
    const auto parts = recording::partsOf(draft.path());
    ASSERT_TRUE(parts);
    EXPECT_LE(parts->back(), 2);
}

TEST(Recorder, SaysNothingMoreOnceItsFolderIsGone) {
    RecordedDraft draft;
    play(draft);
    QStringList told;
    std::mutex mutex;
    setLogSink([&](const QString& message) {
        const std::scoped_lock lock(mutex);
        told.append(message);
    });
    QDir(draft.path()).removeRecursively();
    draft.log("Arena.log", "D 1 Client chooses: Any (ANY)\n"); // a line, and no picture
    draft.tick();
    draft.tick();
    draft.end();
    setLogSink({});
    ASSERT_EQ(told.size(), 1) << told.join(u'\n').toStdString();
    EXPECT_TRUE(told.first().startsWith(QStringLiteral("the recording ends here: somebody has removed")))
        << told.first().toStdString();
    EXPECT_FALSE(QFileInfo::exists(draft.path()));
}

TEST(Recorder, GoesOnWhereAnEarlierRunEnded) {
    RecordedDraft draft;
    play(draft);
    draft.begin();
    play(draft);
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
    EXPECT_TRUE(replayed.outcome->isEqual());
}

// Whatever is offered in which order: also where the oldest parts are gone, what is left gives the same.
TEST(Recorder, CanBeReplayedFromEveryPartOn) {
    RecordedDraft draft(400'000, 10'000);
    std::mt19937 random(3);
    const auto any = [&random] { return std::uniform_int_distribution<int>(-1, 2)(random); };
    draft.log("Arena.log", draftBegins + heroChosen);
    for (int tick = 0; tick < 600; ++tick) {
        draft.offer({any(), any(), any()});
        if (tick % 50 == 49) {
            draft.log("Arena.log", draftBegins + heroChosen);
        }
        draft.tick();
        draft.tick();
    }
    draft.end();
    auto parts = recording::partsOf(draft.path());
    ASSERT_TRUE(parts);
    ASSERT_GT(parts->size(), 3U);
    EXPECT_GT(parts->front(), 1) << "the oldest are gone";
    while (!parts->empty()) {
        const auto replayed = draft.replay();
        ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
        EXPECT_TRUE(replayed.outcome->isEqual()) << "from part " << parts->front();
        EXPECT_GT(replayed.outcome->compared, 0);
        ASSERT_TRUE(QDir(draft.path() + u'/' + recording::partName(parts->front())).removeRecursively());
        parts->erase(parts->begin());
    }
}

TEST(Recorder, CanBeReplayedToWhereItWasCutOff) {
    RecordedDraft draft;
    play(draft);
    draft.end();
    const QString path = draft.path() + QStringLiteral("/part-000001/events.jsonl");
    QFile events(path);
    ASSERT_TRUE(events.open(QIODevice::ReadOnly));
    const QByteArray whole = events.readAll();
    events.close();
    qint64 most = 0;
    for (qsizetype size = whole.indexOf('\n') + 1; size < whole.size(); size += 97) {
        ASSERT_TRUE(QFile::resize(path, whole.size() < size ? whole.size() : size));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(whole.first(size));
        file.close();
        const auto replayed = draft.replay();
        ASSERT_TRUE(replayed.outcome) << size << ": " << replayed.outcome.error().toStdString();
        EXPECT_TRUE(replayed.outcome->isEqual());
        EXPECT_EQ(replayed.outcome->cutOff, !whole.first(size).endsWith('\n'));
        EXPECT_GE(replayed.outcome->ticks, most);
        most = replayed.outcome->ticks;
    }
    EXPECT_GT(most, 10);
}

// Killed as it began to write: what was there before is not lost with it, nor what comes after.
TEST(Recorder, CanBeReplayedAroundAPartWithoutABeginning) {
    for (const char* written : {"", "{\"format\":1,\"prog"}) {
        SCOPED_TRACE(written);
        RecordedDraft draft;
        play(draft);
        draft.begin();
        draft.tick();
        draft.end();
        draft.begin();
        play(draft);
        draft.end();
        const QString path = draft.path() + QStringLiteral("/part-000002/events.jsonl");
        ASSERT_TRUE(QFile::remove(path));
        QFile torn(path);
        ASSERT_TRUE(torn.open(QIODevice::WriteOnly));
        torn.write(written);
        torn.close();
        const auto replayed = draft.replay();
        ASSERT_TRUE(replayed.outcome) << replayed.outcome.error().toStdString();
        EXPECT_TRUE(replayed.outcome->isEqual());
        EXPECT_EQ(replayed.outcome->parts, 2);
        EXPECT_TRUE(replayed.outcome->cutOff);
        EXPECT_GT(replayed.outcome->compared, 20);
    }
}

TEST(Recorder, EndsWithOneLineWhereItCannotWrite) {
    QStringList told;
    std::mutex mutex;
    setLogSink([&](const QString& message) {
        const std::scoped_lock lock(mutex);
        told.append(message);
    });
    std::vector<OverlaySnapshot> shown;
    {
        RecordedDraft draft(10'000); // less than the data files and a line take up
        QObject::connect(draft.service.get(), &DraftService::published,
                         [&shown](const OverlaySnapshot& snapshot) { shown.push_back(snapshot); });
        draft.log("Arena.log", draftBegins + heroChosen);
        for (int i = 0; i < 50; ++i) {
            draft.offer({i % 3, (i + 1) % 3, i % 2});
            draft.tick();
        }
        draft.end();
    }
    setLogSink({});
    EXPECT_EQ(shown.size(), 50U) << "nobody notices";
    EXPECT_EQ(told.filter(QStringLiteral("the recording ends here")).size(), 1);
    EXPECT_EQ(told.size(), 1) << told.join(u'\n').toStdString();
}

TEST(Recorder, WaitsForHoursInNoRoom) {
    RecordedDraft draft;
    for (int i = 0; i < 1000; ++i) {
        draft.tick();
    }
    draft.end();
    const auto replayed = draft.replay();
    ASSERT_TRUE(replayed.outcome);
    EXPECT_EQ(replayed.outcome->ticks, 1);
}

} // namespace
} // namespace pelloran
