// Any values that the program prints as lines of JSON. A line is one line, in UTF-8, that any reader of JSON takes, and
// says what the values are.

#include "app/Json.h"
#include "fuzz/Bytes.h"
#include "fuzz/Require.h"
#include "json/StrictJson.h"

#include <QJsonDocument>

#include <bit>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;

// A reader of its own, as strict as RFC 8259, and only as much as it takes to say whether a text is JSON.
class Grammar {
public:
    explicit Grammar(std::string_view json)
        : rest(json) {}

    bool holds() { return value(0) && rest.empty(); }

private:
    bool take(std::string_view text) {
        const bool is = rest.starts_with(text);
        rest.remove_prefix(is ? text.size() : 0);
        return is;
    }

    bool digits() {
        const std::size_t count = std::min(rest.find_first_not_of("0123456789"), rest.size());
        rest.remove_prefix(count);
        return count > 0;
    }

    bool number() {
        take("-");
        if (!take("0") && !digits()) {
            return false;
        }
        if (take(".") && !digits()) {
            return false;
        }
        if (take("e") || take("E")) {
            (void)(take("+") || take("-"));
            return digits();
        }
        return true;
    }

    bool string() {
        if (!take("\"")) {
            return false;
        }
        while (!rest.empty() && rest.front() != '"') {
            if (static_cast<unsigned char>(rest.front()) < 0x20) {
                return false;
            }
            if (take("\\u")) {
                if (rest.size() < 4 || rest.substr(0, 4).find_first_not_of("0123456789abcdefABCDEF") != rest.npos) {
                    return false;
                }
                rest.remove_prefix(4);
            } else if (take("\\")) {
                if (rest.empty() || std::string_view("\"\\/bfnrt").find(rest.front()) == std::string_view::npos) {
                    return false;
                }
                rest.remove_prefix(1);
            } else {
                rest.remove_prefix(1);
            }
        }
        return take("\"");
    }

    bool list(std::string_view end, int depth, bool named) {
        if (take(end)) {
            return true;
        }
        do {
            if ((named && !(string() && take(":"))) || !value(depth + 1)) {
                return false;
            }
        } while (take(","));
        return take(end);
    }

    bool value(int depth) {
        if (depth > 100) {
            return false;
        }
        if (take("{")) {
            return list("}", depth, true);
        }
        if (take("[")) {
            return list("]", depth, false);
        }
        if (rest.starts_with('"')) {
            return string();
        }
        return take("null") || take("true") || take("false") || number();
    }

    std::string_view rest;
};

QString textFrom(Bytes& bytes) {
    const int what = bytes.take();
    const std::size_t length = std::size_t(what / 4);
    if (what % 4 == 0) {
        return QString::fromUtf8(bytes.takeBytes(length));
    }
    if (what % 4 == 1) {
        return QString::fromLatin1(bytes.takeBytes(length));
    }
    QString text; // halves of characters, too
    for (std::size_t i = 0; i < length / 2; ++i) {
        const int unit = bytes.take();
        text += what % 4 == 2 ? QChar(char16_t(unit | bytes.take() << 8)) : QChar(char16_t(0xD700 + unit * 8));
    }
    return text;
}

std::optional<QString> maybeTextFrom(Bytes& bytes) {
    return bytes.take() & 1 ? std::optional(textFrom(bytes)) : std::nullopt;
}

double numberFrom(Bytes& bytes) {
    const int what = bytes.take();
    return what & 1 ? std::bit_cast<double>(bytes.takeNumber(8)) : bytes.take() / 8.0;
}

OverlaySnapshot snapshotFrom(Bytes& bytes) {
    OverlaySnapshot snapshot;
    snapshot.title = textFrom(bytes);
    snapshot.message = maybeTextFrom(bytes);
    snapshot.inDraft = bytes.take() & 1;
    snapshot.phase = DraftPhase(bytes.take() % 3);
    for (int count = bytes.take() % 4; count > 0; --count) {
        OverlayCardViewModel& tile = snapshot.cards.emplace_back();
        tile.slotLabel = textFrom(bytes);
        tile.name = textFrom(bytes);
        tile.subtitle = maybeTextFrom(bytes);
        tile.recognized = bytes.take() & 1;
        for (int metrics = bytes.take() % 6; metrics > 0; --metrics) {
            MetricValue& metric = tile.metrics.emplace_back();
            const auto kinds = MetricKind::allCases();
            metric.kind = kinds[std::size_t(bytes.take()) % kinds.size()];
            metric.value = bytes.take() & 1 ? std::optional(numberFrom(bytes)) : std::nullopt;
        }
    }
    MetricHighlighter::applyHighlights(snapshot.cards);
    return snapshot;
}

DraftState stateFrom(Bytes& bytes) {
    DraftState state;
    state.inDraft = bytes.take() & 1;
    state.draftMode = textFrom(bytes);
    state.scene = textFrom(bytes);
    for (auto* text : {&state.deckId, &state.hero, &state.lastChoiceName, &state.lastChoiceId, &state.sessionDir}) {
        *text = maybeTextFrom(bytes);
    }
    for (int count = bytes.take() % 6; count > 0; --count) {
        state.deckCardIds.push_back(textFrom(bytes));
    }
    state.phase = DraftPhase(bytes.take() % 3);
    return state;
}

QJsonObject printed(const QJsonObject& object) {
    const QByteArray line = json::line(object);
    require(line.endsWith('\n') && line.count('\n') == 1 && line.count('\r') == 0);
    require(line.isValidUtf8());
    require(Grammar(std::string_view(line.constData(), std::size_t(line.size() - 1))).holds());
    const auto parsed = strict_json::parse(line);
    require(parsed && parsed->isObject());
    // What is read is printed the same again.
    require(json::line(parsed->toObject()) == line || line.contains("\xEF\xBB\xBF"));
    return parsed->toObject();
}

// Halves of characters are escaped. A mark of byte order that begins a text is dropped by Qt when it reads, unless the
// text has escapes.
void sameText(const QJsonValue& read, const std::optional<QString>& text) {
    require(text ? read.isString() : read.isNull());
    require(!text || read.toString() == *text || text->startsWith(QChar::ByteOrderMark));
}

void checkSnapshot(const OverlaySnapshot& snapshot) {
    const QJsonObject read = printed(json::toJson(snapshot));
    sameText(read[u"title"], snapshot.title);
    sameText(read[u"message"], snapshot.message);
    const QJsonArray cards = read[u"cards"].toArray();
    require(cards.size() == std::ssize(snapshot.cards));
    for (std::size_t i = 0; i < snapshot.cards.size(); ++i) {
        const OverlayCardViewModel& tile = snapshot.cards[i];
        const QJsonObject card = cards[qsizetype(i)].toObject();
        sameText(card[u"name"], tile.name);
        sameText(card[u"subtitle"], tile.subtitle);
        const QJsonArray metrics = card[u"metrics"].toArray();
        require(metrics.size() == std::ssize(tile.metrics));
        for (std::size_t k = 0; k < tile.metrics.size(); ++k) {
            const QJsonObject metric = metrics[qsizetype(k)].toObject();
            const double value = tile.metrics[k].value.value_or(NAN);
            // JSON knows no other numbers.
            require(std::isfinite(value) ? metric[u"value"].toDouble(NAN) == value : metric[u"value"].isNull());
            sameText(metric[u"formatted"], tile.metrics[k].formatted());
        }
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    switch (bytes.take() % 4) {
    case 0: {
        const DraftState state = stateFrom(bytes);
        const QJsonObject read = printed(json::toJson(state));
        sameText(read[u"deckId"], state.deckId);
        sameText(read[u"lastChoiceName"], state.lastChoiceName);
        require(read[u"deckCardIds"].toArray().size() == state.deckCardIds.size());
        break;
    }
    case 1: {
        const OCRToken token{textFrom(bytes),   float(numberFrom(bytes)), numberFrom(bytes),
                             numberFrom(bytes), numberFrom(bytes),        numberFrom(bytes)};
        sameText(printed(json::toJson(token))[u"text"], token.text);
        const SlotMatch match{DraftSlot::left, maybeTextFrom(bytes), numberFrom(bytes), textFrom(bytes),
                              textFrom(bytes)};
        sameText(printed(json::toJson(match))[u"ocrText"], match.ocrText);
        break;
    }
    default:
        checkSnapshot(snapshotFrom(bytes));
    }
    return 0;
}
