#include "recording/Replay.h"

#include "base/SerialQueue.h"
#include "data/DataErrorText.h"
#include "data/WinrateStore.h"
#include "draft/DraftService.h"
#include "localisation/AppLanguage.h"
#include "recording/Bands.h"
#include "recording/RecordingReader.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran::recording {

namespace {

using Done = std::expected<void, QString>;

// Work is done where it is asked for: whatever happens in a tick has happened when it returns.
class ImmediateQueue final : public SerialQueue {
public:
    void submit(std::function<void()> work, QObject*, std::function<void()> done) override {
        work();
        done();
    }
};

// What there is to see at one tick.
struct Scene {
    WindowsRecord windows;
    std::optional<ImageRecord> image;
    QImage picture;                // of the window, where it was taken
    std::vector<ReadRecord> reads; // none of them "same"
};

class RecordedWindowServer final : public WindowServer {
public:
    explicit RecordedWindowServer(const Scene& shown)
        : scene(shown) {}

    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) override {
        const auto& list = listing == WindowListing::onScreen ? scene.windows.onScreen : scene.windows.all;
        if (!list) {
            return std::nullopt;
        }
        const QString game = u"Hearthstone"_s;
        std::vector<WindowDescription> windows;
        for (const WindowRecord& window : *list) {
            windows.push_back({.number = window.number,
                               .ownerName = game,
                               .name = window.named ? game : QString(),
                               .layer = 0,
                               .bounds = WindowBounds{window.x, window.y, window.width, window.height}});
        }
        return windows;
    }

    std::expected<QImage, WindowImageError> image(std::uint32_t) override {
        if (!scene.image || scene.image->error == u"gone") {
            return std::unexpected(WindowGone());
        }
        if (scene.image->error == u"denied") {
            return std::unexpected(CaptureDenied());
        }
        if (scene.image->error) {
            return std::unexpected(WindowServerFailed{"as it was recorded", 0});
        }
        return scene.picture;
    }

    CapturePermission permission() const override { return CapturePermission::granted; }

private:
    const Scene& scene;
};

// Reads the pictures that are there, and repeats what was read where they are not.
class RecordedTextReader final : public TextReader {
public:
    // What it has read in this tick, and why it could not.
    struct Diary {
        std::vector<ReadText> texts;
        QString problem;
    };

    RecordedTextReader(const Scene& shown, ScreenReader::MakeTextReader make, Diary& own)
        : scene(shown)
        , makeReader(std::move(make))
        , diary(own) {}

    ReadText read(const QImage& image, const ReadingHints& hints) override {
        const std::size_t index = diary.texts.size();
        diary.texts.push_back(index < scene.reads.size() ? textOf(scene.reads[index], image, hints) : ReadText());
        return diary.texts.back();
    }

    bool scalesLinesItself() const override { return scene.reads.size() < 2; }

    void forget() override {
        if (reader) {
            reader->forget();
        }
    }

private:
    ReadText textOf(const ReadRecord& record, const QImage& image, const ReadingHints& hints) {
        if (record.given.value_or(false)) {
            return toText(record);
        }
        if (!reader) {
            auto made = makeReader();
            if (!made) {
                diary.problem = made.error().reason;
                return {};
            }
            reader = *std::move(made);
        }
        return reader->read(image, hints);
    }

    const Scene& scene;
    const ScreenReader::MakeTextReader makeReader;
    Diary& diary;
    std::unique_ptr<TextReader> reader;
};

// A log file that is written as the game did.
class LogReplica {
public:
    LogReplica(QString folder, const QString& fileName)
        : directory(std::move(folder))
        , file(directory + u'/' + fileName) {}

    Done apply(const LogChange& change) {
        if (change.anew.value_or(false)) {
            complete = 0;
        }
        if (change.missing.value_or(false)) {
            file.remove();
            complete = 0;
            return {};
        }
        const QByteArray lines =
            change.lines && !change.lines->isEmpty() ? (change.lines->join(u'\n') + u'\n').toUtf8() : QByteArray();
        const QByteArray rest = change.unfinished.value_or(QString()).toUtf8();
        if (complete + lines.size() + rest.size() > mostLogText) {
            return std::unexpected(u"the recording has logs of more than %1 bytes"_s.arg(mostLogText));
        }
        const bool written = QDir().mkpath(directory) && file.open(QIODevice::ReadWrite) && file.resize(complete) &&
                             file.seek(complete) && file.write(lines + rest) == lines.size() + rest.size();
        file.close();
        if (!written || file.error() != QFileDevice::NoError) {
            return std::unexpected(u"cannot write %1: %2"_s.arg(file.fileName(), file.errorString()));
        }
        complete += lines.size();
        return {};
    }

private:
    QString directory;
    QFile file;
    qint64 complete = 0; // bytes of whole lines
};

// How a value looks after it has been written and read: 57 and 57.0 are one number then.
QJsonObject asWritten(const QJsonObject& object) {
    return QJsonDocument::fromJson(QJsonDocument(object).toJson(QJsonDocument::Compact)).object();
}

void compare(const QJsonValue& recorded, const QJsonValue& replayed, const QString& place, auto&& tell) {
    if (recorded == replayed) {
        return;
    }
    if (recorded.isObject() && replayed.isObject()) {
        const QJsonObject one = recorded.toObject();
        const QJsonObject other = replayed.toObject();
        QStringList keys = one.keys() + other.keys();
        keys.sort();
        keys.removeDuplicates();
        for (const QString& key : keys) {
            compare(one.value(key), other.value(key), place.isEmpty() ? key : place + u'.' + key, tell);
        }
    } else if (recorded.isArray() && replayed.isArray() && recorded.toArray().size() == replayed.toArray().size()) {
        for (qsizetype i = 0; i < recorded.toArray().size(); ++i) {
            compare(recorded.toArray().at(i), replayed.toArray().at(i), place + u"[%1]"_s.arg(i), tell);
        }
    } else {
        tell(place, recorded, replayed);
    }
}

QJsonArray textsOf(const ReadText& text) {
    QJsonArray texts;
    for (const OCRToken& token : text.tokens) {
        texts.append(token.text);
    }
    return texts;
}

class Replay {
public:
    Replay(const ReplaySettings& how, const std::function<void(const Difference&)>& tellOf)
        : settings(how)
        , tell(tellOf)
        , store(how.files) {}

    std::expected<Outcome, QString> run() {
        if (!logs.isValid()) {
            return std::unexpected(u"there is no room for temporary files: "_s + logs.errorString());
        }
        const auto parts = partsOf(settings.folder);
        if (!parts) {
            return std::unexpected(parts.error());
        }
        std::optional<int> last;
        for (const int number : *parts) {
            if (const auto done = runPart(number, last && *last + 1 == number); !done) {
                return std::unexpected(done.error());
            }
            last = number;
        }
        if (outcome.parts == 0) {
            return std::unexpected(u"%1/%2/%3 has no beginning"_s.arg(settings.folder, partName(*last), eventFile));
        }
        return outcome;
    }

private:
    // The program from its start, or as if it were.
    struct Run {
        Run(const AppConfig& config, const WinrateStore& store, SerialQueue& queue, Scene& scene,
            RecordedTextReader::Diary& diary, const ScreenReader::MakeTextReader& makeTextReader)
            : screen([&scene] { return std::make_unique<RecordedWindowServer>(scene); },
                     [&scene, &diary,
                      makeTextReader]() -> std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> {
                         return std::make_unique<RecordedTextReader>(scene, makeTextReader, diary);
                     })
            , service(config, store, queue, screen) {}

        ScreenReader screen;
        DraftService service;
    };

    Done runPart(int number, bool goesOn) {
        auto opened = PartReader::open(settings.folder, number);
        if (!opened) {
            return std::unexpected(opened.error());
        }
        if (!*opened) {
            outcome.cutOff = true;
            return {};
        }
        part = *std::move(opened);
        partNumber = number;
        ++outcome.parts;
        if (const auto loaded = load(); !loaded) {
            return loaded;
        }
        lastReads.clear();
        picture.reset();
        snapshot.reset();
        if (part->header().begins || !goesOn || !program) {
            startAnew();
        }
        while (true) {
            auto tick = part->next();
            if (!tick) {
                return std::unexpected(tick.error());
            }
            if (!*tick) {
                break;
            }
            if (++outcome.ticks > mostTicks) {
                return std::unexpected(u"the recording has more than %1 ticks"_s.arg(mostTicks));
            }
            if (const auto done = runTick(**tick); !done) {
                return done;
            }
        }
        outcome.cutOff = outcome.cutOff || part->isCutOff();
        return {};
    }

    // Only what is new: readers drop what they know when the names become others.
    Done load() {
        const std::array names{cardFile, classFile};
        for (std::size_t i = 0; i < names.size(); ++i) {
            const auto path = part->dataFile(names[i]);
            if (!path) {
                return std::unexpected(path.error());
            }
            QFile file(*path);
            if (!file.open(QIODevice::ReadOnly)) {
                return std::unexpected(u"cannot read %1: %2"_s.arg(*path, file.errorString()));
            }
            QByteArray bytes = file.readAll();
            if (bytes == data[i]) {
                continue;
            }
            if (const auto loaded = i == 0 ? store.loadCards(*path) : store.loadClasses(*path); !loaded) {
                return std::unexpected(u"%1: %2"_s.arg(*path, describe(loaded.error())));
            }
            data[i] = std::move(bytes);
        }
        return {};
    }

    void startAnew() {
        AppConfig config;
        config.logsDir = logs.path();
        config.nameLengths = part->header().strictLengths ? NameLengths::limited : NameLengths::limitedUnlessExact;
        scene = {};
        program = std::make_unique<Run>(config, store, queue, scene, diary, settings.makeTextReader);
        QObject::connect(&program->service, &DraftService::published, &program->service,
                         [this](const OverlaySnapshot& shown) {
                             published = asWritten(withoutForeignMessage(settings.snapshotToJson(shown)));
                         });
        isFirstTick = true;
        isComparable = part->header().begins;
    }

    Done runTick(const TickRecord& tick) {
        if (const auto done = applyLogs(tick); !done) {
            return done;
        }
        if (const auto done = applyScene(tick); !done) {
            return done;
        }
        diary = {};
        published.reset();
        bool languageChanges = false;
        if (tick.language) {
            AppLanguage::overridePreference(*tick.language == u"zh" ? AppLanguage::zh : AppLanguage::en);
            // A part tells it anew, and then it is the same.
            languageChanges = !isFirstTick && language != tick.language;
            language = tick.language;
        }
        isFirstTick = false;
        if (languageChanges || tick.forgets.value_or(false)) {
            program->service.relocalizeAndRefresh();
        } else {
            program->service.tick();
        }
        if (!diary.problem.isEmpty()) {
            return std::unexpected(diary.problem);
        }
        compareTick(tick);
        return {};
    }

    Done applyLogs(const TickRecord& tick) {
        if (!tick.logs) {
            return {};
        }
        if (tick.logs->session && !QDir().mkpath(session)) {
            return std::unexpected(u"cannot write %1"_s.arg(session));
        }
        for (auto [change, replica] :
             {std::pair(&tick.logs->loadingScreen, &loadingScreen), std::pair(&tick.logs->arena, &arena)}) {
            if (const auto done = *change ? replica->apply(**change) : Done(); !done) {
                return done;
            }
        }
        if (!tick.logs->session) {
            QDir(session).removeRecursively();
        }
        return {};
    }

    Done applyScene(const TickRecord& tick) {
        if (tick.windows) {
            scene.windows = *tick.windows;
        }
        scene.image = tick.image;
        scene.reads.clear();
        for (const ReadRecord& read : tick.reads.value_or(std::vector<ReadRecord>())) {
            const std::size_t index = scene.reads.size();
            if (!read.same.value_or(false)) {
                lastReads.resize(std::max(lastReads.size(), index + 1));
                lastReads[index] = read;
            } else if (index >= lastReads.size() || !lastReads[index]) {
                return std::unexpected(
                    u"line %1 of part %2 repeats a reading that is not there"_s.arg(part->line()).arg(partNumber));
            }
            scene.reads.push_back(*lastReads[index]);
        }
        return applyPicture();
    }

    // Made anew only when it is another one: most ticks look at what the one before looked at.
    Done applyPicture() {
        if (!scene.image || !scene.image->width || !scene.image->height) {
            return {};
        }
        const Picture wanted{QSize(int(*scene.image->width), int(*scene.image->height)),
                             scene.reads.empty() ? std::nullopt : scene.reads.front().picture};
        if (picture == wanted) {
            return {};
        }
        QImage bands;
        std::vector<QRect> places;
        if (wanted.number) {
            auto loaded = part->picture(*wanted.number, *scene.reads.front().bands);
            if (!loaded) {
                return std::unexpected(loaded.error());
            }
            bands = *std::move(loaded);
            std::ranges::transform(*scene.reads.front().bands, std::back_inserter(places), &BandRecord::rect);
        }
        scene.picture = unstacked(bands, places, wanted.window);
        if (scene.picture.isNull()) {
            return std::unexpected(u"there is no room for a picture of the window"_s);
        }
        picture = wanted;
        return {};
    }

    void compareTick(const TickRecord& tick) {
        for (std::size_t i = 0; i < std::min(diary.texts.size(), scene.reads.size()); ++i) {
            const QJsonArray recorded = textsOf(toText(scene.reads[i]));
            const QJsonArray replayed = textsOf(diary.texts[i]);
            if (recorded != replayed) {
                ++outcome.readOtherwise;
                tell({Difference::Kind::read, partNumber, part->line(), {}, recorded, replayed});
            }
        }
        if (tick.snapshot) {
            snapshot = tick.snapshot;
        }
        if (!tick.shown.value_or(false) || !snapshot) {
            return;
        }
        isComparable =
            isComparable || standsAlone(*snapshot, scene.reads.empty() ? ReadText() : toText(scene.reads.front()));
        if (!isComparable) {
            return;
        }
        ++outcome.compared;
        bool differs = false;
        compare(*snapshot, published ? QJsonValue(*published) : QJsonValue(), {},
                [&](const QString& place, const QJsonValue& recorded, const QJsonValue& replayed) {
                    differs = true;
                    tell({Difference::Kind::shown, partNumber, part->line(), place, recorded, replayed});
                });
        outcome.different += differs ? 1 : 0;
    }

    struct Picture {
        QSize window;
        std::optional<qint64> number;

        bool operator==(const Picture&) const = default;
    };

    const ReplaySettings& settings;
    const std::function<void(const Difference&)>& tell;
    const QTemporaryDir logs;
    const QString session = logs.path() + u"/Hearthstone_replay"_s;
    LogReplica loadingScreen{session, u"LoadingScreen.log"_s};
    LogReplica arena{session, u"Arena.log"_s};
    ImmediateQueue queue;
    WinrateStore store;
    std::array<QByteArray, 2> data; // as loaded
    Scene scene;
    RecordedTextReader::Diary diary;
    std::unique_ptr<Run> program;
    std::unique_ptr<PartReader> part;
    int partNumber = 0;
    std::vector<std::optional<ReadRecord>> lastReads;
    std::optional<Picture> picture;      // that `scene` has
    std::optional<QJsonObject> snapshot; // recorded last
    std::optional<QJsonObject> published;
    std::optional<QString> language;
    bool isFirstTick = true;
    bool isComparable = true;
    Outcome outcome;
};

} // namespace

std::expected<Outcome, QString> replay(const ReplaySettings& settings,
                                       const std::function<void(const Difference&)>& tell) {
    return Replay(settings, tell).run();
}

} // namespace pelloran::recording
