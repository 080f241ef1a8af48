#include "app/Evaluation.h"

#include "app/Json.h"
#include "data/WinrateStore.h"
#include "json/StrictJson.h"
#include "names/NameMatching.h"

#include <QJsonArray>

#include <algorithm>
#include <cmath>
#include <functional>

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

const QString noPick = u"none"_s;

QString phaseName(DraftPhase phase) {
    return phase == DraftPhase::idle ? noPick : json::phaseName(phase);
}

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

QString boxText(const QRect& box) {
    return u"%1,%2,%3,%4"_s.arg(box.left()).arg(box.top()).arg(box.left() + box.width()).arg(box.top() + box.height());
}

QString verdictName(Verdict verdict) {
    switch (verdict) {
    case Verdict::right:
        return u"right"_s;
    case Verdict::wrong:
        return u"wrong"_s;
    case Verdict::unread:
        return u"unread"_s;
    case Verdict::missing:
        return u"missing"_s;
    case Verdict::wrongMissing:
        return u"wrongMissing"_s;
    case Verdict::falseOffer:
        return u"falseOffer"_s;
    }
    Q_UNREACHABLE();
}

QString nameOf(const Offer& offer) {
    return offer.name.isEmpty() ? offer.id : offer.name;
}

QJsonObject toJson(const Answer& answer) {
    return {
        {u"slot"_s, answer.match.slot.rawValue()},
        {u"rules"_s, phaseName(answer.rules)},
        {u"offered"_s, answer.offered ? QJsonValue(nameOf(*answer.offered)) : QJsonValue(QJsonValue::Null)},
        {u"cardId"_s, json::optional(answer.match.cardId)},
        {u"name"_s, json::optional(answer.shown)},
        {u"ocrText"_s, answer.match.ocrText},
        {u"method"_s, answer.match.method},
        {u"verdict"_s, answer.verdict ? QJsonValue(verdictName(*answer.verdict)) : QJsonValue(QJsonValue::Null)},
    };
}

QJsonObject toJson(const TextAnswer& answer) {
    const QRect& box = answer.offered.box;
    return {
        {u"box"_s, QJsonArray{box.left(), box.top(), box.left() + box.width(), box.top() + box.height()}},
        {u"ink"_s, answer.offered.ink},
        {u"text"_s, answer.offered.text},
        {u"read"_s, json::optional(answer.read)},
        {u"verdict"_s, verdictName(answer.verdict)},
    };
}

QJsonArray eachOf(const std::vector<Look>& looks, double Look::* figure) {
    QJsonArray values;
    for (const Look& look : looks) {
        values.append(look.*figure);
    }
    return values;
}

QJsonObject spread(const std::vector<double>& values) {
    return {{u"median"_s, json::optional(quantile(values, 0.5))}, {u"p90"_s, json::optional(quantile(values, 0.9))}};
}

QJsonObject figuresOf(const Tally& tally) {
    return {
        {u"pictures"_s, tally.pictures},
        {u"slots"_s, tally.slots},
        {u"right"_s, tally.right},
        {u"wrong"_s, tally.wrong},
        {u"unread"_s, tally.unread},
        {u"notInData"_s, tally.notInData},
        {u"wrongMissing"_s, tally.wrongMissing},
        {u"falseOffers"_s, tally.falseOffers},
        {u"changed"_s, tally.changed},
        {u"milliseconds"_s, spread(tally.milliseconds)},
        {u"cpuMilliseconds"_s, spread(tally.cpuMilliseconds)},
        {u"repeatedCpuMilliseconds"_s, spread(tally.repeatedCpuMilliseconds)},
    };
}

QJsonObject figuresOf(const TextTally& tally) {
    return {
        {u"boxes"_s, tally.boxes},   {u"right"_s, tally.right},         {u"wrong"_s, tally.wrong},
        {u"unread"_s, tally.unread}, {u"notInData"_s, tally.notInData}, {u"wrongMissing"_s, tally.wrongMissing},
    };
}

// A column of a table: what stands above it, and what a tally puts into it.
template <typename Figures>
struct ColumnOf {
    QString heading;
    std::function<QString(const Figures&)> cell;
};

using Column = ColumnOf<Tally>;

template <typename Figures>
ColumnOf<Figures> count(const QString& heading, int Figures::* figure) {
    return {heading, [figure](const Figures& tally) { return QString::number(tally.*figure); }};
}

Column share(const QString& heading, std::vector<double> Tally::* figure, double wanted) {
    return {heading, [figure, wanted](const Tally& tally) {
                const auto value = quantile(tally.*figure, wanted);
                return value ? QString::number(*value, 'f', 1) : u"-"_s;
            }};
}

std::vector<Column> columns(bool withRepeated) {
    std::vector<Column> all{
        count(u"pictures"_s, &Tally::pictures),
        count(u"slots"_s, &Tally::slots),
        count(u"right"_s, &Tally::right),
        count(u"wrong"_s, &Tally::wrong),
        count(u"unread"_s, &Tally::unread),
        count(u"not in the data"_s, &Tally::notInData),
        count(u"of these wrong"_s, &Tally::wrongMissing),
        count(u"false offers"_s, &Tally::falseOffers),
        share(u"CPU ms"_s, &Tally::cpuMilliseconds, 0.5),
        share(u"p90"_s, &Tally::cpuMilliseconds, 0.9),
        share(u"wall ms"_s, &Tally::milliseconds, 0.5),
        share(u"p90"_s, &Tally::milliseconds, 0.9),
    };
    if (withRepeated) {
        all.push_back(share(u"again CPU ms"_s, &Tally::repeatedCpuMilliseconds, 0.5));
        all.push_back(share(u"p90"_s, &Tally::repeatedCpuMilliseconds, 0.9));
        all.push_back(count(u"changed"_s, &Tally::changed));
    }
    return all;
}

std::vector<ColumnOf<TextTally>> textColumns() {
    return {
        count(u"boxes"_s, &TextTally::boxes),
        count(u"right"_s, &TextTally::right),
        count(u"wrong"_s, &TextTally::wrong),
        count(u"unread"_s, &TextTally::unread),
        count(u"not in the data"_s, &TextTally::notInData),
        count(u"of these wrong"_s, &TextTally::wrongMissing),
    };
}

// What stands to the left of the figures, and these.
template <typename Figures>
QStringList row(QStringList head, const std::vector<ColumnOf<Figures>>& columns, const Figures& tally) {
    for (const auto& column : columns) {
        head.append(column.cell(tally));
    }
    return head;
}

template <typename Figures>
QStringList headings(QStringList head, const std::vector<ColumnOf<Figures>>& columns) {
    for (const auto& column : columns) {
        head.append(column.heading);
    }
    return head;
}

QStringList aligned(const std::vector<QStringList>& rows, qsizetype leftAligned) {
    std::vector<qsizetype> widths(static_cast<std::size_t>(rows.front().size()), 0);
    for (const QStringList& row : rows) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], row[static_cast<qsizetype>(i)].size());
        }
    }
    QStringList lines;
    for (const QStringList& row : rows) {
        QStringList cells;
        for (qsizetype i = 0; i < row.size(); ++i) {
            const qsizetype width = widths[static_cast<std::size_t>(i)];
            cells.append(i < leftAligned ? row[i].leftJustified(width) : row[i].rightJustified(width));
        }
        lines.append(cells.join(u"  "_s));
    }
    return lines;
}

} // namespace

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

bool Look::agreesWith(const Look& other) const {
    return std::ranges::equal(matches, other.matches, {}, &SlotMatch::cardId, &SlotMatch::cardId);
}

Judge::Judge(const WinrateStore& winrates)
    : store(winrates)
    , cardNames{{AppLanguage::zh, {}}, {AppLanguage::en, {}}} {
    const auto add = [](QSet<QString>& names, const std::optional<QString>& name) {
        if (name && !NameMatching::normalize(*name).isEmpty()) {
            names.insert(NameMatching::normalize(*name));
        }
    };
    for (const auto& [id, card] : store.byId()) {
        add(cardNames[AppLanguage::zh], card.nameZh);
        add(cardNames[AppLanguage::en], card.nameEn);
    }
    for (const auto& [key, row] : store.classesByKey()) {
        add(classNames, key);
        add(classNames, row.displayName(AppLanguage::zh));
        add(classNames, row.displayName(AppLanguage::en));
    }
}

std::optional<Judge::Known> Judge::known(const Truth& truth, const QString& id, DraftPhase rules) const {
    Known found;
    QStringList names;
    if (rules == DraftPhase::heroPick) {
        const auto row = store.classStats(id);
        if (!row) {
            return std::nullopt;
        }
        found.shown = row->displayName(truth.language);
        names = {id, row->displayName(AppLanguage::zh), row->displayName(AppLanguage::en)};
    } else {
        const auto card = store.stats(id);
        if (!card) {
            return std::nullopt;
        }
        found.shown = card->displayName(truth.language);
        names = {(truth.language == AppLanguage::zh ? card->nameZh : card->nameEn).value_or(QString())};
    }
    for (const QString& name : std::as_const(names)) {
        if (const QString normalized = NameMatching::normalize(name); !normalized.isEmpty()) {
            found.normalized.append(normalized);
        }
    }
    return found;
}

bool Judge::isKnown(const Truth& truth, const Offer& offer) const {
    const QString name = NameMatching::normalize(offer.name);
    if (truth.phase == DraftPhase::heroPick) {
        return store.classStats(offer.id) || classNames.contains(name);
    }
    return store.stats(offer.id) || cardNames.at(truth.language).contains(name);
}

Answer Judge::judge(const Truth& truth, DraftPhase rules, const SlotMatch& match) const {
    Answer answer{rules, match, std::nullopt, std::nullopt, std::nullopt};
    QStringList names;
    if (match.cardId) {
        const auto found = known(truth, *match.cardId, rules);
        answer.shown = found ? found->shown : *match.cardId;
        names = found ? found->normalized : QStringList();
    }
    if (truth.phase == DraftPhase::idle) {
        if (match.cardId) {
            answer.verdict = Verdict::falseOffer;
        }
        return answer;
    }
    answer.offered = truth.offers[match.slot];
    if (!answer.offered) {
        return answer;
    }
    if (!isKnown(truth, *answer.offered)) {
        answer.verdict = match.cardId ? Verdict::wrongMissing : Verdict::missing;
    } else if (!match.cardId) {
        answer.verdict = Verdict::unread;
    } else {
        const bool right =
            *match.cardId == answer.offered->id || names.contains(NameMatching::normalize(answer.offered->name));
        answer.verdict = right ? Verdict::right : Verdict::wrong;
    }
    return answer;
}

std::vector<Answer> Judge::judge(const Truth& truth, const Look& look) const {
    std::vector<Answer> answers;
    answers.reserve(look.matches.size());
    for (const SlotMatch& match : look.matches) {
        answers.push_back(judge(truth, look.rules, match));
    }
    return answers;
}

std::vector<TextAnswer> Judge::judgeTexts(const Truth& truth, const QImage& window, const BoxReader& reader) const {
    std::vector<TextAnswer> answers;
    for (const BoxedText& text : truth.texts) {
        TextAnswer& answer = answers.emplace_back(TextAnswer{text, reader(window, text.box), Verdict::unread});
        const QString name = NameMatching::normalize(text.text);
        if (!cardNames.at(truth.language).contains(name)) {
            answer.verdict = answer.read ? Verdict::wrongMissing : Verdict::missing;
        } else if (answer.read) {
            answer.verdict = NameMatching::normalize(*answer.read) == name ? Verdict::right : Verdict::wrong;
        }
    }
    return answers;
}

QStringList remarks(const Picture& picture) {
    QStringList lines;
    for (const Answer& answer : picture.answers) {
        const QString offered = answer.offered ? nameOf(*answer.offered) : QString();
        const QString read =
            u"%1, read \"%2\""_s.arg(answer.shown.value_or(QString()), answer.match.ocrText); // of what is shown
        const QString place = u"%1 %2: "_s.arg(picture.path, answer.match.slot.rawValue());
        if (answer.verdict == Verdict::wrong) {
            lines.append(u"wrong: "_s + place + offered + u", shown as "_s + read);
        } else if (answer.verdict == Verdict::wrongMissing) {
            lines.append(u"wrong: "_s + place + offered + u" (not in the data), shown as "_s + read);
        } else if (answer.verdict == Verdict::unread) {
            lines.append(u"unread: "_s + place + offered);
        } else if (answer.verdict == Verdict::falseOffer) {
            lines.append(u"false offer: "_s + place + u"no pick, by the rules of "_s + phaseName(answer.rules) +
                         u" shown as "_s + read);
        }
    }
    for (const TextAnswer& answer : picture.texts) {
        const QString line = u"text %1: %2 %3: %4"_s.arg(verdictName(answer.verdict), picture.path,
                                                         boxText(answer.offered.box), answer.offered.text);
        lines.append(answer.read ? line + u", read as "_s + *answer.read : line);
    }
    return lines;
}

QJsonObject toJson(const Picture& picture) {
    QJsonArray offered;
    for (const auto& each : picture.truth.offers) {
        offered.append(each ? QJsonValue(nameOf(*each)) : QJsonValue(QJsonValue::Null));
    }
    QJsonArray answers;
    for (const Answer& answer : picture.answers) {
        answers.append(toJson(answer));
    }
    QJsonArray texts;
    for (const TextAnswer& answer : picture.texts) {
        texts.append(toJson(answer));
    }
    return {
        {u"picture"_s, picture.path},
        {u"phase"_s, phaseName(picture.truth.phase)},
        {u"language"_s, picture.truth.language.rawValue()},
        {u"lettering"_s, picture.truth.lettering},
        {u"texts"_s, texts},
        {u"names"_s, offered},
        {u"slots"_s, answers},
        {u"milliseconds"_s, eachOf(picture.looks, &Look::milliseconds)},
        {u"cpuMilliseconds"_s, eachOf(picture.looks, &Look::cpuMilliseconds)},
        {u"repeatedCpuMilliseconds"_s, eachOf(picture.repeated, &Look::cpuMilliseconds)},
    };
}

std::optional<double> quantile(std::vector<double> values, double quantile) {
    if (values.empty()) {
        return std::nullopt;
    }
    std::ranges::sort(values);
    const double place = quantile * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return std::lerp(values[below], values[above], place - static_cast<double>(below));
}

void TextTally::add(const TextAnswer& answer) {
    ++boxes;
    right += answer.verdict == Verdict::right;
    wrong += answer.verdict == Verdict::wrong;
    unread += answer.verdict == Verdict::unread;
    notInData += answer.verdict == Verdict::missing || answer.verdict == Verdict::wrongMissing;
    wrongMissing += answer.verdict == Verdict::wrongMissing;
}

void Tally::add(const Picture& picture) {
    ++pictures;
    for (const Answer& answer : picture.answers) {
        slots += answer.offered.has_value();
        right += answer.verdict == Verdict::right;
        wrong += answer.verdict == Verdict::wrong;
        unread += answer.verdict == Verdict::unread;
        notInData += answer.verdict == Verdict::missing || answer.verdict == Verdict::wrongMissing;
        wrongMissing += answer.verdict == Verdict::wrongMissing;
        falseOffers += answer.verdict == Verdict::falseOffer;
    }
    for (const Look& look : picture.looks) {
        milliseconds.push_back(look.milliseconds);
        cpuMilliseconds.push_back(look.cpuMilliseconds);
    }
    for (const Look& look : picture.repeated) {
        repeatedCpuMilliseconds.push_back(look.cpuMilliseconds);
        const auto first = std::ranges::find(picture.looks, look.rules, &Look::rules);
        changed += first != picture.looks.end() && !look.agreesWith(*first);
    }
}

void Totals::add(const Picture& picture) {
    const QString language = picture.truth.language.rawValue();
    all.add(picture);
    groups[{language, picture.truth.lettering, phaseName(picture.truth.phase)}].add(picture);
    for (const TextAnswer& answer : picture.texts) {
        allTexts.add(answer);
        textGroups[{language, answer.offered.ink}].add(answer);
    }
}

QStringList Totals::table() const {
    const std::vector<Column> figures = columns(!all.repeatedCpuMilliseconds.empty());
    const bool withLettering =
        std::ranges::any_of(groups, [](const auto& group) { return !std::get<1>(group.first).isEmpty(); });
    const auto head = [&](const QString& language, const QString& lettering, const QString& phase) {
        return withLettering ? QStringList{language, lettering, phase} : QStringList{language, phase};
    };
    std::vector<QStringList> rows{headings(head(u"language"_s, u"lettering"_s, u"phase"_s), figures)};
    for (const auto& [group, tally] : groups) {
        const auto& [language, lettering, phase] = group;
        rows.push_back(row(head(language, lettering, phase), figures, tally));
    }
    rows.push_back(row(head(u"all"_s, {}, {}), figures, all));
    QStringList lines = aligned(rows, withLettering ? 3 : 2);
    if (allTexts.boxes > 0) {
        const auto textFigures = textColumns();
        std::vector<QStringList> textRows{headings({u"texts in"_s, u"ink"_s}, textFigures)};
        for (const auto& [group, tally] : textGroups) {
            textRows.push_back(row({group.first, group.second}, textFigures, tally));
        }
        textRows.push_back(row({u"all"_s, {}}, textFigures, allTexts));
        lines += aligned(textRows, 2);
    }
    return lines;
}

QJsonObject Totals::toJson() const {
    QJsonArray each;
    for (const auto& [group, tally] : groups) {
        QJsonObject object = figuresOf(tally);
        object.insert(u"language"_s, std::get<0>(group));
        object.insert(u"lettering"_s, std::get<1>(group));
        object.insert(u"phase"_s, std::get<2>(group));
        each.append(object);
    }
    QJsonArray eachOfTexts;
    for (const auto& [group, tally] : textGroups) {
        QJsonObject object = figuresOf(tally);
        object.insert(u"language"_s, group.first);
        object.insert(u"ink"_s, group.second);
        eachOfTexts.append(object);
    }
    return {
        {u"totals"_s, figuresOf(all)},
        {u"groups"_s, each},
        {u"texts"_s, figuresOf(allTexts)},
        {u"textGroups"_s, eachOfTexts},
    };
}

} // namespace evaluation

} // namespace pelloran
