// Any bytes as a card file, in each of its shapes, and as a class file. What decodes, and nothing else, is what a plain
// look at the parsed file says. It has to survive encoding, and its names have to be found by the search that they were
// given to.

#include "data/CardFile.h"
#include "data/WinrateFields.h"
#include "fuzz/Require.h"
#include "names/CardNameIndex.h"
#include "names/ClassNameIndex.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <algorithm>
#include <cstdint>
#include <expected>
#include <tuple>

namespace {

using namespace pelloran;
using fuzzing::require;

bool says(const QJsonValue& json, const QString& text) {
    return json.isString() && json.toString() == text;
}

bool says(const QJsonValue& json, double number) {
    return json.isDouble() && json.toDouble() == number;
}

bool says(const QJsonValue& json, qint64 number) {
    return json.isDouble() && json.toInteger(~number) == number;
}

template <strict_json::HasFields Record>
bool says(const QJsonValue& json, const Record& record);
template <typename Element>
bool says(const QJsonValue& json, const std::vector<Element>& elements);

template <typename Value>
bool says(const QJsonValue& json, const std::optional<Value>& value) {
    return value ? says(json, *value) : json.isNull() || json.isUndefined();
}

template <typename Element>
bool says(const QJsonValue& json, const std::vector<Element>& elements) {
    return json.isArray() &&
           std::ranges::equal(json.toArray(), elements,
                              [](const QJsonValue& each, const Element& element) { return says(each, element); });
}

template <strict_json::HasFields Record>
bool says(const QJsonValue& json, const Record& record) {
    const QJsonObject object = json.toObject();
    return json.isObject() &&
           std::apply(
               [&](const auto&... field) { return (says(object.value(field.key), record.*field.member) && ...); },
               strict_json::fields<Record>);
}

template <typename Value>
struct Shape;

template <>
struct Shape<QString> {
    static bool fits(const QJsonValue& json) { return json.isString() && json.toString().size() <= longestDataText; }
};

template <>
struct Shape<double> {
    static bool fits(const QJsonValue& json) { return json.isDouble(); }
};

template <>
struct Shape<qint64> {
    static bool fits(const QJsonValue& json) { return json.isDouble() && json.toInteger(0) == json.toInteger(1); }
};

template <typename Value>
struct Shape<std::optional<Value>> {
    static bool fits(const QJsonValue& json) { return json.isNull() || json.isUndefined() || Shape<Value>::fits(json); }
};

// The fuzzer's inputs are far too small for the limits on numbers of rows.
template <typename Element>
struct Shape<std::vector<Element>> {
    static bool fits(const QJsonValue& json) {
        const QJsonArray array = json.toArray();
        return json.isArray() && std::ranges::all_of(array, Shape<Element>::fits);
    }
};

template <strict_json::HasFields Record>
struct Shape<Record> {
    static bool fits(const QJsonValue& json) {
        const auto member = [&]<typename Value>(QLatin1StringView key, Value Record::*) {
            return Shape<Value>::fits(json.toObject().value(key));
        };
        return json.isObject() &&
               std::apply([&](const auto&... field) { return (member(field.key, field.member) && ...); },
                          strict_json::fields<Record>);
    }
};

template <typename File>
std::expected<File, DataError> look(const QByteArray& bytes) {
    auto file = File::decode(bytes);
    // Qt drops a byte-order mark that begins a text, unless the text has escapes: such texts do not survive.
    const bool survives = bytes.indexOf("\xEF\xBB\xBF", 1) < 0 && !bytes.toLower().contains("\\ufeff");
    if (file) {
        const auto again = File::decode(file->encode());
        require(again == file || !survives);
        require(again != file || qHash(*again) == qHash(*file));
    }
    // Qt is not as strict with bytes that are no text.
    if (const QJsonDocument document = QJsonDocument::fromJson(bytes); document.isObject() && bytes.isValidUtf8()) {
        require(file.has_value() == Shape<File>::fits(document.object()));
        require(!file || says(document.object(), *file));
    }
    return file;
}

void search(const std::vector<CardStats>& cards) {
    std::vector<QString> norms;
    QStringList lines;
    for (const CardStats& card : cards) {
        lines += card.displayName(AppLanguage::en);
        norms.push_back(NameMatching::normalize(lines.last()));
    }
    const CardNameIndex index(norms);
    for (const QString& line : lines) {
        const auto hit = index.bestMatch({line});
        require(!hit || hit->score == NameMatching::scoreName(line, norms[hit->entry]));
    }
    index.bestMatch(lines);
}

void search(const ClassWinrateFile& file) {
    std::vector<NamedClass> classes;
    for (const ClassWinrateRow& row : file.classes) {
        classes.push_back({row.playerClass.toUpper(), {row.nameZh, row.displayName(AppLanguage::en)}});
    }
    const ClassNameIndex index(classes);
    for (const QString& line : index.texts()) {
        require(index.bestMatch({line}, NameLengths::limitedUnlessExact).has_value());
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    (void)look<WinrateFile>(bytes);
    if (const auto file = CardFile::decode(bytes, QStringLiteral("fuzz.json"))) {
        require(!file->rows.empty());
        search(file->rows);
    }
    if (const auto file = look<ClassWinrateFile>(bytes)) {
        search(*file);
    }
    return 0;
}
