#pragma once

#include "update/AppReleaseInfo.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

namespace pelloran {

// What the operator says of a release: as AppReleaseInfo has it, but with files in place of what is made of them.
struct ReleaseParts {
    std::optional<QString> name;
    QString version;
    std::optional<qint64> build;
    std::optional<QString> minMacos;
    std::optional<QStringList> arch;
    std::optional<QString> dmgFile; // downloads, which clients find by their file names
    std::optional<QString> zipFile;
    std::optional<QString> baseURL;   // where they will lie; absent: with the description itself
    std::optional<QString> notesFile; // texts, UTF-8
    std::optional<QString> notesZhFile;
    std::optional<QString> notesEnFile;
    std::optional<QString> publishedAt;
    bool force = false;
};

// The content of latest.json, which every client takes as it was meant: what they would refuse is refused here, and so
// is what they would take for something else, such as a version "v2.0" (which is 0.0 to them). `downloadBase` is the
// folder of latest.json on the server that clients ask. Errors: everything that is wrong, each in a sentence.
std::expected<QByteArray, QStringList> releaseDescription(const ReleaseParts& parts, const QString& downloadBase);

} // namespace pelloran
