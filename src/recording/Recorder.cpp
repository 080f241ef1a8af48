#include "recording/Recorder.h"

#include "base/Log.h"
#include "data/WinrateStore.h"
#include "localisation/AppLanguage.h"
#include "recording/TickWriter.h"

#include <QElapsedTimer>
#include <QSysInfo>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <unordered_set>
#include <utility>
#include <variant>
#include <vector>

namespace pelloran {

using namespace recording;

namespace {

// What may wait to be written: half a minute of ticks. A disk that is slower is too slow for a recording.
constexpr std::size_t mostWaiting = 200;
// Logs are read anew for every tick, and may be long.
constexpr qint64 mostWaitingBytes = 256LL * 1024 * 1024;

constexpr qint64 usualPartSize = Recorder::usualLimit / 16;

// The rows of which the store's names and statistics come again, the names in their order, which decides where two
// cards are equally near.
std::shared_ptr<const DataRows> rowsOf(const WinrateStore& store) {
    auto rows = std::make_shared<DataRows>();
    std::unordered_set<QString> taken;
    const std::vector<CardName>& names = store.names();
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto card = store.byId().find(names[i].cardId);
        if (card == store.byId().end()) {
            continue;
        }
        CardStats row = card->second;
        if (!taken.insert(row.cardId).second) {
            // Another name, of a repeated row.
            row.nameZh = names[i].original;
            row.nameEn.reset();
        } else if (names[i].original != row.nameZh && names[i].original != row.nameEn) {
            // Its first row has no name: it has the figures, and this one of a repeated row the name.
            rows->cards.push_back(row);
            row.nameZh = names[i].original;
            row.nameEn.reset();
        } else if (row.nameZh && !row.nameZh->isEmpty() && row.nameEn && !row.nameEn->isEmpty()) {
            ++i; // which is the other name
        }
        rows->cards.push_back(std::move(row));
    }
    std::vector<CardStats> nameless;
    for (const auto& [id, card] : store.byId()) {
        if (!taken.contains(id)) {
            nameless.push_back(card);
        }
    }
    std::ranges::sort(nameless, {}, &CardStats::cardId);
    std::ranges::move(nameless, std::back_inserter(rows->cards));
    for (const auto& [key, row] : store.classesByKey()) {
        rows->classes.push_back(row);
    }
    return rows;
}

} // namespace

// Takes what was seen from any thread, and writes it on its own.
class Recorder::Writer {
public:
    struct ShownSnapshot {
        OverlaySnapshot snapshot;
        bool follows;
    };

    using Event = std::variant<TickBegin, Listing, ImageRecord, Reading, ShownSnapshot>;

    struct Waiting {
        Event event;
        qint64 bytes;
    };

    Writer(TickWriter ticks, QJsonObject (*toJson)(const OverlaySnapshot&))
        : tickWriter(std::move(ticks))
        , snapshotToJson(toJson)
        , thread([this] { run(); }) {
        clock.start();
    }

    ~Writer() {
        {
            const std::scoped_lock lock(mutex);
            ending = true;
        }
        wake.notify_one();
        thread.join();
    }

    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // Nothing is of use any more that would be taken.
    bool hasEnded() const { return ended; }

    qint64 milliseconds() const { return clock.elapsed(); }

    void take(Event event) {
        if (ended) {
            return;
        }
        bool tooSlow = false;
        {
            const std::scoped_lock lock(mutex);
            const qint64 bytes = bytesOf(event);
            tooSlow = !events.empty() && (events.size() >= mostWaiting || waitingBytes + bytes > mostWaitingBytes);
            if (tooSlow) {
                events.clear();
                waitingBytes = 0;
            } else {
                waitingBytes += bytes;
                events.push_back({std::move(event), bytes});
            }
        }
        if (tooSlow) {
            giveUp(QStringLiteral("the disk is too slow for it"));
        }
        wake.notify_one();
    }

    void catchUp() {
        std::unique_lock lock(mutex);
        rest.wait(lock, [this] { return events.empty() && !isWriting; });
    }

private:
    // What matters of it.
    static qint64 bytesOf(const Event& event) {
        qint64 bytes = 0;
        if (const auto* tick = std::get_if<TickBegin>(&event)) {
            bytes += tick->logs.loadingScreen.value_or(QByteArray()).size();
            bytes += tick->logs.arena.value_or(QByteArray()).size();
        } else if (const auto* reading = std::get_if<Reading>(&event)) {
            for (const QImage& piece : reading->pieces) {
                bytes += piece.sizeInBytes();
            }
        }
        return bytes;
    }

    void run() {
        std::unique_lock lock(mutex);
        while (true) {
            isWriting = false;
            rest.notify_all();
            wake.wait(lock, [this] { return ending || !events.empty(); });
            if (events.empty()) {
                lock.unlock();
                write([this] { return tickWriter.end(); });
                return;
            }
            Event event = std::move(events.front().event);
            waitingBytes -= events.front().bytes;
            events.pop_front();
            isWriting = true;
            lock.unlock();
            write([this, &event] { return std::visit([this](auto& seen) { return note(std::move(seen)); }, event); });
            event = ImageRecord(); // pictures and texts are let go of without the lock
            lock.lock();
        }
    }

    void write(const std::function<FileTree::Done()>& work) {
        if (ended) {
            return;
        }
        if (const auto done = work(); !done) {
            giveUp(done.error().description);
        }
    }

    void giveUp(const QString& why) {
        if (!ended.exchange(true)) {
            log(QStringLiteral("the recording ends here: %1").arg(why));
        }
    }

    FileTree::Done note(TickBegin tick) { return tickWriter.begin(std::move(tick)); }

    FileTree::Done note(const Listing& listing) {
        tickWriter.list(listing);
        return {};
    }

    FileTree::Done note(ImageRecord image) {
        tickWriter.capture(std::move(image));
        return {};
    }

    FileTree::Done note(Reading reading) {
        tickWriter.read(std::move(reading));
        return {};
    }

    FileTree::Done note(const ShownSnapshot& shown) {
        return tickWriter.show({snapshotToJson(shown.snapshot), shown.follows});
    }

    TickWriter tickWriter; // the thread's
    QJsonObject (*const snapshotToJson)(const OverlaySnapshot&);
    QElapsedTimer clock;
    std::atomic<bool> ended = false;
    std::mutex mutex;
    std::condition_variable wake; // there is something to do
    std::condition_variable rest; // there is nothing
    std::deque<Waiting> events;
    qint64 waitingBytes = 0;
    bool isWriting = false;
    bool ending = false;
    std::thread thread; // last: it uses the others from the beginning
};

class Recorder::WatchedWindowServer final : public WindowServer {
public:
    WatchedWindowServer(std::unique_ptr<WindowServer> windows, Writer& to)
        : inner(std::move(windows))
        , writer(to) {}

    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) override {
        auto windows = inner->describeWindows(listing);
        if (!writer.hasEnded()) {
            writer.take(Listing{listing, windows});
        }
        return windows;
    }

    std::expected<QImage, WindowImageError> image(std::uint32_t windowId) override {
        auto picture = inner->image(windowId);
        writer.take(recordOf(picture));
        return picture;
    }

    CapturePermission permission() const override { return inner->permission(); }

private:
    static ImageRecord recordOf(const std::expected<QImage, WindowImageError>& picture) {
        struct Name {
            QString operator()(const WindowGone&) const { return QStringLiteral("gone"); }

            QString operator()(const CaptureDenied&) const { return QStringLiteral("denied"); }

            QString operator()(const WindowServerLost&) const { return QStringLiteral("failed"); }

            QString operator()(const WindowServerFailed&) const { return QStringLiteral("failed"); }
        };

        if (!picture) {
            return {.width = {}, .height = {}, .error = std::visit(Name(), picture.error())};
        }
        if (picture->isNull()) { // without a size: what comes of it is the same
            return {.width = {}, .height = {}, .error = QStringLiteral("failed")};
        }
        return {.width = picture->width(), .height = picture->height(), .error = {}};
    }

    const std::unique_ptr<WindowServer> inner;
    Writer& writer;
};

class Recorder::WatchedTextReader final : public TextReader {
public:
    WatchedTextReader(std::unique_ptr<TextReader> reader, Writer& to)
        : inner(std::move(reader))
        , writer(to) {}

    ReadText read(const QImage& image, const ReadingHints& hints) override {
        ReadText text = inner->read(image, hints);
        if (!writer.hasEnded()) {
            Reading reading{image.size(), hints, text, partsToKeep(image.size(), hints.offers, text), {}};
            for (const QRect& band : reading.kept.bands) {
                reading.pieces.push_back(image.copy(band));
            }
            writer.take(std::move(reading));
        }
        return text;
    }

    bool scalesLinesItself() const override { return inner->scalesLinesItself(); }

    void forget() override { inner->forget(); }

private:
    const std::unique_ptr<TextReader> inner;
    Writer& writer;
};

std::expected<std::unique_ptr<Recorder>, QString> Recorder::create(const Settings& settings,
                                                                   const WinrateStore& store) {
    auto folder = RecordingFolder::open(settings.folder, settings.limit);
    if (!folder) {
        return std::unexpected(folder.error().description);
    }
    TickWriter ticks(*std::move(folder),
                     {.header = {.program = settings.program,
                                 .commit = settings.commit,
                                 .qt = QString::fromLatin1(qVersion()),
                                 .system = QSysInfo::productType() + u' ' + QSysInfo::productVersion(),
                                 .begins = false,
                                 .strictLengths = settings.nameLengths == NameLengths::limited},
                      .windowOwnerHint = settings.windowOwnerHint,
                      .partSize = settings.partSize ? settings.partSize : std::min(usualPartSize, settings.limit / 8),
                      .owner = Owner::current()});
    return std::unique_ptr<Recorder>(
        new Recorder(std::make_unique<Writer>(std::move(ticks), settings.snapshotToJson), store));
}

Recorder::Recorder(std::unique_ptr<Writer> made, const WinrateStore& winrates)
    : writer(std::move(made))
    , store(winrates) {}

Recorder::~Recorder() = default;

std::unique_ptr<WindowServer> Recorder::watched(std::unique_ptr<WindowServer> windows) {
    return std::make_unique<WatchedWindowServer>(std::move(windows), *writer);
}

std::unique_ptr<TextReader> Recorder::watched(std::unique_ptr<TextReader> reader) {
    return std::make_unique<WatchedTextReader>(std::move(reader), *writer);
}

void Recorder::catchUp() {
    writer->catchUp();
}

void Recorder::follow(const DraftService& service) {
    QObject::connect(&service, &DraftService::logsRead, &service, [this](const GameLogs& logs) { tickBegins(logs); });
    QObject::connect(&service, &DraftService::tilesForgotten, &service, [this] { forgets = true; });
    QObject::connect(&service, &DraftService::published, &service,
                     [this](const OverlaySnapshot& snapshot) { published(snapshot); });
}

void Recorder::tickBegins(const GameLogs& logs) {
    if (writer->hasEnded()) {
        return;
    }
    if (!data || names != store.cardLexicon() || classes != store.classLexicon()) {
        names = store.cardLexicon();
        classes = store.classLexicon();
        data = rowsOf(store);
    }
    writer->take(TickBegin{writer->milliseconds(), AppLanguage::resolvedPreference().rawValue(),
                           std::exchange(forgets, false), logs, data});
}

void Recorder::published(const OverlaySnapshot& snapshot) {
    if (!writer->hasEnded()) {
        writer->take(Writer::ShownSnapshot{snapshot, names == store.cardLexicon() && classes == store.classLexicon()});
    }
}

} // namespace pelloran
