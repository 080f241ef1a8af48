// Any bytes as lines of a recording, and as a log that is recorded while it grows. What is taken is within its limits
// and is written as what it was read from; what follows from what is recorded of a log does not depend on when it was
// looked at.

#include "draft/logs/LogWatcher.h"
#include "fuzz/Bytes.h"
#include "fuzz/PlainJson.h"
#include "fuzz/Require.h"
#include "recording/Bands.h"
#include "recording/Format.h"
#include "recording/LogText.h"
#include "tests/draft/logs/LogFragments.h"

#include <QList>

#include <algorithm>
#include <cstdint>

namespace {

using namespace pelloran;
using namespace pelloran::recording;
using fuzzing::Bytes;
using fuzzing::require;

bool isWithin(const BandRecord& band, const ImageRecord& image) {
    return QRect(0, 0, int(image.width.value_or(0)), int(image.height.value_or(0))).contains(band.rect());
}

void checkTick(const TickRecord& tick) {
    const ImageRecord image = tick.image.value_or(ImageRecord());
    require(image.width.value_or(0) * image.height.value_or(0) <= mostPixels || image.error);
    for (const ReadRecord& read : tick.reads.value_or(std::vector<ReadRecord>())) {
        for (const BandRecord& band : read.picture ? *read.bands : std::vector<BandRecord>()) {
            require(isWithin(band, image));
        }
        const ReadText text = toText(read);
        require(text.tokens.size() <= mostTokens);
        require(!read.tokens || text.tokens.size() == read.tokens->size());
        if (tick.snapshot) {
            (void)standsAlone(*tick.snapshot, text);
        }
    }
    if (tick.snapshot) {
        (void)withoutForeignMessage(*tick.snapshot);
    }
}

void readLine(const QByteArray& line) {
    const auto header = parseHeader(line);
    require(header || !header.error().isEmpty());
    if (header && fuzzing::survives(line)) {
        require(parseHeader(lineOf(*header)) == header);
    }
    const auto tick = parseTick(line);
    require(tick || !tick.error().isEmpty());
    if (tick) {
        checkTick(*tick);
        const QByteArray again = lineOf(*tick);
        require(again.count('\n') == 1);
        require(!fuzzing::survives(line) || parseTick(again) == tick);
    }
}

// What a line of bytes 0 to 255 means as a log: as it is, or pieces of what games write.
QByteArray logFrom(Bytes& bytes) {
    const int what = bytes.take();
    const QByteArray picks = bytes.takeBytes(std::size_t(bytes.take()));
    return what & 1 ? picks : testing::logOfFragments(picks);
}

// What somebody has who was told the changes.
struct Listener {
    void hear(const LogChange& change) {
        if (change.anew.value_or(false)) {
            lines.clear();
        }
        lines += change.lines.value_or(QStringList());
        unfinished = change.unfinished.value_or(QString());
        missing = change.missing.value_or(false);
    }

    DraftState state() const {
        const QByteArray log = (lines + QStringList{unfinished}).join(u'\n').toUtf8();
        return LogWatcher::stateOf({QStringLiteral("session"), log, log});
    }

    QStringList lines;
    QString unfinished;
    bool missing = false;
};

void followLog(Bytes& bytes) {
    const QString home = QStringLiteral("/home/someone");
    Owner owner;
    if (bytes.take() & 1) {
        owner.homes = {home};
    }
    owner.accounts = {bytes.take() & 1 ? QStringLiteral("someone") : fuzzing::nameFrom(bytes)};
    LogText text(owner);
    Listener listener;
    std::optional<QByteArray> log;
    for (int looks = 1 + bytes.take() % 8; looks > 0; --looks) {
        const int what = bytes.take();
        if (what % 16 == 15) {
            log.reset();
        } else if (what % 16 == 14) { // another log, or what is left of this one
            log = log.value_or(QByteArray()).left(bytes.take());
        } else {
            log = log.value_or(QByteArray()) + logFrom(bytes);
        }
        text.update(log);
        if (what & 32) {
            continue; // nobody asked
        }
        if (what & 64) {
            text.forget();
        }
        if (const auto change = text.takeChange()) {
            listener.hear(*change);
        }
        LogText fresh(owner);
        fresh.update(log);
        Listener told;
        told.hear(fresh.takeChange().value_or(LogChange()));
        // Who begins now is not told of earlier drafts, from which nothing follows any more.
        require(told.lines.size() <= listener.lines.size() && told.state() == listener.state());
        require(listener.unfinished == told.unfinished && listener.missing == told.missing);
    }
    require(owner.homes.isEmpty() || !listener.lines.join(u'\n').contains(home));
}

void keepParts(Bytes& bytes) {
    const QSize window(1 + int(bytes.takeNumber(2)) % 4000, 1 + int(bytes.takeNumber(2)) % 3000);
    ReadText text;
    for (int count = bytes.take() % 5; count > 0; --count) {
        const double x = bytes.take() / 256.0;
        const double y = bytes.take() / 256.0;
        text.tokens.push_back({QStringLiteral("x"), 1, x, y, bytes.take() / 512.0, bytes.take() / 1024.0});
    }
    for (const auto offers : {ReadingHints::Offers::cards, ReadingHints::Offers::heroes}) {
        const Kept kept = partsToKeep(window, offers, text);
        require(kept.bands.size() <= mostBands);
        for (const QRect& band : kept.bands) {
            require(!band.isEmpty() && QRect(QPoint(), window).contains(band));
        }
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    if (size == 0 || data[0] == '{' || data[0] == '[') {
        const QList<QByteArray> lines = bytes.rest().split('\n');
        std::ranges::for_each(lines, readLine);
        return 0;
    }
    if (bytes.take() % 4 == 0) {
        keepParts(bytes);
    } else {
        followLog(bytes);
    }
    return 0;
}
