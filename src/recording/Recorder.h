#pragma once

#include "draft/DraftService.h"
#include "names/NameMatching.h"
#include "platform/TextReader.h"
#include "platform/WindowServer.h"

#include <QJsonObject>
#include <QString>

#include <expected>
#include <functional>
#include <memory>

namespace pelloran {

class WinrateStore;

namespace recording {
struct DataRows;
}

// Writes down what a draft shows, so that it can be gone through again (see replay()): what comes in at the seams and
// what goes out, nothing in between. It looks on, and whatever happens to it, nobody notices: all work is done on a
// thread of its own, and when the recording cannot go on, that is logged once and the recording ends.
//
// What is kept, and what of it is taken out, is told in docs/recording.md.
class Recorder {
public:
    static constexpr qint64 usualLimit = 50'000'000; // bytes on the disk

    struct Settings {
        QString folder;
        qint64 limit = usualLimit;
        QString program; // version and commit of what records
        QString commit;
        QString windowOwnerHint;
        NameLengths nameLengths = NameLengths::limited;
        QJsonObject (*snapshotToJson)(const OverlaySnapshot&) = nullptr;
        // Bytes of a part, beside its data files, from which on it ends at the next occasion; a quarter of the limit at
        // most. 0: usual.
        qint64 partSize = 0;
    };

    // The error is a sentence. `store` must outlive the recorder.
    static std::expected<std::unique_ptr<Recorder>, QString> create(const Settings& settings,
                                                                    const WinrateStore& store);

    // Writes what has been taken until now.
    ~Recorder();

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // What gives the same as the one given, and is looked at meanwhile. The recorder must outlive it.
    std::unique_ptr<WindowServer> watched(std::unique_ptr<WindowServer> windows);
    std::unique_ptr<TextReader> watched(std::unique_ptr<TextReader> reader);

    // Waits until what was taken is written, but for the tick that is not over. For those who have no time between
    // ticks.
    void catchUp();

    // From now on; on the main thread, before it starts. The recorder must outlive it.
    void follow(const DraftService& service);

private:
    class Writer;
    class WatchedWindowServer;
    class WatchedTextReader;

    Recorder(std::unique_ptr<Writer> made, const WinrateStore& winrates);

    void tickBegins(const GameLogs& logs);
    void published(const OverlaySnapshot& snapshot);

    const std::unique_ptr<Writer> writer;
    const WinrateStore& store;
    std::shared_ptr<const Lexicon> names;   // by which new data is noticed
    std::shared_ptr<const Lexicon> classes; // likewise
    std::shared_ptr<const recording::DataRows> data;
    bool forgets = false; // the next tick does
};

} // namespace pelloran
