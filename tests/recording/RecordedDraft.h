#pragma once

#include "localisation/AppLanguage.h"
#include "recording/Recorder.h"
#include "recording/Replay.h"
#include "tests/fakes/FakeWindowServer.h"
#include "tests/fakes/ManualQueue.h"
#include "tests/support/SampleStore.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QTemporaryDir>

#include <array>
#include <memory>
#include <vector>

namespace pelloran::testing {

inline const QByteArray draftBegins = "D 1 SetDraftMode - DRAFTING\nD 1 DraftManager.OnBegin\n";
inline const QByteArray heroChosen = "D 1 DraftManager.OnChosen(): hero=HERO_08\n";

// "Reads" a name off the colour in which its line is painted, so that it reads from pictures and nothing else.
class ColorReader final : public TextReader {
public:
    static constexpr std::array<double, 3> places{0.27, 0.42, 0.56};
    static constexpr double level = 0.39;

    ReadText read(const QImage& image, const ReadingHints& hints) override {
        ++readings;
        ReadText text;
        for (const double x : places) {
            const QColor color = image.pixelColor(int(x * image.width()), int(level * image.height()));
            for (const auto& [name, ink] : inks()) {
                if (color == ink && hints.names) {
                    text.tokens.push_back({name, 0.9F, x, level, 0.05, 0.01});
                }
            }
        }
        if (elsewhere) {
            text.tokens.push_back({QStringLiteral("Frostbolt"), 0.9F, 0.3, 0.7, 0.05, 0.01});
            text.tokens.push_back({QStringLiteral("A friend says hello"), 0.9F, 0.3, 0.6, 0.05, 0.01});
        }
        text.columns = places;
        return text;
    }

    bool scalesLinesItself() const override { return !twice; }

    void forget() override {}

    static const std::vector<std::pair<QString, QColor>>& inks() {
        static const std::vector<std::pair<QString, QColor>> table{
            {QStringLiteral("Fireball"), QColor(200, 10, 10)},
            {QStringLiteral("Frostbolt"), QColor(10, 200, 10)},
            {QStringLiteral("Chillwind Yeti"), QColor(10, 10, 200)}};
        return table;
    }

    bool elsewhere = false; // something is read where no picture is kept
    bool twice = false;     // wants a second, enlarged look
    int readings = 0;
};

inline QJsonObject snapshotToJson(const OverlaySnapshot& snapshot) {
    QJsonArray cards;
    for (const OverlayCardViewModel& tile : snapshot.cards) {
        QJsonObject card{{QStringLiteral("name"), tile.name},
                         {QStringLiteral("slot"), tile.slotLabel},
                         {QStringLiteral("recognized"), tile.recognized}};
        for (const MetricValue& metric : tile.metrics) {
            card.insert(metric.kind.rawValue(), metric.value ? QJsonValue(*metric.value) : QJsonValue());
        }
        cards.append(card);
    }
    return {{QStringLiteral("title"), snapshot.title},
            {QStringLiteral("message"), snapshot.message.value_or(QString())},
            {QStringLiteral("inDraft"), snapshot.inDraft},
            {QStringLiteral("cards"), cards}};
}

// A draft that the test plays, and what is recorded of it.
class RecordedDraft {
public:
    explicit RecordedDraft(qint64 limit = Recorder::usualLimit, qint64 partSize = 0)
        : mostBytes(limit)
        , bytesOfPart(partSize) {
        AppLanguage::overridePreference(AppLanguage::en);
        begin();
    }

    ~RecordedDraft() { AppLanguage::configure(nullptr, nullptr); }

    QString path() const { return home.path() + QStringLiteral("/recording"); }

    // As a new start of the program.
    void begin() {
        config.logsDir = home.path() + QStringLiteral("/logs");
        config.windowOwnerHint = QStringLiteral("Wine Desktop");
        config.nameLengths = NameLengths::limitedUnlessExact;
        end();
        recorder = Recorder::create({.folder = path(),
                                     .limit = mostBytes,
                                     .program = QStringLiteral("1.2.3"),
                                     .commit = QString(),
                                     .windowOwnerHint = config.windowOwnerHint,
                                     .nameLengths = config.nameLengths,
                                     .snapshotToJson = snapshotToJson,
                                     .partSize = bytesOfPart},
                                    store.store)
                       .value();
        screen = std::make_unique<ScreenReader>(
            [this] {
                auto made = std::make_unique<FakeWindowServer>();
                windows = made.get();
                showWindow();
                return recorder->watched(std::move(made));
            },
            [this]() -> std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> {
                auto made = std::make_unique<ColorReader>();
                reader = made.get();
                reader->elsewhere = readsElsewhere;
                reader->twice = readsTwice;
                return recorder->watched(std::move(made));
            });
        service = std::make_unique<DraftService>(config, store.store, queue, *screen);
        recorder->follow(*service);
    }

    void log(const char* file, const QByteArray& text) const {
        const QString folder = config.logsDir + QStringLiteral("/Hearthstone_1");
        ASSERT_TRUE(QDir().mkpath(folder));
        QFile log(folder + u'/' + QString::fromLatin1(file));
        ASSERT_TRUE(log.open(QIODevice::Append));
        log.write(text);
    }

    // Names by their number among the inks; -1: none.
    void offer(std::array<int, 3> names, const QColor& ground = QColor(90, 80, 70)) {
        QImage image(800, 600, QImage::Format_RGB32);
        image.fill(ground);
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (names[i] >= 0) {
                const QColor ink = ColorReader::inks()[std::size_t(names[i])].second;
                const int middle = int(ColorReader::places[i] * image.width());
                for (int x = middle - 10; x < middle + 10; ++x) {
                    for (int y = 228; y < 240; ++y) {
                        image.setPixelColor(x, y, ink);
                    }
                }
            }
        }
        picture = image;
        showWindow();
    }

    void tick() {
        service->tick();
        finish();
    }

    void finish() {
        while (queue.waiting() > 0) {
            queue.finishNext();
        }
        recorder->catchUp(); // real ticks are nearly a second apart
    }

    // What was recorded is on the disk from now on; no more is.
    void end() {
        service.reset();
        screen.reset();
        windows = nullptr;
        reader = nullptr;
        recorder.reset();
    }

    struct Replayed {
        std::expected<recording::Outcome, QString> outcome;
        std::vector<recording::Difference> differences;
        int readings = 0;
    };

    // With a reader of its own, which `prepare` can change.
    Replayed replay(const std::function<void(ColorReader&)>& prepare = [](ColorReader&) {}) const {
        return replayOf(path(), prepare);
    }

    static Replayed replayOf(const QString& folder, const std::function<void(ColorReader&)>& prepare) {
        Replayed replayed;
        const FakeApplicationFiles noFiles{QString()};
        ColorReader* made = nullptr;
        int readings = 0;

        // Counts beyond the life of the reader, which ends with the replay.
        struct Counting final : TextReader {
            Counting(std::unique_ptr<ColorReader> reader, int& to)
                : inner(std::move(reader))
                , count(to) {}

            ReadText read(const QImage& image, const ReadingHints& hints) override {
                ++count;
                return inner->read(image, hints);
            }

            bool scalesLinesItself() const override { return inner->scalesLinesItself(); }

            void forget() override { inner->forget(); }

            std::unique_ptr<ColorReader> inner;
            int& count;
        };

        replayed.outcome = recording::replay(
            {.folder = folder,
             .makeTextReader = [&]() -> std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> {
                 auto reader = std::make_unique<ColorReader>();
                 made = reader.get();
                 prepare(*made);
                 return std::make_unique<Counting>(std::move(reader), readings);
             },
             .snapshotToJson = snapshotToJson,
             .files = noFiles},
            [&](const recording::Difference& difference) { replayed.differences.push_back(difference); });
        replayed.readings = readings;
        return replayed;
    }

    static constexpr const char* cards = R"({"cards": [
        {"card_id": "FIREBALL", "name_zh": "火球术", "name_en": "Fireball", "deck_win_rate": 56.1, "drawn_win_rate": 57},
        {"card_id": "FROSTBOLT", "name_zh": "寒冰箭", "name_en": "Frostbolt", "deck_win_rate": 52.25},
        {"card_id": "YETI", "name_zh": "冰风雪人", "name_en": "Chillwind Yeti", "deck_win_rate": 55}
    ]})";
    static constexpr const char* classes =
        R"({"classes": [{"player_class": "MAGE", "name_zh": "法师", "name_en": "Mage"}]})";

    const qint64 mostBytes;
    const qint64 bytesOfPart;
    QTemporaryDir home;
    SampleStore store{cards, classes};
    std::unique_ptr<Recorder> recorder;
    AppConfig config;
    ManualQueue queue;
    FakeWindowServer* windows = nullptr; // once there was a look
    ColorReader* reader = nullptr;       // likewise
    bool readsElsewhere = false;
    bool readsTwice = false;
    QImage picture;
    std::unique_ptr<ScreenReader> screen;
    std::unique_ptr<DraftService> service;

private:
    void showWindow() {
        if (!windows) {
            return;
        }
        const WindowBounds bounds{0, 0, 800, 600};
        const WindowDescription game{7, QStringLiteral("wine desktop - mira"),
                                     QStringLiteral("Hearthstone of Mira#1234"), 0, bounds};
        const WindowDescription letter{8, QStringLiteral("Mail"), QStringLiteral("Dear Mira"), 0, bounds};
        windows->onScreen = std::vector{letter, game};
        windows->all = std::vector{game, letter};
        windows->images[7] = picture;
    }
};

// From the menu to a third pick, with much that happens on the way.
inline void play(RecordedDraft& draft) {
    draft.tick();
    draft.log("LoadingScreen.log", "D 1 currMode=HUB\n");
    draft.tick();
    draft.log("LoadingScreen.log", "D 1 prevMode=HUB currMode=DRAFT\n");
    draft.log("Arena.log", draftBegins);
    draft.offer({-1, -1, -1});
    draft.tick();
    draft.log("Arena.log", heroChosen);
    draft.offer({0, 1, 2});
    draft.tick();
    draft.tick();
    draft.offer({0, -1, 2}); // a cursor over a name: what was there stays
    draft.tick();
    draft.log("Arena.log", "D 1 Client chooses: Fire");
    draft.tick();
    draft.log("Arena.log", "ball (FIREBALL)\n");
    draft.offer({2, 2, 1});
    draft.tick();
    draft.windows->failNext(WindowGone());
    draft.tick();
    draft.windows->onScreen->clear();
    draft.windows->all->clear();
    draft.tick();
    draft.offer({1, -1, 0});
    draft.tick();
    draft.tick();
    draft.log("Arena.log", "D 1 SetDraftMode - ACTIVE_DRAFT_DECK\n");
    draft.tick();
}

} // namespace pelloran::testing
