#include "recording/TickWriter.h"

#include "names/Lexicon.h"
#include "recognition/WindowCapture.h"

#include <QBuffer>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace pelloran::recording {

namespace {

// Of a line that is no reading of a name: whatever it is, it is nothing of the draft's.
constexpr double leastResemblance = 0.75;

// As fractions of the window's width and height: less than half a place, more than what one line's box trembles.
constexpr double sameSpot = 0.02;

bool isNear(double one, double other) {
    return std::abs(one - other) <= sameSpot;
}

// Where a line stands tells whose place it is.
bool isAlike(const ReadText& one, const ReadText& other) {
    const auto isSameLine = [](const OCRToken& a, const OCRToken& b) {
        return a.text == b.text && isNear(a.midX, b.midX) && isNear(a.midY, b.midY);
    };
    return one.columns.has_value() == other.columns.has_value() &&
           (!one.columns || std::ranges::equal(*one.columns, *other.columns, isNear)) &&
           std::ranges::equal(one.tokens, other.tokens, isSameLine);
}

template <typename Rows, typename File>
QByteArray encoded(const std::vector<Rows>& rows, std::vector<Rows> File::* member) {
    File file;
    file.*member = rows;
    return file.encode();
}

QByteArray pngOf(const QImage& picture) {
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    return picture.save(&buffer, "PNG") ? png : QByteArray();
}

bool isShort(const OCRToken& token) {
    return token.text.size() <= longestText && token.letters.size() <= longestText;
}

// A card may be called as the account is; else what is nobody's business stands in the game's window too.
TokenRecord recordOf(OCRToken token, const Reading& reading, const Owner& owner) {
    for (QString* text : {&token.text, &token.letters}) {
        if (!reading.hints.names || reading.hints.names->resemblance(*text) < leastResemblance) {
            *text = redacted(*text, owner);
        }
    }
    return toRecord(token);
}

// Lines that a name was looked for in. Where the picture is not kept with them, only those that look like one: the
// rules may take others for a card, and going through it then shows another, but those may be anybody's words.
std::vector<TokenRecord> recordsOf(const std::vector<OCRToken>& tokens, const Reading& reading, const Owner& owner) {
    std::vector<TokenRecord> records;
    for (const OCRToken& token : tokens) {
        const bool isLookedAt = reading.hints.band.contains(QPointF(token.midX, token.midY));
        const bool isName = reading.kept.isAll || !reading.hints.names ||
                            reading.hints.names->resemblance(token.text) >= leastResemblance;
        if (isLookedAt && isName && isShort(token)) {
            records.push_back(recordOf(token, reading, owner));
        }
    }
    return records;
}

// Those within the picture that is kept.
std::vector<TokenRecord> unsettledOf(const Reading& reading, const Owner& owner) {
    std::vector<TokenRecord> records;
    for (const OCRToken& token : reading.text.unsettled) {
        const QPoint middle(int(token.midX * reading.window.width()), int(token.midY * reading.window.height()));
        if (isShort(token) &&
            std::ranges::any_of(reading.kept.bands, [middle](const QRect& band) { return band.contains(middle); })) {
            records.push_back(recordOf(token, reading, owner));
        }
    }
    return records;
}

} // namespace

TickWriter::TickWriter(RecordingFolder to, Settings how)
    : folder(std::move(to))
    , settings(std::move(how))
    , loadingScreen(settings.owner)
    , arena(settings.owner) {}

FileTree::Done TickWriter::begin(TickBegin next) {
    auto done = end();
    tick.emplace();
    tick->begin = std::move(next);
    return done;
}

void TickWriter::list(const Listing& listing) {
    if (!tick) {
        return;
    }
    if (!tick->windows) {
        tick->windows.emplace();
    }
    // The first is what the window is chosen from; a second one only looks whether windows can be listed.
    const bool isNew = tick->listings.insert(listing.listing).second;
    if (isNew && listing.windows) {
        auto& list = listing.listing == WindowListing::onScreen ? tick->windows->onScreen : tick->windows->all;
        list = candidates(listing);
    }
}

void TickWriter::capture(ImageRecord image) {
    if (tick) {
        tick->image = std::move(image);
    }
}

void TickWriter::read(Reading reading) {
    if (tick && tick->readings.size() < mostReads) {
        tick->readings.push_back(std::move(reading));
    }
}

FileTree::Done TickWriter::show(Shown shown) {
    if (!tick) {
        return {};
    }
    shown.snapshot = withoutForeignMessage(std::move(shown.snapshot));
    tick->shown = std::move(shown);
    return end();
}

FileTree::Done TickWriter::end() {
    if (!tick) {
        return {};
    }
    const auto session = tick->begin.logs.sessionDir.has_value();
    loadingScreen.update(session ? tick->begin.logs.loadingScreen : std::nullopt);
    arena.update(session ? tick->begin.logs.arena : std::nullopt);
    tick->begin.logs = {}; // may be long
    const bool isFirstOfPart = needsPart();
    if (isFirstOfPart) {
        if (auto done = beginPart(); !done) {
            return done;
        }
    }
    TickRecord record;
    record.at = tick->begin.at;
    if (told.language != tick->begin.language) {
        record.language = told.language = tick->begin.language;
    }
    if (tick->begin.forgets) {
        record.forgets = true;
    }
    record.logs = takeLogsChange();
    if (record.logs || told.session != session) {
        told.session = session;
        record.logs = record.logs.value_or(LogsChange());
        record.logs->session = session;
    }
    if (tick->windows && told.windows != tick->windows) {
        record.windows = told.windows = tick->windows;
    }
    record.image = tick->image;
    for (std::size_t index = 0; index < tick->readings.size(); ++index) {
        auto read = takeReading(index, tick->readings[index]);
        if (!read) {
            return std::unexpected(read.error());
        }
        if (!record.reads) {
            record.reads.emplace();
        }
        record.reads->push_back(*std::move(read));
    }
    const bool isShown = tick->shown && tick->shown->follows;
    if (isShown) {
        record.shown = true;
        if (told.snapshot != tick->shown->snapshot) {
            record.snapshot = told.snapshot = tick->shown->snapshot;
        }
    }
    const bool looked = tick->windows || record.image || record.reads;
    tick.reset();
    // Nothing comes of a tick that found nothing to look at and everything as it was: a program may wait for hours.
    if (!looked && !record.language && !record.forgets && !record.logs && !record.snapshot) {
        return {};
    }
    auto done = folder.addLine(lineOf(record));
    if (done && isFirstOfPart) {
        folder.partHasBegun();
    }
    return done;
}

bool TickWriter::needsPart() const {
    const qint64 growth = folder.growth();
    if (isFirst || data != tick->begin.data || growth > std::min(folder.limit() / 4, largestEventFile / 4)) {
        return true;
    }
    return growth > settings.partSize && tick->shown &&
           standsAlone(tick->shown->snapshot, tick->readings.empty() ? ReadText() : tick->readings.front().text);
}

FileTree::Done TickWriter::beginPart() {
    data = tick->begin.data;
    const DataRows none;
    const DataRows& rows = data ? *data : none;
    PartHeader header = settings.header;
    header.begins = std::exchange(isFirst, false);
    told = {};
    loadingScreen.forget();
    arena.forget();
    pictures = 0;
    for (Written& written : writtenReads) {
        written.inThisPart = false;
    }
    const QByteArray cards = encoded(rows.cards, &WinrateFile::cards);
    const QByteArray classes = encoded(rows.classes, &ClassWinrateFile::classes);
    if (std::max(cards.size(), classes.size()) > largestDataFile) {
        return std::unexpected(FileTree::Error{QStringLiteral("the data files are too large for it")});
    }
    return folder.beginPart(lineOf(header), cards, classes);
}

std::optional<LogsChange> TickWriter::takeLogsChange() {
    LogsChange change;
    change.loadingScreen = loadingScreen.takeChange();
    change.arena = arena.takeChange();
    return change.loadingScreen || change.arena ? std::optional(change) : std::nullopt;
}

// Asked of those who choose the game's window, so that all are kept that they could choose, and no other.
std::vector<WindowRecord> TickWriter::candidates(const Listing& listing) const {
    std::vector<WindowRecord> records;
    for (const WindowDescription& description : *listing.windows) {
        const auto windows = WindowCapture::parse(std::array{description}, true);
        const bool isCandidate = WindowCapture::chooseHearthstone(windows, settings.windowOwnerHint).has_value();
        if (!isCandidate || records.size() >= mostWindows) {
            continue;
        }
        const HSWindowInfo& window = windows.front();
        HSWindowInfo untold = window;
        untold.owner.clear();
        const QRectF& bounds = window.bounds;
        if (std::isfinite(bounds.x()) && std::isfinite(bounds.y())) {
            records.push_back({.number = window.windowId,
                               .named = WindowCapture::chooseHearthstone(std::array{untold}, QString()).has_value(),
                               .x = bounds.x(),
                               .y = bounds.y(),
                               .width = bounds.width(),
                               .height = bounds.height()});
        }
    }
    return records;
}

// The same lines are not kept again, however the light on them has changed: what the reader made of them stands. Where
// names are missing, the first picture may show them on their way in, so they are kept again after some looks.
std::expected<ReadRecord, FileTree::Error> TickWriter::takeReading(std::size_t index, Reading& reading) {
    if (index > 0) { // of an enlarged copy, whose places are not the window's
        reading.kept = {};
        reading.pieces.clear();
    }
    if (index < writtenReads.size()) {
        Written& last = writtenReads[index];
        if (last.window == reading.window && last.offers == reading.hints.offers && isAlike(last.text, reading.text)) {
            const bool isDue = ++last.looks.count == last.looks.next;
            if (isDue && reading.text.tokens.size() < 3 && !reading.pieces.empty()) {
                return takeNew(last, reading, {last.looks.count, last.looks.count * 3});
            }
            if (last.inThisPart) {
                ReadRecord record;
                record.same = true;
                return record;
            }
            if (auto done = writePicture(last); !done) {
                return std::unexpected(done.error());
            }
            return last.record;
        }
    } else {
        writtenReads.resize(index + 1);
    }
    return takeNew(writtenReads[index], reading, {});
}

std::expected<ReadRecord, FileTree::Error> TickWriter::takeNew(Written& written, const Reading& reading, Looks looks) {
    written = {.window = reading.window,
               .offers = reading.hints.offers,
               .text = reading.text,
               .record = {},
               .png = {},
               .looks = looks};
    if (!reading.pieces.empty()) {
        written.png = pngOf(stacked(reading.pieces));
    }
    ReadRecord& record = written.record;
    record.tokens = recordsOf(reading.text.tokens, reading, settings.owner);
    if (auto unsettled = unsettledOf(reading, settings.owner); !unsettled.empty()) {
        record.unsettled = std::move(unsettled);
    }
    if (reading.text.columns) {
        record.columns.emplace(reading.text.columns->begin(), reading.text.columns->end());
    }
    if (!reading.kept.isAll || written.png.isEmpty()) {
        record.given = true;
    }
    if (!written.png.isEmpty()) {
        record.bands.emplace();
        for (const QRect& band : reading.kept.bands) {
            record.bands->push_back({band.x(), band.y(), band.width(), band.height()});
        }
    }
    if (auto done = writePicture(written); !done) {
        return std::unexpected(done.error());
    }
    return written.record;
}

FileTree::Done TickWriter::writePicture(Written& written) {
    written.inThisPart = true;
    if (written.png.isEmpty()) {
        return {};
    }
    written.record.picture = pictures++;
    return folder.addPicture(*written.record.picture, written.png);
}

} // namespace pelloran::recording
