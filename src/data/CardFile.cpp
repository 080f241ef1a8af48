#include "data/CardFile.h"

#include <QJsonObject>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

bool isArrayOfObjects(const QJsonValue& value) {
    const QJsonArray array = value.toArray();
    return value.isArray() && std::all_of(array.begin(), array.end(), [](const auto& each) { return each.isObject(); });
}

// Every array of rows in a loose file, in the order in which they count. QJsonObject goes through keys in ascending
// order.
std::vector<QJsonArray> looseRows(const QJsonObject& file) {
    std::vector<QJsonArray> found;
    const auto collect = [&found](const QJsonValue& value) {
        if (isArrayOfObjects(value)) {
            found.push_back(value.toArray());
        }
    };
    collect(file.value("cards"_L1));
    for (const QJsonValue perClass : file.value("classes"_L1).toObject()) {
        collect(perClass.isObject() ? perClass.toObject().value("cards"_L1) : perClass);
    }
    return found;
}

CardFile fromStandard(WinrateFile file) {
    return {
        .rows = std::move(file.cards),
        .description = file.playerClass.value_or(u"?"_s) + u" / "_s + file.timeRange.value_or(u"?"_s),
        .isSample = file.timeRange == u"SAMPLE"_s,
        .fetchedAt = file.fetchedAt.value_or(QString()),
    };
}

} // namespace

std::expected<CardFile, DataError> CardFile::decode(const QByteArray& json, const QString& fileName) {
    const auto parsed = parseJson(json);
    if (!parsed) {
        return std::unexpected(parsed.error());
    }
    if (auto standard = WinrateFile::fromJson(*parsed); standard && !standard->cards.empty()) {
        return fromStandard(std::move(*standard));
    }

    const QJsonObject object = parsed->toObject();
    CardFile file;
    file.isSample = object.value("time_range"_L1).toString() == "SAMPLE"_L1;
    file.fetchedAt = object.value("fetched_at"_L1).toString();
    for (const QJsonArray& array : looseRows(object)) {
        auto rows = decodeCards(array);
        if (!rows) {
            return std::unexpected(rows.error());
        }
        std::ranges::move(*rows, std::back_inserter(file.rows));
    }
    if (file.rows.size() > mostCardRows) {
        return std::unexpected(
            DataError{u"WinrateFormats"_s, 0, u"the file has more than %1 rows in all"_s.arg(mostCardRows)});
    }
    if (file.rows.empty()) {
        return std::unexpected(DataError{u"Pelloran"_s, 2, u"无法解析胜率文件: "_s + fileName});
    }
    file.description = u"all_classes / "_s + fileName;
    return file;
}

} // namespace pelloran
