#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonParseError>
#include <QJsonValue>
#include <QLatin1StringView>
#include <QMap>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <expected>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

// JSON into plain values, and back by the same tables of fields. Strict on what is known and deaf to what is not:
// unknown keys are ignored, a missing or null optional field is absent, a missing required field or one of another type
// fails the whole. Whole numbers take 3, 3.0 and 1e2, but not 3.5, "3", true or anything beyond 64 bits with sign.
// The thousand numbers below the least of these are an exception: the parser rounds them to it, and nothing tells
// afterwards. Of two equal keys the last counts.
//
// Values are QString, double, qint64, bool, QStringList, QMap<QString, QString>, records, and std::vector and
// std::optional of these. From any thread.
namespace pelloran::strict_json {

// The member of a record that holds what stands under `key`.
template <typename Record, typename Value>
struct Field {
    QLatin1StringView key;
    Value Record::* member;
};

// A record's fields, in the order in which they are looked at. Whoever decodes or encodes a record specialises this for
// it with a tuple of `Field`s, or of what has their two members.
template <typename Record>
inline constexpr std::tuple<> fields;

template <typename Record>
concept HasFields = std::tuple_size_v<decltype(fields<Record>)> != 0;

// The first place at which a file is not what it should be, such as {"cards[3].cost", "a whole number"}.
struct Mismatch {
    QString place; // empty: the file as a whole
    QString wanted;
    bool missing = false; // nothing or null where a field is required

    bool operator==(const Mismatch&) const = default;
};

// "cards[3].cost is not a whole number"; `whole` is what the file as a whole is called.
QString describe(const Mismatch& mismatch, const QString& whole);

struct ParseError {
    QJsonParseError::ParseError code;
    QString description; // in the parser's words, and where
};

// The array or object that `json` is. A byte-order mark is skipped; invalid UTF-8 is an error.
std::expected<QJsonValue, ParseError> parse(const QByteArray& json);

template <typename Value>
std::expected<Value, Mismatch> decode(const QJsonValue& json);

// What decodes as the same value. Absent fields of a record are left out; by itself an absent value is null.
inline QJsonValue encode(const QString& text);
inline QJsonValue encode(double number);
inline QJsonValue encode(qint64 number);
inline QJsonValue encode(bool truth);
QJsonValue encode(const QStringList& texts);
QJsonValue encode(const QMap<QString, QString>& texts);
template <HasFields Record>
QJsonObject encode(const Record& record);
template <typename Value>
QJsonValue encode(const std::optional<Value>& value);
template <typename Element>
QJsonArray encode(const std::vector<Element>& elements);

// What the templates above are made of.

// Of a list's elements, before they have been looked at: a list of 64 MiB could hold thirty million that are none.
inline constexpr std::size_t mostMadeRoomFor = 100'000;

// Absent when all is well.
using Verdict = std::optional<Mismatch>;

Verdict decodeInto(QString& text, const QJsonValue& value);
Verdict decodeInto(double& number, const QJsonValue& value);
Verdict decodeInto(qint64& number, const QJsonValue& value);
Verdict decodeInto(bool& truth, const QJsonValue& value);
Verdict decodeInto(QStringList& texts, const QJsonValue& value);
Verdict decodeInto(QMap<QString, QString>& texts, const QJsonValue& value);
template <HasFields Record>
Verdict decodeInto(Record& record, const QJsonValue& value);
template <typename Value>
Verdict decodeInto(std::optional<Value>& field, const QJsonValue& value);
template <typename Element>
Verdict decodeInto(std::vector<Element>& elements, const QJsonValue& value);

Verdict wanted(const QString& what);

// Puts what a mismatch is found in before its place.
void placeWithin(Mismatch& mismatch, QLatin1StringView key);
void placeWithin(Mismatch& mismatch, qsizetype index);

template <HasFields Record>
Verdict decodeInto(Record& record, const QJsonValue& value) {
    if (!value.isObject()) {
        return wanted(QStringLiteral("an object"));
    }
    const QJsonObject object = value.toObject();
    Verdict verdict;
    const auto decodeField = [&](const auto& field) {
        const QJsonValue found = object.value(field.key);
        verdict = decodeInto(record.*field.member, found);
        if (verdict) {
            placeWithin(*verdict, field.key);
            verdict->missing = verdict->missing || found.isNull() || found.isUndefined();
        }
        return !verdict;
    };
    std::apply([&](const auto&... field) { static_cast<void>((decodeField(field) && ...)); }, fields<Record>);
    return verdict;
}

template <typename Value>
Verdict decodeInto(std::optional<Value>& field, const QJsonValue& value) {
    if (value.isNull() || value.isUndefined()) {
        field.reset();
        return {};
    }
    return decodeInto(field.emplace(), value);
}

template <typename Element>
Verdict decodeInto(std::vector<Element>& elements, const QJsonValue& value) {
    if (!value.isArray()) {
        return wanted(QStringLiteral("an array"));
    }
    const QJsonArray array = value.toArray();
    elements.clear();
    elements.reserve(std::min(static_cast<std::size_t>(array.size()), mostMadeRoomFor));
    for (qsizetype index = 0; index < array.size(); ++index) {
        if (Verdict verdict = decodeInto(elements.emplace_back(), array.at(index))) {
            placeWithin(*verdict, index);
            return verdict;
        }
    }
    return {};
}

template <typename Value>
std::expected<Value, Mismatch> decode(const QJsonValue& json) {
    Value value;
    if (Verdict verdict = decodeInto(value, json)) {
        return std::unexpected(std::move(*verdict));
    }
    return value;
}

inline QJsonValue encode(const QString& text) {
    return text;
}

inline QJsonValue encode(double number) {
    return number;
}

inline QJsonValue encode(qint64 number) {
    return number;
}

inline QJsonValue encode(bool truth) {
    return truth;
}

template <HasFields Record>
QJsonObject encode(const Record& record) {
    QJsonObject object;
    const auto insert = [&object]<typename Value>(QLatin1StringView key, const Value& value) {
        if constexpr (requires { value.has_value(); }) {
            if (value) {
                object.insert(key, encode(*value));
            }
        } else {
            object.insert(key, encode(value));
        }
    };
    std::apply([&](const auto&... field) { (insert(field.key, record.*field.member), ...); }, fields<Record>);
    return object;
}

template <typename Value>
QJsonValue encode(const std::optional<Value>& value) {
    return value ? QJsonValue(encode(*value)) : QJsonValue(QJsonValue::Null);
}

template <typename Element>
QJsonArray encode(const std::vector<Element>& elements) {
    QJsonArray array;
    for (const Element& element : elements) {
        array.append(encode(element));
    }
    return array;
}

} // namespace pelloran::strict_json
