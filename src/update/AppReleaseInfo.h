#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <expected>
#include <optional>

namespace pelloran {

// What the update server says of the newest release: the contents of latest.json, kept exactly as they are.
//
// Decoding is strict on what it knows and deaf to what it does not: unknown keys are ignored, a missing or null
// optional field is absent, a field of another type fails the whole file. A whole number may be written 3, 3.0 or 3e0.
struct AppReleaseInfo {
    struct DecodeError {
        QString description; // for the user's eyes

        bool operator==(const DecodeError&) const = default;
    };

    std::optional<QString> name; // the product's
    QString version;
    std::optional<qint64> build;
    std::optional<QString> minMacos;
    std::optional<QStringList> arch;
    std::optional<QString> dmg;     // disk image: an absolute URL, or a path below the base
    std::optional<QString> zip;     // archive: likewise
    std::optional<QString> baseURL; // base of such paths, even if empty; absent: the server's own
    std::optional<QString> notes;   // in no particular language
    std::optional<QString> notesZh;
    std::optional<QString> notesEn;
    std::optional<QString> publishedAt; // free text
    std::optional<bool> force;          // true: the release cannot be skipped

    static std::expected<AppReleaseInfo, DecodeError> decode(const QByteArray& json);

    bool isForced() const { return force.value_or(false); }

    // Where `path` leads: itself if it begins with "http://" or "https://", else the path below `baseURL`, or below
    // `downloadBase` where the release names no base. Absent for no path, an empty one, and what makes no valid URL;
    // the URL may be relative when the base is.
    std::optional<QUrl> absoluteURL(const std::optional<QString>& path, const QString& downloadBase) const;

    std::optional<QUrl> dmgURL(const QString& downloadBase) const { return absoluteURL(dmg, downloadBase); }

    std::optional<QUrl> zipURL(const QString& downloadBase) const { return absoluteURL(zip, downloadBase); }

    // The disk image if it gives a URL, else the archive.
    std::optional<QUrl> preferredDownloadURL(const QString& downloadBase) const;

    bool operator==(const AppReleaseInfo&) const = default;
};

} // namespace pelloran
