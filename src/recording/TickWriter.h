#pragma once

#include "data/WinrateFormats.h"
#include "draft/logs/LogWatcher.h"
#include "platform/TextReader.h"
#include "platform/WindowServer.h"
#include "recording/Bands.h"
#include "recording/Format.h"
#include "recording/LogText.h"
#include "recording/RecordingFolder.h"

#include <QJsonObject>
#include <QSize>
#include <QString>

#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace pelloran::recording {

// The rows of the data files, in an order in which they say the same.
struct DataRows {
    std::vector<CardStats> cards;
    std::vector<ClassWinrateRow> classes;
};

struct TickBegin {
    qint64 at = 0; // milliseconds since the program was started
    QString language;
    bool forgets = false; // what was shown before
    GameLogs logs;
    std::shared_ptr<const DataRows> data; // the same object as long as it is the same data
};

struct Listing {
    WindowListing listing = WindowListing::onScreen;
    std::optional<std::vector<WindowDescription>> windows;
};

struct Reading {
    QSize window;
    ReadingHints hints;
    ReadText text;
    Kept kept;
    std::vector<QImage> pieces; // of the window, as in `kept`
};

struct Shown {
    QJsonObject snapshot;
    bool follows = true; // from what the tick began with; not when the data has become another in between
};

// What makes lines and pictures of what was seen, in the order in which it was seen. Each tick is written when it is
// over, as far as it tells more than those before. On one thread.
class TickWriter {
public:
    struct Settings {
        PartHeader header;
        QString windowOwnerHint;
        qint64 partSize = 0; // beside its data files, from which on a part ends where the next can stand alone
        Owner owner;
    };

    TickWriter(RecordingFolder to, Settings how);

    FileTree::Done begin(TickBegin tick);
    void list(const Listing& listing);
    void capture(ImageRecord image);
    void read(Reading reading);
    FileTree::Done show(Shown shown);
    FileTree::Done end(); // of a tick that showed nothing, if there is one

private:
    struct Tick {
        TickBegin begin;
        std::optional<WindowsRecord> windows;
        std::set<WindowListing> listings; // that are in it
        std::optional<ImageRecord> image;
        std::vector<Reading> readings;
        std::optional<Shown> shown;
    };

    // For how many looks the same lines have stood, and when their picture is kept again if names are missing.
    struct Looks {
        int count = 1;
        int next = 3;
    };

    // A reading that was written, to be written again in the next part.
    struct Written {
        QSize window;
        ReadingHints::Offers offers = ReadingHints::Offers::cards;
        ReadText text;
        ReadRecord record;
        QByteArray png;
        bool inThisPart = false;
        Looks looks;
    };

    // What somebody knows who has read the part until now.
    struct Told {
        QString language;
        std::optional<bool> session;
        std::optional<WindowsRecord> windows;
        std::optional<QJsonObject> snapshot;
    };

    bool needsPart() const;
    FileTree::Done beginPart();
    std::optional<LogsChange> takeLogsChange();
    std::vector<WindowRecord> candidates(const Listing& listing) const;
    std::expected<ReadRecord, FileTree::Error> takeReading(std::size_t index, Reading& reading);
    std::expected<ReadRecord, FileTree::Error> takeNew(Written& written, const Reading& reading, Looks looks);
    FileTree::Done writePicture(Written& written);

    RecordingFolder folder;
    const Settings settings;
    std::optional<Tick> tick;
    LogText loadingScreen;
    LogText arena;
    std::vector<Written> writtenReads;
    Told told;
    std::shared_ptr<const DataRows> data; // of the part
    bool isFirst = true;                  // nothing is written yet
    qint64 pictures = 0;                  // in this part
};

} // namespace pelloran::recording
