#include "json/StrictJson.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace pelloran::strict_json {

QString describe(const Mismatch& mismatch, const QString& whole) {
    return (mismatch.place.isEmpty() ? whole : mismatch.place) + u" is not "_s + mismatch.wanted;
}

std::expected<QJsonValue, ParseError> parse(const QByteArray& json) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        return std::unexpected(
            ParseError{error.error, error.errorString() + u" at byte "_s + QString::number(error.offset)});
    }
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

Verdict wanted(const QString& what) {
    return Mismatch{.place = {}, .wanted = what};
}

void placeWithin(Mismatch& mismatch, QLatin1StringView key) {
    const bool nested = !mismatch.place.isEmpty() && !mismatch.place.startsWith(u'[');
    mismatch.place = key + (nested ? u"."_s : QString()) + mismatch.place;
}

void placeWithin(Mismatch& mismatch, qsizetype index) {
    const QString dot = mismatch.place.isEmpty() ? QString() : u"."_s;
    mismatch.place = u'[' + QString::number(index) + u']' + dot + mismatch.place;
}

Verdict decodeInto(QString& text, const QJsonValue& value) {
    if (!value.isString()) {
        return wanted(u"a text"_s);
    }
    text = value.toString();
    return {};
}

Verdict decodeInto(double& number, const QJsonValue& value) {
    if (!value.isDouble()) {
        return wanted(u"a number"_s);
    }
    number = value.toDouble();
    return {};
}

Verdict decodeInto(qint64& number, const QJsonValue& value) {
    // toInteger answers with its default for whatever is no whole number of 64 bits.
    number = value.toInteger(0);
    if (!value.isDouble() || number != value.toInteger(1)) {
        return wanted(u"a whole number"_s);
    }
    return {};
}

Verdict decodeInto(bool& truth, const QJsonValue& value) {
    if (!value.isBool()) {
        return wanted(u"true or false"_s);
    }
    truth = value.toBool();
    return {};
}

Verdict decodeInto(QStringList& texts, const QJsonValue& value) {
    Verdict otherwise = wanted(u"an array of texts"_s);
    if (!value.isArray()) {
        return otherwise;
    }
    texts.clear();
    const QJsonArray array = value.toArray();
    for (const auto& element : array) {
        if (!element.isString()) {
            return otherwise;
        }
        texts += element.toString();
    }
    return {};
}

Verdict decodeInto(QMap<QString, QString>& texts, const QJsonValue& value) {
    Verdict otherwise = wanted(u"an object of texts"_s);
    if (!value.isObject()) {
        return otherwise;
    }
    texts.clear();
    const QJsonObject object = value.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (!entry.value().isString()) {
            return otherwise;
        }
        texts.insert(entry.key(), entry.value().toString());
    }
    return {};
}

QJsonValue encode(const QStringList& texts) {
    return QJsonArray::fromStringList(texts);
}

QJsonValue encode(const QMap<QString, QString>& texts) {
    QJsonObject object;
    for (auto entry = texts.begin(); entry != texts.end(); ++entry) {
        object.insert(entry.key(), entry.value());
    }
    return object;
}

} // namespace pelloran::strict_json
