#pragma once

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

namespace pelloran {

// What now lies on the server, for the operator.
struct Publication {
    QString folder;       // with the manifest and the bundle
    QString hash;         // of the content, as the manifest names it
    QString bundle;       // file name
    QString bundleSha256; // in lower-case hex
    qint64 bundleBytes = 0;
    qint64 manifestBytes = 0; // what a client fetches at every poll
    int fileCount = 0;
    QString updatedAt;    // ISO 8601, UTC
    bool changed = false; // false: the very same was there already, and nothing was written
    QStringList remarks;  // each in a sentence
};

// Makes the folder `target`, the root of any static web server, serve what `source` holds: writes
// TARGET/pelloran/latest/manifest.json, the bundle that it names after its digest, and the same bytes as config.tar.gz.
// The manifest comes last and in one step, and the bundle that the previous one named stays: a client that asks
// meanwhile gets one or the other, whole. Nothing is written when anything is wrong, and the client's own checks are
// part of that. `cardTable` and `cardLists`: see SourceFolder. Errors: everything that is wrong, each in a sentence.
std::expected<Publication, QStringList> publish(const QString& source, const QString& target,
                                                const std::optional<QString>& cardTable,
                                                const QStringList& cardLists = {});

} // namespace pelloran
