#include "publish/FilledFiles.h"

#include "data/WinrateFields.h"
#include "json/StrictJson.h"
#include "names/NameMatching.h"
#include "publish/CardLists.h"
#include "publish/Problem.h"

#include <QHash>
#include <QJsonDocument>

#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

constexpr QLatin1StringView heroesKey = "hero_names"_L1;
constexpr QLatin1StringView idKey = "card_id"_L1;

// The file with what `change` makes of its top level; the very bytes where that is nothing new.
template <typename Change>
QByteArray changed(const QByteArray& json, Change change) {
    const auto parsed = strict_json::parse(json);
    if (!parsed || !parsed->isObject()) {
        return json;
    }
    const QJsonObject before = parsed->toObject();
    const QJsonObject after = change(before);
    return after == before ? json : QJsonDocument(after).toJson(QJsonDocument::Compact);
}

// Absent for a row that cannot be told from others.
std::optional<QJsonObject> filledRow(QJsonObject row, const QString& place, Joining& joining) {
    const auto dbfId = strict_json::decode<std::optional<qint64>>(row.value("dbf_id"_L1));
    const QJsonValue id = row.value(idKey);
    const bool hasNone = id.isUndefined() || id.isNull() || (id.isString() && id.toString().isEmpty());
    if (dbfId && *dbfId && hasNone) {
        row.insert(idKey, QString());
    }
    auto card = strict_json::decode<CardStats>(row);
    if (!card || (card->cardId.isEmpty() && !(dbfId && *dbfId))) {
        return row;
    }
    if (!joining.join(*card, dbfId.value_or(std::nullopt), place)) {
        return std::nullopt;
    }
    const QJsonObject filled = strict_json::encode(*card);
    for (auto field = filled.begin(); field != filled.end(); ++field) {
        row.insert(field.key(), field.value());
    }
    return row;
}

QJsonValue filledRows(const QJsonValue& value, const QString& place, Joining& joining) {
    if (!value.isArray()) {
        return value;
    }
    QJsonArray rows;
    const QJsonArray before = value.toArray();
    for (qsizetype index = 0; index < before.size(); ++index) {
        const QJsonValue row = before.at(index);
        if (!row.isObject()) {
            rows.append(row);
        } else if (const auto filled = filledRow(row.toObject(), place + u"[%1]"_s.arg(index), joining)) {
            rows.append(*filled);
        }
    }
    return rows;
}

QString classOf(const QJsonObject& row) {
    return row.value("player_class"_L1).toString().toUpper();
}

bool hasOwnHeroes(const QJsonObject& row) {
    const QJsonValue own = row.value(heroesKey);
    return !own.isNull() && !own.isUndefined();
}

// What tells one class and no other, of the lists' heroes.
class HeroNames {
public:
    HeroNames(const CardLists& lists, const QJsonArray& rows)
        : heroes(lists.heroes()) {
        for (const ListedHero& hero : heroes) {
            claim(hero.name, hero.heroClass);
        }
        for (const QJsonValue row : rows) {
            const QJsonArray names = row[heroesKey].toArray();
            for (const QJsonValue own : names) {
                claim(own.toString(), classOf(row.toObject()));
            }
        }
    }

    QStringList ofClass(const QString& heroClass) {
        QStringList names;
        for (const ListedHero& hero : heroes) {
            if (hero.heroClass != heroClass) {
                continue;
            }
            const QStringList& claimants = classes[NameMatching::normalize(hero.name)];
            if (claimants.size() == 1) {
                names.append(hero.name);
            } else if (const QString told = u"%1 (%2)"_s.arg(hero.name, claimants.join(u", "_s));
                       !ambiguous.contains(told)) {
                ambiguous.append(told);
            }
        }
        return names;
    }

    QStringList ambiguous; // of the classes asked for

private:
    void claim(const QString& name, const QString& heroClass) {
        QStringList& claimants = classes[NameMatching::normalize(name)];
        if (!claimants.contains(heroClass)) {
            claimants.append(heroClass);
        }
    }

    std::vector<ListedHero> heroes;
    QHash<QString, QStringList> classes; // by the normalised name
};

} // namespace

std::expected<FilledFile, QStringList> filledCardFile(const QByteArray& json, const CardLists& lists) {
    if (lists.isEmpty()) {
        return FilledFile{json, {}};
    }
    Joining joining(lists);
    QByteArray bytes = changed(json, [&](QJsonObject file) {
        if (file.contains("cards"_L1)) {
            file.insert("cards"_L1, filledRows(file.value("cards"_L1), u"cards"_s, joining));
        }
        if (file.value("classes"_L1).isObject()) {
            QJsonObject classes = file.value("classes"_L1).toObject();
            for (auto each = classes.begin(); each != classes.end(); ++each) {
                const QString place = u"classes."_s + each.key();
                if (QJsonObject perClass = each.value().toObject(); perClass.contains("cards"_L1)) {
                    perClass.insert("cards"_L1, filledRows(perClass.value("cards"_L1), place + u".cards"_s, joining));
                    each.value() = perClass;
                } else {
                    each.value() = filledRows(each.value(), place, joining);
                }
            }
            file.insert("classes"_L1, classes);
        }
        return file;
    });
    if (joining.joinedNone()) {
        return problem(u"none of its cards is in the lists of cards"_s);
    }
    return FilledFile{std::move(bytes), joining.remarks()};
}

FilledFile filledClassFile(const QByteArray& json, const CardLists& lists) {
    if (lists.isEmpty()) {
        return {json, {}};
    }
    QStringList remarks;
    QByteArray bytes = changed(json, [&](QJsonObject file) {
        QJsonArray rows = file.value("classes"_L1).toArray();
        HeroNames heroes(lists, rows);
        QStringList without;
        for (qsizetype index = 0; index < rows.size(); ++index) {
            QJsonObject row = rows.at(index).toObject();
            if (classOf(row).isEmpty() || hasOwnHeroes(row)) {
                continue;
            }
            if (const QStringList names = heroes.ofClass(classOf(row)); !names.isEmpty()) {
                row.insert(heroesKey, QJsonArray::fromStringList(names));
                rows.replace(index, row);
            } else {
                without.append(u"classes[%1] (%2)"_s.arg(index).arg(classOf(row)));
            }
        }
        if (!heroes.ambiguous.isEmpty()) {
            remarks.append(u"names of heroes of several classes, left out: %1"_s.arg(heroes.ambiguous.join(u", "_s)));
        }
        if (!without.isEmpty()) {
            remarks.append(u"the lists of cards have no hero for %1"_s.arg(without.join(u", "_s)));
        }
        if (!rows.isEmpty()) {
            file.insert("classes"_L1, rows);
        }
        return file;
    });
    return {std::move(bytes), remarks};
}

} // namespace pelloran
