#include "publish/ReleaseDescription.h"

#include "publish/Problem.h"
#include "update/AppReleaseFields.h"
#include "update/AppUpdateChecker.h"
#include "update/Versions.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStringDecoder>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Whether `text` is read as the very numbers that stand in it. Anything else ("v2.0", "1.2rc1", "1..2", "1.02") may be
// read as another version than was meant.
bool isPlainVersion(const QString& text) {
    QStringList numbers;
    for (const qint64 part : parseVersionParts(text)) {
        numbers.append(QString::number(part));
    }
    return !text.isEmpty() && numbers.join(u'.') == text;
}

bool isBlank(const std::optional<QString>& text) {
    return text && text->trimmed().isEmpty();
}

// Collects what is wrong while the parts become a description.
class Describer {
public:
    AppReleaseInfo describe(const ReleaseParts& parts) {
        AppReleaseInfo release{
            .name = parts.name,
            .version = parts.version,
            .build = parts.build,
            .minMacos = parts.minMacos,
            .arch = parts.arch,
            .dmg = download(parts.dmgFile),
            .zip = download(parts.zipFile),
            .baseURL = parts.baseURL,
            .notes = notes(parts.notesFile),
            .notesZh = notes(parts.notesZhFile),
            .notesEn = notes(parts.notesEnFile),
            .publishedAt = parts.publishedAt,
            .force = parts.force ? std::optional(true) : std::nullopt,
        };
        if (!isPlainVersion(release.version)) {
            problems.append(u"\"%1\" is no version: numbers with dots between, such as 1.4.2"_s.arg(release.version));
        } else if (compareVersions(release.version, u"0") == 0) {
            problems.append(u"%1 is newer than no other version"_s.arg(release.version));
        }
        if (release.build && *release.build < 0) {
            problems.append(u"%1 is no build number"_s.arg(*release.build));
        }
        if (release.minMacos && !isPlainVersion(*release.minMacos)) {
            problems.append(u"\"%1\" is no version of macOS, such as 13.4"_s.arg(*release.minMacos));
        }
        for (const QString& processor : release.arch.value_or(QStringList())) {
            if (processor != u"arm64" && processor != u"x86_64") {
                problems.append(u"\"%1\" is no processor of a Mac: arm64 or x86_64"_s.arg(processor));
            }
        }
        if (!parts.dmgFile && !parts.zipFile) {
            problems.append(u"a release needs a disk image or an archive, or there is nothing to download"_s);
        }
        if (isBlank(release.name)) {
            problems.append(u"the name is blank"_s);
        }
        return release;
    }

    // Links that clients would not open, as they see them.
    void checkLinks(const AppReleaseInfo& release, const QString& downloadBase) {
        for (const auto& path : {release.dmg, release.zip}) {
            if (!path || path->isEmpty()) {
                continue;
            }
            const auto url = release.absoluteURL(path, downloadBase);
            const QString base = release.baseURL.value_or(downloadBase);
            if (!url) {
                problems.append(u"\"%1\" below \"%2\" is no URL"_s.arg(*path, base));
            } else if ((url->scheme() != u"http" && url->scheme() != u"https") || url->host().isEmpty()) {
                problems.append(
                    u"%1 is no http or https link, and clients open no other"_s.arg(url->toString(QUrl::FullyEncoded)));
            } else if (url->hasQuery() || url->hasFragment() || url->fileName(QUrl::FullyDecoded) != *path) {
                problems.append(u"%1 is not a link to \"%2\""_s.arg(url->toString(QUrl::FullyEncoded), *path));
            }
        }
    }

    QStringList problems;

private:
    // The name under which clients find it.
    std::optional<QString> download(const std::optional<QString>& path) {
        if (!path) {
            return std::nullopt;
        }
        const QFileInfo file(*path);
        if (!file.isFile()) {
            problems.append(*path + u": no such file"_s);
        } else if (file.size() == 0) {
            problems.append(*path + u": is empty"_s);
        }
        return file.fileName();
    }

    std::optional<QString> notes(const std::optional<QString>& path) {
        if (!path) {
            return std::nullopt;
        }
        QFile file(*path);
        if (!QFileInfo(file).isFile() || !file.open(QFile::ReadOnly)) {
            problems.append(*path + u": cannot be read"_s);
            return std::nullopt;
        }
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString text = decoder(file.readAll());
        if (decoder.hasError()) {
            problems.append(*path + u": is not UTF-8"_s);
        } else if (isBlank(text)) {
            problems.append(*path + u": is blank, and blank notes hide those in other languages"_s);
        }
        return text.trimmed();
    }
};

} // namespace

std::expected<QByteArray, QStringList> releaseDescription(const ReleaseParts& parts, const QString& downloadBase) {
    Describer describer;
    const AppReleaseInfo release = describer.describe(parts);
    describer.checkLinks(release, downloadBase);
    if (!describer.problems.isEmpty()) {
        return std::unexpected(describer.problems);
    }
    QByteArray json = QJsonDocument(strict_json::encode(release)).toJson(QJsonDocument::Indented);
    if (json.size() > AppUpdateChecker::maximumBytes) {
        return problem(
            u"the description has more than %1 bytes, which clients refuse"_s.arg(AppUpdateChecker::maximumBytes));
    }
    const auto decoded = AppReleaseInfo::decode(json);
    if (!decoded) {
        return problem(u"clients refuse it: "_s + decoded.error().description);
    }
    if (*decoded != release) {
        return problem(u"clients read something else than was written"_s);
    }
    return json;
}

} // namespace pelloran
