#include "publish/CardLists.h"

#include "data/DataFiles.h"
#include "data/WinrateFields.h"
#include "json/StrictJson.h"
#include "names/NameMatching.h"
#include "publish/Problem.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Far above any real list (some 35,000 cards), far below what would hurt.
constexpr std::size_t mostCards = 200'000;
constexpr qsizetype mostLists = 32;
constexpr qsizetype longestText = 200;

constexpr QLatin1StringView chinese = "zhCN"_L1;
constexpr QLatin1StringView english = "enUS"_L1;

// As the game names the languages it comes in.
constexpr std::array locales{chinese,   english,   "enGB"_L1, "zhTW"_L1, "deDE"_L1, "esES"_L1, "esMX"_L1, "frFR"_L1,
                             "itIT"_L1, "jaJP"_L1, "koKR"_L1, "plPL"_L1, "ptBR"_L1, "ruRU"_L1, "thTH"_L1};

// A text that no real list has longer.
struct ShortText {
    QString text;
};

// A card's name, or its names by locale.
struct Names {
    std::optional<QString> plain; // in the locale of the list
    std::optional<QString> zh;
    std::optional<QString> en;
};

struct Row {
    ShortText id;
    std::optional<qint64> dbfId;
    std::optional<Names> name;
    std::optional<ShortText> rarity;
    std::optional<qint64> cost;
    std::optional<ShortText> type;
    std::optional<ShortText> cardClass;
    std::optional<ShortText> set;
};

strict_json::Verdict decodeInto(ShortText& text, const QJsonValue& value) {
    if (auto verdict = strict_json::decodeInto(text.text, value)) {
        return verdict;
    }
    return text.text.size() <= longestText ? strict_json::Verdict()
                                           : strict_json::wanted(u"a text of at most %1 characters"_s.arg(longestText));
}

strict_json::Verdict decodeInto(Names& names, const QJsonValue& value) {
    const auto decodeName = [](std::optional<QString>& name, const QJsonValue& json) {
        ShortText text;
        auto verdict = decodeInto(text, json);
        name = text.text.trimmed();
        return verdict;
    };
    if (value.isString()) {
        return decodeName(names.plain, value);
    }
    if (!value.isObject()) {
        return strict_json::wanted(u"a text or an object of texts"_s);
    }
    const QJsonObject object = value.toObject();
    for (const auto& [locale, name] : {std::pair(chinese, &names.zh), std::pair(english, &names.en)}) {
        const QJsonValue found = object.value(locale);
        if (found.isNull() || found.isUndefined()) {
            continue;
        }
        if (auto verdict = decodeName(*name, found)) {
            strict_json::placeWithin(*verdict, locale);
            return verdict;
        }
    }
    return {};
}

// Absent when the name tells none, or more than one.
std::optional<QLatin1StringView> localeIn(const QString& fileName) {
    // Looked at, not taken: one pair may be the second of the one before, as in "hs_zh_CN".
    static const QRegularExpression word(u"(?<![A-Za-z])(?=([A-Za-z]{2})[-_]?([A-Za-z]{2})(?![A-Za-z]))"_s);
    std::optional<QLatin1StringView> told;
    for (const QRegularExpressionMatch& match : word.globalMatch(fileName)) {
        const QString found = match.captured(1) + match.captured(2);
        const auto* const locale =
            std::ranges::find_if(locales, [&](const auto& each) { return !found.compare(each, Qt::CaseInsensitive); });
        if (locale == locales.end()) {
            continue;
        }
        if (told && *told != *locale) {
            return std::nullopt;
        }
        told = *locale;
    }
    return told;
}

std::optional<QLatin1StringView> localeOfPath(const QString& path) {
    const QFileInfo file(path);
    const auto locale = localeIn(file.fileName());
    return locale ? locale : localeIn(QFileInfo(file.path()).fileName());
}

bool holdsAny(const QString& text, char16_t first, char16_t last) {
    return std::ranges::any_of(text, [&](QChar c) { return c.unicode() >= first && c.unicode() <= last; });
}

bool holdsAny(const QString& text, QStringView characters) {
    return std::ranges::any_of(text, [&](QChar c) { return characters.contains(c); });
}

// One name in so many may be unlike the rest, such as one with an accent in English; of another language's far more
// are.
constexpr std::size_t oneStrayIn = 20;

// What a list's names look like, where that leaves no doubt.
std::optional<QLatin1StringView> localeOfNames(const std::vector<Row>& rows) {
    // Small words that names of cards are full of, and those of the other languages in Latin letters.
    static const QRegularExpression englishWord(u"\\b(the|of)\\b"_s, QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression otherWord(u"\\b(der|die|das|des|le|la|les|du|de|el|los|del|il|di|do|da|dos)\\b"_s,
                                              QRegularExpression::CaseInsensitiveOption);
    std::size_t names = 0;
    std::size_t ideographs = 0;
    std::size_t otherScripts = 0;
    std::size_t simplified = 0;
    std::size_t traditional = 0;
    std::size_t accents = 0;
    std::size_t englishWords = 0;
    std::size_t otherWords = 0;
    for (const Row& row : rows) {
        if (!row.name || !row.name->plain) {
            continue;
        }
        const QString& name = *row.name->plain;
        ++names;
        ideographs += holdsAny(name, u'\u4E00', u'\u9FFF');
        otherScripts += holdsAny(name, u'\u0370', u'\u1FFF') || holdsAny(name, u'\u3040', u'\u30FF') ||
                        holdsAny(name, u'\uAC00', u'\uD7AF');
        // The same characters as either script writes them, of words that names of cards are full of.
        simplified += holdsAny(name, u"龙术师战圣兽灵护击亚尔猎骑");
        traditional += holdsAny(name, u"龍術師戰聖獸靈護擊亞爾獵騎");
        accents += std::ranges::any_of(name, [](QChar c) { return c.isLetter() && c.unicode() > 0x7F; });
        englishWords += englishWord.match(name).hasMatch();
        otherWords += otherWord.match(name).hasMatch();
    }
    if (otherScripts * oneStrayIn > names) {
        return std::nullopt;
    }
    if (ideographs * 2 > names && simplified > traditional) {
        return chinese;
    }
    if (accents * oneStrayIn <= names && englishWords > otherWords) {
        return english;
    }
    return std::nullopt;
}

bool isMissing(const std::optional<QString>& text) {
    return !text || text->isEmpty();
}

template <typename Value>
bool isMissing(const std::optional<Value>& value) {
    return !value;
}

// What the row says itself stays.
void fillIn(CardStats& row, const CardStats& listed) {
    const auto fillField = [&]<typename Field>(const Field& field) {
        auto& own = row.*field.member;
        const auto& other = listed.*field.member;
        if constexpr (requires { own.has_value(); }) {
            if (isMissing(own) && !isMissing(other)) {
                own = other;
            }
        } else if (own.isEmpty()) {
            own = other;
        }
    };
    std::apply([&](const auto&... field) { (fillField(field), ...); }, strict_json::fields<CardStats>);
}

std::optional<QString> textOf(const std::optional<ShortText>& text) {
    return text ? std::optional(text->text) : std::nullopt;
}

} // namespace

namespace strict_json {

template <>
inline constexpr std::tuple fields<Row>{
    Field{"id"_L1, &Row::id},
    Field{"dbfId"_L1, &Row::dbfId},
    Field{"name"_L1, &Row::name},
    Field{"rarity"_L1, &Row::rarity},
    Field{"cost"_L1, &Row::cost},
    Field{"type"_L1, &Row::type},
    Field{"cardClass"_L1, &Row::cardClass},
    Field{"set"_L1, &Row::set},
};

} // namespace strict_json

// Takes in one list after the other.
class CardLists::Reader {
public:
    // A sentence that tells what is wrong; empty when nothing is.
    QString take(const QString& argument) {
        QString path = argument;
        std::optional<QLatin1StringView> locale;
        // A file may have the sign in its name.
        if (const qsizetype sign = argument.indexOf(u'='); sign == 4 && localeIn(argument.first(sign))) {
            locale = localeIn(argument.first(sign));
            path = argument.sliced(sign + 1);
        }
        const QString trouble = takeFile(path, locale);
        return trouble.isEmpty() || trouble.startsWith(path) ? trouble : path + u": "_s + trouble;
    }

    CardLists lists;

private:
    QString takeFile(const QString& path, std::optional<QLatin1StringView> locale) {
        const auto bytes = readDataFile(path);
        if (!bytes) {
            return bytes.error().localizedDescription;
        }
        const auto json = strict_json::parse(*bytes);
        if (!json) {
            return json.error().description;
        }
        // Before room is made for them.
        if (json->isArray() && static_cast<std::size_t>(json->toArray().size()) > mostCards) {
            return u"more than %1 cards"_s.arg(mostCards);
        }
        const auto rows = strict_json::decode<std::vector<Row>>(*json);
        if (!rows) {
            return strict_json::describe(rows.error(), u"the list"_s);
        }
        if (rows->empty()) {
            return u"no card in it"_s;
        }
        if (std::ranges::any_of(*rows, [](const Row& row) { return row.name && row.name->plain; })) {
            for (const auto& told : {localeOfPath(path), localeOfNames(*rows)}) {
                locale = locale ? locale : told;
            }
            if (!locale) {
                return u"neither its name nor its cards tell the language: say --names %1=FILE or %2=FILE"_s.arg(
                    chinese, english);
            }
            if (*locale != chinese && *locale != english) {
                return u"is in %1, and data files have names in %2 and %3"_s.arg(*locale, chinese, english);
            }
        }
        return takeRows(*rows, locale == chinese);
    }

    QString takeRows(const std::vector<Row>& rows, bool isChinese) {
        QHash<QString, std::size_t> seen;
        for (std::size_t place = 0; place < rows.size(); ++place) {
            const Row& row = rows[place];
            const QString& id = row.id.text;
            if (id.isEmpty()) {
                return u"[%1].id is empty"_s.arg(place);
            }
            if (const auto before = seen.constFind(id); before != seen.cend()) {
                return u"[%1].id is %2, which is [%3]'s"_s.arg(QString::number(place), id, QString::number(*before));
            }
            seen.insert(id, place);
            const std::size_t number = lists.byId.value(id, lists.cards.size());
            if (number == lists.cards.size()) {
                lists.byId.insert(id, number);
                lists.cards.emplace_back().card.cardId = id;
            }
            ListedCard& known = lists.cards[number];
            if (row.dbfId && !known.dbfId) {
                if (const auto other = lists.byDbfId.constFind(*row.dbfId); other != lists.byDbfId.cend()) {
                    return u"[%1].dbfId is %2, which is %3's"_s.arg(place)
                        .arg(*row.dbfId)
                        .arg(lists.cards[*other].card.cardId);
                }
                lists.byDbfId.insert(*row.dbfId, number);
                known.dbfId = row.dbfId;
            }
            fillIn(known.card, factsOf(row, isChinese));
        }
        return {};
    }

    // All but the identifier.
    static CardStats factsOf(const Row& row, bool isChinese) {
        const Names names = row.name.value_or(Names());
        CardStats facts;
        facts.nameZh = names.zh ? names.zh : isChinese ? names.plain : std::nullopt;
        facts.nameEn = names.en ? names.en : isChinese ? std::nullopt : names.plain;
        facts.cost = row.cost;
        facts.rarity = textOf(row.rarity);
        facts.type = textOf(row.type);
        facts.cardClass = textOf(row.cardClass);
        facts.set = textOf(row.set);
        return facts;
    }
};

std::expected<CardLists, QStringList> CardLists::read(const QStringList& lists) {
    if (lists.size() > mostLists) {
        return problem(u"more than %1 lists of cards"_s.arg(mostLists));
    }
    Reader reader;
    QStringList problems;
    for (const QString& each : lists) {
        if (const QString trouble = reader.take(each); !trouble.isEmpty()) {
            problems.append(trouble);
        }
    }
    if (!problems.isEmpty()) {
        return std::unexpected(problems);
    }
    return std::move(reader.lists);
}

ListedRow CardLists::find(const QString& cardId, std::optional<qint64> dbfId) const {
    const auto named = byId.constFind(cardId);
    const auto numbered = dbfId ? byDbfId.constFind(*dbfId) : byDbfId.cend();
    const bool isNamed = named != byId.cend();
    const bool isNumbered = numbered != byDbfId.cend();
    if (!isNamed && !isNumbered) {
        return {};
    }
    const ListedCard& found = cards[isNamed ? *named : *numbered];
    return {&found, !cardId.isEmpty() && isNumbered && cards[*numbered].card.cardId != cardId};
}

std::vector<ListedHero> CardLists::heroes() const {
    std::vector<ListedHero> heroes;
    QSet<std::pair<QString, QString>> known;
    for (const ListedCard& each : cards) {
        const QString heroClass = each.card.cardClass.value_or(QString()).toUpper();
        if (each.card.type != u"HERO"_s || heroClass.isEmpty() || heroClass == u"NEUTRAL"_s) {
            continue;
        }
        for (const QString& name : {each.card.nameZh.value_or(QString()), each.card.nameEn.value_or(QString())}) {
            const std::pair told(heroClass, NameMatching::normalize(name));
            if (!told.second.isEmpty() && !known.contains(told)) {
                known.insert(told);
                heroes.push_back({name, heroClass});
            }
        }
    }
    return heroes;
}

Joining::Joining(const CardLists& cardLists)
    : lists(cardLists) {}

bool Joining::join(CardStats& row, std::optional<qint64> dbfId, const QString& place) {
    if (lists.isEmpty()) {
        return true;
    }
    const QString called = row.cardId.isEmpty() ? u"dbf_id %1, left out"_s.arg(dbfId.value_or(0)) : row.cardId;
    const ListedRow found = lists.find(row.cardId, dbfId);
    if (!found.card) {
        missing.append(u"%1 (%2)"_s.arg(place, called));
        return !row.cardId.isEmpty();
    }
    if (found.isContradictory && found.card->card.cardId == row.cardId) {
        contradictory.append(u"%1 (%2)"_s.arg(place, called));
    } else if (found.isContradictory) {
        byNumberAlone.append(u"%1 (%2, filled in as %3)"_s.arg(place, called, found.card->card.cardId));
    }
    joinedAny = true;
    fillIn(row, found.card->card);
    return true;
}

bool Joining::joinedNone() const {
    return !joinedAny && !missing.isEmpty();
}

QStringList Joining::remarks() const {
    QStringList sentences;
    if (!missing.isEmpty()) {
        sentences.append(u"in none of the lists of cards: %1"_s.arg(missing.join(u", "_s)));
    }
    if (!contradictory.isEmpty()) {
        sentences.append(
            u"card_id counts where the lists have dbf_id for another card: %1"_s.arg(contradictory.join(u", "_s)));
    }
    if (!byNumberAlone.isEmpty()) {
        sentences.append(u"in the lists of cards by dbf_id, but not by card_id: %1"_s.arg(byNumberAlone.join(u", "_s)));
    }
    return sentences;
}

} // namespace pelloran
