#include "app/evaluation/Truth.h"

#include "app/Json.h"
#include "json/StrictJson.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// A truth file, as it lies there. It names its offers in one of two ways.
struct OfferRecord {
    std::optional<QString> id;
    std::optional<QString> name;
};

struct SlotsRecord {
    std::optional<OfferRecord> left;
    std::optional<OfferRecord> middle;
    std::optional<OfferRecord> right;
};

struct TextRecord {
    std::vector<qint64> box;
    QString text;
    std::optional<QString> ink;
};

struct TruthRecord {
    QString phase;
    std::optional<QString> language;
    std::optional<QString> lang;
    std::optional<SlotsRecord> slots;
    std::optional<std::vector<std::optional<QString>>> names;
    std::optional<QString> file;
    std::optional<QString> lettering;
    std::optional<std::vector<TextRecord>> texts;
};

} // namespace

using strict_json::Field;

template <>
constexpr std::tuple strict_json::fields<OfferRecord>{
    Field{"id"_L1, &OfferRecord::id},
    Field{"name"_L1, &OfferRecord::name},
};

template <>
constexpr std::tuple strict_json::fields<SlotsRecord>{
    Field{"left"_L1, &SlotsRecord::left},
    Field{"middle"_L1, &SlotsRecord::middle},
    Field{"right"_L1, &SlotsRecord::right},
};

template <>
constexpr std::tuple strict_json::fields<TextRecord>{
    Field{"box"_L1, &TextRecord::box},
    Field{"text"_L1, &TextRecord::text},
    Field{"ink"_L1, &TextRecord::ink},
};

template <>
constexpr std::tuple strict_json::fields<TruthRecord>{
    Field{"phase"_L1, &TruthRecord::phase},         Field{"language"_L1, &TruthRecord::language},
    Field{"lang"_L1, &TruthRecord::lang},           Field{"slots"_L1, &TruthRecord::slots},
    Field{"names"_L1, &TruthRecord::names},         Field{"file"_L1, &TruthRecord::file},
    Field{"lettering"_L1, &TruthRecord::lettering}, Field{"texts"_L1, &TruthRecord::texts},
};

namespace evaluation {

namespace {

std::optional<DraftPhase> phaseNamed(const QString& name) {
    for (const DraftPhase phase : {DraftPhase::idle, DraftPhase::heroPick, DraftPhase::cardPick}) {
        if (name == phaseName(phase)) {
            return phase;
        }
    }
    return std::nullopt;
}

// Absent where neither says anything.
std::optional<Offer> offer(const QString& id, const QString& name) {
    const Offer made{id.trimmed(), name.trimmed()};
    return made.id.isEmpty() && made.name.isEmpty() ? std::nullopt : std::optional(made);
}

std::optional<Offer> offer(const std::optional<OfferRecord>& record) {
    return record ? offer(record->id.value_or(QString()), record->name.value_or(QString())) : std::nullopt;
}

// Left, top, right, bottom; the last two are the first beyond it. Absent when that is no box.
std::optional<QRect> boxOf(const std::vector<qint64>& edges) {
    constexpr qint64 farthest = 1'000'000; // no window is as large, and sums stay far from overflow
    if (edges.size() != 4 || std::ranges::any_of(edges, [](qint64 edge) { return edge < 0 || edge > farthest; }) ||
        edges[0] >= edges[2] || edges[1] >= edges[3]) {
        return std::nullopt;
    }
    const auto edge = [&edges](std::size_t index) { return static_cast<int>(edges[index]); };
    return QRect(edge(0), edge(1), edge(2) - edge(0), edge(3) - edge(1));
}

} // namespace

QString phaseName(DraftPhase phase) {
    return phase == DraftPhase::idle ? u"none"_s : json::phaseName(phase);
}

std::expected<Truth, QString> parseTruth(const QByteArray& json) {
    const auto parsed = strict_json::parse(json);
    if (!parsed) {
        return std::unexpected(parsed.error().description);
    }
    const auto record = strict_json::decode<TruthRecord>(*parsed);
    if (!record) {
        return std::unexpected(strict_json::describe(record.error(), u"the truth file"_s));
    }
    Truth truth;
    const auto phase = phaseNamed(record->phase);
    if (!phase) {
        return std::unexpected(u"phase is not cardPick, heroPick or none"_s);
    }
    truth.phase = *phase;
    const QString language = record->language.value_or(record->lang.value_or(QString()));
    const auto known = AppLanguage::fromRawValue(language);
    if (!known || *known == AppLanguage::system) {
        return std::unexpected(u"language is not zh or en"_s);
    }
    truth.language = *known;
    truth.file = record->file;
    truth.lettering = record->lettering.value_or(QString()).trimmed();
    for (const TextRecord& text : record->texts.value_or(std::vector<TextRecord>())) {
        const auto box = boxOf(text.box);
        if (!box) {
            return std::unexpected(u"texts[%1].box is not left, top, right, bottom"_s.arg(truth.texts.size()));
        }
        truth.texts.push_back({*box, text.text.trimmed(), text.ink.value_or(QString())});
    }
    if (truth.phase == DraftPhase::idle) {
        return truth; // names on it are not offered
    }
    if (record->slots) {
        truth.offers = {offer(record->slots->left), offer(record->slots->middle), offer(record->slots->right)};
    } else if (record->names && record->names->size() <= truth.offers.size()) {
        std::ranges::transform(*record->names, truth.offers.begin(), [](const std::optional<QString>& name) {
            return offer(QString(), name.value_or(QString()));
        });
    } else {
        return std::unexpected(record->names ? u"names are more than three"_s : u"neither slots nor names are there"_s);
    }
    return truth;
}

std::vector<DraftPhase> rulesFor(const Truth& truth) {
    if (truth.phase == DraftPhase::idle) {
        return {DraftPhase::cardPick, DraftPhase::heroPick};
    }
    return {truth.phase};
}

} // namespace evaluation

} // namespace pelloran
