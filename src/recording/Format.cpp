#include "recording/Format.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <ranges>

using namespace Qt::StringLiterals;

namespace pelloran::strict_json {

using namespace recording;

template <>
inline constexpr std::tuple fields<PartHeader>{
    Field{"format"_L1, &PartHeader::format},
    Field{"program"_L1, &PartHeader::program},
    Field{"commit"_L1, &PartHeader::commit},
    Field{"qt"_L1, &PartHeader::qt},
    Field{"system"_L1, &PartHeader::system},
    Field{"begins"_L1, &PartHeader::begins},
    Field{"strictLengths"_L1, &PartHeader::strictLengths},
};

template <>
inline constexpr std::tuple fields<LogChange>{
    Field{"anew"_L1, &LogChange::anew},
    Field{"missing"_L1, &LogChange::missing},
    Field{"lines"_L1, &LogChange::lines},
    Field{"unfinished"_L1, &LogChange::unfinished},
};

template <>
inline constexpr std::tuple fields<LogsChange>{
    Field{"session"_L1, &LogsChange::session},
    Field{"loadingScreen"_L1, &LogsChange::loadingScreen},
    Field{"arena"_L1, &LogsChange::arena},
};

template <>
inline constexpr std::tuple fields<WindowRecord>{
    Field{"number"_L1, &WindowRecord::number}, Field{"named"_L1, &WindowRecord::named},
    Field{"x"_L1, &WindowRecord::x},           Field{"y"_L1, &WindowRecord::y},
    Field{"width"_L1, &WindowRecord::width},   Field{"height"_L1, &WindowRecord::height},
};

template <>
inline constexpr std::tuple fields<WindowsRecord>{
    Field{"onScreen"_L1, &WindowsRecord::onScreen},
    Field{"all"_L1, &WindowsRecord::all},
};

template <>
inline constexpr std::tuple fields<ImageRecord>{
    Field{"width"_L1, &ImageRecord::width},
    Field{"height"_L1, &ImageRecord::height},
    Field{"error"_L1, &ImageRecord::error},
};

template <>
inline constexpr std::tuple fields<BandRecord>{
    Field{"x"_L1, &BandRecord::x},
    Field{"y"_L1, &BandRecord::y},
    Field{"width"_L1, &BandRecord::width},
    Field{"height"_L1, &BandRecord::height},
};

template <>
inline constexpr std::tuple fields<TokenRecord>{
    Field{"text"_L1, &TokenRecord::text},       Field{"confidence"_L1, &TokenRecord::confidence},
    Field{"midX"_L1, &TokenRecord::midX},       Field{"midY"_L1, &TokenRecord::midY},
    Field{"width"_L1, &TokenRecord::width},     Field{"height"_L1, &TokenRecord::height},
    Field{"letters"_L1, &TokenRecord::letters},
};

template <>
inline constexpr std::tuple fields<ReadRecord>{
    Field{"same"_L1, &ReadRecord::same},       Field{"picture"_L1, &ReadRecord::picture},
    Field{"bands"_L1, &ReadRecord::bands},     Field{"given"_L1, &ReadRecord::given},
    Field{"tokens"_L1, &ReadRecord::tokens},   Field{"unsettled"_L1, &ReadRecord::unsettled},
    Field{"columns"_L1, &ReadRecord::columns},
};

// All but the snapshot, which is kept as the program prints it.
template <>
inline constexpr std::tuple fields<TickRecord>{
    Field{"at"_L1, &TickRecord::at},           Field{"language"_L1, &TickRecord::language},
    Field{"forgets"_L1, &TickRecord::forgets}, Field{"logs"_L1, &TickRecord::logs},
    Field{"windows"_L1, &TickRecord::windows}, Field{"image"_L1, &TickRecord::image},
    Field{"reads"_L1, &TickRecord::reads},     Field{"shown"_L1, &TickRecord::shown},
};

} // namespace pelloran::strict_json

namespace pelloran::recording {

namespace {

using Problem = std::optional<QString>; // absent: none

QByteArray compact(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::expected<QJsonValue, QString> parsed(const QByteArray& line) {
    if (line.size() > largestLine) {
        return std::unexpected(u"is longer than %1 bytes"_s.arg(largestLine));
    }
    auto json = strict_json::parse(line);
    if (!json) {
        return std::unexpected(u"is no JSON: "_s + json.error().description);
    }
    return *std::move(json);
}

// "is not right: cards is not a list"
template <typename Record>
std::expected<Record, QString> decoded(const QJsonValue& json) {
    auto record = strict_json::decode<Record>(json);
    if (!record) {
        return std::unexpected(u"is not as it should be: "_s + strict_json::describe(record.error(), u"the line"_s));
    }
    return *std::move(record);
}

// Beyond any desktop, but not beyond reckoning.
bool isPlace(double number) {
    return std::isfinite(number) && std::abs(number) < 1e7;
}

Problem problemOf(const std::vector<WindowRecord>& windows) {
    if (windows.size() > mostWindows) {
        return u"lists more than %1 windows"_s.arg(mostWindows);
    }
    for (const WindowRecord& window : windows) {
        if (window.number < 0 || window.number > std::numeric_limits<std::uint32_t>::max() || !isPlace(window.x) ||
            !isPlace(window.y) || !isPlace(window.width) || !isPlace(window.height)) {
            return u"has a window that cannot be"_s;
        }
    }
    return {};
}

Problem problemOf(const ImageRecord& image) {
    if (image.error) {
        return *image.error == u"gone" || *image.error == u"denied" || *image.error == u"failed"
                   ? Problem()
                   : Problem(u"has an unknown error of the picture"_s);
    }
    const qint64 width = image.width.value_or(0);
    const qint64 height = image.height.value_or(0);
    if (width < 1 || height < 1 || width > widestWindow || height > widestWindow || width * height > mostPixels) {
        return u"has a picture of an impossible size"_s;
    }
    return {};
}

Problem problemOf(const std::vector<TokenRecord>& tokens) {
    if (tokens.size() > mostTokens) {
        return u"has more than %1 lines read"_s.arg(mostTokens);
    }
    for (const TokenRecord& token : tokens) {
        if (token.text.size() > longestText || token.letters.value_or(QString()).size() > longestText) {
            return u"has a line read of more than %1 characters"_s.arg(longestText);
        }
        for (const double number : {token.confidence, token.midX, token.midY, token.width, token.height}) {
            if (!isPlace(number)) {
                return u"has a line read at an impossible place"_s;
            }
        }
    }
    return {};
}

Problem problemOf(const ReadRecord& read, const std::optional<ImageRecord>& image) {
    for (const auto* tokens : {&read.tokens, &read.unsettled}) {
        if (const Problem problem = *tokens ? problemOf(**tokens) : Problem()) {
            return problem;
        }
    }
    if (read.columns && (read.columns->size() != 3 || !std::ranges::all_of(*read.columns, isPlace))) {
        return u"has columns that are none"_s;
    }
    if (!read.picture) {
        return read.same.value_or(false) || read.given.value_or(false) ? Problem()
                                                                       : Problem(u"has a reading of nothing"_s);
    }
    if (!image || !image->width || !image->height || !read.bands) {
        return u"has a picture that belongs nowhere"_s;
    }
    if (*read.picture < 0 || *read.picture > mostTicks || read.bands->empty() || read.bands->size() > mostBands) {
        return u"has a picture that cannot be"_s;
    }
    for (const BandRecord& band : *read.bands) {
        // One by one, so that no sum is too large for its type.
        if (band.x < 0 || band.y < 0 || band.width < 1 || band.height < 1 || band.x >= *image->width ||
            band.y >= *image->height || band.width > *image->width - band.x || band.height > *image->height - band.y) {
            return u"has a part of the picture that is not within it"_s;
        }
    }
    return {};
}

Problem problemOf(const TickRecord& tick) {
    if (tick.at < 0) {
        return u"has an impossible time"_s;
    }
    if (tick.language && *tick.language != u"en" && *tick.language != u"zh") {
        return u"has an unknown language"_s;
    }
    if (tick.windows) {
        for (const auto* list : {&tick.windows->onScreen, &tick.windows->all}) {
            if (const Problem problem = *list ? problemOf(**list) : Problem()) {
                return problem;
            }
        }
    }
    if (const Problem problem = tick.image ? problemOf(*tick.image) : Problem()) {
        return problem;
    }
    if (tick.reads && tick.reads->size() > mostReads) {
        return u"has more than %1 readings"_s.arg(mostReads);
    }
    for (const ReadRecord& read : tick.reads.value_or(std::vector<ReadRecord>())) {
        if (const Problem problem = problemOf(read, tick.image)) {
            return problem;
        }
    }
    return {};
}

} // namespace

QString partName(int number) {
    return u"part-%1"_s.arg(number, 6, 10, QLatin1Char('0'));
}

std::optional<int> partNumber(const QString& name) {
    static const QRegularExpression pattern(u"\\Apart-([0-9]{6})\\z"_s);
    const auto match = pattern.match(name);
    return match.hasMatch() ? std::optional(match.capturedView(1).toInt()) : std::nullopt;
}

QString pictureName(qint64 number) {
    return QString::number(number) + u".png"_s;
}

bool isFileOfPart(const QString& name) {
    static const QRegularExpression picture(u"\\A(0|[1-9][0-9]{0,6})[.]png\\z"_s);
    return name == eventFile || name == cardFile || name == classFile || picture.match(name).hasMatch();
}

QByteArray lineOf(const PartHeader& header) {
    return compact(strict_json::encode(header));
}

QByteArray lineOf(const TickRecord& tick) {
    QJsonObject object = strict_json::encode(tick);
    if (tick.snapshot) {
        object.insert(u"snapshot"_s, *tick.snapshot);
    }
    return compact(object);
}

std::expected<PartHeader, QString> parseHeader(const QByteArray& line) {
    const auto json = parsed(line);
    if (!json) {
        return std::unexpected(json.error());
    }
    // A later format may have other fields: its number is looked at first.
    const QJsonValue format = json->toObject().value(u"format"_s);
    if (format.isDouble() && format.toInteger(formatVersion) != formatVersion) {
        return std::unexpected(
            u"is of format %1, and this program knows format %2"_s.arg(format.toInteger()).arg(formatVersion));
    }
    return decoded<PartHeader>(*json);
}

std::expected<TickRecord, QString> parseTick(const QByteArray& line) {
    const auto json = parsed(line);
    if (!json) {
        return std::unexpected(json.error());
    }
    auto tick = decoded<TickRecord>(*json);
    if (!tick) {
        return tick;
    }
    const QJsonValue snapshot = json->toObject().value(u"snapshot"_s);
    if (!snapshot.isUndefined()) {
        if (!snapshot.isObject()) {
            return std::unexpected(u"has a snapshot that is no object"_s);
        }
        tick->snapshot = snapshot.toObject();
    }
    if (const Problem problem = problemOf(*tick)) {
        return std::unexpected(*problem);
    }
    return tick;
}

TokenRecord toRecord(const OCRToken& token) {
    TokenRecord record{token.text, token.confidence, token.midX, token.midY, token.width, token.height};
    if (!token.letters.isEmpty()) {
        record.letters = token.letters;
    }
    return record;
}

OCRToken toToken(const TokenRecord& record) {
    return {record.text,   float(record.confidence),          record.midX, record.midY, record.width,
            record.height, record.letters.value_or(QString())};
}

ReadText toText(const ReadRecord& record) {
    ReadText text;
    const auto tokens = [](const auto& records) {
        std::vector<OCRToken> made;
        if (records) {
            std::ranges::transform(*records, std::back_inserter(made), toToken);
        }
        return made;
    };
    text.tokens = tokens(record.tokens);
    text.unsettled = tokens(record.unsettled);
    if (record.columns && record.columns->size() == 3) {
        text.columns.emplace();
        std::ranges::copy(*record.columns, text.columns->begin());
    }
    return text;
}

QJsonObject withoutForeignMessage(QJsonObject snapshot) {
    if (!snapshot.value(u"inDraft"_s).toBool()) {
        snapshot.remove(u"message"_s);
    }
    return snapshot;
}

bool standsAlone(const QJsonObject& snapshot, const ReadText& text) {
    if (!snapshot.value(u"inDraft"_s).toBool()) {
        return true;
    }
    const QJsonArray cards = snapshot.value(u"cards"_s).toArray();
    QSet<QString> lines;
    for (const OCRToken& token : text.tokens) {
        lines.insert(token.text);
    }
    return lines.size() >= 3 && cards.size() == 3 && std::ranges::all_of(cards, [](const QJsonValue& card) {
               return card.toObject().value(u"recognized"_s).toBool();
           });
}

} // namespace pelloran::recording
