#pragma once

#include "json/StrictJson.h"
#include "model/OverlayModel.h"
#include "platform/TextReader.h"

#include <QJsonObject>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <vector>

// The files of a recording, as docs/formats.md describes them. Recordings come from strangers: what is decoded here is
// within the limits below, or refused.
namespace pelloran::recording {

inline constexpr qint64 formatVersion = 1;

inline constexpr qint64 largestEventFile = 64LL * 1024 * 1024;
inline constexpr qint64 largestDataFile = 16LL * 1024 * 1024; // eight times what all cards of the game take
inline constexpr qsizetype largestLine = qsizetype{4} * 1024 * 1024;
inline constexpr qint64 largestPicture = 16LL * 1024 * 1024; // of its file
inline constexpr qint64 widestWindow = 16384;                // and highest; pixels
inline constexpr qint64 mostPixels = 64LL * 1024 * 1024;     // of a window
inline constexpr std::size_t mostBands = 8;
inline constexpr std::size_t mostReads = 4;      // of one look
inline constexpr std::size_t mostWindows = 1000; // in one list
inline constexpr std::size_t mostTokens = 2000;  // of one picture
inline constexpr qsizetype longestText = 1000;   // of a line on the screen
inline constexpr qsizetype mostLogText = qsizetype{16} * 1024 * 1024;
inline constexpr qint64 mostTicks = 1'000'000;
inline constexpr int mostParts = 10'000;

// "part-000007", and what is in it.
QString partName(int number);
std::optional<int> partNumber(const QString& name);
inline const QString eventFile = QStringLiteral("events.jsonl");
inline const QString cardFile = QStringLiteral("cards.json");
inline const QString classFile = QStringLiteral("classes.json");
QString pictureName(qint64 number);
bool isFileOfPart(const QString& name); // one of these

// First line of a part.
struct PartHeader {
    qint64 format = formatVersion;
    QString program; // version
    QString commit;  // may be empty
    QString qt;
    QString system;
    bool begins = false; // the program was started; else the part goes on where the one before ended
    bool strictLengths = false;

    bool operator==(const PartHeader&) const = default;
};

// What a log file has become since the line before.
struct LogChange {
    std::optional<bool> anew;    // what was there is gone
    std::optional<bool> missing; // there is none, or it cannot be read
    std::optional<QStringList> lines;
    std::optional<QString> unfinished; // the last line, while its end is not written

    bool operator==(const LogChange&) const = default;
};

struct LogsChange {
    bool session = false; // there is one
    std::optional<LogChange> loadingScreen;
    std::optional<LogChange> arena;

    bool operator==(const LogsChange&) const = default;
};

// A window that could be the game's. Of its title only this is kept.
struct WindowRecord {
    qint64 number = 0;
    bool named = false; // its title has the game's name
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const WindowRecord&) const = default;
};

struct WindowsRecord {
    std::optional<std::vector<WindowRecord>> onScreen; // absent: listing was refused
    std::optional<std::vector<WindowRecord>> all;

    bool operator==(const WindowsRecord&) const = default;
};

// What came of asking for the game's picture: its size, or why there is none.
struct ImageRecord {
    std::optional<qint64> width;
    std::optional<qint64> height;
    std::optional<QString> error; // "gone", "denied" or "failed"

    bool operator==(const ImageRecord&) const = default;
};

struct BandRecord {
    qint64 x = 0;
    qint64 y = 0;
    qint64 width = 0;
    qint64 height = 0;

    QRect rect() const { return {int(x), int(y), int(width), int(height)}; }

    bool operator==(const BandRecord&) const = default;
};

struct TokenRecord {
    QString text;
    double confidence = 0;
    double midX = 0;
    double midY = 0;
    double width = 0;
    double height = 0;
    // What was read before a known name was taken for it; absent: that.
    std::optional<QString> letters = {}; // NOLINT(readability-redundant-member-init): may be left out

    bool operator==(const TokenRecord&) const = default;
};

// One reading of a picture.
struct ReadRecord {
    std::optional<bool> same; // as the reading of the tick before, and nothing else is said
    std::optional<qint64> picture;
    std::optional<std::vector<BandRecord>> bands; // of the window, one below the other in the picture
    // The parts kept do not hold all that was read, so that reading them anew would tell something else.
    std::optional<bool> given;
    std::optional<std::vector<TokenRecord>> tokens;
    std::optional<std::vector<TokenRecord>> unsettled;
    std::optional<std::vector<double>> columns; // three

    bool operator==(const ReadRecord&) const = default;
};

// Every later line: one pass of the loop. What is absent is as it was.
struct TickRecord {
    qint64 at = 0; // milliseconds since the program was started
    std::optional<QString> language;
    std::optional<bool> forgets; // the tiles of before, as when a language was chosen, be it the same
    std::optional<LogsChange> logs;
    std::optional<WindowsRecord> windows;
    std::optional<ImageRecord> image;             // absent: no picture was asked for
    std::optional<std::vector<ReadRecord>> reads; // absent: none
    std::optional<bool> shown;                    // a snapshot was published; else it was dropped
    std::optional<QJsonObject> snapshot;          // absent with `shown`: as the one before

    bool operator==(const TickRecord&) const = default;
};

QByteArray lineOf(const PartHeader& header);
QByteArray lineOf(const TickRecord& tick);

// The error is what is wrong, as the rest of a sentence.
std::expected<PartHeader, QString> parseHeader(const QByteArray& line);
std::expected<TickRecord, QString> parseTick(const QByteArray& line);

TokenRecord toRecord(const OCRToken& token);
OCRToken toToken(const TokenRecord& record);

// What `record` says was read.
ReadText toText(const ReadRecord& record);

// The snapshot without what has nothing to do with the draft: outside one its message tells of the data files' server.
QJsonObject withoutForeignMessage(QJsonObject snapshot);

// Whether what the tick showed follows from the tick alone, whatever was seen before it. A part that begins with such a
// one can be replayed by itself. Three different lines have to be read for it: of two that are the same one is dropped,
// and its tile may be an earlier one.
bool standsAlone(const QJsonObject& snapshot, const ReadText& text);

} // namespace pelloran::recording
