#pragma once

#include "model/DraftModel.h"
#include "model/OverlayModel.h"
#include "platform/TextReader.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>

#include <vector>

// Our values as the JSON that the command line prints; docs/formats.md describes it for its readers.
namespace pelloran::json {

QJsonObject toJson(const DraftState& state);
QJsonObject toJson(const SlotMatch& match);
QJsonObject toJson(const OCRToken& token);
QJsonObject toJson(const OverlaySnapshot& snapshot);

QString phaseName(DraftPhase phase);

// JSON's null when absent.
template <typename T>
QJsonValue optional(const std::optional<T>& value) {
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

template <typename T>
QJsonArray array(const std::vector<T>& values) {
    QJsonArray items;
    for (const T& value : values) {
        items.append(toJson(value));
    }
    return items;
}

// One line, with its line end.
QByteArray line(const QJsonObject& object);

} // namespace pelloran::json
