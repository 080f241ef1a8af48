#pragma once

#include "json/StrictJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QMap>
#include <QString>

#include <algorithm>
#include <concepts>
#include <limits>
#include <optional>
#include <tuple>

// What strict_json says of a file, said again without it: what the parsed file holds, type by type.
namespace pelloran::fuzzing {

using Texts = QMap<QString, QString>;

template <typename>
inline constexpr bool isOptional = false;
template <typename Value>
inline constexpr bool isOptional<std::optional<Value>> = true;

// Whether a value of this type is to be had of it, with texts no longer than that. Arrays may have any length.
template <typename Value>
bool fits(const QJsonValue& json, qsizetype longestText) {
    if constexpr (std::same_as<Value, QString>) {
        return json.isString() && json.toString().size() <= longestText;
    } else if constexpr (std::same_as<Value, bool>) {
        return json.isBool();
    } else if constexpr (std::same_as<Value, double>) {
        return json.isDouble();
    } else if constexpr (std::same_as<Value, qint64>) {
        return json.isDouble() && json.toInteger(0) == json.toInteger(1);
    } else if constexpr (std::same_as<Value, Texts>) {
        return json.isObject() && std::ranges::all_of(json.toObject(), [&](const QJsonValue& each) {
                   return fits<QString>(each, longestText);
               });
    } else if constexpr (isOptional<Value>) {
        return json.isNull() || json.isUndefined() || fits<typename Value::value_type>(json, longestText);
    } else if constexpr (strict_json::HasFields<Value>) {
        const QJsonObject object = json.toObject();
        const auto memberFits = [&]<typename Member>(QLatin1StringView key, Member Value::*) {
            return fits<Member>(object.value(key), longestText);
        };
        return json.isObject() &&
               std::apply([&](const auto&... field) { return (memberFits(field.key, field.member) && ...); },
                          strict_json::fields<Value>);
    } else {
        const QJsonArray array = json.toArray();
        return json.isArray() && std::ranges::all_of(array, [&](const QJsonValue& each) {
                   return fits<typename Value::value_type>(each, longestText);
               });
    }
}

// Whether it says that value.
template <typename Value>
bool says(const QJsonValue& json, const Value& value) {
    if constexpr (std::same_as<Value, QString>) {
        return json.isString() && json.toString() == value;
    } else if constexpr (std::same_as<Value, bool>) {
        return json.isBool() && json.toBool() == value;
    } else if constexpr (std::same_as<Value, double>) {
        return json.isDouble() && json.toDouble() == value;
    } else if constexpr (std::same_as<Value, qint64>) {
        return json.isDouble() && json.toInteger(~value) == value;
    } else if constexpr (std::same_as<Value, Texts>) {
        const QJsonObject object = json.toObject();
        return json.isObject() && object.keys() == value.keys() &&
               std::ranges::all_of(value.keys(),
                                   [&](const QString& key) { return says(object.value(key), value.value(key)); });
    } else if constexpr (isOptional<Value>) {
        return value ? says(json, *value) : json.isNull() || json.isUndefined();
    } else if constexpr (strict_json::HasFields<Value>) {
        const QJsonObject object = json.toObject();
        return json.isObject() &&
               std::apply(
                   [&](const auto&... field) { return (says(object.value(field.key), value.*field.member) && ...); },
                   strict_json::fields<Value>);
    } else {
        const QJsonArray array = json.toArray();
        return json.isArray() && std::ranges::equal(array, value, [](const QJsonValue& each, const auto& element) {
                   return says(each, element);
               });
    }
}

// Whether all of its texts are the same when they are written and read again: Qt drops a byte-order mark that begins
// one, unless the text has escapes.
inline bool survives(const QByteArray& json) {
    return json.indexOf("\xEF\xBB\xBF", 1) < 0 && !json.toLower().contains("\\ufeff");
}

// Whether what became of a file is right: the value that it says, or none where it says none.
template <typename Value>
bool isRight(const std::optional<Value>& decoded, const QByteArray& file,
             qsizetype longestText = std::numeric_limits<qsizetype>::max()) {
    if (!file.isValidUtf8()) { // Qt forgives bytes that are no text
        return true;
    }
    const QJsonDocument document = QJsonDocument::fromJson(file);
    if (!document.isObject()) {
        return !decoded;
    }
    return decoded ? says(document.object(), *decoded) : !fits<Value>(document.object(), longestText);
}

} // namespace pelloran::fuzzing
