#include "update/AppReleaseInfo.h"

#include "update/StrictURL.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QJsonValue>

#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Each absent for a value of another type.
std::optional<QString> text(const QJsonValue& value) {
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<bool> yesOrNo(const QJsonValue& value) {
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<qint64> wholeNumber(const QJsonValue& value) {
    // toInteger answers with its default for whatever is no whole number of 64 bits.
    const qint64 number = value.toInteger(0);
    return number == value.toInteger(1) ? std::optional(number) : std::nullopt;
}

std::optional<QStringList> texts(const QJsonValue& value) {
    if (!value.isArray()) {
        return std::nullopt;
    }
    QStringList all;
    const QJsonArray elements = value.toArray();
    for (const auto& element : elements) {
        if (!element.isString()) {
            return std::nullopt;
        }
        all += element.toString();
    }
    return all;
}

// Takes the fields out of an object one after the other and remembers the first that is not what it should be.
class Fields {
public:
    explicit Fields(QJsonObject of)
        : object(std::move(of)) {}

    template <typename Value>
    std::optional<Value> optional(QLatin1StringView key, std::optional<Value> (*read)(const QJsonValue&),
                                  QLatin1StringView wanted) {
        const QJsonValue value = object.value(key);
        if (value.isNull() || value.isUndefined()) {
            return std::nullopt;
        }
        std::optional<Value> field = read(value);
        if (!field) {
            complain(key + " is not "_L1 + wanted);
        }
        return field;
    }

    std::optional<QString> optionalText(QLatin1StringView key) { return optional(key, &text, "a text"_L1); }

    QString requiredText(QLatin1StringView key) {
        const QJsonValue value = object.value(key);
        if (value.isNull() || value.isUndefined()) {
            complain(key + " is missing"_L1);
        }
        return optionalText(key).value_or(QString());
    }

    const std::optional<AppReleaseInfo::DecodeError>& firstError() const { return error; }

private:
    void complain(const QString& description) {
        if (!error) {
            error = {description};
        }
    }

    QJsonObject object;
    std::optional<AppReleaseInfo::DecodeError> error;
};

QString withoutSlashesAtTheEnds(QStringView path) {
    while (path.startsWith(u'/')) {
        path = path.sliced(1);
    }
    while (path.endsWith(u'/')) {
        path.chop(1);
    }
    return path.toString();
}

} // namespace

std::expected<AppReleaseInfo, AppReleaseInfo::DecodeError> AppReleaseInfo::decode(const QByteArray& json) {
    QJsonParseError parsed;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parsed);
    if (parsed.error != QJsonParseError::NoError) {
        return std::unexpected(DecodeError{parsed.errorString() + u" at byte "_s + QString::number(parsed.offset)});
    }
    if (!document.isObject()) {
        return std::unexpected(DecodeError{u"the file is not an object"_s});
    }
    Fields fields(document.object());
    AppReleaseInfo release{
        .name = fields.optionalText("name"_L1),
        .version = fields.requiredText("version"_L1),
        .build = fields.optional("build"_L1, &wholeNumber, "a whole number"_L1),
        .minMacos = fields.optionalText("min_macos"_L1),
        .arch = fields.optional("arch"_L1, &texts, "an array of texts"_L1),
        .dmg = fields.optionalText("dmg"_L1),
        .zip = fields.optionalText("zip"_L1),
        .baseURL = fields.optionalText("base_url"_L1),
        .notes = fields.optionalText("notes"_L1),
        .notesZh = fields.optionalText("notes_zh"_L1),
        .notesEn = fields.optionalText("notes_en"_L1),
        .publishedAt = fields.optionalText("published_at"_L1),
        .force = fields.optional("force"_L1, &yesOrNo, "true or false"_L1),
    };
    if (fields.firstError()) {
        return std::unexpected(*fields.firstError());
    }
    return release;
}

std::optional<QUrl> AppReleaseInfo::absoluteURL(const std::optional<QString>& path, const QString& downloadBase) const {
    if (!path || path->isEmpty()) {
        return std::nullopt;
    }
    if (path->startsWith("http://"_L1) || path->startsWith("https://"_L1)) {
        return strictURL(*path);
    }
    return strictURL(withoutSlashesAtTheEnds(baseURL.value_or(downloadBase)) + u'/' + *path);
}

std::optional<QUrl> AppReleaseInfo::preferredDownloadURL(const QString& downloadBase) const {
    const std::optional<QUrl> image = dmgURL(downloadBase);
    return image ? image : zipURL(downloadBase);
}

} // namespace pelloran
