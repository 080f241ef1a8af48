#include "data/WinrateFormats.h"

#include "data/WinrateFields.h"

#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using strict_json::fields;
using strict_json::HasFields;

// Files come from servers too. What reads the screen compares each line with every name, and reckons with names of a
// length that fits on a card: one of a million characters would keep it busy for minutes, one of ten million for hours.
strict_json::Verdict beyondLimits(const QString& text) {
    if (text.size() > longestDataText) {
        return strict_json::wanted(u"a text of at most %1 characters"_s.arg(longestDataText));
    }
    return {};
}

template <typename Number>
    requires std::is_arithmetic_v<Number>
strict_json::Verdict beyondLimits(Number) {
    return {};
}

template <typename Element>
strict_json::Verdict beyondLimits(const std::vector<Element>& elements);
template <HasFields Record>
strict_json::Verdict beyondLimits(const Record& record);

template <typename Value>
strict_json::Verdict beyondLimits(const std::optional<Value>& field) {
    return field ? beyondLimits(*field) : strict_json::Verdict();
}

template <typename Element>
strict_json::Verdict beyondLimits(const std::vector<Element>& elements) {
    constexpr std::size_t most = std::is_same_v<Element, CardStats>         ? mostCardRows
                                 : std::is_same_v<Element, ClassWinrateRow> ? mostClassRows
                                                                            : mostTextsOfARow;
    if (elements.size() > most) {
        return strict_json::wanted(u"an array of at most %1"_s.arg(most));
    }
    for (std::size_t index = 0; index < elements.size(); ++index) {
        if (auto verdict = beyondLimits(elements[index])) {
            strict_json::placeWithin(*verdict, static_cast<qsizetype>(index));
            return verdict;
        }
    }
    return {};
}

template <HasFields Record>
strict_json::Verdict beyondLimits(const Record& record) {
    strict_json::Verdict verdict;
    const auto isWithin = [&](const auto& field) {
        verdict = beyondLimits(record.*field.member);
        if (verdict) {
            strict_json::placeWithin(*verdict, field.key);
        }
        return !verdict;
    };
    std::apply([&](const auto&... field) { static_cast<void>((isWithin(field) && ...)); }, fields<Record>);
    return verdict;
}

// Of a file of nothing but small arrays, 64 MiB became three gigabytes, and its bundle had a hundred kilobytes. Marks
// within texts count too, which are few in names.
bool hasTooManyValues(const QByteArray& json) {
    const auto beginsOne = [](char byte) { return byte == ',' || byte == '[' || byte == '{'; };
    return std::ranges::count_if(json, beginsOne) > mostJsonValues;
}

template <typename Value>
std::expected<Value, DataError> decodeAs(const QJsonValue& json) {
    const auto failed = [](const strict_json::Mismatch& mismatch) {
        return std::unexpected(DataError{u"WinrateFormats"_s, 0, strict_json::describe(mismatch, u"the file"_s)});
    };
    auto value = strict_json::decode<Value>(json);
    if (!value) {
        return failed(value.error());
    }
    if (const auto verdict = beyondLimits(*value)) {
        return failed(*verdict);
    }
    return std::move(*value);
}

template <typename Value>
std::expected<Value, DataError> decodeAs(const QByteArray& json) {
    const auto parsed = parseJson(json);
    return parsed ? decodeAs<Value>(*parsed) : std::unexpected(parsed.error());
}

size_t hashOf(const QString& text, size_t seed) {
    return ::qHash(text, seed);
}

size_t hashOf(double number, size_t seed) {
    return ::qHash(number, seed);
}

size_t hashOf(qint64 number, size_t seed) {
    return ::qHash(number, seed);
}

template <typename Value>
size_t hashOf(const std::vector<Value>& elements, size_t seed);
template <HasFields Record>
size_t hashOf(const Record& record, size_t seed);

template <typename Value>
size_t hashOf(const std::optional<Value>& field, size_t seed) {
    return field ? hashOf(*field, seed) : hashOf(qint64{-1}, seed);
}

template <typename Value>
size_t hashOf(const std::vector<Value>& elements, size_t seed) {
    for (const Value& element : elements) {
        seed = hashOf(element, seed);
    }
    return hashOf(static_cast<qint64>(elements.size()), seed);
}

template <HasFields Record>
size_t hashOf(const Record& record, size_t seed) {
    std::apply([&](const auto&... field) { ((seed = hashOf(record.*field.member, seed)), ...); }, fields<Record>);
    return seed;
}

// Absent for a class that is not one of the game's.
std::optional<QString> knownEnglishName(const QString& playerClass) {
    static constexpr std::array<std::pair<QLatin1StringView, QLatin1StringView>, 11> names{{
        {"DEATHKNIGHT"_L1, "Death Knight"_L1},
        {"DEMONHUNTER"_L1, "Demon Hunter"_L1},
        {"DRUID"_L1, "Druid"_L1},
        {"HUNTER"_L1, "Hunter"_L1},
        {"MAGE"_L1, "Mage"_L1},
        {"PALADIN"_L1, "Paladin"_L1},
        {"PRIEST"_L1, "Priest"_L1},
        {"ROGUE"_L1, "Rogue"_L1},
        {"SHAMAN"_L1, "Shaman"_L1},
        {"WARLOCK"_L1, "Warlock"_L1},
        {"WARRIOR"_L1, "Warrior"_L1},
    }};
    const QString key = playerClass.toUpper();
    const auto found = std::ranges::find(names, key, [](const auto& entry) { return QString(entry.first); });
    return found == names.end() ? std::nullopt : std::optional(QString(found->second));
}

bool hasText(const std::optional<QString>& name) {
    return name && !name->isEmpty();
}

} // namespace

QString CardStats::displayName(AppLanguage language) const {
    const bool chinese = language.isChinese();
    const auto& first = chinese ? nameZh : nameEn;
    const auto& second = chinese ? nameEn : nameZh;
    return hasText(first) ? *first : hasText(second) ? *second : cardId;
}

QString CardStats::displayName() const {
    return displayName(AppLanguage::preference());
}

QString ClassWinrateRow::displayName(AppLanguage language) const {
    if (language.isChinese()) {
        if (!nameZh.isEmpty()) {
            return nameZh;
        }
        if (nameEn) {
            return *nameEn;
        }
    } else if (hasText(nameEn)) {
        return *nameEn;
    }
    return knownEnglishName(playerClass).value_or(playerClass);
}

QString ClassWinrateRow::displayName() const {
    return displayName(AppLanguage::preference());
}

std::expected<WinrateFile, DataError> WinrateFile::decode(const QByteArray& json) {
    return decodeAs<WinrateFile>(json);
}

std::expected<WinrateFile, DataError> WinrateFile::fromJson(const QJsonValue& value) {
    return decodeAs<WinrateFile>(value);
}

QByteArray WinrateFile::encode() const {
    return QJsonDocument(strict_json::encode(*this)).toJson(QJsonDocument::Compact);
}

std::expected<ClassWinrateFile, DataError> ClassWinrateFile::decode(const QByteArray& json) {
    return decodeAs<ClassWinrateFile>(json);
}

QByteArray ClassWinrateFile::encode() const {
    return QJsonDocument(strict_json::encode(*this)).toJson(QJsonDocument::Compact);
}

std::expected<std::vector<CardStats>, DataError> decodeCards(const QByteArray& json) {
    return decodeAs<std::vector<CardStats>>(json);
}

std::expected<std::vector<CardStats>, DataError> decodeCards(const QJsonArray& rows) {
    return decodeAs<std::vector<CardStats>>(QJsonValue(rows));
}

QByteArray encodeCards(const std::vector<CardStats>& cards) {
    return QJsonDocument(strict_json::encode(cards)).toJson(QJsonDocument::Compact);
}

std::expected<QJsonValue, DataError> parseJson(const QByteArray& json) {
    if (hasTooManyValues(json)) {
        return std::unexpected(
            DataError{u"WinrateFormats"_s, 0, u"the file has more than %1 values"_s.arg(mostJsonValues)});
    }
    auto parsed = strict_json::parse(json);
    if (parsed) {
        return std::move(*parsed);
    }
    // The parser takes a bare number or text for a syntax error, but not inside an array.
    if (parsed.error().code == QJsonParseError::IllegalValue) {
        const QByteArray bare = json.startsWith("\xEF\xBB\xBF") ? json.sliced(3) : json;
        const QJsonArray wrapped = QJsonDocument::fromJson('[' + bare + ']').array();
        if (wrapped.size() == 1) {
            return wrapped.first();
        }
    }
    return std::unexpected(DataError{u"QJsonDocument"_s, parsed.error().code, parsed.error().description});
}

size_t qHash(const CardStats& card, size_t seed) {
    return hashOf(card, seed);
}

size_t qHash(const WinrateFile& file, size_t seed) {
    return hashOf(file, seed);
}

size_t qHash(const ClassWinrateRow& row, size_t seed) {
    return hashOf(row, seed);
}

size_t qHash(const ClassWinrateFile& file, size_t seed) {
    return hashOf(file, seed);
}

} // namespace pelloran
