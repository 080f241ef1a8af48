// Any values that the program prints as lines of JSON. A line is one line, in UTF-8, that any reader of JSON takes, and
// says what the values are.

#include "app/Json.h"
#include "base/OneLine.h"
#include "fuzz/Bytes.h"
#include "fuzz/Require.h"
#include "json/StrictJson.h"

#include <QJsonDocument>

#include <algorithm>
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
    state.hasHero = bytes.take() & 1;
    return state;
}

// What is read of a line that is printed.
QJsonObject printed(const QJsonObject& object) {
    const QByteArray line = json::line(object);
    require(line.endsWith('\n') && line.count('\n') == 1 && line.count('\r') == 0);
    require(line.isValidUtf8());
    require(std::ranges::none_of(QString::fromUtf8(line.chopped(1)), isObeyedByTerminals));
    require(Grammar(std::string_view(line.constData(), std::size_t(line.size() - 1))).holds());
    const auto parsed = strict_json::parse(line);
    require(parsed && parsed->isObject());
    // What is read is printed the same again.
    require(json::line(parsed->toObject()) == line || line.contains("\xEF\xBB\xBF"));
    return parsed->toObject();
}

// Halves of characters are escaped. A mark of byte order that begins a text is dropped by Qt when it reads, unless the
// text has escapes.
bool is(const QJsonValue& read, const QString& text) {
    return read.isString() && (read.toString() == text || text.startsWith(QChar::ByteOrderMark));
}

bool is(const QJsonValue& read, bool truth) {
    return read.isBool() && read.toBool() == truth;
}

bool is(const QJsonValue& read, double number) {
    // JSON knows no other numbers.
    return std::isfinite(number) ? read.isDouble() && read.toDouble() == number : read.isNull();
}

template <typename Value>
bool is(const QJsonValue& read, const std::optional<Value>& value) {
    return value ? is(read, *value) : read.isNull();
}

bool is(const QJsonValue& read, const MetricValue& metric);
bool is(const QJsonValue& read, const OverlayCardViewModel& tile);

template <typename Value>
bool is(const QJsonValue& read, const std::vector<Value>& values) {
    const QJsonArray items = read.toArray();
    return read.isArray() && std::ranges::equal(items, values, [](const QJsonValue& item, const Value& value) {
               return is(item, value);
           });
}

bool is(const QJsonValue& read, DraftPhase phase) {
    constexpr const char* names[] = {"idle", "heroPick", "cardPick"};
    return read == QLatin1StringView(names[static_cast<std::size_t>(phase)]);
}

bool is(const QJsonValue& read, MetricHighlight highlight) {
    const char* const name = highlight == MetricHighlight::high  ? "high"
                             : highlight == MetricHighlight::low ? "low"
                                                                 : "normal";
    return read == QLatin1StringView(name);
}

bool is(const QJsonValue& read, const MetricValue& metric) {
    return read.toObject().size() == 4 && is(read[u"kind"], metric.kind.rawValue()) &&
           is(read[u"value"], metric.value) && is(read[u"formatted"], metric.formatted()) &&
           is(read[u"highlight"], metric.highlight);
}

bool is(const QJsonValue& read, const OverlayCardViewModel& tile) {
    return read.toObject().size() == 5 && is(read[u"slotLabel"], tile.slotLabel) && is(read[u"name"], tile.name) &&
           is(read[u"subtitle"], tile.subtitle) && is(read[u"recognized"], tile.recognized) &&
           is(read[u"metrics"], tile.metrics);
}

bool is(const QJsonValue& read, const OverlaySnapshot& snapshot) {
    return read.toObject().size() == 5 && is(read[u"title"], snapshot.title) &&
           is(read[u"message"], snapshot.message) && is(read[u"cards"], snapshot.cards) &&
           is(read[u"inDraft"], snapshot.inDraft) && is(read[u"phase"], snapshot.phase);
}

bool is(const QJsonValue& read, const DraftState& state) {
    return read.toObject().size() == 11 && is(read[u"inDraft"], state.inDraft) &&
           is(read[u"draftMode"], state.draftMode) && is(read[u"scene"], state.scene) &&
           is(read[u"deckId"], state.deckId) && is(read[u"hero"], state.hero) && is(read[u"hasHero"], state.hasHero) &&
           is(read[u"deckCardIds"], std::vector<QString>(state.deckCardIds.begin(), state.deckCardIds.end())) &&
           is(read[u"lastChoiceName"], state.lastChoiceName) && is(read[u"lastChoiceId"], state.lastChoiceId) &&
           is(read[u"sessionDir"], state.sessionDir) && is(read[u"phase"], state.phase);
}

bool is(const QJsonValue& read, const OCRToken& token) {
    return read.toObject().size() == 6 && is(read[u"text"], token.text) &&
           is(read[u"confidence"], double(token.confidence)) && is(read[u"midX"], token.midX) &&
           is(read[u"midY"], token.midY) && is(read[u"width"], token.width) && is(read[u"height"], token.height);
}

bool is(const QJsonValue& read, const SlotMatch& match) {
    return read.toObject().size() == 5 && is(read[u"slot"], match.slot.rawValue()) &&
           is(read[u"cardId"], match.cardId) && is(read[u"confidence"], match.confidence) &&
           is(read[u"method"], match.method) && is(read[u"ocrText"], match.ocrText);
}

template <typename Value>
void check(const Value& value) {
    require(is(printed(json::toJson(value)), value));
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    switch (bytes.take() % 4) {
    case 0:
        check(stateFrom(bytes));
        break;
    case 1:
        check(OCRToken{textFrom(bytes), float(numberFrom(bytes)), numberFrom(bytes), numberFrom(bytes),
                       numberFrom(bytes), numberFrom(bytes)});
        check(SlotMatch{DraftSlot::allCases()[std::size_t(bytes.take()) % 3], maybeTextFrom(bytes), numberFrom(bytes),
                        textFrom(bytes), textFrom(bytes)});
        break;
    default:
        check(snapshotFrom(bytes));
    }
    return 0;
}
