#pragma once

#include "json/StrictJson.h"

#include <QByteArray>
#include <QString>

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

// The quick way through large files that are as they should be. It decides nothing of its own: what it decodes, it
// decodes as strict_json does, and of all else it only says that it has not.
namespace pelloran::fast_json {

// What strict_json::parse and strict_json::decode would make of `json`, several times sooner. Absent when they would
// fail, and for rare files that they would take, such as ones that begin with a byte-order mark, nest deeper than any
// record does, or hold control characters or halves of surrogate pairs in texts, whole numbers beyond 64 bits, or a key
// twice with an unfit value first. Those have to go the slow way, which also knows what is wrong and where.
//
// In one thing the two differ: a number too small to tell from zero is zero here and an error there.
//
// `Value` is a record that has strict_json::fields or a std::vector; what they hold is QString, double, qint64, and
// std::vector, std::optional and records of these. From any thread.
template <typename Value>
std::optional<Value> decode(const QByteArray& json);

// What the template above is made of. Each decodeInto answers whether `json` held what its first argument takes.

static_assert(simdjson::SIMDJSON_VERSION_MAJOR >= 3, "earlier ones took halves of surrogate pairs");

using Element = simdjson::dom::element;

inline constexpr const char* byteOrderMark = "\xEF\xBB\xBF";

// Far below the depth at which Qt's parser gives up, so that what is taken here is taken there.
inline constexpr std::size_t deepestNesting = 64;

inline bool decodeInto(QString& text, const Element& json) {
    std::string_view utf8;
    // Qt drops a byte-order mark that begins a text, but not from a text with escapes.
    if (json.get(utf8) != simdjson::SUCCESS || utf8.starts_with(byteOrderMark)) {
        return false;
    }
    text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    return true;
}

inline bool decodeInto(double& number, const Element& json) {
    if (json.get(number) != simdjson::SUCCESS) {
        return false;
    }
    number += 0.0; // makes a zero below zero the plain one, as Qt does
    return true;
}

inline bool decodeInto(qint64& number, const Element& json) {
    if (std::int64_t whole = 0; json.get(whole) == simdjson::SUCCESS) {
        number = whole;
        return true;
    }
    double fraction = 0;
    constexpr double limit = 9223372036854775808.0; // 2^63, the first beyond
    if (json.get(fraction) != simdjson::SUCCESS || fraction != std::trunc(fraction) || fraction < -limit ||
        fraction >= limit) {
        return false;
    }
    number = static_cast<qint64>(fraction);
    return true;
}

template <strict_json::HasFields Record>
bool decodeInto(Record& record, const Element& json);
template <typename Item>
bool decodeInto(std::vector<Item>& items, const Element& json);

template <typename Value>
bool decodeInto(std::optional<Value>& field, const Element& json) {
    if (json.is_null()) {
        field.reset();
        return true;
    }
    return decodeInto(field.emplace(), json);
}

template <typename Item>
bool decodeInto(std::vector<Item>& items, const Element& json) {
    simdjson::dom::array array;
    if (json.get(array) != simdjson::SUCCESS) {
        return false;
    }
    items.clear();
    items.reserve(std::min(array.size(), strict_json::mostMadeRoomFor));
    for (const Element item : array) {
        if (!decodeInto(items.emplace_back(), item)) {
            return false;
        }
    }
    return true;
}

template <typename>
inline constexpr bool isOptional = false;
template <typename Value>
inline constexpr bool isOptional<std::optional<Value>> = true;

template <typename>
inline constexpr bool isVector = false;
template <typename Item>
inline constexpr bool isVector<std::vector<Item>> = true;

template <strict_json::HasFields Record>
bool decodeInto(Record& record, const Element& json) {
    simdjson::dom::object object;
    if (json.get(object) != simdjson::SUCCESS) {
        return false;
    }
    record = Record{}; // of two equal keys the later one leaves nothing of the earlier
    constexpr auto& fields = strict_json::fields<Record>;
    constexpr std::size_t count = std::tuple_size_v<decltype(strict_json::fields<Record>)>;
    std::array<bool, count> present{};
    bool decoded = true;
    for (const simdjson::dom::key_value_pair member : object) {
        const auto takeIf = [&](const auto& field, bool& found) {
            if (member.key != std::string_view(field.key.data(), static_cast<std::size_t>(field.key.size()))) {
                return false;
            }
            found = true;
            decoded = decodeInto(record.*field.member, member.value);
            return true;
        };
        [&]<std::size_t... index>(std::index_sequence<index...>) {
            static_cast<void>((takeIf(std::get<index>(fields), std::get<index>(present)) || ...));
        }(std::make_index_sequence<count>());
        if (!decoded) {
            return false;
        }
    }
    return [&]<std::size_t... index>(std::index_sequence<index...>) {
        return ((std::get<index>(present) ||
                 isOptional<std::remove_cvref_t<decltype(record.*std::get<index>(fields).member)>>) &&
                ...);
    }(std::make_index_sequence<count>());
}

template <typename Value>
std::optional<Value> decode(const QByteArray& json) {
    static_assert(strict_json::HasFields<Value> || isVector<Value>, "a bare value is no file");
    const auto size = static_cast<std::size_t>(json.size());
    simdjson::dom::parser parser;
    Element root;
    Value value;
    // Some versions skip the mark, others do not.
    if (json.startsWith(byteOrderMark) || parser.allocate(size, deepestNesting) != simdjson::SUCCESS ||
        parser.parse(json.constData(), size).get(root) != simdjson::SUCCESS || !decodeInto(value, root)) {
        return std::nullopt;
    }
    return value;
}

} // namespace pelloran::fast_json
