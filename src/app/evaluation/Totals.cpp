#include "app/evaluation/Totals.h"

#include "app/Json.h"

#include <QJsonArray>

#include <algorithm>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran::evaluation {

namespace {

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

} // namespace pelloran::evaluation
